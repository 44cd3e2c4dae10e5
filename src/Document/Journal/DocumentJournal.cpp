#include "Document/Journal/DocumentJournal.h"

#include <filesystem>

#include "Support/ByteDigest.h"
#include "Support/Failures.h"

namespace kiv {
namespace {

// The next run of the program may begin in another folder.
std::string absolute(const std::string &path) {
    std::error_code ignored;
    const auto whole = std::filesystem::absolute(path, ignored);
    return ignored ? path : whole.string();
}

std::int64_t millisecondsNow() {
    const auto time = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::milliseconds>(time).count();
}

JournalFile::Edited editedSound(const AudioEditorState &state, std::uint64_t order) {
    JournalFile::Edited edited{state.buffer, {}};
    edited.state.order = order;
    edited.state.writtenAt = millisecondsNow();
    edited.state.markers = state.markerFrames;
    edited.state.loop = state.pressLoop ? state.pressLoop->old : state.loopPoints;
    edited.state.slices = state.pressSlices.value_or(state.slices);
    edited.state.cursor = state.cursorFrame;
    edited.state.selection = state.selection;
    return edited;
}

class DigestSink : public ByteSink {
public:
    explicit DigestSink(ByteSink &sink) : sink_(sink) {}
    void write(std::span<const std::byte> bytes) override {
        digest_.add(bytes);
        sink_.write(bytes);
    }
    std::uint64_t value() const { return digest_.value(); }

private:
    ByteSink &sink_;
    ByteDigest digest_;
};

}  // namespace

DocumentJournal::DocumentJournal(const JournalFolder *folder, Jobs &jobs)
    : folder_(folder), jobs_(jobs), file_(folder ? std::make_shared<JournalFile>(*folder) : nullptr) {}

void DocumentJournal::setBase(const std::string &path, const std::optional<FileSystem::Identity> &identity,
                              std::shared_ptr<const AudioFileContents> contents, const AudioEditorBuffer &buffer) {
    if (!folder_) return;
    base_ = std::make_shared<const JournalFile::Base>(
        JournalFile::Base{absolute(path), identity, std::move(contents), StoredSamples(buffer), ++order_});
    version_.reset();
}

// In the same place among saves: one that is under way stays later.
void DocumentJournal::setIdentity(const FileSystem::Identity &identity) {
    if (!base_ || !base_->identity) return;
    auto touched = std::make_shared<JournalFile::Base>(*base_);
    touched->identity = identity;
    base_ = std::move(touched);
    version_.reset();
}

void DocumentJournal::follow(const AudioEditorState &state, bool isEdited) {
    if (!base_) return;
    if (!isEdited) return discard();
    if (version_ == state.contentVersion || Clock::now() < restsUntil_) return;
    version_ = state.contentVersion;
    next_ = std::make_shared<const JournalFile::Edited>(editedSound(state, ++order_));
    if (!writing_) write();
}

void DocumentJournal::write() {
    hasBegun_ = true;
    writing_ = std::exchange(next_, nullptr);
    jobs_.run(
        std::make_shared<Progress>(),
        [file = file_, base = base_, edited = writing_](Progress &progress) { file->write(base, *edited, progress); },
        [this, alive = std::weak_ptr(alive_)](std::exception_ptr failure) {
            if (!alive.expired()) written(failure);
        });
}

void DocumentJournal::writeNow() noexcept {
    const auto last = next_ ? next_ : writing_;
    if (last) try {
            Progress progress;
            file_->write(base_, *last, progress);
        } catch (...) {  // then it is as after a crash
        }
}

void DocumentJournal::written(std::exception_ptr failure) {
    writing_.reset();
    if (failure) {
        restsUntil_ = Clock::now() + pauseAfterTrouble;
        next_.reset();
        version_.reset();
        if (!std::exchange(hasTold_, true) && onTrouble) onTrouble(errorText(failure));
    } else {
        hasTold_ = false;
        discardTakenOver();
    }
    if (next_) return write();
    tellFlushed();
}

void DocumentJournal::tellFlushed() {
    if (writing_ || removing_ > 0) return;
    for (const auto &done : std::exchange(flushed_, {})) done();
}

void DocumentJournal::discard() {
    discardTakenOver();
    next_.reset();
    version_.reset();
    if (!std::exchange(hasBegun_, false)) return;
    ++removing_;
    jobs_.run(
        std::make_shared<Progress>(), [file = file_, order = ++order_](Progress &) { file->remove(order); },
        [this, alive = std::weak_ptr(alive_)](std::exception_ptr) {
            if (alive.expired()) return;
            --removing_;
            tellFlushed();
        });
}

void DocumentJournal::takeOver(std::shared_ptr<const AbandonedJournal> journal) { takenOver_ = std::move(journal); }

void DocumentJournal::discardTakenOver() {
    if (!takenOver_) return;
    ++removing_;
    removingTakenOver_ = true;
    jobs_.run(
        std::make_shared<Progress>(),
        [folder = *folder_, journal = std::exchange(takenOver_, nullptr)](Progress &) { discardJournal(folder, *journal); },
        [this, alive = std::weak_ptr(alive_)](std::exception_ptr) {
            if (alive.expired()) return;
            removingTakenOver_ = false;
            --removing_;
            tellFlushed();
        });
}

void DocumentJournal::flush(const AudioEditorState &state, bool isEdited, std::function<void()> done) {
    restsUntil_ = {};
    follow(state, isEdited);
    flushed_.push_back(std::move(done));
    tellFlushed();
}

DocumentJournal::SaveNote DocumentJournal::noteFor(const AudioEditorBuffer &buffer) {
    if (!base_) return {};
    hasBegun_ = true;
    return [file = file_, base = base_, buffer, order = ++order_](const std::string &path, std::uint64_t digest) {
        file->noteSave({absolute(path), digest, order, base->samples.find(buffer)});
    };
}

void NotedFiles::replace(const std::string &path, const Produce &produce, const Check &check) {
    if (!note_) return ForwardingFiles::replace(path, produce, check);
    std::uint64_t digest = 0;
    ForwardingFiles::replace(
        path,
        [&](ByteSink &sink) {
            DigestSink counting(sink);
            produce(counting);
            digest = counting.value();
        },
        [&](const ByteSource &written) {
            if (check) check(written);
            note_(path, digest);
        });
}

}  // namespace kiv
