#include "Document/AudioDocument.h"

#include <utility>

#include "Document/AudioFileReading.h"
#include "Document/AudioFileWriting.h"
#include "Editor/AudioEditorModel/AudioEditorLoops.h"
#include "Editor/AudioEditorModel/AudioEditorSpectralPainting.h"

namespace kiv {

struct AudioDocument::Loaded {
    AudioFileOnDisk file;
    AudioEditorPeaks peaks;
};

// A save's own copy of everything, so that edits may go on.
struct AudioDocument::Saving {
    std::string path;
    std::optional<FileSystem::Identity> expected;  // of the file that is to be replaced; nothing: whatever is there
    std::int64_t version = 0;
    AudioFileContents contents;
    std::vector<std::int64_t> markers;
    std::optional<FrameRange> loop;
    std::optional<FileSystem::Identity> written;
};

namespace {

struct ChangedOnDisk : std::exception {};
struct GoneFromDisk : ChangedOnDisk {};

std::string quoted(const std::string &name) { return "“" + name + "”"; }

AudioFileContents withLoop(AudioFileContents contents, std::optional<FrameRange> loop) {
    if (contents.loop && !loop) return AudioFileCodec::removingLoop(std::move(contents));
    if (!contents.loop && loop) return AudioFileCodec::addingLoop(std::move(contents), loop->lo, loop->hi);
    return contents;
}

// The file as it stands on the disk, for the next save; the samples are the model's.
AudioFileContents asWritten(AudioFileContents contents) {
    contents.buffer = AudioEditorBuffer(contents.buffer.channels(), contents.buffer.sampleRate());
    std::erase_if(contents.chunks, [](const AudioFileChunk &chunk) { return isStaleChunkId(chunk.id); });
    return contents;
}

void requireAsExpected(Files &files, const std::string &path, const std::optional<FileSystem::Identity> &expected) {
    const auto now = files.identity(path);
    if (expected && !now) throw GoneFromDisk();
    if (expected && now != expected) throw ChangedOnDisk();
}

// After a save has succeeded its success is not to be lost again.
std::optional<FileSystem::Identity> identityIfKnown(Files &files, const std::string &path) {
    try {
        return files.identity(path);
    } catch (const std::exception &) {
        return std::nullopt;
    }
}

template <class Error>
bool is(std::exception_ptr failure) {
    try {
        std::rethrow_exception(failure);
    } catch (const Error &) {
        return true;
    } catch (...) {
        return false;
    }
}

}  // namespace

AudioDocument::AudioDocument(DocumentServices services, DocumentUi &ui)
    : services_(services),
      ui_(ui),
      model_(services.settings, services.clipboard),
      edits_(model_, services.jobs),
      peaks_(model_, services.jobs),
      analyses_(model_, services.jobs),
      access_(services.files, services.settings, ui) {
    modelChanges_ = model_.observers.add([this](const Changes &) { tellIfEditedChanged(); });
    editChanges_ = edits_.changed.add([this](const BackgroundEdits &) { observers.notify(*this); });
    edits_.onEnded = [this](bool committed) { editEnded(committed); };
    edits_.onFailed = [this](std::exception_ptr failure) {
        ui_.showError(quoted(name()) + " could not be edited", errorText(failure));
    };
    model_.onAudioChanged = [this](const AudioEditorBuffer &, const AudioEditorBuffer &now) {
        if (isPlaying()) services_.playback->setBuffer(now, model_.lengthChange());
    };
    model_.onLoopChanged = [this](bool loop) {
        if (isPlaying() && !jointPlaying_) services_.playback->setLoop(loop);
    };
    model_.onEqChanged = [this](bool) { updateEq(); };
    model_.onSpectralPreview = [this](const AudioEditorBuffer &preview) {
        if (isPlaying()) services_.playback->setBuffer(preview);
    };
    eqChanges_ = eq_.observers.add([this](EqModel::Change change) {
        if (change == EqModel::Change::settings) updateEq();
    });
    loopChanges_ = model_.observers.add([this](const Changes &changes) { followLoop(changes); });
    model_.onPlayJoint = [this] { playLoopJoint(); };
    model_.onSaveSlices = [this](const auto &, const std::string &name) { saveSlices(name, IfHeld::ask); };
    model_.onPlayRange = [this](FrameRange range, bool loop) { play(range, range.lo, loop); };
}

AudioDocument::~AudioDocument() {
    if (progress_) progress_->cancel();
    stop();
}

std::string AudioDocument::name() const { return path_.substr(path_.find_last_of('/') + 1); }

bool AudioDocument::isEdited() const { return contents_ && model_.state().contentVersion != savedVersion_; }

void AudioDocument::cancelWork() {
    if (isEditing()) return edits_.cancel();
    if (progress_) progress_->cancel();
}

void AudioDocument::editEnded(bool committed) {
    const std::weak_ptr<int> alive = alive_;
    if (!committed) AudioEditorSpectralPainting::cancelStroke(model_);  // it was shown until it was rendered
    if (const auto save = std::exchange(waitingSave_, nullptr)) save(committed);
    if (!alive.expired()) considerClosing();
}

void AudioDocument::startWork(Work kind, std::function<void(Progress &)> work, std::function<void(std::exception_ptr)> done) {
    work_ = kind;
    progress_ = std::make_shared<Progress>();
    observers.notify(*this);
    const std::weak_ptr<int> alive = alive_;
    services_.jobs.run(progress_, std::move(work), [this, alive, done = std::move(done)](std::exception_ptr failure) {
        if (alive.expired()) return;
        work_ = Work::none;
        progress_.reset();
        done(failure);
        if (!alive.expired()) considerClosing();
    });
}

void AudioDocument::load(const std::string &path, std::function<void(std::shared_ptr<Loaded>, const std::string &error)> done) {
    const auto loaded = std::make_shared<Loaded>();
    startWork(
        Work::reading,
        [&files = services_.files, decoders = services_.decoders, path, loaded](Progress &progress) {
            loaded->file = readAudioFile(files, decoders, path, progress);
            loaded->peaks = AudioEditorPeaks(loaded->file.contents.buffer);
        },
        [this, loaded, done = std::move(done)](std::exception_ptr failure) {
            if (!failure) return done(loaded, {});
            observers.notify(*this);
            done(nullptr, is<Cancelled>(failure) ? cancelledText : errorText(failure));
        });
}

void AudioDocument::install(Loaded loaded, Install how) {
    stop();
    const AudioFileEditorPositions positions = editorPositions(loaded.file.contents);
    AudioEditorBuffer buffer = loaded.file.contents.buffer;
    contents_ = std::move(loaded.file.contents);
    contents_->buffer = AudioEditorBuffer(buffer.channels(), buffer.sampleRate());
    identity_ = loaded.file.identity;
    {
        const AudioEditorModel::Batch batch(model_);
        const auto give = how == Install::fresh ? &AudioEditorModel::load : &AudioEditorModel::reload;
        (model_.*give)(std::move(buffer), positions.markers, positions.loop, std::move(loaded.peaks));
        AudioEditorLoops::setCanStoreLoop(model_, contents_->format.container != AudioContainer::coreAudio);
        savedVersion_ = model_.state().contentVersion;
    }
    toldEdited_ = isEdited();
    observers.notify(*this);
    if (contents_->missingFrames > 0) tellMissing();
    if (loaded.file.recovery == Files::Recovery::restored)
        ui_.showNotice(NoticeKind::information, "A save had been interrupted: " + quoted(name()) + " is as it was before.");
}

// The file was cut off, in a copy that ended early perhaps: what is there is all there is to be saved.
void AudioDocument::tellMissing() {
    const AudioEditorBuffer &buffer = model_.state().buffer;
    const auto seconds = [&](std::int64_t frames) {
        return format(AudioEditorTimeUnit::seconds, double(frames), buffer.sampleRate());
    };
    ui_.showNotice(NoticeKind::warning, quoted(name()) + " ends early: " + seconds(buffer.frames()) + " of " +
                                            seconds(buffer.frames() + contents_->missingFrames) + " are there.");
}

// So that the window shows the file's lanes while it is being read; what comes too late is not needed any more.
void AudioDocument::expectShape() {
    const auto shape = std::make_shared<std::optional<AudioEditorBuffer>>();
    services_.jobs.run(
        std::make_shared<Progress>(),
        [&files = services_.files, decoders = services_.decoders, path = path_, shape](Progress &) {
            *shape = audioFileShape(files, decoders, path);
        },
        whileAlive([this, shape](std::exception_ptr) {
            if (*shape) model_.expect(std::move(**shape));
        }));
}

void AudioDocument::open(const std::string &path, std::function<void(const std::string &error)> done) {
    path_ = path;
    expectShape();
    load(path, [this, done = std::move(done)](std::shared_ptr<Loaded> loaded, const std::string &error) {
        if (loaded) install(std::move(*loaded), Install::fresh);
        done(error);
    });
}

void AudioDocument::revert() {
    if (isBusy() || !contents_) return;
    if (!isEdited()) return readAgain();
    const DocumentUi::Question question{"Revert to the saved version of " + quoted(name()) + "?",
                                        "All changes since the last save will be lost. This cannot be undone.",
                                        {"Revert", "Cancel"}};
    ui_.ask(question, whileAlive([this](std::size_t button) {
                if (button == 0) readAgain();
            }));
}

void AudioDocument::readAgain() {
    if (isBusy()) return;
    load(path_, [this](std::shared_ptr<Loaded> loaded, const std::string &error) {
        if (loaded) return install(std::move(*loaded), Install::again);
        if (error != cancelledText) ui_.showError(quoted(name()) + " could not be read", error);
    });
}

void AudioDocument::confirmEqBeforeSaving(Saved what, std::function<void(bool go)> then) {
    if (!isEqPending() || work_ != Work::none || waitingSave_) return then(true);
    const bool isFile = what == Saved::file;
    const std::string heard = "What you hear through the EQ is not in the audio yet. Apply it ";
    const DocumentUi::Question question{
        "The EQ is not applied",
        heard + (isFile ? "before saving?" : "to the selection before saving?"),
        {isFile ? "Apply EQ and Save" : "Apply EQ to Selection and Save", "Save Without EQ", "Cancel"}};
    enum : std::size_t { applyFirst, saveWithout };
    ui_.ask(question, whileAlive([this, isFile, then = std::move(then)](std::size_t button) {
                auto range = model_.state().selection;
                if (isFile) range = FrameRange{0, model_.state().buffer.frames()};
                if (button == applyFirst) kiv::applyEq(model_, eq_.settings(), range);
                then(button == applyFirst || button == saveWithout);
            }));
}

void AudioDocument::save(std::function<void(bool)> done) {
    confirmEqBeforeSaving(Saved::file, [this, done = std::move(done)](bool go) {
        if (go) return requestSave(path_, IfChanged::ask, done);
        if (done) done(false);
    });
}

void AudioDocument::saveTo(const std::string &path, std::function<void(bool)> done) {
    confirmEqBeforeSaving(Saved::file, [this, path, done = std::move(done)](bool go) {
        if (go) return requestSave(path, IfChanged::overwrite, done);
        if (done) done(false);
    });
}

void AudioDocument::requestSave(const std::string &path, IfChanged ifChanged, std::function<void(bool)> done) {
    if (!done) done = [](bool) {};
    if (work_ != Work::none || waitingSave_) return done(false);
    if (!isEditing()) return runSave(path, ifChanged, std::move(done));
    waitingSave_ = [this, path, ifChanged, done = std::move(done)](bool go) {
        go ? runSave(path, ifChanged, done) : done(false);
    };
}

void AudioDocument::runSave(const std::string &path, IfChanged ifChanged, std::function<void(bool)> done) {
    if (isBusy()) return done(false);
    const auto saving = std::make_shared<Saving>();
    saving->path = path;
    if (!contents_) return saveEnded(*saving, std::make_exception_ptr(AudioFileError::unreadable("nothing to save")), done);
    const AudioEditorState &state = model_.state();
    if (ifChanged == IfChanged::ask) saving->expected = identity_;
    saving->version = state.contentVersion;
    saving->contents = *contents_;
    saving->contents.buffer = state.buffer;
    saving->markers = state.markerFrames;
    saving->loop = state.loopPoints;
    startWork(
        Work::saving,
        [&files = services_.files, decoders = services_.decoders, saving](Progress &progress) {
            Saving &s = *saving;
            requireAsExpected(files, s.path, s.expected);
            s.contents = withLoop(withEditorPositions(std::move(s.contents), s.markers, s.loop), s.loop);
            writeAudioFile(files, decoders, s.path, s.contents, progress);
            s.written = identityIfKnown(files, s.path);
            s.contents = asWritten(std::move(s.contents));
        },
        [this, saving, done](std::exception_ptr failure) { saveEnded(*saving, failure, done); });
}

void AudioDocument::saveEnded(Saving &saving, std::exception_ptr failure, const std::function<void(bool)> &done) {
    if (!failure) {
        path_ = saving.path;
        contents_ = std::move(saving.contents);
        AudioEditorLoops::setCanStoreLoop(model_, contents_->format.container != AudioContainer::coreAudio);
        identity_ = saving.written;
        savedVersion_ = saving.version;
    }
    toldEdited_ = isEdited();
    const std::weak_ptr<int> alive = alive_;
    observers.notify(*this);
    if (alive.expired()) return;
    if (failure && is<ChangedOnDisk>(failure)) return askOverChanges(saving.path, is<GoneFromDisk>(failure), done);
    if (failure && !is<Cancelled>(failure)) ui_.showError(quoted(name()) + " could not be saved", errorText(failure));
    if (!failure && saving.loop && !contents_->loop)
        ui_.showNotice(NoticeKind::warning, "This file cannot store a loop: it was not saved");
    done(!failure);
}

void AudioDocument::askOverChanges(const std::string &path, bool isGone, std::function<void(bool)> done) {
    const DocumentUi::Question question{
        quoted(name()) + (isGone ? " is no longer where it was" : " has been changed by another program"),
        isGone ? "It has been moved or deleted. Saving writes it anew in the old place."
               : "Saving replaces what the other program has written.",
        {"Cancel", "Save Anyway"}};
    ui_.ask(question, whileAlive([this, path, done = std::move(done)](std::size_t button) {
                enum : std::size_t { cancel, saveAnyway };
                if (button != saveAnyway) return done(false);
                runSave(path, IfChanged::overwrite, done);
            }));
}

void AudioDocument::confirmClose(std::function<void(bool)> answered) {
    closers_.push_back(std::move(answered));
    considerClosing();
}

// The first may be the end of this document.
void AudioDocument::tellClosers(bool mayGo) {
    for (const auto &answered : std::exchange(closers_, {})) answered(mayGo);
}

void AudioDocument::considerClosing() {
    if (closers_.empty() || closeAsked_ || work_ == Work::saving || waitingSave_) return;
    if (!isEdited() && !isEditing()) return tellClosers(true);
    if (progress_) progress_->cancel();  // a file being read again for a revert
    closeAsked_ = true;
    const DocumentUi::Question question{"Save changes to " + quoted(name()) + " before closing?",
                                        "Your changes will be lost if you don’t save them.",
                                        {"Save", "Don’t Save", "Cancel"}};
    ui_.ask(question, whileAlive([this](std::size_t button) { closeAnswered(button); }));
}

void AudioDocument::closeAnswered(std::size_t button) {
    enum : std::size_t { saveFirst, dontSave };
    if (button == saveFirst)
        return save([this](bool saved) {
            closeAsked_ = false;
            if (!saved) tellClosers(false);  // else the end of the save looks again: there may be newer edits
        });
    closeAsked_ = false;
    if (button == dontSave) edits_.cancel();
    tellClosers(button == dontSave);
}

void AudioDocument::tellIfEditedChanged() {
    if (std::exchange(toldEdited_, isEdited()) != isEdited()) observers.notify(*this);
}

}  // namespace kiv
