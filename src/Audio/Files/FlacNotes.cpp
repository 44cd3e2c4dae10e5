#include <algorithm>
#include <array>
#include <cctype>
#include <iterator>

#include "Audio/Files/ByteFields.h"
#include "Audio/Files/FlacMetadata.h"
#include "Audio/Files/SoundNotes.h"

// The tags of a FLAC file: a block of texts "KEY=value" behind the name of the program that wrote them (the Vorbis comment).
namespace kiv {
namespace {

constexpr auto order = std::endian::little;

void appendText(Bytes &to, std::string_view text) {
    std::array<std::byte, 4> length;
    putWord(std::span<std::byte>(length), 0, order, std::uint32_t(text.size()));
    append(to, length);
    append(to, text);
}

// Takes a text with its length off the front; nothing when it is cut off.
std::optional<std::string> takeText(std::span<const std::byte> &from) {
    if (from.size() < 4) return std::nullopt;
    const std::size_t length = u32At(from, 0, order);
    if (length > from.size() - 4) return std::nullopt;
    const auto bytes = from.subspan(4, length);
    from = from.subspan(4 + length);
    return std::string(reinterpret_cast<const char *>(bytes.data()), bytes.size());
}

void readTags(std::span<const std::byte> block, SoundNotes &notes) {
    if (!takeText(block) || block.size() < 4) return;
    block = block.subspan(4);  // the count, which the end of the block tells as well
    while (const auto tag = takeText(block)) {
        const std::size_t equals = std::min(tag->find('='), tag->size());
        std::string key = tag->substr(0, equals);
        std::ranges::transform(key, key.begin(), [](unsigned char c) { return char(std::toupper(c)); });
        notes.texts.emplace_back(key, equals < tag->size() ? tag->substr(equals + 1) : "");
    }
}

// Texts that a block has no room for are named.
Bytes tagsPayload(const SoundNotes &notes, std::vector<std::string> &left) {
    Bytes tags;
    appendText(tags, "Kiv Audio Editor");
    const std::size_t countAt = tags.size();
    tags.resize(countAt + 4);
    std::uint32_t count = 0;
    for (const auto &[key, text] : notes.texts) {
        const std::string tag = key + "=" + text;
        const bool fits = tag.size() + 4 <= FlacMetadataBlock::mostBytes - tags.size();
        fits ? void(++count) : left.push_back(key);
        if (fits) appendText(tags, tag);
    }
    putWord(std::span(tags), countAt, order, count);
    return tags;
}

void putPictures(AudioFileContents &contents, const SoundNotes &notes, std::vector<std::string> &left) {
    const auto fits = [](const FlacMetadataBlock &picture) { return picture.data.size() <= FlacMetadataBlock::mostBytes; };
    std::ranges::copy_if(notes.pictures, std::back_inserter(contents.flacMetadata), fits);
    if (!std::ranges::all_of(notes.pictures, fits)) left.push_back("pictures");
}

}  // namespace

SoundNotes flacNotes(const AudioFileContents &contents) {
    SoundNotes notes;
    notes.texts = contents.tags.texts;
    notes.pictures = contents.tags.pictures;
    notes.id3 = contents.leading.empty() ? contents.tags.id3 : contents.leading;
    notes.isAllInId3 = !contents.tags.id3.empty();
    notes.others = contents.tags.others;
    for (const FlacMetadataBlock &block : contents.flacMetadata) {
        if (block.type == FlacMetadataBlock::tags) readTags(block.data, notes);
        if (block.type == FlacMetadataBlock::picture) notes.pictures.push_back(block);
    }
    if (!contents.trailing.empty()) notes.others.push_back("what stood behind the end");
    const auto isOther = [](const FlacMetadataBlock &block) { return block.type == FlacMetadataBlock::application; };
    if (std::ranges::any_of(contents.flacMetadata, isOther)) notes.others.push_back("what programs keep in the file");
    for (std::uint32_t i = 0; i < contents.positions.size(); ++i)
        if (!contents.loop || (contents.loop->start != i && contents.loop->end != i)) notes.markers.push_back({i, ""});
    return notes;
}

std::vector<std::string> putFlacNotes(AudioFileContents &contents, const SoundNotes &notes) {
    std::vector<std::string> left = eachOnce(notes.others);
    if (!notes.markers.empty()) left.insert(left.begin(), "markers");
    if (notes.instrument) left.push_back("the instrument’s settings");
    if (!notes.id3.empty() && !notes.isAllInId3) left.push_back(quotedId("ID3 "));
    if (!notes.texts.empty()) contents.flacMetadata.push_back({FlacMetadataBlock::tags, tagsPayload(notes, left)});
    putPictures(contents, notes, left);
    return left;
}

}  // namespace kiv
