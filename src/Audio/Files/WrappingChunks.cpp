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

// Parts that a WAV file would have too.
bool isShown(const Part &part) { return !part.chunk.id.empty() && part.chunk.id != "ds64"; }

Part newPart(AudioFileChunk chunk) {
    Part part;
    append(part.header, chunk.id);
    part.isBare = false;
    part.chunk = std::move(chunk);
    return part;
}

// A chunk whose payload has another size says so, and ends at an even place.
void setSize(Part &part, std::endian order) {
    part.header.resize(8);
    putWord(std::span(part.header), 4, order, std::uint32_t(part.chunk.data.size()));
    part.pad.assign(part.chunk.data.size() % 2, std::byte{0});
}

// Some writers leave it out at the end.
void padLast(Part &part) {
    if (isShown(part) && part.chunk.id != "data") part.pad.assign(part.chunk.data.size() % 2, std::byte{0});
}

void takeChunk(Part &part, AudioFileChunk chunk, const SampleWrapping &wrapping) {
    if (wrapping.order() == std::endian::big) swap(chunk, std::endian::little);
    const bool isResized = chunk.data.size() != part.chunk.data.size();
    part.chunk = std::move(chunk);
    if (isResized) setSize(part, wrapping.order());
}

}  // namespace

AudioFileContents wavView(const AudioFileContents &contents) {
    const SampleWrapping &wrapping = *contents.wrapping;
    AudioFileContents view;
    AudioSampleEncoding encoding = wrapping.encoding;
    encoding.bigEndian = false;
    view.format = {.container = AudioContainer::wav,
                   .encoding = encoding,
                   .sampleRate = contents.format.sampleRate,
                   .typeName = "WAV",
                   .bitsDescription = encoding.description(),
                   .fileExtension = "wav"};
    view.buffer = contents.buffer;
    view.positions = contents.positions;
    view.loop = contents.loop;
    for (const Part &part : wrapping.parts) {
        if (part.chunk.id.empty() && !part.chunk.data.empty()) view.trailing = part.chunk.data;
        if (!isShown(part)) continue;
        view.chunks.push_back(part.chunk);
        if (wrapping.order() == std::endian::big) swap(view.chunks.back(), std::endian::big);
    }
    return view;
}

void takeWavView(AudioFileContents &contents, AudioFileContents view) {
    SampleWrapping &wrapping = *contents.wrapping;
    auto chunk = view.chunks.begin();
    for (Part &part : wrapping.parts)
        if (isShown(part)) takeChunk(part, std::move(*chunk++), wrapping);
    const bool endsOpen = !wrapping.parts.empty() && wrapping.parts.back().chunk.id.empty();
    if (chunk != view.chunks.end() && !endsOpen) padLast(wrapping.parts.back());
    for (; chunk != view.chunks.end(); ++chunk) {
        Part part = newPart(std::move(*chunk));
        setSize(part, wrapping.order());
        if (wrapping.order() == std::endian::big) swap(part.chunk, std::endian::little);
        const auto end = wrapping.parts.end() - (endsOpen && wrapping.parts.size() > wrapping.samplesBefore);
        wrapping.parts.insert(end, std::move(part));
        wrapping.alignment = dialectOf(wrapping.kind)->alignment;
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
