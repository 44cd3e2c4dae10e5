#include "Audio/Files/AudioFileConversion.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cctype>
#include <set>
#include <tuple>

#include "Audio/Files/AudioFileCodec.h"
#include "Audio/Files/ByteFields.h"
#include "Audio/Files/FileFormats.h"
#include "Audio/Files/FormBuilder.h"
#include "Audio/Files/LoopChunks.h"
#include "Audio/Files/SoundNotes.h"
#include "Audio/Files/WrappingChunks.h"

namespace kiv::AudioFileCodec {
namespace {

using Container = AudioSaveFormat::Container;
using Kind = AudioSampleEncoding::Kind;

AudioSampleEncoding encodingOf(const AudioSaveFormat &format) {
    const bool isWav = format.container == Container::wav;
    return {.kind = format.isFloat ? Kind::floating : Kind::integer,
            .bytes = (format.bits + 7) / 8,
            .validBits = format.bits,
            .bigEndian = !isWav,
            .unsigned8 = isWav && format.bits == 8};
}

AudioFileFormat fileFormat(const AudioSaveFormat &format, const AudioEditorBuffer &buffer) {
    const bool isWav = format.container == Container::wav;
    const AudioSampleEncoding encoding = encodingOf(format);
    return {.container = isWav ? AudioContainer::wav : AudioContainer::aiff,
            .encoding = encoding,
            .sampleRate = double(buffer.sampleRate()),
            .typeName = isWav ? "WAV" : "AIFF",
            .bitsDescription = encoding.description(),
            .fileExtension = isWav ? "wav" : "aiff"};
}

// What depends on the sound's length and channels is left to the writers.
Bytes wavFormatPayload(const AudioFileFormat &format, const AudioEditorBuffer &buffer) {
    constexpr auto order = std::endian::little;
    const bool isFloat = format.encoding->kind == Kind::floating;
    Bytes fmt(FmtChunk::plainSize);
    putWord(std::span(fmt), FmtChunk::formatTag, order, std::uint16_t(isFloat ? FmtChunk::floatTag : FmtChunk::integerTag));
    putWord(std::span(fmt), FmtChunk::channels, order, std::uint16_t(buffer.channels()));
    putWord(std::span(fmt), FmtChunk::sampleRate, order, std::uint32_t(buffer.sampleRate()));
    putWord(std::span(fmt), FmtChunk::bitsPerSample, order, std::uint16_t(format.encoding->bytes * 8));
    return fmt;
}

Bytes aiffCommonPayload(const AudioFileFormat &format, const AudioEditorBuffer &buffer) {
    constexpr auto order = std::endian::big;
    constexpr int exponentBias = 16383;
    const auto rate = std::uint64_t(std::max<std::int64_t>(buffer.sampleRate(), 1));
    const int zeros = std::countl_zero(rate);
    Bytes comm(CommChunk::plainSize);
    putWord(std::span(comm), CommChunk::channels, order, std::uint16_t(buffer.channels()));
    putWord(std::span(comm), CommChunk::sampleSize, order, std::uint16_t(format.encoding->validBits));
    putWord(std::span(comm), CommChunk::sampleRate, order, std::uint16_t(exponentBias + 63 - zeros));
    putWord(std::span(comm), CommChunk::sampleRate + 2, order, rate << zeros);
    return comm;
}

struct FormIds {
    const char *format, *audio;
    Bytes (*payload)(const AudioFileFormat &format, const AudioEditorBuffer &buffer);
};
FormIds formIds(const AudioFileFormat &format) {
    if (format.container == AudioContainer::wav) return {"fmt ", "data", wavFormatPayload};
    return {"COMM", "SSND", aiffCommonPayload};
}

// An extensible format says which speaker each channel is for; the plain one leaves it to the usual order.
bool namesUnusualSpeakers(const AudioFileContents &contents) {
    constexpr auto order = std::endian::little;
    const AudioFileChunk *fmt = firstChunk(contents, "fmt ");
    if (!fmt || fmt->data.size() < FmtChunk::extensibleSize) return false;
    const std::uint32_t mask = u32At(fmt->data, FmtChunk::channelMask, order);
    constexpr std::uint32_t centre = 4, leftAndRight = 3;
    const std::uint32_t usual = contents.buffer.channels() == 1 ? centre : contents.buffer.channels() == 2 ? leftAndRight : 0;
    return u16At(fmt->data, FmtChunk::formatTag, order) == FmtChunk::extensibleTag && mask != 0 && mask != usual;
}

// AIFF can say a rate of 22254.5454 Hz; where the format is made anew it becomes a whole number.
bool hasWholeRate(const AudioFileContents &contents) {
    return contents.format.sampleRate == double(contents.buffer.sampleRate());
}

// The same kind of file with other samples: all chunks stay but the one that says what the samples are.
void exchangeFormat(AudioFileContents &contents) {
    const FormIds ids = formIds(contents.format);
    const auto isVersion = [](const AudioFileChunk &chunk) { return chunk.id == "FVER"; };
    if (contents.format.container == AudioContainer::aiff) std::erase_if(contents.chunks, isVersion);
    AudioFileChunk &chunk = chunkOrNew(contents, ids.format, {});
    chunk.data = ids.payload(contents.format, contents.buffer);
}

// A file with nothing in it but its format and the samples.
void startAnew(AudioFileContents &contents) {
    contents.chunks.clear();
    contents.leading.clear();
    contents.trailing.clear();
    contents.flacMetadata.clear();
    contents.coreAudioSettings.reset();
    contents.wrapping.reset();
    contents.tags = {};
    if (contents.format.container == AudioContainer::coreAudio) return;
    const FormIds ids = formIds(contents.format);
    addChunk(contents, ids.format, ids.payload(contents.format, contents.buffer));
    addChunk(contents, ids.audio, {});
}

// Nothing in the chunks names the loop any more, or nothing will.
void forgetLoop(AudioFileContents &contents) {
    const AudioFileLoop loop = *std::exchange(contents.loop, std::nullopt);
    for (const std::int64_t index : {std::max(loop.start, loop.end), std::min(loop.start, loop.end)})
        contents.positions.erase(contents.positions.begin() + index);
}

// What a decoder has found in an ID3 tag that FLAC has no place for as a whole.
void addDecodedTags(SoundNotes &notes, const AudioFileTags &tags) {
    notes.pictures = tags.pictures;
    for (const auto &text : tags.texts) {
        const auto isIt = [&](const auto &each) { return each.first == text.first; };
        if (std::ranges::none_of(notes.texts, isIt)) notes.texts.push_back(text);
    }
}

Conversion toFlac(AudioFileContents contents, int bits) {
    Conversion result{std::move(contents), {}};
    AudioFileContents &flac = result.contents;
    const bool wasFlac = flac.decodedSetting(formatIdentifierKey) == "flac", losesRate = !hasWholeRate(flac);
    SoundNotes notes = soundNotes(flac);
    if (flac.format.container != AudioContainer::coreAudio && !notes.id3.empty()) addDecodedTags(notes, flac.tags);
    const AudioFileContents was = flac;
    if (flac.loop) forgetLoop(flac);
    flac.format = {.container = AudioContainer::coreAudio,
                   .encoding = std::nullopt,
                   .sampleRate = double(flac.buffer.sampleRate()),
                   .typeName = "FLAC",
                   .bitsDescription = std::to_string(bits) + "-bit",
                   .fileExtension = "flac"};
    startAnew(flac);
    flac.coreAudioSettings = {{formatIdentifierKey, "flac"}, {bitDepthKey, std::to_string(bits)}};
    if (wasFlac)
        std::tie(flac.flacMetadata, flac.leading, flac.trailing) = std::tie(was.flacMetadata, was.leading, was.trailing);
    else
        result.left = putFlacNotes(flac, notes);
    if (losesRate) result.left.push_back("the exact sample rate");
    return result;
}

bool isSameKind(const AudioFileFormat &from, const AudioFileFormat &to) {
    const auto kind = [](AudioContainer container) {
        return container == AudioContainer::aifc ? AudioContainer::aiff : container;
    };
    return kind(from.container) == kind(to.container);
}

Conversion toForm(AudioFileContents contents, const AudioSaveFormat &format) {
    Conversion result{std::move(contents), {}};
    AudioFileContents &form = result.contents;
    const bool losesSpeakers = namesUnusualSpeakers(form), losesRate = !hasWholeRate(form);
    const AudioFileFormat to = fileFormat(format, form.buffer);
    if (isSameKind(form.format, to)) {
        form.format = to;
        exchangeFormat(form);
    } else {
        const SoundNotes notes = soundNotes(form);
        form.format = to;
        startAnew(form);
        result.left = format.container == Container::wav ? putWavNotes(form, notes) : putAiffNotes(form, notes);
    }
    if (losesSpeakers) result.left.push_back("which speaker each channel is for");
    if (losesRate) result.left.push_back("the exact sample rate");
    return result;
}

int atLeast(int bits, std::initializer_list<int> offered) {
    const auto found = std::ranges::find_if(offered, [=](int each) { return each >= bits; });
    return found == offered.end() ? *(offered.end() - 1) : *found;
}

// The chunks that only such a file has, and that say more than its sizes.
void nameUnshown(const SampleWrapping &wrapping, std::vector<std::string> &left) {
    const auto isPlain = [](unsigned char c) { return c >= ' ' && c < 0x7F; };
    for (const SampleWrapping::Part &part : wrapping.parts) {
        const std::string &id = part.chunk.id;
        if (id.empty() || id == "ds64" || isInFormView(wrapping, part)) continue;
        left.push_back(std::ranges::all_of(id, isPlain) ? quotedId(id) : "further chunks");
    }
}

// What is put together as a WAV or AIFF file is goes on as one.
Conversion unwrapped(const AudioFileContents &contents, const SampleWrapping &wrapping, const AudioSaveFormat &format) {
    AudioFileContents view = formView(contents, wrapping);
    std::vector<std::string> gone;
    if (wrapping.kind == SampleWrapping::Kind::rifx) gone = eraseUnswapped(view);
    for (AudioFileChunk &chunk : view.chunks)
        if (chunk.id == "fact" && wrapping.kind == SampleWrapping::Kind::w64) chunk.data.resize(4);
    if (format.container == Container::flac) view.tags = {contents.tags.texts, contents.tags.pictures, {}, {}, {}};
    Conversion result = converted(std::move(view), format);
    for (const std::string &id : gone) result.left.push_back(quotedId(id));
    nameUnshown(wrapping, result.left);
    return result;
}

Conversion convertedByKind(AudioFileContents contents, const AudioSaveFormat &format) {
    const auto &wrapping = contents.wrapping ? contents.wrapping : contents.tags.around;
    if (wrapping && wrapping->isFormLike()) return unwrapped(contents, *wrapping, format);
    return format.container == Container::flac ? toFlac(std::move(contents), format.bits) : toForm(std::move(contents), format);
}

}  // namespace

// A file may have the same several times.
Conversion converted(AudioFileContents contents, const AudioSaveFormat &format) {
    if (format.matches(contents.format)) return {std::move(contents), {}};
    Conversion result = convertedByKind(std::move(contents), format);
    std::set<std::string> named;
    std::erase_if(result.left, [&](const std::string &what) { return !named.insert(what).second; });
    return result;
}

// What comes of a decoder that loses something has no depth of its own; 24 bits hold more of it than anybody hears.
AudioSaveFormat nearestSaveFormat(const AudioFileContents &contents) {
    const auto &encoding = contents.format.encoding;
    if (encoding && encoding->kind == Kind::floating) return {Container::wav, 32, true};
    if (encoding && contents.format.container == AudioContainer::wav)
        return {Container::wav, atLeast(encoding->validBits, {8, 16, 24, 32})};
    if (encoding) return {Container::aiff, atLeast(encoding->validBits, {8, 16, 24, 32})};
    if (contents.format.bitsDescription.ends_with("float")) return {Container::wav, 32, true};
    const std::string depth = contents.decodedSetting(bitDepthKey);
    const int bits = depth.empty() || depth == "0" ? 24 : std::stoi(depth);
    const bool isFlac = contents.decodedSetting(formatIdentifierKey) == "flac" && bits <= 24;
    if (isFlac) return {Container::flac, atLeast(bits, {16, 24})};
    return {Container::wav, atLeast(bits, {8, 16, 24, 32})};
}

bool isPartWritable(const AudioEditorBuffer &part, const AudioFileContents &contents) {
    return contents.wrapping ? contents.wrapping->channels == part.channels() : contents.canSaveInPlace();
}

std::string partExtension(const AudioFileFormat &format) {
    if (!format.fileExtension.empty()) return format.fileExtension;
    std::string name = format.typeName;
    std::ranges::transform(name, name.begin(), [](unsigned char c) { return char(std::tolower(c)); });
    return name;
}

AudioFileContents partContents(AudioEditorBuffer part, const AudioFileContents &contents) {
    const std::string depth = contents.decodedSetting(bitDepthKey);
    const bool isWritable = isPartWritable(part, contents);
    AudioFileContents bare = bareContents(std::move(part), contents);
    if (isWritable) {
        bare.format.fileExtension = partExtension(bare.format);
        return bare;
    }
    const bool isDeep = !depth.empty() && std::stoi(depth) > 16;
    return converted(std::move(bare), {Container::wav, isDeep ? 24 : 16}).contents;
}

}  // namespace kiv::AudioFileCodec
