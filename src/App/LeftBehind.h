#pragma once

#include <deque>
#include <functional>
#include <memory>

#include "Document/DocumentUi.h"
#include "Document/Journal/JournalRecovery.h"
#include "Editor/Views/ViewStyle.h"
#include "Platform/Jobs.h"

namespace kiv {

// The documents that an earlier run of the program has left behind without closing them. Asks about one after the other what is
// to become of it.
class LeftBehind {
public:
    LeftBehind(const JournalFolder &folder, Jobs &jobs, ViewStyle &style) : folder_(folder), jobs_(jobs), style_(style) {}

    void look();
    // Asks the next question, if there is one and none stands: to be called when a document has been opened. While one is being
    // opened nothing is asked, since its window would cover the question.
    void askNext();
    std::function<bool()> isOpening;
    std::function<void(std::shared_ptr<const AbandonedJournal>)> onRestore;

private:
    using Journals = std::deque<std::shared_ptr<const AbandonedJournal>>;
    void answered(std::shared_ptr<const AbandonedJournal> journal, const std::string &button);
    void confirmDiscard(std::shared_ptr<const AbandonedJournal> journal);
    void discard(std::shared_ptr<const AbandonedJournal> journal);

    const JournalFolder &folder_;
    Jobs &jobs_;
    ViewStyle &style_;
    Journals journals_;  // not asked about yet
    bool isAsking_ = false;
};

// What is asked; without a "Restore" where there is nothing to restore it from.
DocumentUi::Question questionAbout(const AbandonedJournal &journal);
DocumentUi::Question discardQuestion(const AbandonedJournal &journal);

}  // namespace kiv
