#include "Editor/EqProcessor/EqProcessor.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace kiv {
namespace {

constexpr int stepFrames = 16;
constexpr double glideSeconds = 0.005;
constexpr double logSnap = 0.0005, decibelSnap = 0.005, mixSnap = 0.0005;
constexpr std::size_t blockFrames = 256;
const double lowCutRestLog = std::log(5.0);

// As a 32-bit float, so that it is the same wherever it is computed.
double gainOf(double db) { return double(float(std::pow(10.0, db / 20))); }

double finite(float sample) { return std::fabs(sample) <= std::numeric_limits<float>::max() ? double(sample) : 0.0; }

void readPairs(const float *samples, std::int64_t channels, std::span<EqPair> block) {
    for (EqPair &frame : block) frame = EqPair{finite(samples[0]), finite(samples[1])}, samples += channels;
}

void readFirsts(const float *samples, std::int64_t channels, std::span<EqPair> block) {
    for (EqPair &frame : block) frame = EqPair{finite(samples[0]), 0}, samples += channels;
}

void writePairs(std::span<const EqPair> block, std::int64_t channels, float *samples) {
    for (const EqPair &frame : block) samples[0] = float(frame[0]), samples[1] = float(frame[1]), samples += channels;
}

void writeFirsts(std::span<const EqPair> block, std::int64_t channels, float *samples) {
    for (const EqPair &frame : block) samples[0] = float(frame[0]), samples += channels;
}

}  // namespace

// Two channels of a block on their way through the filters, and those not yet run: filters side by side are run together.
struct EqProcessor::Block {
    EqSections &sections;
    std::int64_t pair;
    std::span<EqPair> frames;
    double position, step;  // of the first frame in its parameter step, 0 … 1, and the way to the next
    std::array<std::uint8_t, EqSections::count> waiting{};
    std::size_t waitingCount = 0;

    void run() {
        sections.run({waiting.data(), waitingCount}, pair, frames);
        waitingCount = 0;
    }
    void add(const Share &share, EqSections::Index first, std::size_t number) {
        if (!share.running) return;
        const bool isWhole = share.mix.isAt(1);
        if (!isWhole) run();
        for (std::size_t i = 0; i < number; ++i) waiting[waitingCount++] = std::uint8_t(first + i);
        if (!isWhole) blend(share.mix);
    }
    double at(const Ramp &ramp, std::size_t frame) const {
        return ramp.from + (ramp.to - ramp.from) * (position + double(frame + 1) * step);
    }

private:
    // At most one parameter step long, while something moves.
    void blend(const Ramp &mix) {
        std::array<EqPair, stepFrames> before;
        std::copy(frames.begin(), frames.end(), before.begin());
        run();
        for (std::size_t i = 0; i < frames.size(); ++i) frames[i] = before[i] + (frames[i] - before[i]) * at(mix, i);
    }
};

EqProcessor::EqProcessor(double sampleRate, std::int64_t channels)
    : channels_(std::max<std::int64_t>(channels, 1)),
      sampleRate_(sampleRate > 1000 ? sampleRate : 44100),
      smoothK_(1 - std::exp(-stepFrames / (sampleRate_ * glideSeconds))),
      sections_(channels_) {
    lowCut_.freqLog = lowCut_.targetFreqLog = lowCutRestLog;
    highCut_.freqLog = std::log(EqSettings::defaultHighCutHz);
    setTargets({});
}

void EqProcessor::setTargets(const EqTargets &targets) {
    lowCut_.targetFreqLog = targets.on && targets.lowCut.on ? std::log(targets.lowCut.freqHz) : lowCutRestLog;
    highCut_.targetFreqLog = std::log(targets.highCut.freqHz);
    highCut_.targetMix = targets.on && targets.highCut.on ? 1 : 0;
    if (!highCut_.running) highCut_.freqLog = highCut_.targetFreqLog;
    targetOutGainDb_ = targets.on ? targets.gainDb : 0;
    for (std::size_t i = 0; i < bands_.size(); ++i) {
        Band &band = bands_[i];
        const EqBand &target = targets.bands[i];
        band.targetFreqLog = std::log(target.freqHz);
        band.targetQLog = std::log(target.q);
        band.targetGainDb = targets.on && target.on ? target.gainDb : 0;
        if (band.running || band.gainDb != 0) continue;
        band.freqLog = band.targetFreqLog;
        band.qLog = band.targetQLog;
    }
    settled_ = false;
}

void EqProcessor::take(Share &share, double mix) {
    share.mix = {mix, mix};
    share.targetMix = mix;
    share.running = mix != 0;
}

