#pragma once

#include <cstdint>
#include <vector>

#include "Editor/AudioEditorCore/AudioEditorBuffer.h"
#include "Editor/AudioEditorCore/AudioEditorPeaks.h"
#include "Editor/Surfaces/BlockPowers.h"

// What the device-pixel columns of a view hold of a sound.
namespace kiv {

// A sound and its summaries, and which state of them this is.
struct SoundSource {
    const AudioEditorBuffer &buffer;
    const AudioEditorPeaks &peaks;
    const BlockPowers &powers;
    std::int64_t generation = 0;
    std::int64_t powersRevision = 0;
};

// The smallest and largest sample and the root mean square of one column. A column without frames has min above max; one
// whose blocks are not all known has a negative rms.
struct ColumnLevel {
    float min = 1, max = -1, rms = -1;

    bool isEmpty() const { return min > max; }
    friend bool operator==(const ColumnLevel &, const ColumnLevel &) = default;
};

// The level of one column: from the summary blocks it touches where it covers at least a block, else from its samples. One
// entry a channel is written to `out`.
void measureColumn(const SoundSource &source, double framesPerColumn, std::int64_t column, ColumnLevel *out);

// The levels of consecutive columns, a row a lane, kept while the view scrolls.
class WaveformColumns {
public:
    // Brings the columns first ..< first + count up to date; those known already are not measured again. Returns how many
    // were measured.
    std::int64_t update(const SoundSource &source, double framesPerColumn, bool merged, std::int64_t first, std::int64_t count);

    std::int64_t first() const { return first_; }
    std::int64_t count() const { return lanes_.empty() ? 0 : std::int64_t(lanes_[0].size()); }
    const std::vector<ColumnLevel> &lane(std::size_t index) const { return lanes_[index]; }
    std::size_t lanes() const { return lanes_.size(); }

private:
    struct Key {
        std::int64_t generation = -1, powersRevision = -1;
        double framesPerColumn = 0;
        bool merged = false;
        friend bool operator==(const Key &, const Key &) = default;
    };

    void measure(const SoundSource &source, std::int64_t column);

    Key key_;
    std::int64_t first_ = 0;
    std::vector<std::vector<ColumnLevel>> lanes_;
    std::vector<ColumnLevel> channels_;  // of the column being measured
};

}  // namespace kiv
