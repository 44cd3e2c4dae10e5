#include "App/LeftBehind.h"

#include <gmock/gmock.h>

#include <QDateTime>

namespace kiv {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

TEST(LeftBehind, SaysWhatCanBeRestoredAndWhatCannot) {
    using enum AbandonedJournal::Condition;
    const std::int64_t now = QDateTime::currentMSecsSinceEpoch();
    const std::int64_t longAgo = QDateTime({2026, 3, 7}, {4, 5}).toMSecsSinceEpoch();
    struct Case {
        AbandonedJournal::Condition condition;
        std::int64_t when;
        const char *path, *message, *kept, *why, *first;
    };
    const Case cases[] = {
        {asItWas, now, "/music/drum.wav", "“drum.wav” was not", " today were kept", "as it was last saved", "Restore"},
        {changed, longAgo, "/music/drum.wav", "“drum.wav” was not", "up to 04:05 on 7 March 2026", "or removed since",
         "Restore"},
        {lost, now, "/music/drum.wav", "“drum.wav” was not", "today were kept", "cannot be restored now", "Later"},
        {damaged, now, "", "A document was not", "changes were kept", "is damaged", "Later"},
        {foreign, now, "/music/drum.wav", "“drum.wav” was not", "another version", "Only that version", "Later"}};
    for (const Case &each : cases) {
        AbandonedJournal journal;
        journal.document = each.path;
        journal.writtenAt = each.when;
        journal.condition = each.condition;
        const DocumentUi::Question question = questionAbout(journal);
        EXPECT_THAT(question.message, testing::StartsWith(each.message));
        EXPECT_THAT(question.informative, testing::AllOf(HasSubstr(each.kept), HasSubstr(each.why)));
        EXPECT_EQ(question.buttons.front(), each.first) << "the default loses nothing";
    }
}

}  // namespace
}  // namespace kiv
