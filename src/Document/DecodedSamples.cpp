#include "Document/DecodedSamples.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <vector>

#include "Audio/Files/SampleDecoding.h"
#include "Audio/Files/SampleResidue.h"
#include "Support/Parallel.h"

namespace kiv {
namespace {

// What is decoded at a time, and becomes a block of the sound: nobody knows beforehand how much will come.
constexpr std::int64_t blockSamples = std::int64_t(1) << 20;
constexpr std::int64_t toTheEnd = std::numeric_limits<std::int64_t>::max();
constexpr AudioSampleEncoding wide{.bytes = 4, .validBits = 32, .bigEndian = std::endian::native == std::endian::big};

class BlockReader {
public:
    explicit BlockReader(DecodedSound &sound)
        : sound_(sound),
          channels_(sound.format().channels),
          blockFrames_(std::max<std::int64_t>(blockSamples / channels_, 1)) {}

    // At most so many frames; none at the end.
    AudioEditorBuffer next(std::int64_t most = toTheEnd) {
        const std::int64_t wanted = std::min(most, blockFrames_) * channels_;
        SampleMemory memory{std::size_t(wanted)};
        if (sound_.format().isWide()) return nextWide(std::move(memory));
        const std::int64_t frames = sound_.read(std::span(memory.data(), memory.size()));
        return cut({std::move(memory), channels_, rate()}, frames);
    }

private:
    AudioEditorBuffer nextWide(SampleMemory memory) {
        integers_.resize(memory.size());
        const std::int64_t frames = sound_.read(integers_);
        const auto words = std::as_bytes(std::span(integers_).first(std::size_t(frames * channels_)));
        const std::span decoded(memory.data(), std::size_t(frames * channels_));
        decodeSamples(words, wide, decoded);
        auto residue = std::make_unique<SampleResidue>(wide, std::int64_t(memory.size()));
        residue->keep(0, words, wide, decoded);
        if (residue->isEmpty()) residue.reset();
        return cut({std::move(memory), channels_, rate(), std::move(residue)}, frames);
    }

    std::int64_t rate() const { return sound_.format().sampleRate; }
    static AudioEditorBuffer cut(const AudioEditorBuffer &block, std::int64_t frames) { return block.part({0, frames}); }

    DecodedSound &sound_;
    const std::int64_t channels_, blockFrames_;
    std::vector<std::int32_t> integers_;
};

// Appends what comes next, until the buffer has so many frames.
void readTo(AudioEditorBuffer &buffer, std::int64_t frames, DecodedSound &sound, const CountedSource &source) {
    BlockReader blocks(sound);
    while (buffer.frames() < frames) {
        const AudioEditorBuffer block = blocks.next(frames - buffer.frames());
        if (block.isEmpty()) return;
        buffer = buffer.replacing({buffer.frames(), buffer.frames()}, block);
        source.addFrames(block.frames());
    }
}

AudioEditorBuffer emptyOf(const DecodedSound &sound) {
    return AudioEditorBuffer(sound.format().channels, sound.format().sampleRate);
}

// Whether most samples are other than 0. Silence is the same in whatever state a decoder is, which shows in what comes after
// it.
bool isHeard(const AudioEditorBuffer &sound) {
    std::int64_t silent = 0;
    sound.forEachSpan({0, sound.frames()},
                      [&](std::span<const float> part, FrameRange) { silent += std::count(part.begin(), part.end(), 0.0f); });
    return silent < sound.frames() * sound.channels() / 2;
}

// A sound in stretches that are decoded at the same time. Each goes on into the next by a joint: where both have the same
// samples there, out of the same place in the file, both decoders have come to the same state, and what follows is what one
// alone would have found.
class Stretches {
public:
    Stretches(DecodedSound &sound, const CountedSource &source)
        : source_(source), expected_(sound.expectedFrames()), first_(sound) {
        const std::int64_t count = std::min<std::int64_t>(parallelThreads(), expected_ / leastFrames);
        stretches_.resize(std::size_t(std::max<std::int64_t>(count, 1)));
        for (Stretch &stretch : stretches_) stretch.buffer = emptyOf(sound);
    }

    bool areMany() const { return stretches_.size() > 1; }

    void decode() {
        parallelFor(std::int64_t(stretches_.size()), 1, [&](std::int64_t lo, std::int64_t hi) {
            for (std::int64_t i = lo; i < hi; ++i) i == 0 ? decode(stretches_[0], end(0), first_) : decodeFrom(i);
        });
    }

