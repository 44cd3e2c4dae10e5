#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "Audio/Files/AudioFileContents.h"

namespace kiv {

// Collects the positions of a file of so many frames into its contents.
class PositionTable {
public:
    PositionTable(AudioFileContents &contents, std::int64_t frames) : contents_(contents), frames_(frames) {}

    // Appends a position, no further than the end of the audio, and returns its index.
    std::uint32_t add(std::int64_t position);
    std::int64_t at(std::uint32_t index) const { return contents_.positions[index]; }

private:
    AudioFileContents &contents_;
    std::int64_t frames_;
};

// Which position a cue's or marker's id stands for. Sorted pairs, not a hash table: a file made to collide must not cost more
// than another.
class PositionIds {
public:
    void add(std::uint32_t id, std::uint32_t index);
    // The index added last for the id.
    std::optional<std::uint32_t> find(std::uint32_t id);

private:
    struct Entry {
        std::uint32_t id, index;
        friend auto operator<=>(const Entry &, const Entry &) = default;
    };
    std::vector<Entry> entries_;
    bool sorted_ = true;
};

}  // namespace kiv
