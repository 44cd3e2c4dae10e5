#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <span>
#include <string_view>

#include "Audio/Files/AudioFileCodec.h"

// What must hold for any bytes whatever that are given to a reader: it reads them, leaves them to others or throws its own
// error; what it reads takes memory in proportion; and what is written of it reads and writes the same again.
namespace kiv::readerCheck {

inline void require(bool holds, const char *what) {
    if (holds) return;
    std::fprintf(stderr, "does not hold: %s\n", what);
    std::abort();
}

inline std::size_t memoryOf(const AudioFileContents &contents) {
    std::size_t total = contents.trailing.size() + contents.positions.size() * sizeof(std::int64_t);
    total += std::size_t(contents.buffer.frames() * contents.buffer.channels()) * sizeof(float);
    for (const AudioFileChunk &chunk : contents.chunks)
        total += sizeof chunk + chunk.data.size() + chunk.fields.size() * sizeof(AudioFilePositionField);
    return total;
}

inline void checkPositions(const AudioFileContents &contents) {
    for (const std::int64_t position : contents.positions)
        require(position >= 0 && position <= contents.buffer.frames(), "positions lie in the sound");
    const auto shown = editorPositions(contents);
    require(!shown.loop || !shown.loop->isEmpty(), "a loop has a length");
    require(withEditorPositions(contents, shown.markers, shown.loop).positions == contents.positions, "positions go back");
}

inline void checkLoops(const AudioFileContents &contents) {
    const auto looped = AudioFileCodec::addingLoop(AudioFileCodec::removingLoop(contents), 0, 1);
    const auto again = AudioFileCodec::readNative(AudioFileCodec::nativeImage(looped).bytes());
    require(again.has_value(), "a file with a loop added is read");
    if (!looped.loop || again->buffer.isEmpty()) return;
    require(editorPositions(*again).loop == FrameRange{0, 1}, "a loop that was added is the file's");
}

inline void checkContents(const AudioFileContents &contents, std::size_t size) {
    require(memoryOf(contents) <= 16 * size + 4096, "memory in proportion");
    checkPositions(contents);
    const Bytes once = AudioFileCodec::nativeImage(contents).bytes();
    // Behind the most chunks that are told apart, what is left out while saving brings others within reach.
    if (contents.trailing.size() >= 8) return;
    const auto again = AudioFileCodec::readNative(once);
    require(again.has_value(), "what was written is read");
    require(again->buffer.frames() == contents.buffer.frames(), "as many frames");
    require(AudioFileCodec::nativeImage(*again).bytes() == once, "written the same again");
    checkLoops(contents);
}

// Runs the checks on the bytes with the two names put in that make them a file of this kind.
inline void check(std::span<const std::uint8_t> input, std::string_view group, std::string_view form) {
    Bytes bytes(input.size());
    if (!input.empty()) std::memcpy(bytes.data(), input.data(), input.size());
    if (bytes.size() >= 12) {
        std::memcpy(bytes.data(), group.data(), 4);
        std::memcpy(bytes.data() + 8, form.data(), 4);
    }
    try {
        if (const auto contents = AudioFileCodec::readNative(bytes)) checkContents(*contents, bytes.size());
    } catch (const AudioFileError &) {
    }
}

}  // namespace kiv::readerCheck