    // What the first stretch holds and, where everything fits, the others.
    DecodedSamples joined() {
        const std::int64_t last = std::int64_t(stretches_.size()) - 1;
        AudioEditorBuffer whole = stretches_[0].buffer;
        for (std::int64_t i = 1; i <= last; ++i) {
            if (!fits(whole, i)) return readByTheFirst();
            whole = whole.replacing({start(i), whole.frames()}, stretches_[std::size_t(i)].buffer);
        }
        return {std::move(whole), endOf(last)};
    }

private:
    static constexpr std::int64_t leastFrames = std::int64_t(1) << 19, jointFrames = std::int64_t(1) << 13;

    struct Stretch {
        std::unique_ptr<DecodedSound> sound;  // of all but the first
        AudioEditorBuffer buffer;
        std::int64_t jointPlace = 0, endPlace = 0;  // in the source, behind the joint with the one before and behind all
    };

    std::int64_t start(std::int64_t i) const { return expected_ * i / std::int64_t(stretches_.size()); }
    std::int64_t end(std::int64_t i) const {
        return i + 1 == std::int64_t(stretches_.size()) ? toTheEnd : start(i + 1) + jointFrames;
    }

    void decode(Stretch &stretch, std::int64_t frames, DecodedSound &sound) const {
        readTo(stretch.buffer, jointFrames, sound, source_);
        stretch.jointPlace = sound.place();
        readTo(stretch.buffer, frames, sound, source_);
        stretch.endPlace = sound.place();
    }

    void decodeFrom(std::int64_t i) {
        Stretch &stretch = stretches_[std::size_t(i)];
        try {
            stretch.sound = first_.from(source_, start(i));
            if (stretch.sound) decode(stretch, end(i) == toTheEnd ? toTheEnd : end(i) - start(i), *stretch.sound);
        } catch (const DecodeFault &) {
            stretch.sound.reset();  // whether there is a fault, and which, the first finds out
        }
    }

    bool fits(const AudioEditorBuffer &before, std::int64_t i) const {
        const Stretch &stretch = stretches_[std::size_t(i)];
        const bool areThere = before.frames() == start(i) + jointFrames && stretch.buffer.frames() >= jointFrames;
        if (!stretch.sound || !areThere || stretches_[std::size_t(i - 1)].endPlace != stretch.jointPlace) return false;
        const AudioEditorBuffer joint = stretch.buffer.part({0, jointFrames});
        return before.part({start(i), before.frames()}) == joint && isHeard(joint);
    }

    DecodedSamples readByTheFirst() {
        AudioEditorBuffer &buffer = stretches_[0].buffer;
        readTo(buffer, toTheEnd, first_, source_);
        return {std::move(buffer), first_.end()};
    }

    DecodedEnd endOf(std::int64_t last) const {
        DecodedEnd end = stretches_[std::size_t(last)].sound->end();
        end.damagedFrames += first_.end().damagedFrames;
        return end;
    }

    const CountedSource &source_;
    const std::int64_t expected_;
    DecodedSound &first_;
    std::vector<Stretch> stretches_;
};

}  // namespace

CountedSource::CountedSource(const ByteSource &source, Progress &progress) : source_(source), progress_(progress) {
    progress.start(source.size());
}

std::size_t CountedSource::read(std::int64_t offset, std::span<std::byte> out) const {
    const std::size_t count = source_.read(offset, out);
    progress_.add(expectedFrames_ > 0 ? 0 : std::int64_t(count));
    return count;
}

void CountedSource::addFrames(std::int64_t frames) const {
    const double share = expectedFrames_ > 0 ? double(frames) / double(expectedFrames_) : 0;
    progress_.add(std::llround(share * double(source_.size())));
}

DecodedSamples readAllSamples(DecodedSound &sound, CountedSource &source) {
    Stretches stretches(sound, source);
    if (!stretches.areMany()) {
        AudioEditorBuffer buffer = emptyOf(sound);
        readTo(buffer, toTheEnd, sound, source);
        return {std::move(buffer), sound.end()};
    }
    source.countFrames(sound.expectedFrames());
    stretches.decode();
    return stretches.joined();
}

std::int64_t countByReading(DecodedSound &sound) {
    BlockReader blocks(sound);
    std::int64_t frames = 0;
    for (AudioEditorBuffer block = blocks.next(); !block.isEmpty(); block = blocks.next()) frames += block.frames();
    return frames;
}

}  // namespace kiv
