#include "Editor/AudioEditorCore/AudioEditorStretch.h"

#include <cmath>

#include "Editor/AudioEditorCore/Resampling.h"
#include "Editor/AudioEditorCore/Wsola.h"

namespace kiv {
namespace {

double timeFactor(int timePercent) { return stretchTimePercentRange.clamp(timePercent) / 100.0; }

}  // namespace

StretchSettings clamped(StretchSettings settings) {
    settings.timePercent = stretchTimePercentRange.clamp(settings.timePercent);
    settings.semitones = stretchSemitonesRange.clamp(settings.semitones);
    settings.cents = stretchCentsRange.clamp(settings.cents);
    settings.cycle = stretchCycleRange.clamp(settings.cycle);
    return settings;
}

bool leavesUnchanged(const StretchSettings &settings, std::int64_t frames) {
    const double pitch = AudioEditorOps::stretchPitchRatio(settings.semitones, settings.cents);
    return frames < 2 || (timeFactor(settings.timePercent) == 1 && pitch == 1);
}

std::int64_t stretchedFrames(const StretchSettings &settings, std::int64_t frames) {
    if (leavesUnchanged(settings, frames)) return frames;
    return std::max<std::int64_t>(std::llround(timeFactor(settings.timePercent) * double(frames)), 1);
}

double AudioEditorOps::stretchPitchRatio(int semitones, int cents) {
    return std::exp2((stretchSemitonesRange.clamp(semitones) + stretchCentsRange.clamp(cents) / 100.0) / 12);
}

namespace AudioEditorOps {
namespace {

AudioEditorBuffer silence(std::int64_t frames, const AudioEditorBuffer &like) {
    const std::vector<float> zeros(std::size_t(frames * like.channels()), 0.0f);
    return AudioEditorBuffer(zeros, like.channels(), like.sampleRate());
}

AudioEditorBuffer broughtTo(const AudioEditorBuffer &sound, std::int64_t frames, Progress *progress) {
    if (sound.frames() == frames) return sound;
    return sound.frames() < 2 ? silence(frames, sound) : kiv::wsola(sound, frames, progress);
}

AudioEditorBuffer cleaned(const AudioEditorBuffer &sound, const StretchSettings &settings, Progress *progress) {
    const double pitch = stretchPitchRatio(settings.semitones, settings.cents);
    const std::int64_t frames = stretchedFrames(settings, sound.frames());
    const std::int64_t atPitch =
        pitch == 1 ? sound.frames() : std::max<std::int64_t>(std::llround(double(sound.frames()) / pitch), 1);
    if (progress) progress->start((pitch == 1 ? 0 : sound.frames() * sound.channels()) + (atPitch == frames ? 0 : 2 * frames));
    if (pitch == 1) return broughtTo(sound, frames, progress);
    const double rate = double(sound.sampleRate());
    return broughtTo(resampledSound(sound, pitch * rate, rate, atPitch, sound.sampleRate(), progress), frames, progress);
}

}  // namespace

AudioEditorBuffer cleanStretched(const AudioEditorBuffer &buffer, FrameRange range, int timePercent, int semitones, int cents,
                                 Progress *progress) {
    const StretchSettings settings{StretchMode::clean, timePercent, semitones, cents};
    if (leavesUnchanged(settings, range.count())) return buffer;
    return buffer.replacing(range, cleaned(buffer.part(range), settings, progress));
}

AudioEditorBuffer stretched(const AudioEditorBuffer &buffer, FrameRange range, const StretchSettings &settings,
                            Progress *progress) {
    const auto &[mode, timePercent, semitones, cents, cycle] = settings;
    return mode == StretchMode::clean ? cleanStretched(buffer, range, timePercent, semitones, cents, progress)
                                      : timeStretched(buffer, range, timePercent, cycle, semitones, cents, progress);
}

std::vector<std::vector<float>> wsola(const std::vector<std::vector<float>> &channels, std::int64_t outFrames,
                                      std::int64_t sampleRate, Progress *progress) {
    const auto count = std::int64_t(channels.size()), frames = count == 0 ? 0 : std::int64_t(channels[0].size());
    std::vector<std::vector<float>> result(channels.size(),
                                           std::vector<float>(std::size_t(std::max<std::int64_t>(outFrames, 0))));
    if (frames < 2 || outFrames < 1) return result;
    if (progress) progress->start(2 * outFrames);
    SampleMemory interleaved(std::size_t(frames * count));
    for (std::int64_t c = 0; c < count; ++c)
        for (std::int64_t i = 0; i < frames; ++i) interleaved.data()[i * count + c] = channels[std::size_t(c)][std::size_t(i)];
    const AudioEditorBuffer sound(std::move(interleaved), count, sampleRate);
    const AudioEditorBuffer out = kiv::wsola(sound, outFrames, progress);
    for (std::int64_t c = 0; c < count; ++c) out.copyChannel({0, outFrames}, c, result[std::size_t(c)].data());
    return result;
}

}  // namespace AudioEditorOps
}  // namespace kiv