void EqProcessor::reset() {
    lowCut_.freqLog = lowCut_.targetFreqLog;
    take(lowCut_, lowCut_.freqLog != lowCutRestLog ? 1 : 0);
    rebuildLowCut();
    for (std::size_t i = 0; i < bands_.size(); ++i) {
        Band &band = bands_[i];
        band.freqLog = band.targetFreqLog;
        band.qLog = band.targetQLog;
        band.gainDb = band.targetGainDb;
        take(band, band.gainDb != 0 ? 1 : 0);
        rebuildBand(i);
    }
    highCut_.freqLog = highCut_.targetFreqLog;
    take(highCut_, highCut_.targetMix);
    rebuildHighCut();
    outGainDb_ = targetOutGainDb_;
    outGain_ = {gainOf(outGainDb_), gainOf(outGainDb_)};
    sections_.clear(0, EqSections::count);
    counter_ = 0;
    settled_ = true;
}

bool EqProcessor::isActive() const {
    const auto moves = [](const Band &band) { return band.running || band.targetGainDb != 0; };
    return !outGain_.isAt(1) || targetOutGainDb_ != 0 || lowCut_.running || lowCut_.targetFreqLog != lowCutRestLog ||
           highCut_.running || highCut_.targetMix != 0 || std::any_of(bands_.begin(), bands_.end(), moves);
}

// Towards the target; whether that was a step at all.
bool EqProcessor::glide(double &value, double target, double snap) const {
    if (value == target) return false;
    value += (target - value) * smoothK_;
    if (std::abs(target - value) < snap) value = target;
    return true;
}

// A filter's share moves towards its target, whether that was a step or the end of one; a filter with none stops.
bool EqProcessor::advanceShare(Share &share) const {
    const bool wasMoving = share.mix.from != share.mix.to;
    share.mix.from = share.mix.to;
    const bool moved = glide(share.mix.to, share.targetMix, mixSnap);
    if (share.mix.isAt(0) && share.targetMix == 0) share.running = false;
    return moved || wasMoving;
}

void EqProcessor::start(Share &share, EqSections::Index first, std::size_t number, double mix) {
    sections_.clear(first, number);
    share.mix = {mix, mix};
    share.running = true;
}

bool EqProcessor::advanceLowCut() {
    Cut &cut = lowCut_;
    if (!cut.running && cut.targetFreqLog == lowCutRestLog) return false;
    if (!cut.running) {
        start(cut, EqSections::lowCut, EqCut::lowCutStageQs.size(), 1);
        rebuildLowCut();
    }
    bool moved = glide(cut.freqLog, cut.targetFreqLog, logSnap);
    if (moved) rebuildLowCut();
    cut.targetMix = cut.freqLog == lowCutRestLog && cut.targetFreqLog == lowCutRestLog ? 0 : 1;
    moved |= advanceShare(cut);
    return moved;
}

bool EqProcessor::advanceBand(std::size_t index) {
    Band &band = bands_[index];
    if (!band.running && band.gainDb == 0 && band.targetGainDb == 0) return false;
    if (!band.running) start(band, EqSections::Index(EqSections::bands + index), 1, 1);
    bool moved = glide(band.gainDb, band.targetGainDb, decibelSnap);
    moved |= glide(band.freqLog, band.targetFreqLog, logSnap);
    moved |= glide(band.qLog, band.targetQLog, logSnap);
    if (moved) rebuildBand(index);
    band.targetMix = band.gainDb == 0 && band.targetGainDb == 0 ? 0 : 1;
    moved |= advanceShare(band);
    return moved;
}

bool EqProcessor::advanceHighCut() {
    Cut &cut = highCut_;
    if (!cut.running && cut.targetMix == 0) return false;
    if (!cut.running) {
        start(cut, EqSections::highCut, EqCut::highCutStageQs.size(), 0);
        cut.freqLog = cut.targetFreqLog;
        rebuildHighCut();
    }
    bool moved = glide(cut.freqLog, cut.targetFreqLog, logSnap);
    if (moved) rebuildHighCut();
    moved |= advanceShare(cut);
    return moved;
}

bool EqProcessor::advanceOutput() {
    const bool wasMoving = outGain_.from != outGain_.to;
    outGain_.from = outGain_.to;
    const bool moved = glide(outGainDb_, targetOutGainDb_, decibelSnap);
    if (moved) outGain_.to = gainOf(outGainDb_);
    return moved || wasMoving;
}

void EqProcessor::advance() {
    bool moved = advanceLowCut();
    for (std::size_t i = 0; i < bands_.size(); ++i) moved |= advanceBand(i);
    moved |= advanceHighCut();
    moved |= advanceOutput();
    settled_ = !moved;
}

void EqProcessor::rebuildLowCut() {
    const auto stages = eqLowCutStages(std::exp(lowCut_.freqLog), sampleRate_);
    std::copy(stages.begin(), stages.end(), sections_.coefficients.begin() + EqSections::lowCut);
}

