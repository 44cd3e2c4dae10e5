#include "Editor/AudioEditorModel/AudioEditorEdits.h"

#include <cmath>
#include <limits>

#include "Editor/AudioEditorCore/AudioEditorOps.h"
#include "Editor/AudioEditorModel/ModelFixture.h"

namespace kiv {
namespace {

using EditsTest = ModelFixture;
namespace Edits = AudioEditorEdits;

AudioEditorBuffer constant(std::int64_t frames, std::int64_t channels, float value) {
    return AudioEditorBuffer(std::vector<float>(std::size_t(frames * channels), value), channels, 44100);
}

TEST_F(EditsTest, theClipboardTellsWhenItIsFilled) {
    int heard = 0;
    const Subscription listening = clipboard.changed.add([&](const Clipboard &now) { heard += now.buffer.has_value(); });
    Edits::copy(model);
    EXPECT_FALSE(clipboard.buffer) << "there is no selection";
    model.select({100, 300});
    EXPECT_EQ(notices([&] { Edits::copy(model); }), 0u);
    EXPECT_EQ(clipboard.buffer->samples(), samples({100, 300}));
    EXPECT_EQ(heard, 1);
    Edits::cut(model);
    EXPECT_EQ(heard, 2);
}

TEST_F(EditsTest, aStretchReplacesTheActiveRange) {
    for (const StretchMode mode : {StretchMode::clean, StretchMode::s950}) {
        const StretchSettings half{mode, 50}, nothing{mode, 100, 1, -100};
        load(noise(1000, 2, 1), {100, 500, 900}, FrameRange{600, 800});
        const AudioEditorBuffer before = buffer();
        model.select({200, 600});
        Edits::timeStretch(model, nothing);
        EXPECT_FALSE(model.canUndo());
        Edits::timeStretch(model, half);
        EXPECT_EQ(buffer(), AudioEditorOps::stretched(before, {200, 600}, half));
        EXPECT_EQ(state().markerFrames, (std::vector<std::int64_t>{100, 200, 700}));
        EXPECT_EQ(state().loopPoints, (FrameRange{400, 600}));
        EXPECT_EQ(state().selection, (FrameRange{200, 400}));
        EXPECT_EQ(state().cursorFrame, 200);
        model.undo();
        EXPECT_EQ(buffer().sharedPrefix(before), 1000);
        EXPECT_EQ(state().selection, (FrameRange{200, 600}));
        model.placeCursor(700);
        Edits::timeStretch(model, half);
        EXPECT_EQ(buffer().frames(), 500);
        EXPECT_EQ(state().selection, std::nullopt);
        EXPECT_EQ(state().cursorFrame, 0);
    }
}

TEST_F(EditsTest, cutAndDeleteTakeTheSelectionOut) {
    const std::vector<float> before = samples({0, 100}), behind = samples({300, 1000}), selected = samples({100, 300});
    for (const bool cuts : {true, false}) {
        model.select({100, 300});
        clipboard.buffer.reset();
        cuts ? Edits::cut(model) : Edits::deleteSelection(model);
        EXPECT_EQ(samples({0, 100}), before);
        EXPECT_EQ(samples({100, 800}), behind);
        EXPECT_EQ(state().cursorFrame, 100);
        EXPECT_FALSE(state().selection);
        EXPECT_EQ(clipboard.buffer ? clipboard.buffer->samples() : std::vector<float>(),
                  cuts ? selected : std::vector<float>());
        model.undo();
    }
}

TEST_F(EditsTest, pasteSelectsWhatItPutInAndLeavesTheCursorBehindIt) {
    load(noise(1000, 2, 1), {0, 500, 700});
    clipboard.buffer = noise(50, 2, 9);
    const std::vector<float> pasted = clipboard.buffer->samples(), behind = samples({500, 1000});
    model.placeCursor(500);
    Edits::paste(model);
    EXPECT_EQ(samples({500, 550}), pasted);
    EXPECT_EQ(samples({550, 1050}), behind);
    EXPECT_EQ(state().selection, (FrameRange{500, 550}));
    EXPECT_EQ(state().cursorFrame, 550);
    EXPECT_EQ(state().markerFrames, (std::vector<std::int64_t>{0, 550, 750}));

    model.select({500, 700});  // over a selection
    Edits::paste(model);
    EXPECT_EQ(buffer().frames(), 900);
    EXPECT_EQ(samples({500, 550}), pasted);
    EXPECT_EQ(state().markerFrames, (std::vector<std::int64_t>{0, 500, 600}));
    model.selectAll();
    Edits::paste(model);
    EXPECT_EQ(buffer().samples(), pasted);
}

TEST_F(EditsTest, pasteConvertsRateAndChannels) {
    load(constant(4800, 2, 0).atRate(48000));
    clipboard.buffer = constant(441, 1, 0.5f);
    model.placeCursor(4800);
    Edits::paste(model);
    EXPECT_EQ(buffer().frames(), 5280);
    EXPECT_EQ(buffer().sampleRate(), 48000);
    EXPECT_EQ(state().selection, (FrameRange{4800, 5280}));
    EXPECT_NEAR(buffer().sample(5040, 0), 0.5, 1e-3);
    EXPECT_EQ(buffer().sample(5040, 0), buffer().sample(5040, 1));
    EXPECT_EQ(clipboard.buffer->sampleRate(), 44100);
}

TEST_F(EditsTest, pastesIntoAnEmptySound) {
    load(AudioEditorBuffer(2, 44100));
    clipboard.buffer = noise(50, 2, 9);
    Edits::paste(model);
    EXPECT_EQ(buffer(), *clipboard.buffer);
    model.undo();
    EXPECT_TRUE(buffer().isEmpty());
}

TEST_F(EditsTest, trimKeepsTheSelectionAlone) {
    const std::vector<float> selected = samples({100, 300});
    load(noise(1000, 2, 1), {50, 150, 999});
    model.select({100, 300});
    Edits::trim(model);
    EXPECT_EQ(buffer().samples(), selected);
    EXPECT_EQ(state().cursorFrame, 0);
    EXPECT_FALSE(state().selection);
    EXPECT_EQ(state().markerFrames, (std::vector<std::int64_t>{0, 50, 200}));
}

TEST_F(EditsTest, editsInPlaceActOnTheActiveRangeAndMoveNothing) {
    const AudioEditorBuffer original = buffer();
    const struct {
        const char *what;
        void (*edit)(AudioEditorModel &);
        AudioEditorBuffer (*operation)(const AudioEditorBuffer &, FrameRange, Progress *);
    } cases[] = {
        {"fade in", Edits::fadeIn, AudioEditorOps::fadeIn},
        {"fade out", Edits::fadeOut, AudioEditorOps::fadeOut},
        {"silence", Edits::silence,
         [](const AudioEditorBuffer &b, FrameRange r, Progress *) { return AudioEditorOps::silenced(b, r); }},
        {"reverse", Edits::reverse, AudioEditorOps::reversed},
        {"gain", [](AudioEditorModel &m) { Edits::gain(m, -6); },
         [](const AudioEditorBuffer &b, FrameRange r, Progress *) {
             return AudioEditorOps::scaled(b, r, std::pow(10.0, -6.0 / 20));
         }},
        {"normalize", [](AudioEditorModel &m) { Edits::normalize(m, -2.5); },
         [](const AudioEditorBuffer &b, FrameRange r, Progress *) {
             return AudioEditorOps::scaled(b, r, std::pow(10.0, -2.5 / 20) / double(AudioEditorOps::peak(b, r)));
         }},
    };
    for (const auto &each : cases)
        for (const bool whole : {false, true}) {
            load(original, {300}, FrameRange{10, 20});
            const FrameRange range = whole ? FrameRange{0, 1000} : FrameRange{200, 600};
            model.setCursorAndSelection(400, whole ? std::nullopt : std::optional(range));
            const auto selection = state().selection;
            EXPECT_EQ(notices([&] { each.edit(model); }), bits({Change::audio, Change::history})) << each.what;
            EXPECT_EQ(buffer(), each.operation(original, range, nullptr)) << each.what;
            EXPECT_EQ(state().cursorFrame, 400) << each.what;
            EXPECT_EQ(state().selection, selection) << each.what;
        }
}

TEST_F(EditsTest, channelsAreConvertedInTheWholeSound) {
    const AudioEditorBuffer original = buffer();
    model.select({100, 300});
    Edits::mono(model, AudioEditorMonoSource::right);
    EXPECT_EQ(buffer(), AudioEditorOps::mono(original, AudioEditorMonoSource::right));
    EXPECT_EQ(state().selection, (FrameRange{100, 300}));
    Edits::stereo(model);
    EXPECT_EQ(buffer().channels(), 2);
    load(noise(10, 6, 1));
    Edits::stereo(model);
    EXPECT_EQ(buffer().channels(), 2);
    EXPECT_EQ(buffer().sample(3, 0), buffer().sample(3, 1));
}

TEST_F(EditsTest, whatWouldChangeNothingMakesNoStep) {
    const float inf = std::numeric_limits<float>::infinity();
    const struct {
        const char *what;
        AudioEditorBuffer sound;
        std::optional<FrameRange> selection;
        void (*edit)(AudioEditorModel &);
    } cases[] = {
        {"gain of 0 dB", noise(10, 1, 1), {}, [](AudioEditorModel &m) { Edits::gain(m, 0); }},
        {"gain that is no number", noise(10, 1, 1), {}, [](AudioEditorModel &m) { Edits::gain(m, std::nan("")); }},
        {"normalize of silence", constant(10, 2, 0), {}, [](AudioEditorModel &m) { Edits::normalize(m, -1); }},
        {"normalize to what it is", constant(10, 2, -1), {}, [](AudioEditorModel &m) { Edits::normalize(m, 0); }},
        {"normalize of the infinite", constant(10, 2, inf), {}, [](AudioEditorModel &m) { Edits::normalize(m, -1); }},
        {"reverse of one frame", noise(10, 1, 1), FrameRange{3, 4}, Edits::reverse},
        {"trim without a selection", noise(10, 1, 1), {}, Edits::trim},
        {"trim to everything", noise(10, 1, 1), FrameRange{0, 10}, Edits::trim},
        {"cut without a selection", noise(10, 1, 1), {}, Edits::cut},
        {"cut of everything", noise(10, 1, 1), FrameRange{0, 10}, Edits::cut},
        {"delete of everything", noise(10, 1, 1), FrameRange{0, 10}, Edits::deleteSelection},
        {"paste of nothing", noise(10, 1, 1), {}, Edits::paste},
        {"mono of mono", noise(10, 1, 1), {}, [](AudioEditorModel &m) { Edits::mono(m, AudioEditorMonoSource::left); }},
        {"stereo of stereo", noise(10, 2, 1), {}, Edits::stereo},
        {"fade of no audio", AudioEditorBuffer(2, 44100), {}, Edits::fadeIn},
        {"silence of no audio", AudioEditorBuffer(2, 44100), {}, Edits::silence},
        {"gain of no audio", AudioEditorBuffer(2, 44100), {}, [](AudioEditorModel &m) { Edits::gain(m, 3); }},
        {"normalize of no audio", AudioEditorBuffer(2, 44100), {}, [](AudioEditorModel &m) { Edits::normalize(m, 0); }},
    };
    for (const auto &each : cases) {
        load(each.sound);
        if (each.selection) model.select(*each.selection);
        EXPECT_EQ(notices([&] { each.edit(model); }), 0u) << each.what;
        EXPECT_FALSE(model.canUndo()) << each.what;
        EXPECT_FALSE(clipboard.buffer) << each.what;
    }
}

TEST_F(EditsTest, anEditCostsWhatItsRangeCosts) {
    load(constant(1'000'000, 2, 0.25f));
    const AudioEditorBuffer before = buffer();
    model.select({500'000, 500'100});
    Edits::silence(model);
    EXPECT_EQ(buffer().sharedPrefix(before), 500'000);
    EXPECT_EQ(buffer().sharedSuffix(before), 499'900);
    model.undo();
    EXPECT_EQ(buffer().sharedPrefix(before), 1'000'000);
}

TEST_F(EditsTest, confirmingADialogDoesWhatItSaysInOneNotice) {
    const AudioEditorBuffer original = buffer();
    const struct {
        Dialog dialog;
        const char *text;
        double value;
        double factor;  // 0: nothing is to happen
    } cases[] = {
        {Dialog::gain, "", 6, std::pow(10.0, 6.0 / 20)},
        {Dialog::gain, "−3,5", -3.5, std::pow(10.0, -3.5 / 20)},
        {Dialog::gain, "99", 24, std::pow(10.0, 24.0 / 20)},
        {Dialog::gain, "0", 0, 0},
        {Dialog::normalize, "-6", -6, std::pow(10.0, -6.0 / 20) / double(AudioEditorOps::peak(original, {0, 1000}))},
        {Dialog::normalize, "12", 0, 1 / double(AudioEditorOps::peak(original, {0, 1000}))},
    };
    for (const auto &each : cases) {
        load(original);
        model.setGainDb(6);
        model.openDialog(each.dialog);
        model.setDialogText(each.text, true);
        const Changes changes{notices([&] { EXPECT_TRUE(Edits::confirmDialog(model)); })};
        EXPECT_TRUE(changes.contains(Change::dialog)) << each.text;
        EXPECT_FALSE(state().dialog) << each.text;
        EXPECT_EQ(each.dialog == Dialog::gain ? state().gainDb : state().normalizeDb, each.value) << each.text;
        EXPECT_EQ(model.canUndo(), each.factor != 0) << each.text;
        EXPECT_EQ(buffer(), each.factor == 0 ? original : AudioEditorOps::scaled(original, {0, 1000}, each.factor))
            << each.text;
    }
}

TEST_F(EditsTest, aTextThatCannotBeReadLeavesTheDialogOpen) {
    const AudioEditorBuffer original = buffer();
    model.setGainDb(6);
    model.openDialog(Dialog::gain);
    model.setDialogText("loud", false);
    EXPECT_EQ(notices([&] { EXPECT_FALSE(Edits::confirmDialog(model)); }), 0u);
    EXPECT_EQ(state().dialog, Dialog::gain);
    EXPECT_EQ(state().gainDb, 6);
    EXPECT_EQ(buffer(), original);
    model.closeDialog();
    EXPECT_FALSE(Edits::confirmDialog(model));
    EXPECT_FALSE(model.canUndo());
}

TEST_F(EditsTest, theMonoDialogConvertsFromItsSource) {
    const AudioEditorBuffer original = buffer();
    model.openDialog(Dialog::mono);
    model.setMonoSource(AudioEditorMonoSource::left);
    EXPECT_TRUE(Edits::confirmDialog(model));
    EXPECT_EQ(buffer(), AudioEditorOps::mono(original, AudioEditorMonoSource::left));
}

TEST(DecibelText, isReadWithPointOrComma) {
    const std::pair<std::string_view, std::optional<double>> cases[] = {
        {"3", 3},        {"3.5", 3.5}, {"3,5", 3.5}, {"-3.5", -3.5}, {"−3,5", -3.5}, {"+2", 2},   {" 4 ", 4},
        {"-6 dB", -6},   {"-6dB", -6}, {".5", 0.5},  {",5", 0.5},    {"-,5", -0.5},  {"3.", 3},   {"007", 7},
        {"0", 0},        {"", {}},     {" ", {}},    {"-", {}},      {"−", {}},      {".", {}},   {"1.2.3", {}},
        {"1,000.5", {}}, {"--3", {}},  {"+-3", {}},  {"3e1", {}},    {"0x10", {}},   {"nan", {}}, {"inf", {}},
        {"−∞", {}},      {"3 4", {}},  {"dB", {}},   {"3 %", {}},    {"- 3", {}},
    };
    for (const auto &[text, value] : cases) EXPECT_EQ(Edits::parseDecibels(text), value) << '"' << text << '"';
}

}  // namespace
}  // namespace kiv
