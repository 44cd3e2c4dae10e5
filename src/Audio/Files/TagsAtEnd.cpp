#include "Audio/Files/TagsAtEnd.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <string>
#include <string_view>

#include "Audio/Files/ByteFields.h"
#include "Audio/Files/SoundNotes.h"
#include "Support/SoundTags.h"

namespace kiv {
namespace {

// An APE tag, without its header: items, each of two numbers, a key with a zero behind, and a value.
constexpr std::size_t apeEdge = 32, itemHeader = 8;
constexpr std::size_t apeSize = 12;  // u32 inside the footer: bytes of the items and of the footer

class EndReader {
public:
    EndReader(AudioFileTags &tags, const ByteSource &source) : tags_(tags), source_(source) {}

    void read() {
        const std::vector<SoundTag> found = tagsAtEnd(source_, endOfTagsAtStart(source_));
        for (const SoundTag::Kind kind : {SoundTag::Kind::ape, SoundTag::Kind::id3v1})  // which has no room for long texts
            for (const SoundTag &tag : found)
                if (tag.kind == kind) kind == SoundTag::Kind::ape ? readApe(bytesOf(tag)) : readId3v1(bytesOf(tag));
        for (const SoundTag &tag : found) {
            if (tag.kind == SoundTag::Kind::lyrics) tags_.others.push_back("lyrics");
            if (tag.kind == SoundTag::Kind::id3v2) tags_.others.push_back(quotedId("ID3 ") + " at the end");
        }
    }

private:
    Bytes bytesOf(const SoundTag &tag) const {
        Bytes bytes(std::size_t(tag.size));
        bytes.resize(source_.read(tag.start, bytes));
        return bytes;
    }

    void add(const std::string &key, const std::string &text) {
        const auto isIt = [&](const auto &each) { return each.first == key; };
        if (!text.empty() && std::ranges::none_of(tags_.texts, isIt)) tags_.texts.emplace_back(key, text);
    }

    void readApe(std::span<const std::byte> tag) {
        if (tag.size() < apeEdge) return;
        const std::size_t told = u32At(tag, tag.size() - apeEdge + apeSize, std::endian::little);
        std::span<const std::byte> items = tag.last(std::min(told, tag.size()));
        items = items.first(items.size() - std::min(apeEdge, items.size()));
        while (items.size() > itemHeader) {
            const std::size_t size = u32At(items, 0, std::endian::little), kind = u32At(items, 4, std::endian::little) >> 1 & 3;
            items = items.subspan(itemHeader);
            const auto end = std::ranges::find(items, std::byte{0});
            const auto length = std::size_t(end - items.begin());
            if (end == items.end() || size > items.size() - length - 1) return;
            takeItem({reinterpret_cast<const char *>(items.data()), length}, kind, items.subspan(length + 1, size));
            items = items.subspan(length + 1 + size);
        }
    }

    void takeItem(std::string_view name, std::size_t kind, std::span<const std::byte> value) {
        constexpr std::size_t words = 0;
        std::string key(name);
        std::ranges::transform(key, key.begin(), [](unsigned char c) { return char(std::toupper(c)); });
        if (key.starts_with("MP3GAIN_")) return;  // how the volume of that very file can be set back
        if (kind != words) return takeBytes(name, key.starts_with("COVER ART"), value);
        static constexpr std::array<std::pair<std::string_view, const char *>, 4> keys{
            {{"YEAR", "DATE"}, {"TRACK", "TRACKNUMBER"}, {"DISC", "DISCNUMBER"}, {"ALBUM ARTIST", "ALBUMARTIST"}}};
        const auto known = std::ranges::find(keys, key, &std::pair<std::string_view, const char *>::first);
        std::string text = noteText(value);
        for (std::size_t at = 0; (at = text.find('\0', at)) != std::string::npos; at += 2) text.replace(at, 1, "; ");
        add(known == keys.end() ? key : known->second, text);
    }

    // A picture has a name in front with a zero behind; the same one may stand elsewhere too.
    void takeBytes(std::string_view name, bool isPicture, std::span<const std::byte> value) {
        if (!isPicture) return tags_.others.push_back(quotedId(std::string(name)));
        const auto zero = std::ranges::find(value, std::byte{0});
        const auto picture = value.subspan(std::min(std::size_t(zero - value.begin()) + 1, value.size()));
        const auto isIt = [&](const FlacMetadataBlock &block) {
            return block.data.size() >= picture.size() && std::equal(picture.rbegin(), picture.rend(), block.data.rbegin());
        };
        if (std::ranges::none_of(tags_.pictures, isIt)) tags_.others.push_back("pictures");
    }

    // Texts of fixed lengths, filled up with zeros or blanks.
    void readId3v1(std::span<const std::byte> tag) {
        constexpr std::size_t size = 128, track = 126, genre = 127;
        if (tag.size() < size) return;
        tag = tag.last(size);
        const auto textAt = [&](std::size_t at, std::size_t length) {
            std::string text = noteText(tag.subspan(at, length));
            text = text.substr(0, text.find('\0'));
            return text.substr(0, text.find_last_not_of(' ') + 1);
        };
        const bool hasTrack = tag[track - 1] == std::byte{0} && tag[track] != std::byte{0};
        add("TITLE", textAt(3, 30));
        add("ARTIST", textAt(33, 30));
        add("ALBUM", textAt(63, 30));
        add("DATE", textAt(93, 4));
        add("COMMENT", textAt(97, hasTrack ? 28 : 30));
        if (hasTrack) add("TRACKNUMBER", std::to_string(std::to_integer<int>(tag[track])));
        if (tag[genre] != std::byte{0xFF}) add("GENRE", "(" + std::to_string(std::to_integer<int>(tag[genre])) + ")");
    }

    AudioFileTags &tags_;
    const ByteSource &source_;
};

}  // namespace

void addTagsAtEnd(AudioFileTags &tags, const ByteSource &source) { EndReader(tags, source).read(); }

}  // namespace kiv
