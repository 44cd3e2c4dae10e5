#include "Document/Journal/JournalRecovery.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>

#include "Document/AudioFileReading.h"
#include "Platform/InPlaceReplace.h"

namespace kiv {
namespace {

using From = JournalPiece::From;

bool comesFromBase(const JournalPiece &piece) { return piece.from == From::base; }

bool needsBase(const JournalState &state) { return std::ranges::any_of(state.pieces, comesFromBase); }

bool isSameFile(const FileSystem::Identity &a, const FileSystem::Identity &b) {
    return a.inode == b.inode && a.size == b.size && a.modifiedNs == b.modifiedNs;
}

bool hasPrint(FileSystem &fileSystem, const std::string &path, const JournalBase &base) {
    return filePrint(*fileSystem.open(path)) == base.print;
}

// Whether the file at the base's path is still the one that was read. In a folder that was mounted anew files have other
// numbers, and times as coarse as that file system stores them; a file that was put back after a save had died has a new time.
bool isStillThere(FileSystem &fileSystem, const JournalBase &base, Files::Recovery recovery) {
    const auto now = fileSystem.identity(base.path);
    if (!now || now->size != base.identity->size) return false;
    if (now == base.identity) return true;
    constexpr std::int64_t coarseNs = 2'000'000'000;
    const bool isAsOld = std::abs(now->modifiedNs - base.identity->modifiedNs) <= coarseNs;
    return (isAsOld || recovery == Files::Recovery::restored) && hasPrint(fileSystem, base.path, base);
}

// What cannot be looked at is not there.
template <class Look>
bool holds(Look look) {
    try {
        return look();
    } catch (const std::system_error &) {
        return false;
    }
}

// Where the file that was read can still be read; nothing: nowhere.
std::optional<std::string> findBase(const JournalFolder &folder, const JournalBase &base) {
    FileSystem &fileSystem = folder.fileSystem;
    const bool isThere = holds([&] {
        const auto recovery = recoverInPlace(fileSystem, base.path);
        return base.identity && isStillThere(fileSystem, base, recovery);
    });
    if (isThere) return base.path;
    const std::string kept = folder.path + "/" + base.kept;
    const bool isKept = holds([&] {
        const auto now = base.identity && !base.kept.empty() ? fileSystem.identity(kept) : std::nullopt;
        const bool isWhole = now && (base.keptIsLink ? isSameFile(*now, *base.identity) : now->size == base.identity->size);
        return isWhole && hasPrint(fileSystem, kept, base);
    });
    return isKept ? std::optional(kept) : std::nullopt;
}

// The last of the saves that the journal tells of which has put its file in place. What it has written may look like the file
// as it was, where the time is coarse and the difference small: only a file that nobody has touched is not looked at.
std::optional<JournalSave> saveInPlace(const JournalFolder &folder, const JournalContents &contents) {
    const JournalBase &base = *contents.base;
    const auto isInPlace = [&](const JournalSave &save) {
        return holds([&] {
            const bool isUntouched = save.path == base.path && folder.fileSystem.identity(base.path) == base.identity;
            return !isUntouched && fileDigest(*folder.fileSystem.open(save.path)) == save.digest;
        });
    };
    const auto found = std::find_if(contents.saves.rbegin(), contents.saves.rend(), isInPlace);
    return found == contents.saves.rend() ? std::nullopt : std::optional(*found);
}

// The same frames, taken from the file as it was saved where that has them.
std::vector<JournalPiece> afterSave(const std::vector<JournalPiece> &pieces, const std::vector<JournalPiece> &saved) {
    std::vector<JournalPiece> result;
    for (JournalPiece piece : pieces) {
        if (piece.from != From::base) result.push_back(piece);
        while (piece.from == From::base && piece.frames > 0) {
            std::int64_t start = 0, nearest = piece.frames;
            std::optional<JournalPiece> found;
            for (const JournalPiece &each : saved) {
                const std::int64_t into = piece.at - each.at;
                if (each.from == From::base && into >= 0 && into < each.frames)
                    found = {From::base, start + into, std::min(piece.frames, each.frames - into)};
                else if (each.from == From::base && into < 0)
                    nearest = std::min(nearest, -into);
                start += each.frames;
            }
            result.push_back(found.value_or(JournalPiece{From::nowhere, 0, nearest}));
            piece.at += result.back().frames;
            piece.frames -= result.back().frames;
        }
    }
    return result;
}

using Condition = AbandonedJournal::Condition;

// What has been read of a journal, and which file its pieces come from.
struct Found {
    JournalContents contents;
    std::string path;                 // of the document
    std::optional<std::string> base;  // to be read
    bool isFinished = false;          // a save had written all there is
    bool isBaseAsItWas = false;
    bool isOwnSave = false;  // what stands in the document's place was saved by this program
    Condition condition = Condition::asItWas;

