#include "Document/DecodedFile.h"

#include <algorithm>
#include <array>
#include <future>
#include <string_view>
#include <vector>

#include "Audio/Files/ByteFields.h"
#include "Audio/Files/FlacMetadata.h"
#include "Audio/Files/PackedWrapping.h"
#include "Audio/Files/TagsAtEnd.h"
#include "Document/DecodedSamples.h"

namespace kiv {
namespace {

// Only what comes back exactly has a depth worth telling.
std::string bitsDescription(const DecodedFormat &format) {
    if (format.bits == 0) return "";
    return std::to_string(format.bits) + (format.isFloat ? "-bit float" : "-bit");
}

AudioFileContents described(const DecodedFormat &format, const std::string &path) {
    AudioFileContents contents;
    contents.format = {.container = AudioContainer::coreAudio,
                       .encoding = std::nullopt,
                       .sampleRate = double(format.sampleRate),
                       .typeName = format.typeName,
                       .bitsDescription = bitsDescription(format),
                       .fileExtension = pathExtension(path)};
    contents.coreAudioSettings = {{formatIdentifierKey, format.identifier}, {bitDepthKey, std::to_string(format.bits)}};
    contents.buffer = AudioEditorBuffer(format.channels, format.sampleRate);
    return contents;
}

// The tag in front of the sound of an MP3 file, whole.
Bytes id3Of(const ByteSource &source) {
    constexpr std::int64_t header = 10;
    std::array<std::byte, header> head{};
    if (source.read(0, head) < head.size() || idAt(head, 0).substr(0, 3) != "ID3") return {};
    const auto at = [&](std::size_t i) { return std::to_integer<std::int64_t>(head[i]); };
    const std::int64_t footer = at(5) & 0x10 ? header : 0;
    const std::int64_t size = header + (at(6) << 21 | at(7) << 14 | at(8) << 7 | at(9)) + footer;
    Bytes tag(std::size_t(std::min(size, source.size())));
    return source.read(0, tag) == std::size_t(size) ? tag : Bytes();
}

void appendText(Bytes &to, std::string_view text) {
    const std::size_t at = to.size();
    to.resize(at + 4);
    putWord(std::span(to), at, std::endian::big, std::uint32_t(text.size()));
    append(to, text);
}

// As FLAC files hold it: what it shows, of which sort it is, what is said of it, its measures, which may be left open.
FlacMetadataBlock blockOf(const DecodedPicture &picture) {
    constexpr std::array<std::string_view, 21> kinds{"Other",
                                                     "32x32 pixels 'file icon'",
                                                     "Other file icon",
                                                     "Cover (front)",
                                                     "Cover (back)",
                                                     "Leaflet page",
                                                     "Media (e.g. label side of CD)",
                                                     "Lead artist/lead performer/soloist",
                                                     "Artist/performer",
                                                     "Conductor",
                                                     "Band/Orchestra",
                                                     "Composer",
                                                     "Lyricist/text writer",
                                                     "Recording Location",
                                                     "During recording",
                                                     "During performance",
                                                     "Movie/video screen capture",
                                                     "A bright coloured fish",
                                                     "Illustration",
                                                     "Band/artist logotype",
                                                     "Publisher/Studio logotype"};
    constexpr std::size_t measures = 16;
    const auto kind = std::ranges::find(kinds, picture.kind.empty() ? "Cover (front)" : picture.kind);
    Bytes block(4);
    putWord(std::span(block), 0, std::endian::big, std::uint32_t(kind == kinds.end() ? 0 : kind - kinds.begin()));
    appendText(block, picture.mediaType);
    appendText(block, picture.description);
    block.resize(block.size() + measures);
    appendText(block, {reinterpret_cast<const char *>(picture.data.data()), picture.data.size()});
    return {FlacMetadataBlock::picture, std::move(block)};
}

// A sound is not lost to what is said of it.
std::optional<DecodedTags> tagsOrWord(DecodedReader &decoders, const ByteSource &source) {
    try {
        return decoders.tags(source);
    } catch (const DecodeFault &) {
        return DecodedTags{{}, {}, {"damaged tags"}};
    }
}

// Who knows most of tags takes as long to be loaded as a minute of sound to be decoded: both are done at once where a thread is
// to be had. What a FLAC file says stays in its own blocks.
std::future<std::optional<DecodedTags>> tagsMeanwhile(const AudioFileContents &contents, DecodedReader &decoders,
                                                      const ByteSource &source) {
    if (contents.decodedSetting(formatIdentifierKey) == "flac") return {};
    return std::async([&decoders, &source] { return tagsOrWord(decoders, source); });
}

void takeTags(AudioFileContents &contents, const std::optional<DecodedTags> &tags, const ByteSource &source) {
    if (!tags) return;
    contents.tags = {tags->texts, {}, id3Of(source), tags->others, {}, {}};
    for (const DecodedPicture &picture : tags->pictures) contents.tags.pictures.push_back(blockOf(picture));
    const AudioFileTags &told = contents.tags;
    if (!told.id3.empty()) contents.tags.inId3 = {told.texts.size(), told.pictures.size(), told.others.size()};
    if (contents.decodedSetting(formatIdentifierKey).starts_with(".mp")) addTagsAtEnd(contents.tags, source);
}

// Opens the file and reads of it what is wanted.
template <class Result, class Read>
std::optional<Result> withSound(DecodedReader &decoders, const ByteSource &source, Read read) {
    try {
        const auto sound = decoders.open(source);
        if (!sound) return std::nullopt;
        return read(*sound);
    } catch (const DecodeFault &fault) {
        throw AudioFileError::unreadable(fault.what());
    }
}

void takeFaults(AudioFileContents &contents, const DecodedEnd &end) {
    contents.missingFrames = end.missingFrames;
    contents.damagedFrames = end.damagedFrames;
    contents.isCutOff = end.isCutOff;
}

void takeEnd(AudioFileContents &contents, const DecodedEnd &end, const ByteSource &source) {
    takeFaults(contents, end);
    const bool isFlac = contents.decodedSetting(formatIdentifierKey) == "flac";
    if (isFlac) contents.flacMetadata = AudioFileCodec::flacMetadata(source);
    if (isFlac && end.offset) keepAroundFlac(contents, source, *end.offset);
}

// For a file that cannot tell.
std::int64_t framesByReading(DecodedReader &decoders, const ByteSource &source, AudioFileContents &contents) {
    const auto sound = decoders.open(source);
    const std::int64_t frames = countByReading(*sound);
    takeFaults(contents, sound->end());
    return frames;
}

}  // namespace

std::string pathExtension(const std::string &path) {
    const std::string name = path.substr(path.find_last_of('/') + 1);
    const auto dot = name.find_last_of('.');
    return dot == std::string::npos || dot == 0 ? "" : name.substr(dot + 1);
}

std::optional<AudioFileContents> readDecoded(DecodedReader &decoders, const ByteSource &source, const std::string &path,
                                             Progress &progress) {
    CountedSource counted(source, progress);
    return withSound<AudioFileContents>(decoders, counted, [&](DecodedSound &sound) {
        AudioFileContents contents = described(sound.format(), path);
        auto tags = tagsMeanwhile(contents, decoders, source);
        DecodedSamples samples = readAllSamples(sound, counted);
        contents.buffer = std::move(samples.buffer);
        takeEnd(contents, samples.end, source);
        if (tags.valid()) takeTags(contents, tags.get(), source);
        keepAroundPacked(contents, contents.buffer.frames(), source);
        return contents;
    });
}

std::optional<AudioFileCodec::AudioFileSummary> summarizeDecoded(DecodedReader &decoders, const ByteSource &source,
                                                                 const std::string &path, Progress &progress) {
    using Summary = AudioFileCodec::AudioFileSummary;
    const CountedSource counted(source, progress);
    return withSound<Summary>(decoders, counted, [&](DecodedSound &sound) {
        Summary summary{described(sound.format(), path), 0};
        const auto told = sound.countFrames();
        summary.frames = told ? *told : framesByReading(decoders, counted, summary.contents);
        summary.contents.flacMetadata = AudioFileCodec::flacMetadata(source);
        keepAroundPacked(summary.contents, summary.frames, source);
        return summary;
    });
}

}  // namespace kiv
