#include "Document/Journal/StoredSamples.h"

#include <algorithm>

namespace kiv {
namespace {

using From = JournalPiece::From;

// Parts that follow each other where they stand are one piece.
void append(std::vector<JournalPiece> &pieces, const JournalPiece &piece, std::int64_t channels) {
    if (!pieces.empty()) {
        JournalPiece &last = pieces.back();
        const std::int64_t unit = piece.from == From::journal ? channels * std::int64_t(sizeof(float)) : 1;
        const bool follows = piece.from == From::nowhere || last.at + last.frames * unit == piece.at;
        if (last.from == piece.from && follows) return void(last.frames += piece.frames);
    }
    pieces.push_back(piece);
}

}  // namespace

StoredSamples::StoredSamples(const AudioEditorBuffer &base) : baseChannels_(base.channels()) {
    std::int64_t frame = 0;
    base.forEachBlock([&](const std::shared_ptr<const void> &block, std::int64_t first, std::span<const float> samples, auto) {
        blocks_[block].insert({first, {std::int64_t(samples.size()), From::base, frame}});
        frame += std::int64_t(samples.size()) / baseChannels_;
    });
}

// The longest part from that sample on that stands in one place, or is missing.
StoredSamples::Part StoredSamples::partAt(const std::weak_ptr<const void> &block, std::int64_t first, std::int64_t samples,
                                          std::int64_t channels) const {
    const auto entry = blocks_.find(block);
    if (entry == blocks_.end()) return {samples, From::nowhere, 0};
    const auto next = entry->second.upper_bound(first);
    if (next != entry->second.begin()) {
        const auto &[runFirst, run] = *std::prev(next);
        const std::int64_t into = first - runFirst;
        if (into < run.samples && (run.from != From::base || channels == baseChannels_))
            return {std::min(samples, run.samples - into), run.from,
                    run.at + (run.from == From::base ? into / channels : into * std::int64_t(sizeof(float)))};
    }
    const std::int64_t until = next == entry->second.end() ? samples : std::min(samples, next->first - first);
    return {until, From::nowhere, 0};
}

// visit(block, first, samples, originals, part): the samples of one part, and where it stands.
template <class Visit>
void StoredSamples::forEachPart(const AudioEditorBuffer &sound, Visit visit) const {
    sound.forEachBlock([&](const auto &block, std::int64_t first, std::span<const float> samples, const auto *originals) {
        while (!samples.empty()) {
            const Part part = partAt(block, first, std::int64_t(samples.size()), sound.channels());
            visit(block, first, samples.first(std::size_t(part.samples)), originals, part);
            first += part.samples;
            samples = samples.subspan(std::size_t(part.samples));
        }
    });
}

StoredSamples::Account StoredSamples::account(const AudioEditorBuffer &sound, std::int64_t journalEnd) {
    std::erase_if(blocks_, [](const auto &entry) { return entry.first.expired(); });
    Account account;
    account.end = journalEnd;
    std::int64_t originalBytes = 0;
    const auto place = [&](const auto &block, std::int64_t first, std::span<const float> samples, const auto *originals,
                           Part part) {
        const std::int64_t moreBytes = originals ? originals->bytes(first, part.samples) : 0;
        if (part.from == From::nowhere) {
            part.from = From::journal;
            part.at = account.end + journalRecordHeader;
            account.missing.push_back({samples, part.at, originals, first});
            account.end = part.at + std::int64_t(samples.size_bytes());
            originalBytes += moreBytes;
            blocks_[block].insert_or_assign(first, Run{part.samples, part.from, part.at});
        }
        if (part.from == From::journal) account.journalBytes += std::int64_t(samples.size_bytes()) + moreBytes;
        append(account.pieces, {part.from, part.at, part.samples / sound.channels()}, sound.channels());
    };
    forEachPart(sound, place);
    account.end += originalBytes;
    return account;
}

std::vector<JournalPiece> StoredSamples::find(const AudioEditorBuffer &sound) const {
    std::vector<JournalPiece> pieces;
    forEachPart(sound, [&](auto &, auto, auto, auto, const Part &part) {
        append(pieces, {part.from, part.at, part.samples / sound.channels()}, sound.channels());
    });
    return pieces;
}

}  // namespace kiv
