#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Document/CommandActions.h"
#include "Document/DocumentWorld.h"
#include "Editor/AudioEditorModel/AudioEditorSpectralPainting.h"

namespace kiv {
namespace {

std::string enabledCommands(const AudioDocument &document) {
    std::string text;
    for (const EditorCommandRow &row : editorCommands())
        if (isEnabled(row.command, document)) text += (text.empty() ? "" : " ") + std::string(row.raw);
    return text;
}

const std::string stereoFile = Wav::file(Wav::ramp(2000), "", 2);
const std::string monoFile = Wav::file(Wav::ramp(1000));

TEST(CommandActions, AreEnabledWhereTheyCanAct) {
    const std::string view = "zoomIn verticalZoomIn verticalZoomOut";
    const std::string edits = "gain normalize fadeIn fadeOut silence reverse";
    const struct {
        const char *what;
        std::string file;
        void (*prepare)(DocumentWorld &);
        std::string enabled;
    } cases[] = {
        {"nothing open", "", [](DocumentWorld &) {}, ""},
        {"as opened", stereoFile, [](DocumentWorld &) {},
         "save saveAs revert selectAll playStop loop goToStart goToEnd " + edits + " mono timeStretch " + view +
             " toggleTimeUnit followPlayhead slicer eq editLoop findLoop spectral"},
        {"mono", monoFile, [](DocumentWorld &) {},
         "save saveAs revert selectAll playStop loop goToStart goToEnd " + edits + " stereo timeStretch " + view +
             " toggleTimeUnit followPlayhead slicer eq editLoop findLoop spectral"},
        {"no sound in it", Wav::file({}), [](DocumentWorld &) {},
         "save saveAs revert loop goToStart goToEnd stereo verticalZoomIn verticalZoomOut toggleTimeUnit followPlayhead"},
        {"a selection", stereoFile,
         [](DocumentWorld &w) {
             w.model.select({10, 20});
         },
         "save saveAs saveSelection revert cut copy delete selectAll selectNone playStop loop goToStart goToEnd " + edits +
             " trim mono timeStretch zoomIn zoomSelection verticalZoomIn verticalZoomOut toggleTimeUnit followPlayhead slicer "
             "eq editLoop findLoop spectral"},
        {"everything selected", stereoFile, [](DocumentWorld &w) { w.model.selectAll(); },
         "save saveAs saveSelection revert copy selectAll selectNone playStop loop goToStart goToEnd " + edits +
             " mono timeStretch zoomIn zoomSelection verticalZoomIn verticalZoomOut toggleTimeUnit followPlayhead slicer "
             "eq editLoop findLoop spectral"},
        {"one frame selected", stereoFile,
         [](DocumentWorld &w) {
             w.model.select({10, 11});
         },
         "save saveAs saveSelection revert cut copy delete selectAll selectNone playStop loop goToStart goToEnd gain normalize "
         "fadeIn fadeOut "
         "silence"
         " trim mono zoomIn zoomSelection verticalZoomIn verticalZoomOut toggleTimeUnit followPlayhead slicer eq editLoop "
         "findLoop spectral"},
        {"edited, undone and copied", monoFile,
         [](DocumentWorld &w) {
             AudioEditorEdits::reverse(w.model);
             AudioEditorEdits::silence(w.model);
             w.model.undo();
             w.model.selectAll();
             AudioEditorEdits::copy(w.model);
             w.model.selectNone();
         },
         "save saveAs revert undo redo paste selectAll playStop loop goToStart goToEnd " + edits + " stereo timeStretch " +
             view + " toggleTimeUnit followPlayhead slicer eq editLoop findLoop spectral"},
        {"zoomed to the limits", stereoFile,
         [](DocumentWorld &w) {
             w.model.setView({1000, 500});
             w.model.setVerticalZoomDb(36);
         },
         "save saveAs revert selectAll playStop loop goToStart goToEnd " + edits +
             " mono timeStretch zoomOut zoomFit verticalZoomOut verticalZoomReset toggleTimeUnit followPlayhead slicer "
             "eq editLoop findLoop spectral"},
        {"a dialog open", stereoFile, [](DocumentWorld &w) { w.model.openDialog(Dialog::gain); }, "playStop " + view},
        {"saving", stereoFile, [](DocumentWorld &w) { w.document->save(); },
         "selectAll playStop loop goToStart goToEnd " + edits + " mono timeStretch " + view +
             " toggleTimeUnit followPlayhead slicer eq editLoop findLoop spectral"},
        {"painted on", monoFile,
         [](DocumentWorld &w) {
             w.model.setSpectralEnabled(true);
             AudioEditorSpectralPainting::clear(w.model);
         },
         "save saveAs revert undo selectAll playStop loop goToStart goToEnd " + edits + " stereo timeStretch " + view +
             " toggleTimeUnit followPlayhead slicer eq editLoop findLoop spectral spectralSwapBrush spectralReset"},
        {"reading again", stereoFile, [](DocumentWorld &w) { w.document->revert(); }, view},
    };
    for (const auto &c : cases) {
        DocumentWorld world;
        if (!c.file.empty()) {
            ASSERT_EQ(world.open(c.file), "");
        }
        c.prepare(world);
        EXPECT_EQ(enabledCommands(*world.document), c.enabled) << c.what;
    }
}

TEST(CommandActions, WithoutAnOutputThereIsNothingToPlay) {
    DocumentWorld world;
    world.put(monoFile);
    AudioDocument silent({*world.files, world.jobs, world.settings, world.clipboard}, world.ui);
    world.read(silent);
    EXPECT_FALSE(isEnabled(EditorCommand::playStop, silent));
    perform(EditorCommand::goToEnd, silent);
    EXPECT_EQ(silent.model().state().cursorFrame, 1000);
}

TEST(CommandActions, OfAProgramOrALaterFeatureHaveNoRow) {
    EXPECT_EQ(action(EditorCommand::open), nullptr);
    EXPECT_EQ(action(EditorCommand::close), nullptr);
}

TEST(CommandActions, TogglesShowTheirState) {
    DocumentWorld world;
    world.open(monoFile);
    using enum EditorCommand;
    for (const EditorCommand command : {loop, followPlayhead, slicer, eq, editLoop, spectral}) {
        EXPECT_FALSE(action(command)->checked(*world.document));
        perform(command, *world.document);
        EXPECT_TRUE(action(command)->checked(*world.document));
    }
}

TEST(CommandActions, OpenTheirDialogs) {
    const std::pair<EditorCommand, Dialog> cases[] = {{EditorCommand::gain, Dialog::gain},
                                                      {EditorCommand::normalize, Dialog::normalize},
                                                      {EditorCommand::mono, Dialog::mono}};
    for (const auto &[command, dialog] : cases) {
        DocumentWorld world;
        world.open(stereoFile);
        perform(command, *world.document);
        EXPECT_EQ(world.model.state().dialog, dialog);
        EXPECT_FALSE(world.document->isEdited());
    }
}

}  // namespace
}  // namespace kiv
