#include "Document/SaveQuestions.h"

#include <utility>

#include "Document/FileNames.h"
#include "Platform/FileCopy.h"

namespace kiv::SaveQuestions {
namespace {

using Target = DocumentUi::SaveTarget;

// A file that another program has changed may have begun to be read again under the panel.
void take(DocumentCore &core, const Target &target, const OnTarget &chosen) {
    chosen(stillTakesSave(core, target.path) ? std::optional(target) : std::nullopt);
}

// What the panel comes back with is looked at before it is believed.
void consider(DocumentCore &core, const DocumentUi::SavePanel &panel, const Target &target, const DocumentFile::Identity &there,
              OnTarget chosen) {
    const bool isSave =
        target.format && target.format->matches(core.file.contents->format) && core.file.isAt(target.path, there);
    if (!there || isSave) return take(core, target, chosen);
    const DocumentUi::Question question{
        quoted(nameOf(target.path)) + " already exists", "Replacing it overwrites what it holds now.", {"Cancel", "Replace"}};
    core.ui.ask(question, core.lifetime.guard([&core, panel, target, chosen = std::move(chosen)](std::size_t button) {
        enum : std::size_t { cancel, replace };
        if (button == replace) return take(core, target, chosen);
        chooseTarget(core, {panel.title, panel.message, target.path, target.format}, chosen);
    }));
}

}  // namespace

bool stillTakesSave(DocumentCore &core, const std::string &path) {
    if (core.work.takesSave()) return true;
    const bool isSaving = core.work.isSaving();
    core.ui.showError(quoted(nameOf(path)) + " could not be saved",
                      core.quotedName() + (isSaving ? " is just being saved." : " is just being read again."));
    return false;
}

bool isEqPending(const DocumentCore &core) { return core.model.state().eqEnabled && !core.eq.settings().isTransparent(); }

namespace {

// A long edit lets no other begin beside it.
void applyAfterEdit(DocumentCore &core, Saved what, const Then &then) {
    core.work.afterEdit([&core, what, then](bool go) {
        const AudioEditorState &state = core.model.state();
        const FrameRange all{0, state.buffer.frames()};
        if (go) applyEq(core.model, core.eq.settings(), what == Saved::file ? all : state.selection);
        then(go);
    });
}

}  // namespace

void confirmEqBeforeSaving(DocumentCore &core, Saved what, Then then) {
    if (!isEqPending(core) || !core.work.takesSave()) return then(true);
    const bool isFile = what == Saved::file;
    const std::string heard = "What you hear through the EQ is not in the audio yet. Apply it ";
    const DocumentUi::Question question{
        "The EQ is not applied",
        heard + (isFile ? "before saving?" : "to the selection before saving?"),
        {isFile ? "Apply EQ and Save" : "Apply EQ to Selection and Save", "Save Without EQ", "Cancel"}};
    enum : std::size_t { applyFirst, saveWithout };
    core.ui.ask(question, core.lifetime.guard([&core, what, then = std::move(then)](std::size_t button) {
        if (button > saveWithout || !stillTakesSave(core, core.file.path)) return then(false);
        button == applyFirst ? applyAfterEdit(core, what, then) : then(true);
    }));
}

void confirmEqAndEdits(DocumentCore &core, Saved what, Then then) {
    if (!core.work.takesSave()) return then(false);
    confirmEqBeforeSaving(core, what,
                          [&core, then = std::move(then)](bool go) { go ? core.work.afterEdit(then) : then(false); });
}

void chooseTarget(DocumentCore &core, const DocumentUi::SavePanel &panel, OnTarget chosen) {
    const auto answered = [&core, panel, chosen = std::move(chosen)](const std::optional<Target> &target) {
        if (!target) return chosen(std::nullopt);
        const auto there = std::make_shared<DocumentFile::Identity>();
        core.services.jobs.read(
            std::make_shared<Progress>(),
            [&files = core.services.files, path = target->path, there](Progress &) { *there = files.identity(path); },
            core.lifetime.guard([&core, panel, target = *target, there, chosen](std::exception_ptr) {
                consider(core, panel, target, *there, chosen);
            }));
    };
    core.ui.chooseFile(panel, core.lifetime.guard(answered));
}

}  // namespace kiv::SaveQuestions
