#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "Audio/Files/WrappingDialects.h"

// What the chunks of a wrapping say of the samples in it.
namespace kiv {

// Whether the samples have to be ours to read.
enum class WrappedSamples { plain, packed };

struct WrappedFormat {
    std::int64_t channels = 0;
    double sampleRate = 0;
    AudioSampleEncoding encoding;

    std::int64_t frameBytes() const { return channels * encoding.bytes; }
};

// As many as a WAV file could say, whatever this one has room for.
inline bool areChannels(std::int64_t channels) { return channels > 0 && channels <= 0xFFFF; }

// A size that says to look elsewhere, or to read on to the end; `width` is 4 or 8 bytes.
inline bool isOpenSize(std::int64_t size, std::size_t width) { return size == (width == 4 ? std::int64_t(0xFFFFFFFF) : -1); }

class WrappingDescription {
public:
    // The dialect outlives this.
    WrappingDescription(const WrappingDialect &dialect, WrappedSamples samples)
        : dialect_(dialect), isPacked_(samples == WrappedSamples::packed) {}

    // Takes what a chunk says, in the order of the file, and notes in it where it says how much there is; false when it says
    // nothing of the samples. Throws AudioFileError for samples in a WAV format that is not ours, where they have to be.
    bool read(SampleWrapping::Part &part);

    const std::optional<WrappedFormat> &format() const { return format_; }
    // Whether a chunk told sizes that have no room in the headers, and the bytes of samples it told.
    bool tellsSizes() const { return fileBytes_ > 0; }
    std::int64_t sampleBytes() const { return sampleBytes_; }
    std::int64_t frames() const { return frames_; }  // below 0: nobody tells
    // Of the file as the user knows it, with the encoding of packed samples.
    std::string typeName() const { return isPacked_ ? packedName_ : dialect_.name; }

private:
    bool readCaf(const SampleWrapping::Part &part);
    void readFact(SampleWrapping::Part &part);
    void readSizes(SampleWrapping::Part &part);
    void readFormat(std::span<const std::byte> fmt);
    void readDesc(std::span<const std::byte> desc);
    void takePacked(const std::string &type);
    void takePackedAs(const std::string &before, const std::string &behind);

    const WrappingDialect &dialect_;
    const bool isPacked_;
    std::string packedName_;
    std::optional<WrappedFormat> format_;
    bool hasFact_ = false, hasSizes_ = false;
    std::int64_t fileBytes_ = 0, sampleBytes_ = 0, frames_ = -1;  // as the file says
};

}  // namespace kiv
