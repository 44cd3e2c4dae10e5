#include "Platform/Fake/FakeMainLoop.h"

#include <gtest/gtest.h>

#include <thread>

#include "Platform/Fake/FakeJobs.h"

namespace kiv {
namespace {

using namespace std::chrono_literals;

class FakeMainLoopTest : public testing::Test {
protected:
    std::function<void()> note(char name) {
        return [this, name] { seen += std::string(1, name) + std::to_string(loop.now().count()) + " "; };
    }
    FakeMainLoop loop;
    std::string seen;
};

TEST_F(FakeMainLoopTest, fires_timers_in_the_order_of_their_times_with_posts_between) {
    const auto late = loop.after(30ms, note('L'));
    const auto tick = loop.repeat(20ms, [this] {
        note('t')();
        loop.post(note('p'));
    });
    const auto early = loop.after(10ms, note('E'));
    loop.post(note('o'));
    loop.advance(45ms);
    EXPECT_EQ(seen, "o0 E10 t20 p20 L30 t40 p40 ");
    EXPECT_EQ(loop.now(), 45ms);
    EXPECT_EQ(loop.timers(), 1);
}

TEST_F(FakeMainLoopTest, subscriptions_end_timers_from_anywhere) {
    Subscription self, other;
    self = loop.repeat(10ms, [&] {
        note('s')();
        self.reset();
        other.reset();
    });
    other = loop.after(10ms, note('o'));
    loop.advance(50ms);
    EXPECT_EQ(seen, "s10 ");
    {
        FakeMainLoop gone;
        other = gone.after(1ms, note('g'));
    }
    other.reset();
}

TEST_F(FakeMainLoopTest, takes_posts_from_other_threads_in_order) {
    std::jthread poster([this] {
        for (const char c : {'a', 'b', 'c'}) loop.post([this, c] { seen += c; });
    });
    while (seen.size() < 3) ASSERT_TRUE(loop.waitForPosts());
    EXPECT_EQ(seen, "abc");
    EXPECT_FALSE(loop.waitForPosts(1ms));
}

TEST(FakeJobs, keeps_work_and_report_apart) {
    FakeJobs jobs;
    std::string seen;
    for (const char c : {'a', 'b'})
        jobs.run(
            std::make_shared<Progress>(),
            [&, c](Progress &p) {
                seen += c;
                p.throwIfCancelled();
                if (c == 'b') throw 1;
            },
            [&, c](std::exception_ptr failure) { (seen += c) += failure ? '!' : '.'; });
    EXPECT_EQ(jobs.waiting(), 2);
    EXPECT_FALSE(jobs.report());
    EXPECT_TRUE(jobs.work());
    EXPECT_TRUE(jobs.work());
    EXPECT_EQ(seen, "ab");
    jobs.runAll();
    EXPECT_EQ(seen, "aba.b!");
}

}  // namespace
}  // namespace kiv
