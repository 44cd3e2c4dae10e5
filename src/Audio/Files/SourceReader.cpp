#include "Audio/Files/SourceReader.h"

#include <algorithm>

#include "Audio/Files/AudioFileError.h"

namespace kiv {
namespace {

// So that a wish to cancel is heard while a large chunk is read.
constexpr std::int64_t stepBytes = std::int64_t(4) << 20;

}  // namespace

void SourceReader::read(std::int64_t offset, std::span<std::byte> out) const {
    if (source_.read(offset, out) < out.size()) throw AudioFileError::unreadable("it became shorter while it was read");
}

Bytes SourceReader::bytes(std::int64_t offset, std::int64_t size) const {
    Bytes result(static_cast<std::size_t>(size));
    for (std::int64_t at = 0; at < size; at += stepBytes) {
        const std::int64_t step = std::min(stepBytes, size - at);
        read(offset + at, std::span(result).subspan(std::size_t(at), std::size_t(step)));
        count(step);
    }
    return result;
}

void SourceReader::count(std::int64_t bytes) const {
    if (progress_) progress_->add(bytes);
}

}  // namespace kiv
