#pragma once

#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "Audio/Files/AudioFileContents.h"

// What a file says of its sound besides the samples, in the terms of no format, so that it can go from one to another. Loop and
// positions stay where they are in the contents: a note names them by their index.
namespace kiv {

// How a sampler plays it.
struct SoundInstrument {
    int note = 60;                    // the key on which it sounds as it is, 0 … 127
    int detune = 0;                   // cents that playing it is to be raised by, −50 … 50
    int lowNote = 0, highNote = 127;  // the keys that play it
    int lowVelocity = 1, highVelocity = 127;
    int gainDb = 0;
};

struct SoundNotes {
    using Instrument = SoundInstrument;

    struct Marker {
        std::uint32_t index = 0;  // into positions
        std::string name;
    };

    std::vector<Marker> markers;  // all positions but the loop's, in their order
    std::optional<Instrument> instrument;
    bool alternates = false;                                 // the loop is played forth and back
    std::vector<std::pair<std::string, std::string>> texts;  // "TITLE", …: UTF-8, one key perhaps several times
    std::vector<FlacMetadataBlock> pictures;
    Bytes id3;                        // a whole ID3 tag
    bool isAllInId3 = false;          // texts, pictures and others are what that says
    std::vector<std::string> others;  // what else there is, as the user is told of it, once or more: “bext”
};

// A key of texts, and what WAV and AIFF call it; empty where they have no place for it.
struct TextKey {
    const char *key, *info, *aiff;
};
std::span<const TextKey> textKeys();

SoundNotes wavNotes(const AudioFileContents &contents);
SoundNotes aiffNotes(const AudioFileContents &contents);
SoundNotes flacNotes(const AudioFileContents &contents);
SoundNotes wrappedNotes(const AudioFileContents &contents);
SoundNotes soundNotes(const AudioFileContents &contents);  // by container; a decoded file's are FLAC's or none

// Append notes to contents as the format writes them, and return what it has no place for, as the user is told of it. The loop
// of the contents, which names positions that no chunk holds yet, gets its chunks; it is gone where it cannot be held.
std::vector<std::string> putWavNotes(AudioFileContents &contents, const SoundNotes &notes);
std::vector<std::string> putAiffNotes(AudioFileContents &contents, const SoundNotes &notes);
std::vector<std::string> putFlacNotes(AudioFileContents &contents, const SoundNotes &notes);

// What of the notes WAV and AIFF have no place for, texts aside: they hold pictures in an ID3 tag alone.
std::vector<std::string> leftOfNotes(const SoundNotes &notes);

// Bytes of a file as UTF-8 without zeros at the end: those that are no UTF-8 are taken for Latin-1.
std::string noteText(std::span<const std::byte> bytes);
// In the order in which each comes first.
std::vector<std::string> eachOnce(std::vector<std::string> names);
// A chunk's name for the user.
std::string quotedId(const std::string &id);

}  // namespace kiv
