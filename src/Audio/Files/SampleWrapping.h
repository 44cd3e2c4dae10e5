#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "Audio/Files/AudioFileChunk.h"
#include "Audio/Files/AudioSampleEncoding.h"
#include "Editor/AudioEditorCore/AudioEditorBuffer.h"

namespace kiv {

// All that stands around the samples of a file, where these are in one piece, kept as it is: of a file of a kind that is not
// our own, so that it can be written back with other samples and nothing is lost, and of any whose samples are compressed for
// what it says of them. riff and aifc are only of these.
struct SampleWrapping {
    enum class Kind : std::uint8_t { au, caf, w64, rf64, bw64, rifx, riff, aifc };

    // A number that says how much there is: of bytes of samples, of frames, of bytes of the whole file.
    struct Size {
        enum class Of { samples, frames, file };
        std::uint32_t offset = 0;  // into the part's header and payload together
        int bytes = 4;             // 4 or 8
        Of of = Of::samples;
        std::int64_t more = 0;  // that are counted too, or left out
    };
    // A chunk with its header and what fills it up behind; the file's own header, and what is no chunk, have no id.
    struct Part {
        AudioFileChunk chunk;
        Bytes header, pad;
        bool isBare = true;  // says what the samples are
        std::vector<Size> sizes;

        std::size_t size() const { return header.size() + chunk.data.size() + pad.size(); }
        friend bool operator==(const Part &a, const Part &b) {
            return a.header == b.header && a.chunk.data == b.chunk.data && a.pad == b.pad;
        }
    };

    Kind kind = Kind::au;
    AudioSampleEncoding encoding;
    std::int64_t channels = 1;
    std::int64_t frames = 0;     // of the file
    bool countsFrames = false;   // something in the parts stands for frames and cannot follow edits: their number has to stay
    bool namesChannels = false;  // and something else for channels
    std::int64_t alignment = 1;  // zeros behind the samples fill up their bytes, with `headerBytes`, to a multiple of this
    std::int64_t headerBytes = 0;
    std::vector<Part> parts;
    std::size_t samplesBefore = 0;  // index of the part behind the samples; the number of parts when none is

    // Whether the chunks are those of a WAV or an AIFF file, with positions and loops among them.
    bool isFormLike() const { return kind != Kind::au && kind != Kind::caf; }
    std::endian order() const;  // of the numbers in it
    // Whether a sound can take the place of the file's own.
    bool fits(const AudioEditorBuffer &sound) const {
        return (!namesChannels || sound.channels() == channels) && (!countsFrames || sound.frames() == frames);
    }
    friend bool operator==(const SampleWrapping &, const SampleWrapping &) = default;
};

// Only what says what the samples are.
SampleWrapping bareWrapping(SampleWrapping wrapping);

// The wrapping around another sound: sizes and number of channels follow, and what names a speaker for each channel is left
// out where they are others. Throws AudioFileError `tooLarge`.
SampleWrapping wrappingFor(SampleWrapping wrapping, const AudioEditorBuffer &sound);

// How many zeros stand behind the samples.
std::int64_t paddingBehind(const SampleWrapping &wrapping, std::int64_t sampleBytes);

}  // namespace kiv
