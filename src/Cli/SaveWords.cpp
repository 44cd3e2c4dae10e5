#include "Cli/SaveWords.h"

#include <algorithm>

namespace kiv::Cli {

namespace {

using enum AudioSaveFormat::Container;

struct SaveWord {
    std::string_view word;
    AudioSaveFormat format;
};

constexpr SaveWord words[] = {
    {"wav8", {wav, 8}},          {"wav16", {wav, 16}},   {"wav24", {wav, 24}},   {"wav32", {wav, 32}},
    {"wav32f", {wav, 32, true}}, {"aiff8", {aiff, 8}},   {"aiff16", {aiff, 16}}, {"aiff24", {aiff, 24}},
    {"aiff32", {aiff, 32}},      {"flac16", {flac, 16}}, {"flac24", {flac, 24}},
};

}  // namespace

std::optional<AudioSaveFormat> parseSaveFormat(std::string_view word) {
    const auto row = std::ranges::find(words, word, &SaveWord::word);
    return row == std::end(words) ? std::nullopt : std::optional(row->format);
}

std::string saveFormatNames() {
    std::string names;
    for (const SaveWord &row : words) names += (names.empty() ? "" : " ") + std::string(row.word);
    return names;
}

}  // namespace kiv::Cli
