#include "Document/DiskWatch.h"

#include <memory>
#include <utility>

#include "Document/AudioFileReading.h"
#include "Document/DocumentReading.h"

namespace kiv {

SoundFile DiskWatch::onDisk(const DocumentCore &core) {
    return {core.file.contents, core.model.soundOfVersion(core.file.savedVersion)};
}

void DiskWatch::check() {
    const DocumentFile &file = core_.file;
    if (!file.contents || !file.identity || core_.work.isBusy() || std::exchange(looks_, true)) return;
    const auto now = std::make_shared<DocumentFile::Identity>();
    core_.services.jobs.read(
        std::make_shared<Progress>(),
        [&files = core_.services.files, path = file.path, now](Progress &) { *now = files.identity(path); },
        core_.lifetime.guard([this, now, expected = file.identity](std::exception_ptr failure) {
            looks_ = false;
            // What was read or written meanwhile has another identity itself.
            if (!failure && !core_.work.isBusy() && core_.file.identity == expected) found(*now);
        }));
}

void DiskWatch::found(const DocumentFile::Identity &now) {
    DocumentFile &file = core_.file;
    const bool wasGone = file.isGone();
    if (now == file.identity) {
        file.found.reset();
    } else {
        if (file.found && *file.found == now) return;
        file.found.emplace(now);
        now ? compare(*now) : core_.ui.showNotice(NoticeKind::warning, core_.quotedName() + " is no longer where it was");
    }
    if (wasGone != file.isGone()) core_.tell();
}

// A time that has changed alone is no change.
void DiskWatch::compare(const FileSystem::Identity &now) {
    const auto isSame = std::make_shared<bool>(false);
    looks_ = true;
    core_.services.jobs.read(
        comparing_,
        [&files = core_.services.files, decoders = core_.services.decoders, path = core_.file.path, file = onDisk(core_),
         isSame](Progress &progress) { *isSame = holdsStill(files, decoders, path, file.whole(), progress); },
        core_.lifetime.guard([this, isSame, now, expected = core_.file.identity](std::exception_ptr) {
            looks_ = false;
            if (core_.file.identity != expected) return;
            *isSame ? core_.setIdentity(now) : changed();
        }));
}

void DiskWatch::changed() {
    if (core_.work.isBusy()) return core_.file.found.reset();  // for the next look
    const std::string changed = core_.quotedName() + " was changed by another program and read again";
    if (!core_.isChanged()) return DocumentReading::readAgain(core_, changed);
    const DocumentUi::Question question{
        core_.quotedName() + " has been changed by another program",
        "Your own changes are not saved. Reading the file again replaces them with what the other program has written.",
        {"Cancel", "Read Again"}};
    core_.ui.ask(question, core_.lifetime.guard([this](std::size_t button) {
        enum : std::size_t { cancel, again };
        if (button == again) DocumentReading::readAgain(core_);
    }));
}

}  // namespace kiv