    bool canBeRestored() const { return condition <= Condition::changed; }
};

bool lacksSome(const JournalState &state) {
    return std::ranges::any_of(state.pieces, [](const JournalPiece &piece) { return piece.from == From::nowhere; });
}

// With the file as it was saved beneath it. What was brought back while it was saved is not in there; then it has to come from
// the file as it was before, if that is kept.
Found afterSave(Found found, const JournalSave &save) {
    Found saved = found;
    saved.isFinished = saved.contents.state->order <= save.order;
    saved.contents.state->pieces = afterSave(saved.contents.state->pieces, save.pieces);
    saved.path = save.path;
    saved.base = save.path;
    saved.isBaseAsItWas = true;
    found.isOwnSave = found.path == save.path;
    return !saved.isFinished && lacksSome(*saved.contents.state) && found.base ? found : saved;
}

Condition conditionOf(const Found &found) {
    const JournalContents &contents = found.contents;
    const bool lacksBase = !found.base && (needsBase(*contents.state) || !contents.base->contents);
    if (lacksSome(*contents.state) || lacksBase) return Condition::lost;
    return found.isBaseAsItWas ? Condition::asItWas : Condition::changed;
}

Found look(const JournalFolder &folder, const std::string &path, JournalCheck check) {
    Found found;
    found.contents = readJournal(*folder.fileSystem.open(path), check);
    const JournalContents &contents = found.contents;
    found.path = contents.foreign.value_or(contents.base ? contents.base->path : "");
    if (contents.foreign || !contents.base || !contents.state) {
        found.condition = contents.foreign ? Condition::foreign : Condition::damaged;
        return found;
    }
    found.base = findBase(folder, *contents.base);
    found.isBaseAsItWas = found.base == found.path;
    if (const auto save = saveInPlace(folder, contents)) found = afterSave(std::move(found), *save);
    found.condition = conditionOf(found);
    return found;
}

void readExactly(const ByteSource &journal, std::int64_t at, std::span<std::byte> bytes) {
    if (at < 0 || journal.read(at, bytes) < bytes.size()) throw AudioFileError::unreadable("the journal is torn");
}

using Kept = JournalContents::Originals;

// Of the samples that begin at a byte, as far as they are among those kept.
void readDifferences(const ByteSource &journal, const Kept &kept, std::int64_t at, std::span<std::int64_t> out) {
    const std::int64_t skipped = (kept.at - at) / std::int64_t(sizeof(float));
    const std::int64_t lo = std::max<std::int64_t>(skipped, 0), hi = std::min(skipped + kept.samples, std::int64_t(out.size()));
    if (lo >= hi) return;
    const auto bytes = std::size_t((hi - lo) * kept.width);
    const SampleOriginals::Part part{kept.width, std::make_unique<std::byte[]>(bytes)};
    readExactly(journal, kept.where + (lo - skipped) * kept.width, {part.differences.get(), bytes});
    SampleOriginals::read(part, 0, out.subspan(std::size_t(lo), std::size_t(hi - lo)));
}

std::unique_ptr<const SampleOriginals> readOriginals(const ByteSource &journal, std::int64_t at, std::int64_t samples,
                                                     const std::vector<Kept> &allKept) {
    auto originals = std::make_unique<SampleOriginals>(samples);
    for (const auto word : SampleOriginals::words) {
        std::vector<Kept> kept;
        std::ranges::copy_if(allKept, std::back_inserter(kept), [=](const Kept &each) { return each.word == word; });
        if (!kept.empty()) originals->expect(word);
        for (std::int64_t first = 0; first < samples && !kept.empty(); first += SampleOriginals::partSamples) {
            std::vector<std::int64_t> differences(std::size_t(std::min(SampleOriginals::partSamples, samples - first)));
            const std::int64_t begin = at + first * std::int64_t(sizeof(float));
            const std::int64_t end = begin + std::int64_t(differences.size() * sizeof(float));
            const auto ends = [](const Kept &each) { return each.at + each.samples * std::int64_t(sizeof(float)); };
            for (auto each = std::ranges::upper_bound(kept, begin, {}, ends); each != kept.end() && each->at < end; ++each)
                readDifferences(journal, *each, begin, differences);
            originals->keep(word, first, differences);
        }
    }
    return originals->isEmpty() ? nullptr : std::move(originals);
}

AudioEditorBuffer readSamples(const ByteSource &journal, const JournalPiece &piece, const JournalContents &contents) {
    const JournalState &state = *contents.state;
    SampleMemory samples{std::size_t(piece.frames * state.channels)};
    readExactly(journal, piece.at, std::as_writable_bytes(std::span(samples.data(), samples.size())));
    auto originals = readOriginals(journal, piece.at, std::int64_t(samples.size()), contents.originals);
    return AudioEditorBuffer(std::move(samples), state.channels, state.sampleRate, std::move(originals));
}

// Halves are joined, so that many pieces take no longer than they have to.
AudioEditorBuffer joined(std::span<const AudioEditorBuffer> parts, const JournalState &state) {
    if (parts.empty()) return AudioEditorBuffer(state.channels, state.sampleRate);
    if (parts.size() == 1) return parts.front().atRate(state.sampleRate);
    const std::size_t half = parts.size() / 2;
    const AudioEditorBuffer first = joined(parts.first(half), state);
    return first.replacing({first.frames(), first.frames()}, joined(parts.subspan(half), state));
}

AudioEditorBuffer assembled(const JournalContents &contents, const ByteSource &journal, const AudioEditorBuffer *base,
                            const Progress &progress) {
    const JournalState &state = *contents.state;
    std::vector<AudioEditorBuffer> parts;
    for (const JournalPiece &piece : state.pieces) {
        progress.throwIfCancelled();
        const FrameRange range{piece.at, piece.at + piece.frames};
        const bool isInBase =
            base && comesFromBase(piece) && base->channels() == state.channels && base->clampedRange(range) == range;
        if (!isInBase && piece.from != From::journal)
            throw AudioFileError::unreadable("what was not edited is not there any more");
        parts.push_back(isInBase ? base->part(range) : readSamples(journal, piece, contents));
    }
    return joined(parts, state);
}

Snapshot snapshotOf(const JournalState &state, AudioEditorBuffer buffer) {
    Snapshot snapshot;
    snapshot.peaks.emplace(buffer);
    snapshot.buffer = std::move(buffer);
    snapshot.cursor = state.cursor;
    snapshot.selection = state.selection;
    snapshot.markers = state.markers;
    snapshot.slices = state.slices;
    snapshot.loop = state.loop;
    return snapshot;
}

std::string keptName(const JournalFolder &folder, const AbandonedJournal &journal) {
    const auto base = readJournal(*folder.fileSystem.open(journal.path), JournalCheck::positions).base;
    return base ? base->kept : "";
}

// What a program has left that died while it took a journal away or wrote one anew.
void clearRemains(const JournalFolder &folder, const std::vector<std::string> &names) {
    for (const std::string &name : names) {
        const std::string path = folder.path + "/" + name;
        if (name.ends_with(newJournalEnding)) folder.fileSystem.removeAbandoned(path);
        if (!name.starts_with(keptBeginning)) continue;
        const std::size_t stemAt = std::string(keptBeginning).size();
        const std::string stem = name.substr(stemAt, name.find('-', stemAt) - stemAt);
        if (!folder.fileSystem.identity(folder.path + "/" + stem + journalEnding)) folder.fileSystem.remove(path);
    }
}

// Nothing: it is held, or not worth asking about.
std::optional<AbandonedJournal> take(const JournalFolder &folder, const std::string &name) {
    AbandonedJournal journal;
    journal.path = folder.path + "/" + name;
    journal.held = folder.fileSystem.holdAbandoned(journal.path);
    if (!journal.held) return std::nullopt;
    const auto found = look(folder, journal.path, JournalCheck::positions);
    const bool isEmpty = folder.fileSystem.open(journal.path)->size() == 0;
    if (isEmpty || found.isFinished) return discardJournal(folder, journal), std::nullopt;
    journal.document = found.path;
    if (found.contents.state) journal.writtenAt = found.contents.state->writtenAt;
    journal.condition = found.condition;
    return journal;
}

}  // namespace

std::vector<AbandonedJournal> findAbandonedJournals(const JournalFolder &folder) {
    std::vector<AbandonedJournal> journals;
    std::vector<std::string> names;
    try {
        names = folder.fileSystem.list(folder.path);
        clearRemains(folder, names);
    } catch (const std::system_error &) {
    }
    for (const std::string &name : names) try {
            if (!name.ends_with(journalEnding)) continue;
            if (auto journal = take(folder, name)) journals.push_back(std::move(*journal));
        } catch (const std::exception &) {
            // One that cannot be read now may be another time.
        }
    std::ranges::sort(journals, {}, &AbandonedJournal::document);
    return journals;
}

RecoveredDocument recoverDocument(const JournalFolder &folder, const AbandonedJournal &journal, Files &files,
                                  DecodedReader *decoders, Progress &progress) {
    const Found found = look(folder, journal.path, JournalCheck::samplesToo);
    if (found.condition == Condition::damaged) throw AudioFileError::unreadable("what was kept of it is damaged");
    if (!found.canBeRestored()) throw AudioFileError::unreadable("what was not edited is not there any more");
    const JournalBase &base = *found.contents.base;
    RecoveredDocument document;
    document.path = found.path;
    document.identity = base.identity;
    document.isDamaged = found.contents.isDamaged;
    if (found.base) {
        auto file = readAudioFile(files, decoders, *found.base, progress);
        document.base = std::exchange(file.contents.buffer, AudioEditorBuffer());
        document.basePeaks.emplace(*document.base);
        document.contents = std::move(file.contents);
        if (found.isBaseAsItWas) document.identity = file.identity;
    } else {
        document.contents = *base.contents;
    }
    if (found.isOwnSave) document.identity = folder.fileSystem.identity(found.path);
    const JournalState &state = *found.contents.state;
    document.contents.buffer = AudioEditorBuffer(state.channels, state.sampleRate);
    const auto samples = folder.fileSystem.open(journal.path);
    document.edited =
        snapshotOf(state, assembled(found.contents, *samples, document.base ? &*document.base : nullptr, progress));
    return document;
}

void discardJournal(const JournalFolder &folder, const AbandonedJournal &journal) noexcept {
    try {
        const std::string kept = keptName(folder, journal);
        folder.fileSystem.remove(journal.path);
        if (!kept.empty()) folder.fileSystem.remove(folder.path + "/" + kept);
    } catch (...) {
    }
}

}  // namespace kiv
