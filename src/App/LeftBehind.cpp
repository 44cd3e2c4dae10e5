#include "App/LeftBehind.h"

#include <QDateTime>
#include <QLocale>
#include <filesystem>

#include "Document/FileNames.h"
#include "Document/Windows/MessageWindow.h"
#include "Platform/FileCopy.h"

namespace kiv {
namespace {

std::string timeText(std::int64_t milliseconds) {
    const QDateTime time = QDateTime::fromMSecsSinceEpoch(milliseconds);
    const bool isToday = time.date() == QDate::currentDate();
    return QLocale::c().toString(time, isToday ? "HH:mm 'today'" : "HH:mm 'on' d MMMM yyyy").toStdString();
}

using enum AbandonedJournal::Condition;

bool canBeRestored(const AbandonedJournal &journal) { return journal.condition == asItWas || journal.condition == changed; }

std::string whatIsKept(const AbandonedJournal &journal) {
    const std::string kept = "Its changes up to " + timeText(journal.writtenAt) + " were kept";
    switch (journal.condition) {
        case asItWas:
            return kept + ". The file itself is as it was last saved.";
        case changed:
            return kept + " and can be restored, though the file has been changed or removed since.";
        case lost:
            return kept +
                   ", but they cannot be restored now: the rest of the sound was in the file, which is not there as it was.";
        case damaged:
            return "Its changes were kept, but they cannot be restored: what was kept of them is damaged.";
        case foreign:
            break;
    }
    return "Its changes were kept by another version of Kiv Audio Editor. Only that version can restore them.";
}

// In which folder, since many sounds have the same name.
std::string placed(const std::string &path) {
    const std::filesystem::path whole(path);
    const std::string folder = whole.parent_path().filename();
    return quoted(whole.filename()) + (folder.empty() ? "" : " in " + quoted(folder));
}

}  // namespace

DocumentUi::Question questionAbout(const AbandonedJournal &journal) {
    return {(journal.document.empty() ? "A document" : placed(journal.document)) + " was not closed properly",
            whatIsKept(journal),
            canBeRestored(journal) ? std::vector<std::string>{"Restore", "Discard", "Later"}
                                   : std::vector<std::string>{"Later", "Discard"}};
}

DocumentUi::Question discardQuestion(const AbandonedJournal &journal) {
    const std::string changes = journal.document.empty() ? "of the document" : "to " + quoted(nameOf(journal.document));
    return {"Discard the changes " + changes + "?", "They have not been saved. This cannot be undone.", {"Cancel", "Discard"}};
}

void LeftBehind::look() {
    const auto found = std::make_shared<std::vector<AbandonedJournal>>();
    jobs_.read(
        std::make_shared<Progress>(), [folder = folder_, found](Progress &) { *found = findAbandonedJournals(folder); },
        [this, found](std::exception_ptr) {
            for (AbandonedJournal &journal : *found)
                journals_.push_back(std::make_shared<const AbandonedJournal>(std::move(journal)));
            askNext();
        });
}

void LeftBehind::askNext() {
    if (journals_.empty() || isAsking_ || isOpening()) return;
    isAsking_ = true;
    const auto journal = journals_.front();
    journals_.pop_front();
    const DocumentUi::Question question = questionAbout(*journal);
    askInWindow(style_, question, [this, journal, buttons = question.buttons](std::size_t button) {
        isAsking_ = false;
        answered(journal, buttons[button]);
    });
}

// What is left for later is let go, and found by the next start.
void LeftBehind::answered(std::shared_ptr<const AbandonedJournal> journal, const std::string &button) {
    if (button == "Discard") return confirmDiscard(journal);
    if (button == "Restore") onRestore(journal);
    askNext();
}

// One wrong click is no loss: cancelled, the first question comes again.
void LeftBehind::confirmDiscard(std::shared_ptr<const AbandonedJournal> journal) {
    isAsking_ = true;
    askInWindow(style_, discardQuestion(*journal), [this, journal](std::size_t button) {
        enum : std::size_t { cancel, discardIt };
        isAsking_ = false;
        button == discardIt ? discard(journal) : journals_.push_front(journal);
        askNext();
    });
}

void LeftBehind::discard(std::shared_ptr<const AbandonedJournal> journal) {
    jobs_.run(
        std::make_shared<Progress>(), [folder = folder_, journal](Progress &) { discardJournal(folder, *journal); },
        [](std::exception_ptr) {});
}

}  // namespace kiv
