#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "Editor/AudioEditorModel/AudioEditorModel.h"
#include "Editor/Surfaces/InfoFields.h"
#include "Editor/Surfaces/WaveformHover.h"

namespace kiv {

// What the info line tells of the file itself.
struct FileFacts {
    std::string typeName;
    std::string bits;
    double sampleRate = 0;

    friend bool operator==(const FileFacts &, const FileFacts &) = default;
};

struct InfoText {
    std::string text;
    bool isLabel = false;
    std::optional<InfoField> field;

    friend bool operator==(const InfoText &, const InfoText &) = default;
};

// In the order in which they go when room is short; the places themselves never do.
enum class InfoGroupKind { pointer, mode, format, total, place, work };

struct InfoGroup {
    InfoGroupKind kind;
    std::vector<InfoText> texts;

    friend bool operator==(const InfoGroup &, const InfoGroup &) = default;
};

struct InfoLineScene {
    std::vector<InfoGroup> left, right;

    friend bool operator==(const InfoLineScene &, const InfoLineScene &) = default;
};

InfoLineScene infoLineScene(const AudioEditorState &state, const std::optional<WaveformHover> &pointer, const FileFacts &facts);
// Puts how far long work has come, 0 … 1, before what the line tells of the file, where nothing else has to move for it.
void addProgress(InfoLineScene &scene, double fraction);
// The places at the left as one sentence, for a screen reader.
std::string spokenPlaces(const InfoLineScene &scene);
// "44.1 kHz"; "Mono", "Stereo", "6 channels".
std::string rateText(double sampleRate);
std::string channelsText(std::int64_t channels);

struct PlacedInfoText {
    InfoText text;
    int x = 0, width = 0;
};
// Where the texts that find room stand in a line of the given width. `measure` gives a text's width.
std::vector<PlacedInfoText> placedInfoTexts(const InfoLineScene &scene, int width,
                                            const std::function<int(const InfoText &)> &measure);

}  // namespace kiv
