#include "Audio/Files/AudioFileContents.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <string_view>

namespace kiv {
namespace {

template <std::size_t count>
bool isOneOf(const std::array<std::string_view, count> &ids, std::string_view id) {
    return std::find(ids.begin(), ids.end(), id) != ids.end();
}

bool isLoopEntry(const AudioFileContents &contents, std::size_t index) {
    return contents.loop && (std::int64_t(index) == contents.loop->start || std::int64_t(index) == contents.loop->end);
}

// How many bytes follow a leading byte of UTF-8, and what the first of them may be: the bounds keep out overlong forms,
// surrogates and what lies above U+10FFFF.
struct Utf8Lead {
    int following = 0;
    unsigned lowest = 0x80, highest = 0xBF;
};

std::optional<Utf8Lead> utf8Lead(unsigned byte) {
    if (byte < 0x80) return Utf8Lead{0};
    if (byte >= 0xC2 && byte <= 0xDF) return Utf8Lead{1};
    if (byte >= 0xE0 && byte <= 0xEF) return Utf8Lead{2, byte == 0xE0 ? 0xA0u : 0x80u, byte == 0xED ? 0x9Fu : 0xBFu};
    if (byte >= 0xF0 && byte <= 0xF4) return Utf8Lead{3, byte == 0xF0 ? 0x90u : 0x80u, byte == 0xF4 ? 0x8Fu : 0xBFu};
    return std::nullopt;
}

// The length of the character that starts at `at`, or of what is there of it, and whether it is whole.
struct Utf8Part {
    std::size_t length = 1;
    bool valid = false;
};

Utf8Part utf8Part(std::string_view text, std::size_t at) {
    const auto lead = utf8Lead(static_cast<unsigned char>(text[at]));
    if (!lead) return {};
    Utf8Part part;
    unsigned lowest = lead->lowest, highest = lead->highest;
    for (int i = 0; i < lead->following; ++i, ++part.length) {
        if (at + part.length >= text.size()) return part;
        const auto byte = static_cast<unsigned char>(text[at + part.length]);
        if (byte < lowest || byte > highest) return part;
        lowest = 0x80, highest = 0xBF;
    }
    part.valid = true;
    return part;
}

}  // namespace

bool AudioFileContents::canSaveInPlace() const {
    return format.container != AudioContainer::coreAudio || wrapping || decodedSetting(formatIdentifierKey) == "flac";
}

bool AudioFileContents::canStoreLoop() const {
    return format.container != AudioContainer::coreAudio || (wrapping && wrapping->isFormLike());
}

std::string AudioFileContents::decodedSetting(const char *key) const {
    if (!coreAudioSettings) return "";
    const auto entry = coreAudioSettings->find(key);
    return entry == coreAudioSettings->end() ? "" : entry->second;
}

AudioFileEditorPositions editorPositions(const AudioFileContents &contents) {
    AudioFileEditorPositions result;
    for (std::size_t i = 0; i < contents.positions.size(); ++i)
        if (!isLoopEntry(contents, i)) result.markers.push_back(contents.positions[i]);
    if (contents.loop) {
        const auto at = [&](std::int64_t index) { return contents.positions.at(std::size_t(index)); };
        result.loop = FrameRange{at(contents.loop->start), at(contents.loop->end)};
    }
    return result;
}

AudioFileContents withEditorPositions(AudioFileContents contents, const std::vector<std::int64_t> &markers,
                                      std::optional<FrameRange> loop) {
    auto marker = markers.begin();
    for (std::size_t i = 0; i < contents.positions.size(); ++i)
        if (!isLoopEntry(contents, i) && marker != markers.end()) contents.positions[i] = *marker++;
    assert(marker == markers.end());
    if (contents.loop && loop) {
        contents.positions.at(std::size_t(contents.loop->start)) = loop->lo;
        contents.positions.at(std::size_t(contents.loop->end)) = loop->hi;
    }
    return contents;
}

bool isBareChunkId(const std::string &id) {
    static constexpr std::array<std::string_view, 6> bare{"fmt ", "fact", "data", "FVER", "COMM", "SSND"};
    return isOneOf(bare, id);
}

bool isStaleChunkId(const std::string &id) {
    static constexpr std::array<std::string_view, 5> stale{"PEAK", "peak", "levl", "md5 ", "MD5 "};
    return isOneOf(stale, id);
}

std::string displayText(const std::string &chunkId) {
    std::string text;
    for (std::size_t at = 0; at < chunkId.size();) {
        const Utf8Part part = utf8Part(chunkId, at);
        text += part.valid ? chunkId.substr(at, part.length) : "\uFFFD";
        at += part.length;
    }
    return text;
}

}  // namespace kiv
