#pragma once

#include <cstdint>
#include <span>

#include "Audio/Files/AudioFileContents.h"
#include "Support/ByteSource.h"
#include "Support/Progress.h"

namespace kiv {

// Reads a source that is expected to hold what its size says, and counts what was read. May be used by several threads at once.
class SourceReader {
public:
    explicit SourceReader(const ByteSource &source, Progress *progress = nullptr) : source_(source), progress_(progress) {}

    std::int64_t size() const { return source_.size(); }
    // Fills `out`. Throws AudioFileError `unreadable` when the source ends before.
    void read(std::int64_t offset, std::span<std::byte> out) const;
    // The bytes of a part, which must lie inside the source. Counts them as done.
    Bytes bytes(std::int64_t offset, std::int64_t size) const;
    // Counts bytes as done; throws Cancelled when the reading is no longer wanted.
    void count(std::int64_t bytes) const;

private:
    const ByteSource &source_;
    Progress *progress_;
};

}  // namespace kiv
