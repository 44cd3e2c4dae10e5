#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Audio/Files/AudioFileChunk.h"
#include "Audio/Files/AudioSampleEncoding.h"
#include "Audio/Files/SampleWrapping.h"
#include "Editor/AudioEditorCore/AudioEditorBuffer.h"

// A sound file in memory: its samples, what it is, every chunk that came with them, and every sample position stored in those
// chunks. The editor changes samples and positions; the chunks are carried so that saving writes the file back whole.
namespace kiv {

enum class AudioContainer { wav, aiff, aifc, coreAudio };  // coreAudio: read by a decoder that is not our own

struct AudioFileFormat {
    AudioContainer container = AudioContainer::wav;
    std::optional<AudioSampleEncoding> encoding;  // nothing for decoded files
    double sampleRate = 44100;                    // the file's exact rate, in hertz
    std::string typeName = "WAV";                 // as the user sees it
    std::string bitsDescription;
    std::string fileExtension = "wav";

    friend bool operator==(const AudioFileFormat &, const AudioFileFormat &) = default;
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

// What a decoded file says besides the sound, for other formats.
struct AudioFileTags {
    // How many of the first of each the ID3 tag says.
    struct InId3 {
        std::uint64_t texts = 0, pictures = 0, others = 0;
    };

    std::vector<std::pair<std::string, std::string>> texts;  // "TITLE" and the like, in UTF-8
    std::vector<FlacMetadataBlock> pictures;                 // as FLAC files hold them
    Bytes id3;                                               // the whole ID3 tag that stands in front
    std::vector<std::string> others;                         // what else there is, as the user is told of it
    InId3 inId3;
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
