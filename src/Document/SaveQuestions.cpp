#include "Document/SaveQuestions.h"

#include <utility>

#include "Document/FileNames.h"
#include "Platform/FileCopy.h"

namespace kiv::SaveQuestions {
namespace {

using Target = DocumentUi::SaveTarget;

// A file that another program has changed may have begun to be read again under the panel.
void take(DocumentCore &core, const Target &target, const OnTarget &chosen) {
    if (core.work.takesSave()) return chosen(target);
    core.ui.showError(quoted(nameOf(target.path)) + " could not be saved", core.quotedName() + " is just being read again.");
    chosen(std::nullopt);
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

bool isEqPending(const DocumentCore &core) { return core.model.state().eqEnabled && !core.eq.settings().isTransparent(); }

void confirmEqBeforeSaving(DocumentCore &core, Saved what, Then then) {
    if (!isEqPending(core) || !core.work.takesSave()) return then(true);
    const bool isFile = what == Saved::file;
    const std::string heard = "What you hear through the EQ is not in the audio yet. Apply it ";
    const DocumentUi::Question question{
        "The EQ is not applied",
        heard + (isFile ? "before saving?" : "to the selection before saving?"),
        {isFile ? "Apply EQ and Save" : "Apply EQ to Selection and Save", "Save Without EQ", "Cancel"}};
    enum : std::size_t { applyFirst, saveWithout };
    core.ui.ask(question, core.lifetime.guard([&core, isFile, then = std::move(then)](std::size_t button) {
        auto range = core.model.state().selection;
        if (isFile) range = FrameRange{0, core.model.state().buffer.frames()};
        if (button == applyFirst) applyEq(core.model, core.eq.settings(), range);
        then(button == applyFirst || button == saveWithout);
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
