#include "Editor/Surfaces/InfoLineScene.h"

#include <cmath>
#include <cstdio>

#include "Editor/Surfaces/DecibelText.h"

namespace kiv {

namespace {

constexpr int padding = 12;
constexpr int betweenGroups = 20;
constexpr int betweenRightGroups = 16;

using Measure = std::function<int(const InfoText &)>;

// Between two texts of a group: a blank around a dash, a little more around a dot.
int gap(const InfoText &before, const InfoText &after, const Measure &measure) {
    constexpr int afterLabel = 6, moreAroundDot = 1;
    if (before.isLabel) return afterLabel;
    return measure({" ", false, {}}) + (before.text == "·" || after.text == "·" ? moreAroundDot : 0);
}

std::vector<InfoGroup> places(const AudioEditorState &state) {
    const auto time = [&](std::int64_t frames) { return format(state.timeUnit, double(frames), state.buffer.sampleRate()); };
    if (!state.selection)
        return {{InfoGroupKind::place, {{"Cursor", true, {}}, {time(state.cursorFrame), false, InfoField::cursor}}}};
    const FrameRange range = *state.selection;
    return {{InfoGroupKind::place,
             {{"Selection", true, {}},
              {time(range.lo), false, InfoField::selectionStart},
              {"–", false, {}},
              {time(range.hi), false, InfoField::selectionEnd}}},
            {InfoGroupKind::place, {{"Length", true, {}}, {time(range.count()), false, InfoField::selectionLength}}}};
}

std::string joined(const std::vector<std::string> &parts) {
    std::string text;
    for (const std::string &part : parts)
        if (!part.empty()) text += (text.empty() ? "" : " · ") + part;
    return text;
}

int widthOf(const InfoGroup &group, const Measure &measure) {
    int width = 0;
    for (std::size_t i = 0; i < group.texts.size(); ++i) {
        if (i > 0) width += gap(group.texts[i - 1], group.texts[i], measure);
        width += measure(group.texts[i]);
    }
    return width;
}

int widthOf(const std::vector<InfoGroup> &groups, int between, const Measure &measure) {
    int width = 0;
    for (const InfoGroup &group : groups) width += widthOf(group, measure) + (width > 0 ? between : 0);
    return width;
}

void drop(std::vector<InfoGroup> &groups, InfoGroupKind kind) {
    std::erase_if(groups, [&](const InfoGroup &group) { return group.kind == kind; });
}

void place(const std::vector<InfoGroup> &groups, int x, int between, const Measure &measure,
           std::vector<PlacedInfoText> &placed) {
    for (const InfoGroup &group : groups) {
        for (std::size_t i = 0; i < group.texts.size(); ++i) {
            if (i > 0) x += gap(group.texts[i - 1], group.texts[i], measure);
            placed.push_back({group.texts[i], x, measure(group.texts[i])});
            x += placed.back().width;
        }
        x += between;
    }
}

}  // namespace

std::string rateText(double sampleRate) {
    char text[64];
    const bool kilo = sampleRate >= 1000;
    std::snprintf(text, sizeof text, "%.6g %s", kilo ? sampleRate / 1000 : sampleRate, kilo ? "kHz" : "Hz");
    return text;
}

std::string channelsText(std::int64_t channels) {
    return channels == 1 ? "Mono" : channels == 2 ? "Stereo" : std::to_string(channels) + " channels";
}

InfoLineScene infoLineScene(const AudioEditorState &state, const std::optional<WaveformHover> &pointer,
                            const FileFacts &facts) {
    const std::int64_t rate = state.buffer.sampleRate();
    InfoLineScene scene{places(state), {}};
    if (pointer)
        scene.left.push_back({InfoGroupKind::pointer,
                              {{"Pointer", true, {}},
                               {format(state.timeUnit, double(pointer->frame), rate), false, {}},
                               {"·", false, {}},
                               {decibelText(pointer->levelDb), false, {}}}});
    if (facts.sampleRate <= 0) return scene;  // not read yet: also its length is not known
    const auto text = joined({facts.typeName, facts.bits, rateText(facts.sampleRate), channelsText(state.buffer.channels())});
    scene.right.push_back({InfoGroupKind::format, {{text, true, {}}}});
    scene.right.push_back({InfoGroupKind::total, {{format(state.timeUnit, double(state.buffer.frames()), rate), false, {}}}});
    return scene;
}

void addProgress(InfoLineScene &scene, double fraction) {
    const std::string percent = std::to_string(int(fraction * 100)) + " %";
    scene.right.insert(scene.right.begin(), {InfoGroupKind::work, {{percent, false, {}}}});
}

std::string spokenPlaces(const InfoLineScene &scene) {
    std::string spoken;
    for (const InfoGroup &group : scene.left) {
        if (group.kind != InfoGroupKind::place) continue;
        for (const InfoText &text : group.texts) spoken += (spoken.empty() ? "" : text.isLabel ? ", " : " ") + text.text;
    }
    return spoken;
}

std::vector<PlacedInfoText> placedInfoTexts(const InfoLineScene &scene, int width, const Measure &measure) {
    InfoLineScene shown = scene;
    const auto needed = [&] {
        return 2 * padding + widthOf(shown.left, betweenGroups, measure) + betweenGroups +
               widthOf(shown.right, betweenRightGroups, measure);
    };
    for (InfoGroupKind kind : {InfoGroupKind::pointer, InfoGroupKind::mode, InfoGroupKind::format, InfoGroupKind::total}) {
        if (needed() <= width) break;
        drop(shown.left, kind);
        drop(shown.right, kind);
    }
    std::vector<PlacedInfoText> placed;
    place(shown.left, padding, betweenGroups, measure, placed);
    place(shown.right, width - padding - widthOf(shown.right, betweenRightGroups, measure), betweenRightGroups, measure,
          placed);
    return placed;
}

}  // namespace kiv
