#include "App/LeftBehind.h"

#include <gmock/gmock.h>

#include <QDateTime>

namespace kiv {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

TEST(LeftBehind, SaysWhatCanBeRestoredAndWhatCannot) {
    using enum AbandonedJournal::Base;
    const std::int64_t now = QDateTime::currentMSecsSinceEpoch();
    const std::int64_t longAgo = QDateTime({2026, 3, 7}, {4, 5}).toMSecsSinceEpoch();
    const std::tuple<AbandonedJournal::Base, std::int64_t, const char *, const char *, bool> cases[] = {
        {asItWas, now, " today were kept", "as it was last saved", true},
        {changed, longAgo, "up to 04:05 on 7 March 2026 were kept", "changed or removed since", true},
        {lost, now, "today were kept", "cannot be restored now", false}};
    for (const auto &[base, when, time, file, restores] : cases) {
        AbandonedJournal journal;
        journal.document = "/music/drum.wav";
        journal.writtenAt = when;
        journal.base = base;
        const DocumentUi::Question question = questionAbout(journal);
        EXPECT_EQ(question.message, "“drum.wav” was not closed properly");
        EXPECT_THAT(question.informative, testing::AllOf(HasSubstr(time), HasSubstr(file)));
        EXPECT_EQ(question.buttons.front(), restores ? "Restore" : "Later") << "the default loses nothing";
    }
}

}  // namespace
}  // namespace kiv
