#include "Editor/Surfaces/BlockPowers.h"

#include <algorithm>
#include <array>

#include "Editor/AudioEditorCore/AudioEditorPeaks.h"
#include "Support/Parallel.h"
#include "Support/Vectorised.h"

namespace kiv {
namespace {

constexpr std::int64_t blockSize = AudioEditorPeaks::blockSize;
constexpr std::int64_t grain = 1024;  // blocks
constexpr float unknown = -1;
constexpr std::size_t lanes = 16;

// Sums of squares in 16 lanes: sample i goes to lane i mod 16.
KIV_VECTORISED void addSquares(const float *samples, std::size_t count, float *sums) {
    std::size_t i = 0;
    for (; i + lanes <= count; i += lanes)
        for (std::size_t l = 0; l < lanes; ++l) {
            const float v = samples[i + l];
            sums[l] += v == v ? v * v : 0;
        }
    for (std::size_t l = 0; i < count; ++i, ++l) sums[l] += samples[i] == samples[i] ? samples[i] * samples[i] : 0;
}

// Any number of channels: lanes belong to channels only where these divide 16.
void addSquaresOf(const float *samples, std::size_t count, std::size_t channels, std::vector<double> &sums) {
    if (lanes % channels != 0) {
        for (std::size_t i = 0; i < count; ++i)
            if (samples[i] == samples[i]) sums[i % channels] += double(samples[i]) * double(samples[i]);
        return;
    }
    std::array<float, lanes> partial{};
    addSquares(samples, count, partial.data());
    for (std::size_t l = 0; l < lanes; ++l) sums[l % channels] += double(partial[l]);
}

void readBlock(const AudioEditorBuffer &buffer, std::int64_t block, BlockPowers &powers, std::vector<double> &sums) {
    const FrameRange range{block * blockSize, std::min((block + 1) * blockSize, buffer.frames())};
    std::fill(sums.begin(), sums.end(), 0);
    buffer.forEachSpan(range, [&](std::span<const float> samples, FrameRange) {
        addSquaresOf(samples.data(), samples.size(), sums.size(), sums);
    });
    for (std::size_t c = 0; c < sums.size(); ++c)
        powers.channels[c][std::size_t(block)] = float(sums[c] / double(range.count()));
}

}  // namespace

BlockPowers carriedPowers(const AudioEditorBuffer &buffer, const AudioEditorBuffer &before, const BlockPowers &old) {
    const std::int64_t blocks = (buffer.frames() + blockSize - 1) / blockSize;
    BlockPowers powers;
    powers.channels.assign(std::size_t(buffer.channels()), std::vector<float>(std::size_t(blocks), unknown));
    if (old.channels.size() != powers.channels.size()) return powers;
    const bool sameLength = buffer.frames() == before.frames();
    const std::int64_t prefix =
        sameLength && buffer.sharedPrefix(before) == buffer.frames() ? blocks : buffer.sharedPrefix(before) / blockSize;
    const std::int64_t suffixFrames = sameLength ? buffer.sharedSuffix(before) : 0;
    const std::int64_t suffix = std::max((buffer.frames() - suffixFrames + blockSize - 1) / blockSize, prefix);
    for (std::size_t c = 0; c < powers.channels.size(); ++c) {
        std::copy_n(old.channels[c].begin(), prefix, powers.channels[c].begin());
        if (suffix < blocks)
            std::copy(old.channels[c].begin() + suffix, old.channels[c].end(), powers.channels[c].begin() + suffix);
    }
    return powers;
}

std::int64_t unknownBlocks(const BlockPowers &powers) {
    if (powers.channels.empty()) return 0;
    return std::count_if(powers.channels[0].begin(), powers.channels[0].end(), [](float power) { return power < 0; });
}

void completePowers(const AudioEditorBuffer &buffer, BlockPowers &powers, Progress *progress) {
    if (powers.channels.empty()) return;
    parallelFor(std::int64_t(powers.channels[0].size()), grain, [&](std::int64_t lo, std::int64_t hi) {
        if (progress) progress->throwIfCancelled();
        std::vector<double> sums(powers.channels.size());
        for (std::int64_t block = lo; block < hi; ++block)
            if (powers.channels[0][std::size_t(block)] < 0) readBlock(buffer, block, powers, sums);
    });
}

}  // namespace kiv
