#include "Editor/Surfaces/MonoSheetScene.h"

#include <algorithm>
#include <cmath>

namespace kiv {

namespace {

constexpr std::int64_t framesPerColumn = 4096;
constexpr std::int64_t runLength = 64;

float outcomeSample(const float *frame, std::int64_t channels, AudioEditorMonoSource source) {
    if (source == AudioEditorMonoSource::left || channels < 2) return frame[0];
    if (source == AudioEditorMonoSource::right) return frame[1];
    float sum = 0;
    for (std::int64_t channel = 0; channel < channels; ++channel) sum += frame[channel];
    return sum / float(channels);
}

float largestOutcome(const AudioEditorBuffer &buffer, AudioEditorMonoSource source, FrameRange range) {
    float peak = 0;
    buffer.forEachSpan(range, [&](std::span<const float> samples, FrameRange part) {
        for (std::int64_t i = 0; i < part.count(); ++i)
            peak = std::max(peak,
                            std::fabs(outcomeSample(&samples[std::size_t(i * buffer.channels())], buffer.channels(), source)));
    });
    return peak;
}

// The whole part, or short runs spread evenly over it.
float columnPeak(const AudioEditorBuffer &buffer, AudioEditorMonoSource source, FrameRange part) {
    if (part.count() <= framesPerColumn) return largestOutcome(buffer, source, part);
    constexpr std::int64_t runs = framesPerColumn / runLength;
    float peak = 0;
    for (std::int64_t run = 0; run < runs; ++run) {
        const std::int64_t lo = part.lo + (part.count() - runLength) * run / (runs - 1);
        peak = std::max(peak, largestOutcome(buffer, source, {lo, lo + runLength}));
    }
    return peak;
}

}  // namespace

MonoSheetScene monoSheetScene(const AudioEditorState &state) {
    const std::int64_t channels = state.buffer.channels();
    return {
        .target = "Whole file · " + std::to_string(channels) + (channels == 1 ? " channel" : " channels"),
        .chosen = state.monoSource,
        .note = state.monoSource == AudioEditorMonoSource::mix ? tileHelp(state.monoSource) : "",
    };
}

std::string tileLabel(AudioEditorMonoSource source) {
    return source == AudioEditorMonoSource::left ? "Left" : source == AudioEditorMonoSource::right ? "Right" : "Mix";
}

std::string tileHelp(AudioEditorMonoSource source) {
    if (source == AudioEditorMonoSource::mix) return "Mean of all channels";
    return source == AudioEditorMonoSource::left ? "Keeps the left channel" : "Keeps the right channel";
}

std::optional<AudioEditorMonoSource> sourceForKey(char key) {
    for (AudioEditorMonoSource source : allMonoSources)
        if (tileLabel(source)[0] == key || tileLabel(source)[0] - 'A' + 'a' == key) return source;
    return std::nullopt;
}

AudioEditorMonoSource neighbour(AudioEditorMonoSource source, int step) {
    const auto at = std::find(allMonoSources.begin(), allMonoSources.end(), source) - allMonoSources.begin();
    return allMonoSources[std::size_t(std::clamp<std::ptrdiff_t>(at + step, 0, std::ssize(allMonoSources) - 1))];
}

std::vector<float> outcomeColumns(const AudioEditorBuffer &buffer, AudioEditorMonoSource source, int columns) {
    std::vector<float> peaks(std::size_t(std::max(columns, 0)), 0.0f);
    for (std::int64_t column = 0; column < columns && !buffer.isEmpty(); ++column) {
        const std::int64_t lo = std::min(buffer.frames() * column / columns, buffer.frames() - 1);
        const std::int64_t hi = std::max(buffer.frames() * (column + 1) / columns, lo + 1);
        peaks[std::size_t(column)] = std::min(columnPeak(buffer, source, {lo, hi}), 1.0f);
    }
    return peaks;
}

}  // namespace kiv
