#include "Document/AudioDocument.h"

#include <utility>

#include "Audio/Files/SampleWrapping.h"
#include "Document/AudioFileReading.h"
#include "Document/AudioFileWriting.h"
#include "Editor/AudioEditorModel/AudioEditorLoops.h"
#include "Editor/AudioEditorModel/AudioEditorSpectralPainting.h"

namespace kiv {

struct AudioDocument::Loaded {
    AudioFileOnDisk file;
    std::optional<AudioEditorPeaks> peaks;
};

// A save's own copy of everything, so that edits may go on.
struct AudioDocument::Saving {
    std::string path;
    std::optional<FileSystem::Identity> expected;  // of the file that is to be replaced; nothing: whatever is there
    AudioFileContents onDisk;                      // what that file holds
    std::int64_t version = 0;
    AudioFileContents contents;
    AudioEditorBuffer sound;
    DocumentJournal::SaveNote note;
    std::vector<std::int64_t> markers;
    std::optional<AudioSaveFormat> format;  // another than the file's own
    std::vector<std::string> left;          // what that format has no place for
    std::optional<FrameRange> loop;
    std::optional<FileSystem::Identity> written;
};

namespace {

struct ChangedOnDisk : std::exception {};
struct GoneFromDisk : ChangedOnDisk {};

std::string quoted(const std::string &name) { return "“" + name + "”"; }

std::string nameOf(const std::string &path) { return path.substr(path.find_last_of('/') + 1); }

// The contents to be written, in the format asked for, with the loop as it is now; what that format has no place for is named.
AudioFileContents prepared(AudioFileContents contents, std::optional<FrameRange> loop, std::optional<AudioSaveFormat> format,
                           std::vector<std::string> &left) {
    if (contents.loop && !loop) contents = AudioFileCodec::removingLoop(std::move(contents));
    if (format) {
        auto conversion = AudioFileCodec::converted(std::move(contents), *format);
        contents = std::move(conversion.contents);
        left = std::move(conversion.left);
    }
    if (!contents.loop && loop) return AudioFileCodec::addingLoop(std::move(contents), loop->lo, loop->hi);
    return contents;
}

std::string listed(const std::vector<std::string> &things) {
    std::string text;
    for (std::size_t i = 0; i < things.size(); ++i) text += (i == 0 ? "" : i + 1 == things.size() ? " and " : ", ") + things[i];
    return text;
}

// The file as it stands on the disk, for the next save; the samples are the model's.
AudioFileContents asWritten(AudioFileContents contents) {
    if (contents.wrapping) contents.wrapping = wrappingFor(std::move(*contents.wrapping), contents.buffer);
    contents.buffer = AudioEditorBuffer(contents.buffer.channels(), contents.buffer.sampleRate());
    std::erase_if(contents.chunks, [](const AudioFileChunk &chunk) { return isStaleChunkId(chunk.id); });
    return contents;
}

void requireAsExpected(Files &files, DecodedReader *decoders, const std::string &path,
                       const std::optional<FileSystem::Identity> &expected, const AudioFileContents &onDisk) {
    const auto now = files.identity(path);
    if (expected && !now) throw GoneFromDisk();
    if (expected && now != expected && !holdsStill(files, decoders, path, onDisk)) throw ChangedOnDisk();
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
      model_(services.settings, services.clipboard, services.peaks),
      edits_(model_, services.jobs),
      peaks_(model_, services.jobs),
      analyses_(model_, services.jobs),
      journal_(services.journals, services.jobs),
      access_(services.files, services.settings, ui) {
    modelChanges_ = model_.observers.add([this](const Changes &) { tellIfEditedChanged(); });
    editChanges_ = edits_.changed.add([this](const BackgroundEdits &) { observers.notify(*this); });
    edits_.onEnded = [this](bool committed) { editEnded(committed); };
    edits_.onFailed = [this](std::exception_ptr failure) {
        ui_.showError(quoted(name()) + " could not be edited", errorText(failure));
    };
    journal_.onTrouble = [this](const std::string &reason) {
        ui_.showNotice(NoticeKind::warning, "Changes are not safe from a crash: " + reason);
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

std::string AudioDocument::name() const { return nameOf(path_); }

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
        [&files = services_.files, decoders = services_.decoders, measures = model_.keepsPeaks(), path,
         loaded](Progress &progress) {
            loaded->file = readAudioFile(files, decoders, path, progress);
            if (measures) loaded->peaks.emplace(loaded->file.contents.buffer);
        },
        [this, loaded, done = std::move(done)](std::exception_ptr failure) {
            if (!failure) return done(loaded, {});
            observers.notify(*this);
            done(nullptr, wasCancelled(failure) ? cancelledText : errorText(failure));
        });
}

void AudioDocument::install(Loaded loaded, Install how) {
    stop();
    const AudioFileEditorPositions positions = editorPositions(loaded.file.contents);
    AudioEditorBuffer buffer = loaded.file.contents.buffer;
    contents_ = std::move(loaded.file.contents);
    contents_->buffer = AudioEditorBuffer(buffer.channels(), buffer.sampleRate());
    identity_ = loaded.file.identity;
    foundOnDisk_.reset();
    {
        const AudioEditorModel::Batch batch(model_);
        const auto give = how == Install::fresh ? &AudioEditorModel::load : &AudioEditorModel::reload;
        journal_.setBase(path_, identity_, *contents_, buffer);
        (model_.*give)(std::move(buffer), positions.markers, positions.loop, std::move(loaded.peaks));
        AudioEditorLoops::setCanStoreLoop(model_, contents_->canStoreLoop());
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
        return kiv::format(AudioEditorTimeUnit::seconds, double(frames), buffer.sampleRate());
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

void AudioDocument::readAgain(const std::string &notice) {
    if (isBusy()) return;
    load(path_, [this, notice](std::shared_ptr<Loaded> loaded, const std::string &error) {
        if (loaded) install(std::move(*loaded), Install::again);
        if (loaded && !notice.empty()) ui_.showNotice(NoticeKind::information, notice);
        if (loaded) return;
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
    if (!contents_ || whyElsewhere().empty()) return confirmAndSave({path_, IfChanged::ask, std::move(done)});
    if (!done) done = [](bool) {};
    confirmEqAndEdits(Saved::file,
                      [this, done = std::move(done)](bool go) { go ? chooseFormat(whyElsewhere(), done) : done(false); });
}

std::string AudioDocument::whyElsewhere() const {
    const std::string files = contents_->format.typeName + " files can't ";
    if (!contents_->canSaveInPlace()) return files + "be written: choose a format.";
    const bool fits = !contents_->wrapping || contents_->wrapping->fits(model_.state().buffer);
    return fits ? "" : files + "follow these edits: choose a format.";
}

void AudioDocument::saveTo(const std::string &path, std::function<void(bool)> done) {
    confirmAndSave({path, IfChanged::overwrite, std::move(done)});
}

void AudioDocument::confirmAndSave(SaveOrder order) {
    if (!order.done) order.done = [](bool) {};
    confirmEqBeforeSaving(Saved::file, [this, order](bool go) { go ? requestSave(order) : order.done(false); });
}

void AudioDocument::requestSave(SaveOrder order) {
    if (work_ != Work::none || waitingSave_) return order.done(false);
    if (isEditing()) {
        waitingSave_ = [this, order](bool go) { go ? runSave(order) : order.done(false); };
    } else if (journal_.isTakingOver()) {
        // What was brought back is safe in a journal of its own first: killed meanwhile, the old one would take this save for
        // another program's. What is saved is what there is now.
        waitingSave_ = [this, order, saving = savingOf(order)](bool go) { go ? runSave(order, saving) : order.done(false); };
        journal_.flush(whileAlive([this] {
            if (isEditing()) return;
            if (const auto save = std::exchange(waitingSave_, nullptr)) save(true);
        }));
    } else {
        runSave(order);
    }
}

std::shared_ptr<AudioDocument::Saving> AudioDocument::savingOf(const SaveOrder &order) {
    const auto saving = std::make_shared<Saving>();
    const AudioEditorState &state = model_.state();
    saving->path = order.path;
    saving->format = order.format;
    if (!contents_) return saving;
    saving->version = state.contentVersion;
    saving->contents = *contents_;
    saving->sound = saving->contents.buffer = state.buffer;
    saving->note = journal_.noteFor(state.buffer);
    saving->markers = state.markerFrames;
    saving->loop = state.loopPoints;
    return saving;
}

void AudioDocument::runSave(const SaveOrder &order) { runSave(order, savingOf(order)); }

void AudioDocument::runSave(const SaveOrder &order, const std::shared_ptr<Saving> &saving) {
    if (isBusy()) return order.done(false);
    if (!contents_) return saveEnded(*saving, std::make_exception_ptr(AudioFileError::unreadable("nothing to save")), order);
    if (order.ifChanged == IfChanged::ask) {
        saving->expected = identity_;
        saving->onDisk = contentsOnDisk();
    }
    startWork(
        Work::saving,
        [&files = services_.files, decoders = services_.decoders, saving](Progress &progress) {
            Saving &s = *saving;
            requireAsExpected(files, decoders, s.path, s.expected, s.onDisk);
            s.onDisk = AudioFileContents();
            s.contents = withEditorPositions(std::move(s.contents), s.markers, s.loop);
            s.contents = prepared(std::move(s.contents), s.loop, s.format, s.left);
            NotedFiles noted(files, s.note);
            writeAudioFile(noted, decoders, s.path, s.contents, progress);
            s.written = identityIfKnown(files, s.path);
            s.contents = asWritten(std::move(s.contents));
        },
        [this, saving, order](std::exception_ptr failure) { saveEnded(*saving, failure, order); });
}

void AudioDocument::saveEnded(Saving &saving, std::exception_ptr failure, const SaveOrder &order) {
    if (!failure) {
        path_ = saving.path;
        contents_ = std::move(saving.contents);
        AudioEditorLoops::setCanStoreLoop(model_, contents_->canStoreLoop());
        identity_ = saving.written;
        foundOnDisk_.reset();
        savedVersion_ = saving.version;
        journal_.setBase(path_, identity_, *contents_, saving.sound);
        journal_.follow(model_.state(), isEdited());
    }
    toldEdited_ = isEdited();
    const std::weak_ptr<int> alive = alive_;
    observers.notify(*this);
    if (alive.expired()) return;
    if (failure && is<ChangedOnDisk>(failure)) return askOverChanges(order, is<GoneFromDisk>(failure));
    if (failure && !wasCancelled(failure))
        ui_.showError(quoted(nameOf(saving.path)) + " could not be saved", errorText(failure));
    if (!failure) tellWhatIsLeft(saving);
    order.done(!failure);
}

void AudioDocument::tellWhatIsLeft(const Saving &saving) {
    const bool lacksLoop = saving.loop && !contents_->loop;
    std::vector<std::string> left = saving.left;
    if (left.empty() && !lacksLoop) return;
    if (left.empty()) return ui_.showNotice(NoticeKind::warning, "This file cannot store a loop: it was not saved");
    if (lacksLoop) left.push_back("the loop");
    ui_.showNotice(NoticeKind::warning, contents_->format.typeName + " has no place for " + listed(left) + ": not saved");
}

void AudioDocument::askOverChanges(SaveOrder order, bool isGone) {
    const DocumentUi::Question question{
        quoted(name()) + (isGone ? " is no longer where it was" : " has been changed by another program"),
        isGone ? "It has been moved or deleted. Saving writes it anew in the old place."
               : "Saving replaces what the other program has written.",
        {"Cancel", "Save Anyway"}};
    order.ifChanged = IfChanged::overwrite;
    ui_.ask(question, whileAlive([this, order](std::size_t button) {
                enum : std::size_t { cancel, saveAnyway };
                button == saveAnyway ? runSave(order) : order.done(false);
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
    tellClosers(button == dontSave);
}

void AudioDocument::tellIfEditedChanged() {
    journal_.follow(model_.state(), isEdited());
    if (std::exchange(toldEdited_, isEdited()) != isEdited()) observers.notify(*this);
}

}  // namespace kiv
