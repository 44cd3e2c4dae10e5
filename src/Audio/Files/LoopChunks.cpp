#include "Audio/Files/LoopChunks.h"

#include <algorithm>

#include "Audio/Files/AudioFileCodec.h"
#include "Audio/Files/WrappingChunks.h"

namespace kiv {
namespace {

// Takes entries, given in order, out of the positions, and moves the indices of the others along.
void removePositions(AudioFileContents &contents, const std::vector<std::uint32_t> &entries) {
    const auto before = [&](std::uint32_t index) {
        return std::uint32_t(std::lower_bound(entries.begin(), entries.end(), index) - entries.begin());
    };
    const auto isGone = [&](std::uint32_t index) { return std::binary_search(entries.begin(), entries.end(), index); };
    for (AudioFileChunk &chunk : contents.chunks) {
        std::erase_if(chunk.fields, [&](const AudioFilePositionField &field) { return isGone(field.index); });
        for (AudioFilePositionField &field : chunk.fields) {
            field.index -= before(field.index);
            field.from -= before(field.from);
        }
    }
    std::uint32_t index = 0;
    std::erase_if(contents.positions, [&](std::int64_t) { return isGone(index++); });
}

}  // namespace

AudioFileChunk &chunkOrNew(AudioFileContents &contents, std::string_view id, Bytes payload) {
    const auto found = std::find_if(contents.chunks.begin(), contents.chunks.end(),
                                    [&](const AudioFileChunk &chunk) { return chunk.id == id; });
    return found != contents.chunks.end() ? *found : addChunk(contents, id, std::move(payload));
}

AudioFileChunk &addChunk(AudioFileContents &contents, std::string_view id, Bytes payload) {
    const auto size = std::int64_t(payload.size());
    contents.chunks.push_back({.id = std::string(id), .data = std::move(payload), .fields = {}, .sizeInFile = size});
    return contents.chunks.back();
}

void openGap(AudioFileChunk &chunk, std::size_t offset, std::size_t size) {
    chunk.data.insert(chunk.data.begin() + std::ptrdiff_t(offset), size, std::byte{0});
    for (AudioFilePositionField &field : chunk.fields)
        if (field.offset >= offset) field.offset += std::uint32_t(size);
}

void cutOut(AudioFileChunk &chunk, std::size_t offset, std::size_t size) {
    size = std::min(size, chunk.data.size() - offset);
    const auto start = chunk.data.begin() + std::ptrdiff_t(offset);
    chunk.data.erase(start, start + std::ptrdiff_t(size));
    std::erase_if(chunk.fields, [&](const auto &field) { return field.offset >= offset && field.offset < offset + size; });
    for (AudioFilePositionField &field : chunk.fields)
        if (field.offset >= offset + size) field.offset -= std::uint32_t(size);
}

namespace AudioFileCodec {

AudioFileContents addingLoop(AudioFileContents contents, std::int64_t start, std::int64_t end) {
    if (contents.loop) {
        contents.positions.at(std::size_t(contents.loop->start)) = start;
        contents.positions.at(std::size_t(contents.loop->end)) = end;
        return contents;
    }
    if (!contents.canStoreLoop()) return contents;
    if (contents.wrapping) {
        const auto add = [&](auto view) { return addingLoop(std::move(view), start, end); };
        takeFormView(contents, *contents.wrapping, add(formView(contents, *contents.wrapping)));
        return contents;
    }
    const auto index = std::int64_t(contents.positions.size());
    const AudioFileLoop loop{index, index + 1};
    const bool isWav = contents.format.container == AudioContainer::wav;
    if (!(isWav ? addWavLoop(contents, loop) : addAiffLoop(contents, loop))) return contents;
    contents.positions.insert(contents.positions.end(), {start, end});
    contents.loop = loop;
    return contents;
}

// The one loop that the editor shows: others that the file holds besides it are not the user's to lose here.
AudioFileContents removingLoop(AudioFileContents contents) {
    if (!contents.loop) return contents;
    if (auto &wrapping = contents.wrapping ? contents.wrapping : contents.tags.around) {
        takeFormView(contents, *wrapping, removingLoop(formView(contents, *wrapping)));
        return contents;
    }
    const bool isWav = contents.format.container == AudioContainer::wav;
    removePositions(contents, isWav ? removeWavLoop(contents) : removeAiffLoop(contents));
    contents.loop.reset();
    return contents;
}

}  // namespace AudioFileCodec
}  // namespace kiv
