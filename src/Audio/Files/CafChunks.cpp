#include "Audio/Files/CafChunks.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <map>
#include <string_view>

#include "Audio/Files/ByteFields.h"
#include "Audio/Files/PositionTable.h"
#include "Audio/Files/SoundNotes.h"

namespace kiv {
namespace {

constexpr auto order = std::endian::big;

// "mark" and "regn" begin with a kind of clock and a count. Each region is a header and markers.
constexpr std::size_t listHeader = 8, regionHeader = 12, regionMarkers = 8, marker = 28;
constexpr std::size_t framePosition = 4, markerId = 12;  // inside a marker: a 64-bit float, u32

class CafPositions {
public:
    CafPositions(AudioFileContents &contents, SampleWrapping &wrapping)
        : wrapping_(wrapping), table_(contents, wrapping_.frames), frames_(double(wrapping_.frames)) {}

    void collect() {
        for (SampleWrapping::Part &part : wrapping_.parts) {
            const bool isMarkers = part.chunk.id == "mark";
            if ((!isMarkers && part.chunk.id != "regn") || part.chunk.data.size() < listHeader) continue;
            if (u32At(part.chunk.data, 0, order) != 0) wrapping_.countsFrames = true;
            const std::size_t count = u32At(part.chunk.data, 4, order);
            isMarkers ? void(readMarkers(part.chunk, listHeader, count)) : readRegions(part.chunk, count);
        }
    }

private:
    static bool fits(const AudioFileChunk &chunk, std::size_t at, std::size_t size) {
        return at <= chunk.data.size() && size <= chunk.data.size() - at;
    }

    // As many as it says, or as are there; returns where they end.
    std::size_t readMarkers(AudioFileChunk &chunk, std::size_t at, std::size_t count) {
        for (; count > 0 && fits(chunk, at, marker); --count, at += marker) {
            const double stored = std::bit_cast<double>(wordAt<std::uint64_t>(chunk.data, at + framePosition, order));
            const double frame = stored > 0 ? std::min(std::floor(stored), frames_) : 0;
            chunk.fields.push_back({.offset = std::uint32_t(at + framePosition),
                                    .index = table_.add(std::int64_t(frame)),
                                    .kind = AudioFilePositionField::Kind::real,
                                    .bigEndian = true});
        }
        return at;
    }

    void readRegions(AudioFileChunk &chunk, std::size_t count) {
        for (std::size_t at = listHeader; count > 0 && fits(chunk, at, regionHeader); --count)
            at = readMarkers(chunk, at + regionHeader, u32At(chunk.data, at + regionMarkers, order));
    }

    SampleWrapping &wrapping_;
    PositionTable table_;
    const double frames_;
};

std::string_view textAt(std::span<const std::byte> bytes, std::size_t at) {
    if (at >= bytes.size()) return {};
    const std::string_view rest(reinterpret_cast<const char *>(bytes.data()) + at, bytes.size() - at);
    return rest.substr(0, rest.find('\0'));
}

// The texts of a "strg" chunk by their number: a table of places, then the texts. Many may stand at one place.
using Names = std::map<std::uint32_t, std::string_view>;
void readNames(const Bytes &strg, Names &names) {
    constexpr std::size_t header = 4, entry = 12;
    if (strg.size() < header) return;
    const std::size_t fitting = (strg.size() - header) / entry, count = u32At(strg, 0, order);
    if (count > fitting) return;
    const auto texts = std::span<const std::byte>(strg).subspan(header + count * entry);
    for (std::size_t i = 0; i < count; ++i) {
        const auto place = wordAt<std::uint64_t>(strg, header + i * entry + 4, order);
        if (place >= texts.size()) continue;
        const auto text = texts.subspan(std::size_t(place));
        names[u32At(strg, header + i * entry, order)] = textAt(text.first(std::min(text.size(), longestCafName)), 0);
    }
}

constexpr std::array<std::pair<std::string_view, const char *>, 9> keys{{{"title", "TITLE"},
                                                                         {"artist", "ARTIST"},
                                                                         {"album", "ALBUM"},
                                                                         {"comments", "COMMENT"},
                                                                         {"copyright", "COPYRIGHT"},
                                                                         {"year", "DATE"},
                                                                         {"genre", "GENRE"},
                                                                         {"track number", "TRACKNUMBER"},
                                                                         {"encoding application", "ENCODER"}}};

// A key and its text, each with a zero behind.
void readTexts(const Bytes &info, std::vector<std::pair<std::string, std::string>> &texts) {
    for (std::size_t at = 4; at < info.size();) {
        const std::string_view key = textAt(info, at);
        const std::string_view text = textAt(info, at + key.size() + 1);
        at += key.size() + text.size() + 2;
        const auto known = std::ranges::find(keys, key, &std::pair<std::string_view, const char *>::first);
        const std::string name(known == keys.end() ? key : known->second);
        if (!key.empty() && !text.empty()) texts.emplace_back(name, noteText(std::as_bytes(std::span(text))));
    }
}

}  // namespace

void collectCafPositions(AudioFileContents &contents, SampleWrapping &wrapping) { CafPositions(contents, wrapping).collect(); }

std::vector<std::string> cafNames(const AudioFileContents &contents, const SampleWrapping &wrapping) {
    std::vector<std::string> names(contents.positions.size());
    Names texts;
    for (const SampleWrapping::Part &part : wrapping.parts)
        if (part.chunk.id == "strg") readNames(part.chunk.data, texts);
    for (const SampleWrapping::Part &part : wrapping.parts)
        for (const AudioFilePositionField &field : part.chunk.fields) {
            const auto text = texts.find(u32At(part.chunk.data, field.offset - framePosition + markerId, order));
            if (text != texts.end()) names[field.index] = text->second;
        }
    return names;
}

std::vector<std::pair<std::string, std::string>> cafTexts(const SampleWrapping &wrapping) {
    std::vector<std::pair<std::string, std::string>> texts;
    for (const SampleWrapping::Part &part : wrapping.parts)
        if (part.chunk.id == "info") readTexts(part.chunk.data, texts);
    return texts;
}

}  // namespace kiv
