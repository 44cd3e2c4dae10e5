#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <span>
#include <vector>

#include "Document/Journal/JournalRecords.h"
#include "Editor/AudioEditorCore/AudioEditorBuffer.h"

namespace kiv {

// An account of which samples in memory need not be written to a journal any more, since they stand in the file that was read
// or in the journal already. It holds no samples: of those that have gone from memory it forgets where they were. Values; any
// thread, one at a time.
class StoredSamples {
public:
    // Samples that are to be written behind what the journal holds, in this order: a record each.
    struct Missing {
        std::span<const float> samples;
        std::int64_t at = 0;                         // the byte at which they are to begin
        const SampleOriginals *originals = nullptr;  // what floats leave out of them, to be written behind all samples
        std::int64_t first = 0;                      // of those
    };
    struct Account {
        std::vector<JournalPiece> pieces;
        std::vector<Missing> missing;
        std::int64_t end = 0;           // of the journal, with all that is missing written
        std::int64_t journalBytes = 0;  // that the sound needs of the journal
    };

    StoredSamples() = default;
    // Of a sound that a file holds.
    explicit StoredSamples(const AudioEditorBuffer &base);

    // Where a sound's frames are, once what is missing has been written to a journal that ends at that byte; it counts as
    // written from here on.
    Account account(const AudioEditorBuffer &sound, std::int64_t journalEnd);
    // The same as it is: what is missing is nowhere.
    std::vector<JournalPiece> find(const AudioEditorBuffer &sound) const;

private:
    struct Run {
        std::int64_t samples;
        JournalPiece::From from;
        std::int64_t at;  // of the first one, as JournalPiece counts
    };
    using Runs = std::map<std::int64_t, Run>;  // by their first sample in the block; they do not overlap
    struct Part {
        std::int64_t samples;
        JournalPiece::From from;
        std::int64_t at;
    };

    Part partAt(const std::weak_ptr<const void> &block, std::int64_t first, std::int64_t samples, std::int64_t channels) const;
    template <class Visit>
    void forEachPart(const AudioEditorBuffer &sound, Visit visit) const;

    std::map<std::weak_ptr<const void>, Runs, std::owner_less<>> blocks_;
    std::int64_t baseChannels_ = 0;
};

}  // namespace kiv
