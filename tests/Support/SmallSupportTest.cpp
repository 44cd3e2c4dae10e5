#include <gtest/gtest.h>

#include <array>
#include <clocale>

#include "Support/ByteSource.h"
#include "Support/DecimalText.h"
#include "Support/Observers.h"
#include "Support/Progress.h"

namespace kiv {
namespace {

TEST(MemorySource, ReadsWhatIsThereAndNoMore) {
    const std::array<std::byte, 5> bytes{std::byte{0}, std::byte{1}, std::byte{2}, std::byte{3}, std::byte{4}};
    const MemorySource source(bytes);
    const struct {
        std::int64_t offset;
        std::size_t wanted, got;
    } cases[] = {{0, 5, 5}, {0, 9, 5}, {3, 1, 1}, {3, 9, 2}, {5, 1, 0}, {6, 1, 0}, {-1, 3, 0}, {INT64_MAX, 3, 0}, {2, 0, 0}};
    for (const auto &c : cases) {
        std::array<std::byte, 9> out;
        out.fill(std::byte{99});
        ASSERT_EQ(source.read(c.offset, std::span(out).first(c.wanted)), c.got) << c.offset << ", " << c.wanted;
        for (std::size_t i = 0; i < c.got; ++i) EXPECT_EQ(out[i], bytes[std::size_t(c.offset) + i]);
        EXPECT_EQ(out[c.got], std::byte{99});
    }
}

TEST(DecimalText, WritesAPointWhateverTheLocale) {
    const char *old = std::setlocale(LC_NUMERIC, nullptr);
    const std::string before = old ? old : "C";
    for (const char *name : {"de_DE.UTF-8", "fr_FR.UTF-8", "C"})  // those that are not installed change nothing
        if (std::setlocale(LC_NUMERIC, name)) {
            EXPECT_EQ(decimalText(1.5, 3), "1.500") << name;
        }
    std::setlocale(LC_NUMERIC, before.c_str());
    EXPECT_EQ(decimalText(-0.25, 1), "-0.2");  // ties to even, as printf
    EXPECT_EQ(decimalText(5.5, 2, 5), "05.50");
    EXPECT_EQ(decimalText(123, 0, 2), "123");
    EXPECT_EQ(decimalText(1e300, 2).size(), 304u);
}

TEST(Observers, MayAddAndRemoveWhileBeingTold) {
    Observers<int> observers;
    std::vector<std::string> heard;
    Subscription second, late;
    Subscription first = observers.add([&](int) {
        heard.push_back("first");
        second.reset();
        late = observers.add([&](int) { heard.push_back("late"); });
    });
    second = observers.add([&](int) { heard.push_back("second"); });
    observers.notify(1);
    EXPECT_EQ(heard, std::vector<std::string>{"first"}) << "removed: silent at once; added: from the next change on";
    first.reset();
    observers.notify(2);
    EXPECT_EQ(heard, (std::vector<std::string>{"first", "late"}));
}

TEST(Observers, ASubscriptionMayEndItselfAndOutliveTheObserved) {
    auto observers = std::make_unique<Observers<int>>();
    int told = 0;
    Subscription own;
    own = observers->add([&own, &told, step = std::vector<int>{1}](int) {
        own.reset();
        told += step[0];  // the callback is still there
    });
    Subscription other = observers->add([&](int) { ++told; });
    observers->notify(0);
    observers->notify(0);
    EXPECT_EQ(told, 3);
    observers.reset();
    other.reset();
}

TEST(Progress, SaysHowFarAndStopsWhenCancelled) {
    Progress progress;
    EXPECT_EQ(progress.fraction(), 0);
    progress.start(4);
    progress.add(1);
    EXPECT_EQ(progress.fraction(), 0.25);
    progress.add(7);
    EXPECT_EQ(progress.fraction(), 1);
    progress.cancel();
    EXPECT_THROW(progress.add(1), Cancelled);
}

}  // namespace
}  // namespace kiv
