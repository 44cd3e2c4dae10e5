#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Editor/AudioEditorCore/AudioEditorBuffer.h"

// A sound file in memory: its samples, what it is, every chunk that came with them, and every sample position stored in those
// chunks. The editor changes samples and positions; the chunks are carried so that saving writes the file back whole.
namespace kiv {

using Bytes = std::vector<std::byte>;

enum class AudioContainer { wav, aiff, aifc, coreAudio };  // coreAudio: read by a decoder that is not our own

struct AudioSampleEncoding {
    enum class Kind { integer, floating };

    Kind kind = Kind::integer;
    int bytes = 2;       // per sample: 1 … 4 for integers, 4 or 8 for floats
    int validBits = 16;  // meaningful bits, at most 8 · bytes
    bool bigEndian = false;
    bool unsigned8 = false;  // 8-bit samples stored with 128 as zero

    // "24-bit", "32-bit float".
    std::string description() const;
    friend bool operator==(const AudioSampleEncoding &, const AudioSampleEncoding &) = default;
};

struct AudioFileFormat {
    AudioContainer container = AudioContainer::wav;
    std::optional<AudioSampleEncoding> encoding;  // nothing for decoded files
    double sampleRate = 44100;                    // the file's exact rate, in hertz
    std::string typeName = "WAV";                 // as the user sees it
    std::string bitsDescription;
    std::string fileExtension = "wav";

    friend bool operator==(const AudioFileFormat &, const AudioFileFormat &) = default;
};

// A place inside a chunk where a sample position is stored, as 32 unsigned bits but for `real`. Small, for a file may hold
// millions.
struct AudioFilePositionField {
    enum class Kind : std::uint8_t {
        frame,         // the position itself
        inclusiveEnd,  // the last frame inside a range: the position − 1
        length,        // frames counted from positions[from]
        real,          // the position itself, as a 64-bit float; in CAF files
    };

    std::uint32_t offset = 0;  // bytes into the chunk's data
    std::uint32_t index = 0;   // into AudioFileContents::positions
    std::uint32_t from = 0;    // kind length only
    Kind kind = Kind::frame;
    bool bigEndian = false;

    friend bool operator==(const AudioFilePositionField &, const AudioFilePositionField &) = default;
};

struct AudioFileChunk {
    std::string id;  // four bytes, exactly as in the file; none: many chunks, with their headers and pad bytes
    Bytes data;      // the payload as in the file; empty for the audio chunk, whose place it marks
    std::vector<AudioFilePositionField> fields;
    std::int64_t sizeInFile = 0;  // bytes of payload that the file held, also for the audio chunk

    friend bool operator==(const AudioFileChunk &, const AudioFileChunk &) = default;
};

// Indices into positions, not frames. Recorded only while positions[start] < positions[end].
struct AudioFileLoop {
    std::int64_t start = 0;
    std::int64_t end = 0;
    friend bool operator==(const AudioFileLoop &, const AudioFileLoop &) = default;
};

struct FlacMetadataBlock {
    static constexpr int application = 2, tags = 4, picture = 6;  // the types that are kept
    static constexpr std::size_t mostBytes = 0xFFFFFF;            // that a block can hold

    int type = 0;
    Bytes data;
    friend bool operator==(const FlacMetadataBlock &, const FlacMetadataBlock &) = default;
};

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

// What a decoded file says besides the sound, for other formats.
struct AudioFileTags {
    std::vector<std::pair<std::string, std::string>> texts;  // "TITLE" and the like, in UTF-8
    std::vector<FlacMetadataBlock> pictures;                 // as FLAC files hold them
    Bytes id3;                             // the whole ID3 tag that stands in front, in which all this is said
    std::vector<std::string> others;       // what else there is, as the user is told of it
    std::optional<SampleWrapping> around;  // of compressed samples; the positions of the contents stand in its chunks
};

// The entry of coreAudioSettings that says what the file is, as four characters: ".mp3", "flac".
inline constexpr const char *formatIdentifierKey = "formatIdentifier";
inline constexpr const char *bitDepthKey = "bitDepth";  // of its samples; 0: they have none that comes back exactly

struct AudioFileContents {
    AudioFileFormat format;
    AudioEditorBuffer buffer;
    // In file order. The first chunk with the audio chunk's id ("data", "SSND") is where the samples go; a later one with that
    // id is a chunk like any other.
    std::vector<AudioFileChunk> chunks;
    std::vector<std::int64_t> positions;  // frames, in the order found, none above the frame count
    std::optional<AudioFileLoop> loop;
    std::optional<std::map<std::string, std::string>> coreAudioSettings;
    std::vector<FlacMetadataBlock> flacMetadata;
    AudioFileTags tags;                      // of a decoded file
    std::optional<SampleWrapping> wrapping;  // decoded files that can be written back all the same
    std::int64_t missingFrames = 0;          // that the file says it has, and does not hold: it has been cut off
    bool isCutOff = false;                   // its end is missing, and nobody knows how much: the missing frames are the least
    std::int64_t damagedFrames = 0;          // that could not be decoded, and are silent
    Bytes leading;                           // ID3 tags before the start of a FLAC file; written back as they are
    Bytes trailing;                          // what stands behind the last chunk, or the last frame of a FLAC file; the same

    // Whether it can be written back in its own format with nothing lost. Of decoded files FLAC can, and those with a wrapping
    // that fits the sound.
    bool canSaveInPlace() const;
    // Whether its own format has a place for a loop.
    bool canStoreLoop() const;
    // The entry of coreAudioSettings; empty when there is none.
    std::string decodedSetting(const char *key) const;
};

// What the editor shows of the positions: the loop's frames, and all other positions in their order.
struct AudioFileEditorPositions {
    std::vector<std::int64_t> markers;
    std::optional<FrameRange> loop;
};
AudioFileEditorPositions editorPositions(const AudioFileContents &contents);
// The reverse: the contents with markers and loop put back where editorPositions found them. The numbers of markers must match;
// a loop is put back only where the contents have one, and without one the stored loop stays as it is.
AudioFileContents withEditorPositions(AudioFileContents contents, const std::vector<std::int64_t> &markers,
                                      std::optional<FrameRange> loop);

// Chunk ids: the only ones that a file made from part of another keeps, and those that describe the samples and turn wrong with
// any edit, so that they are left out when writing.
bool isBareChunkId(const std::string &id);
bool isStaleChunkId(const std::string &id);

// The id as text to show: bytes that are not valid UTF-8 become replacement characters.
std::string displayText(const std::string &chunkId);

}  // namespace kiv
