#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "Audio/Files/AudioFileContents.h"
#include "Editor/AudioEditorCore/SampleOriginals.h"
#include "Platform/FileSystem.h"
#include "Support/ByteSource.h"

// What stands in a document's journal: records one after the other, each with its length and a digest of all of it, so that
// whatever a crash has torn is known for what it is and the last whole one counts. Values and functions on them; nothing here
// touches files. Numbers stand as the machine has them: a journal never leaves it. Each record also says of what members it is
// made, so that a program in which they are others knows it for what it cannot read.
namespace kiv {

// Frames of a sound and where they are to be had.
struct JournalPiece {
    enum class From : std::int64_t {
        base,     // the file that was read: `at` is a frame of it
        journal,  // this journal: `at` is the byte at which the samples, as 32-bit floats, begin
        nowhere,  // only in memory
    };

    From from = From::base;
    std::int64_t at = 0;
    std::int64_t frames = 0;
    friend bool operator==(const JournalPiece &, const JournalPiece &) = default;
};

// The file that the sound was read from, and where else it is kept.
struct JournalBase {
    std::string path;
    std::optional<FileSystem::Identity> identity;  // none: no piece may come from it
    std::uint64_t print = 0;                       // of its bytes, see filePrint()
    std::string kept;                              // a name in the journal's folder; empty: it is kept nowhere else
    bool keptIsLink = false;                       // the same file by another name: whoever writes to one writes to both
    std::optional<AudioFileContents> contents;     // without the samples; none where there is too much of it
};

// The document after an edit.
struct JournalState {
    std::uint64_t order = 0;     // grows with every state and save of a document
    std::int64_t writtenAt = 0;  // milliseconds since 1970
    std::int64_t channels = 1;
    std::int64_t sampleRate = 44100;
    std::vector<JournalPiece> pieces;
    std::vector<std::int64_t> markers;
    std::optional<FrameRange> loop;
    std::vector<FrameRange> slices;
    std::int64_t cursor = 0;
    std::optional<FrameRange> selection;
};

// Says that a file with this digest is about to take its place at `path`: it then holds this sound, and with it all that was
// done before in the order.
struct JournalSave {
    std::string path;
    std::uint64_t digest = 0;
    std::uint64_t order = 0;
    std::vector<JournalPiece> pieces;
};

// What 32-bit floats leave out of samples that stand before it, where they were wider: see SampleOriginals.
struct JournalOriginals {
    std::int64_t at = 0;  // the byte at which the first of the samples begins
    SampleOriginals::Word word{};
    int width = 1;  // of a difference, in bytes
    Bytes differences;
};

enum class JournalRecord : std::uint32_t { base = 1, samples, state, save, originals };
inline constexpr std::int64_t journalRecordHeader = 32;  // bytes before a record's own

// What stands before a record's bytes.
Bytes recordHeader(JournalRecord kind, std::span<const std::byte> bytes);
// Whole records.
Bytes encoded(const JournalBase &base);
Bytes encoded(const JournalState &state);
Bytes encoded(const JournalSave &save);
Bytes encoded(const JournalOriginals &originals);

// The last whole record of each kind, all saves, and of the states the last one that needs no samples which are damaged;
// `whole` is the byte behind the last record. Samples are checked where asked for, which reads all of the journal. Throws
// std::system_error when reading fails.
struct JournalContents {
    std::optional<JournalBase> base;
    std::optional<JournalState> state;
    std::vector<JournalSave> saves;
    std::int64_t whole = 0;
    bool isDamaged = false;              // there may have been a later state
    std::optional<std::string> foreign;  // written by another version, about the document with this path
    // Where what floats leave out is to be had, found where the samples are checked: so many differences from that byte on.
    struct Originals {
        std::int64_t at = 0;
        SampleOriginals::Word word{};
        int width = 1;
        std::int64_t samples = 0;
        std::int64_t where = 0;
    };
    std::vector<Originals> originals;  // for each kind of word in the order of the samples
};
enum class JournalCheck { positions, samplesToo };
JournalContents readJournal(const ByteSource &source, JournalCheck check);

// A fingerprint of a file from some of its parts, the first and the last among them: quick for files of any size. Throws
// std::system_error.
std::uint64_t filePrint(const ByteSource &source);
// The same of every byte.
std::uint64_t fileDigest(const ByteSource &source);

}  // namespace kiv
