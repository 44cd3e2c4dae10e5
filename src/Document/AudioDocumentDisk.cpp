#include <memory>

#include "Document/AudioDocument.h"
#include "Document/AudioFileReading.h"

// Where the document minds what other programs do to its file.
namespace kiv {

namespace {

std::string quoted(const std::string &name) { return "“" + name + "”"; }

}  // namespace

// The sound as it was read or written last, if an undo still holds it.
AudioFileContents AudioDocument::contentsOnDisk() const {
    AudioFileContents contents = *contents_;
    if (auto sound = model_.soundOfVersion(savedVersion_)) contents.buffer = std::move(*sound);
    return contents;
}

void AudioDocument::checkDisk() {
    if (!contents_ || !identity_ || isBusy() || std::exchange(looksAtDisk_, true)) return;
    const auto now = std::make_shared<std::optional<FileSystem::Identity>>();
    services_.jobs.run(
        std::make_shared<Progress>(),
        [&files = services_.files, path = path_, now](Progress &) { *now = files.identity(path); },
        whileAlive([this, now, expected = identity_](std::exception_ptr failure) {
            looksAtDisk_ = false;
            // What was read or written meanwhile has another identity itself.
            if (failure || isBusy() || identity_ != expected || *now == identity_ || (foundOnDisk_ && *foundOnDisk_ == *now))
                return;
            foundOnDisk_.emplace(*now);
            if (*now) return compareWithDisk(**now);
            ui_.showNotice(NoticeKind::warning, quoted(name()) + " is no longer where it was");
        }));
}

// A time that has changed alone is no change.
void AudioDocument::compareWithDisk(const FileSystem::Identity &now) {
    const auto isSame = std::make_shared<bool>(false);
    looksAtDisk_ = true;
    services_.jobs.run(
        std::make_shared<Progress>(),
        [&files = services_.files, decoders = services_.decoders, path = path_, contents = contentsOnDisk(),
         isSame](Progress &) { *isSame = holdsStill(files, decoders, path, contents); },
        whileAlive([this, isSame, now, expected = identity_](std::exception_ptr) {
            looksAtDisk_ = false;
            if (identity_ != expected) return;
            *isSame ? void(identity_ = now) : changedOnDisk();
        }));
}

void AudioDocument::changedOnDisk() {
    if (isBusy()) return foundOnDisk_.reset();  // for the next look
    if (!isEdited()) return readAgain(quoted(name()) + " was changed by another program and read again");
    const DocumentUi::Question question{
        quoted(name()) + " has been changed by another program",
        "Your own changes are not saved. Reading the file again replaces them with what the other program has written.",
        {"Cancel", "Read Again"}};
    ui_.ask(question, whileAlive([this](std::size_t button) {
                enum : std::size_t { cancel, again };
                if (button == again) readAgain();
            }));
}

}  // namespace kiv
