#pragma once

#include <bit>
#include <span>
#include <string_view>
#include <vector>

#include "Audio/Files/AudioFileImage.h"

namespace kiv {

// Builds the image of a RIFF or FORM file chunk by chunk, each padded to an even length. Borrows the contents.
class FormBuilder {
public:
    // The largest numbers that the format's chunk has room for.
    struct Limits {
        std::int64_t channels, rate;
    };
    // Throws AudioFileError `unsupported` when the contents say no sample encoding, and `writeCheckFailed` when they are beyond
    // the limits: the number written would be another one.
    FormBuilder(std::string_view group, std::string_view form, std::endian order, const AudioFileContents &contents,
                Limits limits);

    void chunk(std::string_view id, std::span<const std::byte> payload);
    // A chunk of a header and all samples; at most one.
    void audioChunk(std::string_view id, std::span<const std::byte> header);
    void raw(std::span<const std::byte> bytes);
    // Sets the form's size. Throws AudioFileError `tooLarge`. The builder must not be used any more.
    AudioFileCodec::AudioFileImage finish();

private:
    void header(std::string_view id, std::int64_t size);
    void pad(std::int64_t size);
    Bytes &bytes() { return pieces_.back().bytes; }

    const AudioFileContents &contents_;
    std::endian order_;
    std::int64_t sampleBytes_ = 0;
    std::vector<AudioFileCodec::AudioFileImage::Piece> pieces_;
};

// The first chunk of an id; null when there is none.
const AudioFileChunk *firstChunk(const AudioFileContents &contents, std::string_view id);

}  // namespace kiv
