#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "Support/ByteSource.h"

// Reading sound files of kinds that others have decoders for. Calls may block; any thread but the audio thread.
namespace kiv {

struct DecodedFormat {
    std::string typeName;    // as the user knows it: "FLAC", "MP3"
    std::string identifier;  // four characters: "flac", ".mp3", "lpcm"
    int bits = 0;            // of a sample in the file, where it has a depth that comes back exactly; 0: none
    bool isFloat = false;
    std::int64_t channels = 1;
    std::int64_t sampleRate = 44100;
    // More than a 32-bit float holds.
    bool isWide() const { return !isFloat && bits > 24; }
};

// What turned out to be wrong with a sound that was read to its end.
struct DecodedEnd {
    std::int64_t missingFrames = 0;           // that the file says it has behind the last one that is there
    std::int64_t damagedFrames = 0;           // of those that were read: they could not be decoded and are silent
    std::optional<std::int64_t> offset = {};  // where in the source the sound ended, where that is known
    std::optional<std::int64_t> frame = {};   // the number of the frame behind the last, where the file numbers them
};

struct DecodedPicture {
    std::string mediaType;  // "image/jpeg"
    std::string kind;       // of ID3's kinds of pictures: "Cover (front)"; may be empty
    std::string description;
    std::vector<std::byte> data;
};

// What a file says besides the sound.
struct DecodedTags {
    std::vector<std::pair<std::string, std::string>> texts;  // "TITLE", "ARTIST", "COMMENT", … and their texts in UTF-8
    std::vector<DecodedPicture> pictures;
    std::vector<std::string> others;  // what else there is, as the user is told of it: chapters
};

// Why a file that is of a known kind cannot be decoded; what() is the reason in a few words, without a full stop.
struct DecodeFault : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// A sound file being decoded from its start. What the file says of its own length is not believed: it ends where no more
// comes. Throws DecodeFault where it is damaged, and what its source throws; must not outlive that.
class DecodedSound {
public:
    virtual ~DecodedSound() = default;
    virtual const DecodedFormat &format() const = 0;
    // The next interleaved samples, whole frames of them, full scale being ±1; fewer than asked for only at the end. Returns
    // how many frames.
    virtual std::int64_t read(std::span<float> out) = 0;
    // The same as integers with a full scale of 2³¹, and with nothing rounded; only where the format is wide.
    virtual std::int64_t read(std::span<std::int32_t> out) = 0;
    // All frames there are, where that can be told for certain without decoding them; reading may not go on afterwards.
    virtual std::optional<std::int64_t> countFrames() = 0;
    // To be asked when no more frames come.
    virtual DecodedEnd end() const { return {}; }

    // So that several cores share a long sound: about how many frames come, 0 where that is unknown or where reading begins at
    // the start alone.
    virtual std::int64_t expectedFrames() const { return 0; }
    // The same sound from a frame on, nothing where there is none such. While this one and others are read; the source must be
    // of the same bytes. Some frames may pass until it finds what the others find there; it throws DecodeFault where anything
    // is wrong with the sound, also what the one from the start could read on behind.
    virtual std::unique_ptr<DecodedSound> from(const ByteSource &, std::int64_t) const { return nullptr; }
};

class DecodedReader {
public:
    virtual ~DecodedReader() = default;
    // Nothing when the contents are of no kind that it knows. Throws as DecodedSound does.
    virtual std::unique_ptr<DecodedSound> open(const ByteSource &source) = 0;
    // Nothing when it cannot tell.
    virtual std::optional<DecodedTags> tags(const ByteSource &) { return std::nullopt; }
};

}  // namespace kiv