void EqProcessor::rebuildBand(std::size_t index) {
    const Band &band = bands_[index];
    sections_.coefficients[EqSections::bands + index] =
        EqBiquad(eqBandKind(index), std::exp(band.freqLog), band.gainDb, std::exp(band.qLog), sampleRate_);
}

void EqProcessor::rebuildHighCut() {
    const auto stages = eqHighCutStages(std::exp(highCut_.freqLog), sampleRate_);
    std::copy(stages.begin(), stages.end(), sections_.coefficients.begin() + EqSections::highCut);
}

// Once settled, the steps change nothing and only their count goes on.
void EqProcessor::process(std::span<float> interleaved) {
    const std::size_t channels = std::size_t(channels_);
    while (interleaved.size() >= channels) {
        if (counter_ == 0 && !settled_) advance();
        if (counter_ == 0) counter_ = stepFrames;
        const std::size_t frames = std::min(interleaved.size() / channels, settled_ ? blockFrames : std::size_t(counter_));
        processBlock(interleaved.first(frames * channels));
        counter_ = (counter_ + stepFrames - int(frames % stepFrames)) % stepFrames;
        interleaved = interleaved.subspan(frames * channels);
    }
}

bool EqProcessor::changesNothing() const {
    const auto runs = [](const Share &share) { return share.running; };
    return !lowCut_.running && !highCut_.running && outGain_.isAt(1) && std::none_of(bands_.begin(), bands_.end(), runs);
}

void EqProcessor::processBlock(std::span<float> interleaved) {
    if (changesNothing()) return;
    std::array<EqPair, blockFrames> memory;
    const std::span<EqPair> frames(memory.data(), interleaved.size() / std::size_t(channels_));
    for (std::int64_t pair = 0; 2 * pair < channels_; ++pair) {
        Block block{sections_, pair, frames, double(stepFrames - counter_) / stepFrames, 1.0 / stepFrames};
        float *samples = interleaved.data() + 2 * pair;
        const bool isSingle = 2 * pair + 1 == channels_;
        isSingle ? readFirsts(samples, channels_, frames) : readPairs(samples, channels_, frames);
        filter(block);
        amplify(block);
        isSingle ? writeFirsts(frames, channels_, samples) : writePairs(frames, channels_, samples);
    }
}

void EqProcessor::filter(Block &block) {
    block.add(lowCut_, EqSections::lowCut, EqCut::lowCutStageQs.size());
    for (std::size_t i = 0; i < bands_.size(); ++i) block.add(bands_[i], EqSections::Index(EqSections::bands + i), 1);
    block.add(highCut_, EqSections::highCut, EqCut::highCutStageQs.size());
    block.run();
}

void EqProcessor::amplify(Block &block) const {
    if (outGain_.isAt(1)) return;
    if (outGain_.from == outGain_.to)
        for (EqPair &frame : block.frames) frame *= outGain_.to;
    else
        for (std::size_t i = 0; i < block.frames.size(); ++i) block.frames[i] *= block.at(outGain_, i);
}

AudioEditorBuffer EqProcessor::applied(FrameRange range, const EqSettings &settings, const AudioEditorBuffer &buffer,
                                       Progress *progress) {
    constexpr std::int64_t chunk = std::int64_t(1) << 14;
    const auto inside = buffer.clampedRange(range);
    if (!inside || settings.isTransparent()) return buffer;
    const std::int64_t channels = buffer.channels();
    EqProcessor processor(double(buffer.sampleRate()), channels);
    processor.setTargets({settings, true});
    processor.reset();
    SampleMemory out(std::size_t(inside->count() * channels));
    if (progress) progress->start(inside->count());
    const auto run = [&](FrameRange part, float *to) {
        buffer.copyFrames(part, to);
        processor.process({to, std::size_t(part.count() * channels)});
        if (progress) progress->throwIfCancelled();
    };
    const std::int64_t settling = std::max<std::int64_t>(inside->lo - std::llround(processor.sampleRate_ * 0.5), 0);
    std::vector<float> unheard(std::size_t(std::min(chunk, inside->lo - settling) * channels));
    for (std::int64_t at = settling; at < inside->lo; at += chunk) run({at, std::min(at + chunk, inside->lo)}, unheard.data());
    for (std::int64_t at = inside->lo; at < inside->hi; at += chunk) {
        run({at, std::min(at + chunk, inside->hi)}, out.data() + (at - inside->lo) * channels);
        if (progress) progress->add(std::min(chunk, inside->hi - at));
    }
    return buffer.replacing(*inside, AudioEditorBuffer(std::move(out), channels, buffer.sampleRate()));
}

}  // namespace kiv
