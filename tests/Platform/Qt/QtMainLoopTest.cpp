#include "Platform/Qt/QtMainLoop.h"

#include <gtest/gtest.h>

#include <QGuiApplication>
#include <memory>
#include <thread>

#include "Platform/Qt/QtWorld.h"

namespace kiv {
namespace {

using namespace std::chrono_literals;

class Application : public testing::Environment {
public:
    void SetUp() override { application_ = std::make_unique<QGuiApplication>(count_, names_); }
    void TearDown() override { application_.reset(); }

private:
    int count_ = 1;
    char name_[5] = "test";
    char *names_[2] = {name_, nullptr};
    std::unique_ptr<QGuiApplication> application_;
};

[[maybe_unused]] const auto *application = testing::AddGlobalTestEnvironment(new Application);

TEST(QtMainLoop, runs_posts_on_its_thread_in_order_whoever_posts) {
    QtMainLoop loop;
    const auto main = std::this_thread::get_id();
    std::vector<int> seen;
    std::jthread other([&] {
        for (int i = 0; i < 100; ++i)
            loop.post([&, i] {
                EXPECT_EQ(std::this_thread::get_id(), main);
                seen.push_back(i);
            });
    });
    other.join();
    EXPECT_TRUE(seen.empty());
    ASSERT_TRUE(waitUntil([&] { return seen.size() == 100; }));
    EXPECT_TRUE(std::is_sorted(seen.begin(), seen.end()));
}

TEST(QtMainLoop, timers_come_once_or_again_and_end_with_their_subscription) {
    QtMainLoop loop;
    int once = 0, again = 0, never = 0, self = 0;
    const auto a = loop.after(5ms, [&] { ++once; });
    const auto b = loop.repeat(5ms, [&] { ++again; });
    auto c = loop.after(10ms, [&] { ++never; });
    auto kept = std::make_shared<int>();
    Subscription d;
    d = loop.repeat(5ms, [&, kept] {
        ++self;
        c.reset();
        d.reset();
        EXPECT_EQ(*kept, 0) << "a call that ends its own timer keeps what it holds to its end";
    });
    QElapsedTimer time;
    time.start();
    ASSERT_TRUE(waitUntil([&] { return again >= 5; }));
    EXPECT_GE(time.elapsed(), 20);
    EXPECT_EQ(once, 1);
    EXPECT_EQ(never, 0);
    EXPECT_EQ(self, 1);
    ASSERT_TRUE(waitUntil([&] { return kept.use_count() == 1; })) << "what an ended timer held is let go";
}

TEST(QtMainLoop, may_go_before_posts_and_timers) {
    int calls = 0;
    Subscription timer;
    {
        QtMainLoop loop;
        loop.post([&] { ++calls; });
        timer = loop.after(0ms, [&] { ++calls; });
    }
    timer.reset();
    waitUntil([] { return false; }, 50);
    EXPECT_EQ(calls, 0);
}

}  // namespace
}  // namespace kiv
