#pragma once

#include <cstdint>
#include <vector>

#include "Editor/AudioEditorCore/AudioEditorBuffer.h"
#include "Editor/AudioEditorCore/AudioEditorMonoSource.h"
#include "Support/Progress.h"

// The operations on sound: pure functions from a buffer to a new one. Ranges must lie inside the buffer. Nothing is clipped to
// full scale and nothing is dithered. Gains and positions are computed in 64-bit float and the product is stored as 32-bit
// float. Each touches only its range: the rest of the result shares the samples of the input. They work on all cores and may
// be called from any thread but the audio thread. Those that take a Progress start it with their own total and throw Cancelled
// soon after it was cancelled; null does without.
namespace kiv::AudioEditorOps {

// The frames of a range alone.
AudioEditorBuffer slice(const AudioEditorBuffer &buffer, FrameRange range);

// `insert`, brought to the buffer's channel count, put in before frame `at`, which is clamped to 0 … frames. The rate is the
// buffer's; `insert` is not converted to it.
AudioEditorBuffer inserting(const AudioEditorBuffer &buffer, const AudioEditorBuffer &insert, std::int64_t at);

// The buffer without the frames of a range.
AudioEditorBuffer removing(const AudioEditorBuffer &buffer, FrameRange range);

AudioEditorBuffer silenced(const AudioEditorBuffer &buffer, FrameRange range);

// Whole frames in reverse order; the channels stay in place within each. Fewer than 2 frames stay as they are.
AudioEditorBuffer reversed(const AudioEditorBuffer &buffer, FrameRange range, Progress *progress = nullptr);

// Quarter-sine fades over n frames, d = max(n − 1, 1): gain sin(i / d · π / 2) in, sin((1 − i / d) · π / 2) out.
AudioEditorBuffer fadeIn(const AudioEditorBuffer &buffer, FrameRange range, Progress *progress = nullptr);
AudioEditorBuffer fadeOut(const AudioEditorBuffer &buffer, FrameRange range, Progress *progress = nullptr);

AudioEditorBuffer scaled(const AudioEditorBuffer &buffer, FrameRange range, double factor, Progress *progress = nullptr);

// The largest absolute sample of all channels of a range; 0 for an empty one. NaN samples do not count.
float peak(const AudioEditorBuffer &buffer, FrameRange range, Progress *progress = nullptr);

// 10^(dB / 20).
double gainFactor(double db);

// One channel. `mix` is the sum of the channels in order, in 32-bit float, times 1 / channels. Fewer than 2 channels:
// unchanged.
AudioEditorBuffer mono(const AudioEditorBuffer &buffer, AudioEditorMonoSource source, Progress *progress = nullptr);

// Each frame as `channels` copies of the mean of its channels. The same count: unchanged.
AudioEditorBuffer withChannels(const AudioEditorBuffer &buffer, std::int64_t channels, Progress *progress = nullptr);

// Linear fades over the first `fadeIn` and the last `fadeOut` frames, in 32-bit float, for slices that are saved: the very
// first and the very last frame become 0. Counts above the length count as the length; where both fades meet, both apply.
AudioEditorBuffer sliceFaded(const AudioEditorBuffer &buffer, std::int64_t fadeIn, std::int64_t fadeOut);

// The long ones take a Progress, which they start with their own total and which may cancel them by Cancelled; null does
// without.

// Band-limited resampling of planar channels from one rate to another (hertz, above 0) into exactly `count` frames, one
// parallel task a channel; what the resampler gives too little is silence, what it gives too much is cut off.
std::vector<std::vector<float>> bandLimited(const std::vector<std::vector<float>> &channels, double fromRate, double toRate,
                                            std::int64_t count, Progress *progress = nullptr);

// The sound at another rate: max(round(rate · frames / old rate), 1) frames. The same rate, or fewer than 2 frames: unchanged,
// with its own rate.
AudioEditorBuffer withSampleRate(const AudioEditorBuffer &buffer, std::int64_t rate, Progress *progress = nullptr);

// One channel read every `step` frames with cubic interpolation (Catmull-Rom, in 32-bit float): max(round(count / step), 1)
// samples. Fewer than 2 samples, or a step that is not above 0 or not finite: unchanged.
std::vector<float> resampled(const std::vector<float> &samples, double step);

}  // namespace kiv::AudioEditorOps
