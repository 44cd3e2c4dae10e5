#include "App/LeftBehind.h"

#include <QDateTime>
#include <QLocale>

#include "Document/Windows/MessageWindow.h"

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

}  // namespace

DocumentUi::Question questionAbout(const AbandonedJournal &journal) {
    const std::string name = journal.document.substr(journal.document.find_last_of('/') + 1);
    return {(name.empty() ? "A document" : "“" + name + "”") + " was not closed properly", whatIsKept(journal),
            canBeRestored(journal) ? std::vector<std::string>{"Restore", "Discard", "Later"}
                                   : std::vector<std::string>{"Later", "Discard"}};
}

void LeftBehind::look() {
    const auto found = std::make_shared<std::vector<AbandonedJournal>>();
    jobs_.run(
        std::make_shared<Progress>(), [folder = folder_, found](Progress &) { *found = findAbandonedJournals(folder); },
        [this, found](std::exception_ptr) {
            for (AbandonedJournal &journal : *found)
                journals_.push_back(std::make_shared<const AbandonedJournal>(std::move(journal)));
            askNext();
        });
}

// What is left for later is let go, and found by the next start.
void LeftBehind::askNext() {
    if (journals_.empty()) return;
    const auto journal = journals_.front();
    journals_.pop_front();
    const DocumentUi::Question question = questionAbout(*journal);
    askInWindow(style_, question, [this, journal, buttons = question.buttons](std::size_t button) {
        if (buttons[button] == "Restore") onRestore(journal);
        if (buttons[button] == "Discard") discard(journal);
        askNext();
    });
}

void LeftBehind::discard(std::shared_ptr<const AbandonedJournal> journal) {
    jobs_.run(
        std::make_shared<Progress>(), [folder = folder_, journal](Progress &) { discardJournal(folder, *journal); },
        [](std::exception_ptr) {});
}

}  // namespace kiv
