#include "Audio/Files/WrappingChunks.h"

#include <algorithm>
#include <array>
#include <span>
#include <string_view>
#include <utility>

#include "Audio/Files/ByteFields.h"
#include "Audio/Files/WavMetadata.h"
#include "Audio/Files/WrappingDialects.h"

namespace kiv {
namespace {

using Part = SampleWrapping::Part;

// The widths of numbers that follow one another; below 0: bytes that are none.
using Layout = std::span<const int>;

constexpr int format[] = {2, 2, 4, 4, 2, 2, 2, 2, 4, 2}, word[] = {4}, sampler[] = {4, 4, 4, 4, 4, 4, 4, 4, 4};
constexpr int cueRecord[] = {4, 4, -4, 4, 4, 4}, loopRecord[] = {4, 4, 4, 4, 4, 4}, text[] = {4, 4, -4, 2, 2, 2, 2};

// Swaps as many as are there.
void swapNumbers(std::span<std::byte> data, std::size_t at, Layout layout) {
    for (const int width : layout) {
        const auto bytes = std::size_t(std::abs(width));
        if (at > data.size() || bytes > data.size() - at) return;
        if (width > 0) std::reverse(data.begin() + std::ptrdiff_t(at), data.begin() + std::ptrdiff_t(at + bytes));
        at += bytes;
    }
}

void swapRecords(std::span<std::byte> data, std::size_t at, std::size_t size, std::size_t count, Layout layout) {
    for (; count > 0 && at < data.size() && data.size() - at >= size; --count, at += size) swapNumbers(data, at, layout);
}

void swapList(std::span<std::byte> data, std::endian from) {
    if (data.size() < 4) return;
    const bool isMarkers = idAt(data, 0) == "adtl";
    for (std::size_t at = 4; at < data.size() && data.size() - at >= 8;) {
        const std::size_t size = u32At(data, at + 4, from), left = data.size() - at - 8;
        const auto payload = data.subspan(at + 8, std::min(size, left));
        swapNumbers(data, at + 4, word);
        if (isMarkers) swapNumbers(payload, 0, idAt(data, at) == "ltxt" ? Layout(text) : Layout(word));
        at += 8 + size + (size & 1);
    }
}

bool isSwapped(const std::string &id) {
    static constexpr std::array<std::string_view, 5> swapped{"fmt ", "fact", "cue ", "smpl", "LIST"};
    return std::ranges::find(swapped, id) != swapped.end();
}

// The numbers of a chunk in the other order; `from` is the one they are in.
void swap(AudioFileChunk &chunk, std::endian from) {
    const auto data = std::span(chunk.data);
    const std::size_t count = data.size() >= 4 ? u32At(data, 0, from) : 0, loops = SmplChunk::records(data, from);
    if (chunk.id == "fmt ") swapNumbers(data, 0, format);
    if (chunk.id == "LIST") swapList(data, from);
    if (chunk.id == "fact" || chunk.id == "cue ") swapNumbers(data, 0, word);
    if (chunk.id == "cue ") swapRecords(data, CueChunk::header, CueChunk::record, count, cueRecord);
    if (chunk.id == "smpl") swapNumbers(data, 0, sampler);
    if (chunk.id == "smpl") swapRecords(data, SmplChunk::header, SmplChunk::record, loops, loopRecord);
    for (AudioFilePositionField &field : chunk.fields) field.bigEndian = from == std::endian::little;
}

bool isSwappedWav(const SampleWrapping &wrapping) { return wrapping.kind == SampleWrapping::Kind::rifx; }

Part newPart(AudioFileChunk chunk, const WrappingDialect &dialect) {
    Part part;
    append(part.header, chunk.id);
    append(part.header, dialect.idRest);
    part.isBare = false;
    part.chunk = std::move(chunk);
    return part;
}

void pad(Part &part, const WrappingDialect &dialect) {
    const auto size = std::int64_t(part.chunk.data.size());
    part.pad.assign(std::size_t((dialect.alignment - size % dialect.alignment) % dialect.alignment), std::byte{0});
}

// A chunk whose payload has another size says so, and ends where another can begin.
void setSize(Part &part, const WrappingDialect &dialect) {
    const std::int64_t size = std::int64_t(part.chunk.data.size()) + dialect.countedHeader;
    part.header.resize(std::size_t(dialect.header()));
    if (dialect.sizeBytes == 8)
        putWord(std::span(part.header), dialect.idBytes, dialect.order, std::uint64_t(size));
    else
        putWord(std::span(part.header), dialect.idBytes, dialect.order, std::uint32_t(size));
    pad(part, dialect);
}

void takeChunk(Part &part, AudioFileChunk chunk, const SampleWrapping &wrapping) {
    if (isSwappedWav(wrapping)) swap(chunk, std::endian::little);
    const bool isResized = chunk.data.size() != part.chunk.data.size();
    part.chunk = std::move(chunk);
    if (isResized) setSize(part, *dialectOf(wrapping.kind));
}

AudioFileFormat viewFormat(const AudioFileContents &contents, const SampleWrapping &wrapping) {
    const bool isAifc = wrapping.kind == SampleWrapping::Kind::aifc;
    AudioFileFormat seen{.container = isAifc ? AudioContainer::aifc : AudioContainer::wav,
                         .encoding = std::nullopt,
                         .sampleRate = contents.format.sampleRate,
                         .typeName = isAifc ? "AIFC" : "WAV",
                         .bitsDescription = "",
                         .fileExtension = isAifc ? "aifc" : "wav"};
    if (!contents.wrapping) return seen;
    seen.encoding = wrapping.encoding;
    seen.encoding->bigEndian = false;
    seen.bitsDescription = seen.encoding->description();
    return seen;
}

}  // namespace

// W64 has chunks of its own, which go by other numbers than those of a WAV file.
bool isInFormView(const SampleWrapping &wrapping, const Part &part) {
    const std::string_view rest = dialectOf(wrapping.kind)->idRest;
    const auto *const header = reinterpret_cast<const char *>(part.header.data());
    const bool isKnown = part.header.size() >= 4 + rest.size() && std::string_view(header + 4, rest.size()) == rest;
    return isKnown && !part.chunk.id.empty() && part.chunk.id != "ds64";
}

AudioFileContents formView(const AudioFileContents &contents, const SampleWrapping &wrapping) {
    AudioFileContents view;
    view.format = viewFormat(contents, wrapping);
    view.buffer = contents.buffer;
    view.positions = contents.positions;
    view.loop = contents.loop;
    for (const Part &part : wrapping.parts) {
        if (part.chunk.id.empty() && !part.chunk.data.empty()) view.trailing = part.chunk.data;
        if (!isInFormView(wrapping, part)) continue;
        view.chunks.push_back(part.chunk);
        if (isSwappedWav(wrapping)) swap(view.chunks.back(), std::endian::big);
    }
    return view;
}

void takeFormView(AudioFileContents &contents, SampleWrapping &wrapping, AudioFileContents view) {
    const WrappingDialect &dialect = *dialectOf(wrapping.kind);
    auto chunk = view.chunks.begin();
    for (Part &part : wrapping.parts)
        if (isInFormView(wrapping, part)) takeChunk(part, std::move(*chunk++), wrapping);
    const bool endsOpen = !wrapping.parts.empty() && wrapping.parts.back().chunk.id.empty();
    // Some writers leave out the zeros at the end.
    const bool isLastPadded = endsOpen || wrapping.parts.size() == wrapping.samplesBefore;
    if (chunk != view.chunks.end() && !isLastPadded) pad(wrapping.parts.back(), dialect);
    for (; chunk != view.chunks.end(); ++chunk) {
        Part part = newPart(std::move(*chunk), dialect);
        setSize(part, dialect);
        if (isSwappedWav(wrapping)) swap(part.chunk, std::endian::little);
        const auto end = wrapping.parts.end() - (endsOpen && wrapping.parts.size() > wrapping.samplesBefore);
        wrapping.parts.insert(end, std::move(part));
        wrapping.alignment = dialect.alignment;
    }
    contents.positions = std::move(view.positions);
    contents.loop = view.loop;
}

std::vector<std::string> eraseUnswapped(AudioFileContents &view) {
    static constexpr std::array<std::string_view, 13> plain{"data", "inst", "iXML", "JUNK", "junk", "PAD ", "FLLR",
                                                            "id3 ", "ID3 ", "axml", "_PMX", "umid", "chna"};
    std::vector<std::string> gone;
    std::erase_if(view.chunks, [&](const AudioFileChunk &chunk) {
        const bool stays = isSwapped(chunk.id) || std::ranges::find(plain, chunk.id) != plain.end();
        if (!stays) gone.push_back(chunk.id);
        return !stays;
    });
    return gone;
}

}  // namespace kiv
