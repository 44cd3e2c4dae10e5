#include "Document/DocumentReading.h"

#include <optional>
#include <utility>

#include "Audio/Files/AudioFileConversion.h"
#include "Document/AudioFileReading.h"
#include "Document/FileFaults.h"
#include "Document/FileNames.h"
#include "Editor/AudioEditorModel/AudioEditorLoops.h"
#include "Support/Failures.h"

namespace kiv::DocumentReading {
namespace {

// What the job reads.
struct Loaded {
    AudioFileOnDisk file;
    std::optional<AudioEditorPeaks> peaks;
};

void load(DocumentCore &core, const std::string &path,
          std::function<void(std::shared_ptr<Loaded>, const std::string &error)> done) {
    const auto loaded = std::make_shared<Loaded>();
    core.work.start(
        DocumentWork::Kind::reading,
        [&files = core.services.files, decoders = core.services.decoders, measures = core.model.keepsPeaks(), path,
         loaded](Progress &progress) {
            loaded->file = readAudioFile(files, decoders, path, progress);
            if (measures) loaded->peaks.emplace(loaded->file.contents.buffer);
        },
        [&core, loaded, done = std::move(done)](std::exception_ptr failure) {
            if (!failure) return done(loaded, {});
            core.tell();
            done(nullptr, wasCancelled(failure) ? cancelledText : errorText(failure));
        });
}

// What there is to be told of a file that has been installed, in one: a second notice would take the place of the first.
void tellOf(DocumentCore &core, Files::Recovery recovery, std::string news) {
    const auto add = [&](const std::string &text) { news += (news.empty() ? "" : ". ") + text; };
    if (recovery == Files::Recovery::restored)
        add("A save had been interrupted: " + core.quotedName() + " is as it was before");
    const auto faults = faultTexts(core.quotedName(), *core.file.contents, core.model.state().buffer.frames());
    for (const std::string &fault : faults) add(fault);
    if (!news.empty()) core.ui.showNotice(faults.empty() ? NoticeKind::information : NoticeKind::warning, news);
}

std::shared_ptr<const AudioFileContents> shared(AudioFileContents contents) {
    return std::make_shared<const AudioFileContents>(std::move(contents));
}

enum class Install { fresh, again };

void install(DocumentCore &core, Loaded loaded, Install how, const std::string &news = {}) {
    core.player.stop();
    AudioEditorModel &model = core.model;
    AudioFileContents &contents = loaded.file.contents;
    const AudioFileEditorPositions positions = editorPositions(contents);
    AudioEditorBuffer buffer =
        std::exchange(contents.buffer, AudioEditorBuffer(contents.buffer.channels(), contents.buffer.sampleRate()));
    {
        const AudioEditorModel::Batch batch(model);
        const auto give = how == Install::fresh ? &AudioEditorModel::load : &AudioEditorModel::reload;
        core.setFile({core.file.path, shared(std::move(contents)), loaded.file.identity}, buffer);
        (model.*give)(std::move(buffer), positions.markers, positions.loop, std::move(loaded.peaks));
        AudioEditorLoops::setCanStoreLoop(model, core.canStoreLoop());
        core.file.savedVersion = model.state().contentVersion;
    }
    core.tell();
    tellOf(core, loaded.file.recovery, news);
}

// What has been edited while the file was read again would be gone for good: what has been read goes instead. The next look at
// the disk asks.
void keepEdits(DocumentCore &core) {
    core.file.found.reset();
    core.tell();
    core.ui.showNotice(NoticeKind::warning, core.quotedName() + " was edited meanwhile and not read again");
}

// So that the window shows the file's lanes while it is being read; what comes too late is not needed any more.
void expectShape(DocumentCore &core) {
    const auto shape = std::make_shared<std::optional<AudioEditorBuffer>>();
    core.services.jobs.read(
        std::make_shared<Progress>(),
        [&files = core.services.files, decoders = core.services.decoders, path = core.file.path, shape](Progress &) {
            *shape = audioFileShape(files, decoders, path);
        },
        core.lifetime.guard([&core, shape](std::exception_ptr) {
            if (*shape) core.model.expect(std::move(**shape));
        }));
}

// With the file's own sound beneath it, so that undoing leads back there. Where that is gone there is nothing to undo.
void installRecovered(DocumentCore &core, RecoveredDocument recovered, std::shared_ptr<const AbandonedJournal> journal) {
    core.player.stop();
    AudioEditorModel &model = core.model;
    Snapshot &edited = recovered.edited;
    const AudioFileEditorPositions positions = editorPositions(recovered.contents);
    DocumentFile file{recovered.path, shared(std::move(recovered.contents)), recovered.identity};
    const AudioEditorModel::Batch batch(model);
    if (recovered.base) {
        core.setFile(std::move(file), *recovered.base);
        model.load(std::move(*recovered.base), positions.markers, positions.loop, std::move(recovered.basePeaks));
        core.file.savedVersion = model.state().contentVersion;
        model.recover(std::move(edited));
    } else {
        constexpr std::int64_t never = -1;
        const auto identity = std::exchange(file.identity, std::nullopt);  // which the journal cannot be held against
        core.setFile(std::move(file), AudioEditorBuffer());
        core.file.identity = identity;
        model.load(std::move(*edited.buffer), std::move(edited.markers), edited.loop, std::move(edited.peaks));
        core.file.savedVersion = never;
    }
    AudioEditorLoops::setCanStoreLoop(model, core.canStoreLoop());
    core.journal.takeOver(std::move(journal));
    if (recovered.isDamaged)
        core.ui.showNotice(NoticeKind::warning, "What was kept is damaged: the last changes may be missing");
}

}  // namespace

void open(DocumentCore &core, const std::string &path, Done done) {
    core.file.path = path;
    expectShape(core);
    load(core, path, [&core, done = std::move(done)](std::shared_ptr<Loaded> loaded, const std::string &error) {
        if (loaded) install(core, std::move(*loaded), Install::fresh);
        done(error);
    });
}

void restore(DocumentCore &core, std::shared_ptr<const AbandonedJournal> journal, Done done) {
    if (core.work.isBusy()) return done("It is busy.");
    core.file.path = journal->document;
    const std::int64_t version = core.model.state().contentVersion;
    const auto recovered = std::make_shared<RecoveredDocument>();
    core.work.start(
        DocumentWork::Kind::reading,
        [=, services = core.services](Progress &progress) {
            *recovered = recoverDocument(*services.journals, *journal, services.files, services.decoders, progress);
        },
        [=, &core](std::exception_ptr failure) {
            const bool isUntouched = core.model.state().contentVersion == version;
            if (!failure && isUntouched) installRecovered(core, std::move(*recovered), journal);
            core.tell();
            if (failure) return done(wasCancelled(failure) ? cancelledText : errorText(failure));
            done(isUntouched ? "" : "It was edited meanwhile.");
        });
}

void revert(DocumentCore &core) {
    if (core.work.isBusy() || !core.file.contents) return;
    if (!core.isChanged()) return readAgain(core);
    const DocumentUi::Question question{"Revert to the saved version of " + core.quotedName() + "?",
                                        "All changes since the last save will be lost. This cannot be undone.",
                                        {"Revert", "Cancel"}};
    core.ui.ask(question, core.lifetime.guard([&core](std::size_t button) {
        if (button == 0) readAgain(core);
    }));
}

void readAgain(DocumentCore &core, const std::string &notice) {
    if (core.work.isBusy()) return;
    const std::int64_t version = core.model.state().contentVersion;
    load(core, core.file.path, [&core, notice, version](std::shared_ptr<Loaded> loaded, const std::string &error) {
        if (!loaded && error != cancelledText) core.ui.showError(core.quotedName() + " could not be read", error);
        if (!loaded) return;
        const bool isUntouched = core.model.state().contentVersion == version;
        isUntouched ? install(core, std::move(*loaded), Install::again, notice) : keepEdits(core);
    });
}

}  // namespace kiv::DocumentReading
