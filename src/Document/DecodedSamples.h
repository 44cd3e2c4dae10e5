#pragma once

#include "Editor/AudioEditorCore/AudioEditorBuffer.h"
#include "Platform/DecodedReader.h"
#include "Support/Progress.h"

namespace kiv {

// What a decoder reads of: counts what is read, and lets the decoder hear of a wish to cancel as of a failure.
class CountedSource : public ByteSource {
public:
    CountedSource(const ByteSource &source, Progress &progress);
    std::int64_t size() const override { return source_.size(); }
    std::size_t read(std::int64_t offset, std::span<std::byte> out) const override;

    // From now on the frames that are decoded count, of so many expected, and not the bytes that are read.
    void countFrames(std::int64_t expected) { expectedFrames_ = expected; }
    void addFrames(std::int64_t frames) const;

private:
    const ByteSource &source_;
    Progress &progress_;
    std::int64_t expectedFrames_ = 0;  // 0: bytes count
};

struct DecodedSamples {
    AudioEditorBuffer buffer;
    DecodedEnd end;
};

// Everything of a sound that was just opened on the source: on all cores where the decoder can begin in the midst of it.
// Blocks; throws what DecodedSound does, and Cancelled.
DecodedSamples readAllSamples(DecodedSound &sound, CountedSource &source);

// How many frames there are, by decoding them; keeps none.
std::int64_t countByReading(DecodedSound &sound);

}  // namespace kiv
