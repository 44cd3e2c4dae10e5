#include "Platform/ThreadJobs.h"

#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>
#include <string>

#include "Platform/Fake/FakeMainLoop.h"

namespace kiv {
namespace {

// Lets posts run until `count` has come to `wanted`.
void waitFor(FakeMainLoop &loop, const int &count, int wanted) {
    while (count < wanted) ASSERT_TRUE(loop.waitForPosts());
}

TEST(ThreadJobs, report_on_the_main_thread_after_letting_go_what_the_work_held) {
    FakeMainLoop loop;
    ThreadJobs jobs(loop);
    const auto main = std::this_thread::get_id();
    auto input = std::make_shared<int>(1);
    int result = 0, reports = 0;
    std::thread::id worker;
    jobs.run(
        std::make_shared<Progress>(), [&, input](Progress &) { worker = std::this_thread::get_id(), result = *input + 1; },
        [&](std::exception_ptr failure) {
            EXPECT_FALSE(failure);
            EXPECT_EQ(std::this_thread::get_id(), main);
            EXPECT_EQ(result, 2);
            EXPECT_EQ(input.use_count(), 1);
            ++reports;
        });
    waitFor(loop, reports, 1);
    EXPECT_NE(worker, main);
    EXPECT_NE(worker, std::thread::id());
}

TEST(ThreadJobs, run_side_by_side_and_hand_over_what_was_thrown) {
    FakeMainLoop loop;
    ThreadJobs jobs(loop);
    std::atomic<int> met{0};
    int reports = 0;
    std::string texts;
    for (const std::string name : {"a", "b", "c"})
        jobs.run(
            std::make_shared<Progress>(),
            [&met, name](Progress &) {
                for (++met; met < 3;) std::this_thread::yield();  // each waits for all
                throw std::runtime_error(name);
            },
            [&](std::exception_ptr failure) {
                ++reports;
                try {
                    std::rethrow_exception(failure);
                } catch (const std::runtime_error &error) {
                    texts += error.what();
                }
            });
    waitFor(loop, reports, 3);
    EXPECT_EQ(texts.size(), 3u);
}

TEST(ThreadJobs, end_when_cancelled_and_a_report_may_start_the_next) {
    FakeMainLoop loop;
    ThreadJobs jobs(loop);
    int cancelled = 0;
    std::function<void()> next = [&] {
        const auto progress = std::make_shared<Progress>();
        jobs.run(
            progress,
            [](Progress &p) {
                for (;; p.add(1)) std::this_thread::yield();
            },
            [&](std::exception_ptr failure) {
                EXPECT_THROW(std::rethrow_exception(failure), Cancelled);
                if (++cancelled < 5) next();
            });
        progress->cancel();
    };
    next();
    waitFor(loop, cancelled, 5);
}

TEST(ThreadJobs, going_away_ends_what_runs_and_reports_nothing) {
    FakeMainLoop loop;
    int reports = 0;
    std::atomic<int> ended{0};
    const auto token = std::make_shared<int>();
    {
        ThreadJobs jobs(loop);
        for (int i = 0; i < 4; ++i)
            jobs.run(
                std::make_shared<Progress>(),
                [&ended, i](Progress &p) {
                    try {
                        for (; i > 0; p.add(1)) std::this_thread::yield();
                    } catch (...) {
                        ++ended;
                        throw;
                    }
                },
                [&reports, token](std::exception_ptr) { ++reports; });
    }
    EXPECT_EQ(ended, 3);
    EXPECT_EQ(token.use_count(), 1) << "what a report holds goes with the jobs";
    loop.runPosts();
    EXPECT_EQ(reports, 0);
}

TEST(ThreadJobs, at_the_end_wait_for_all_but_a_read_that_hangs) {
    FakeMainLoop loop;
    std::atomic<bool> answers = false, written = false;
    int reports = 0;
    ThreadJobs jobs(loop);
    const auto told = [&](std::exception_ptr) { ++reports; };
    jobs.read(
        std::make_shared<Progress>(), [&](Progress &) { answers.wait(false); }, told);
    jobs.run(
        std::make_shared<Progress>(),
        [&](Progress &) {
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
            written = true;
        },
        told);
    EXPECT_FALSE(jobs.end(std::chrono::milliseconds(1)));
    EXPECT_TRUE(written) << "however long it takes";
    answers = true;
    answers.notify_all();
    EXPECT_TRUE(jobs.end(std::chrono::seconds(20)));
    loop.runPosts();
    EXPECT_EQ(reports, 0);
}

TEST(ThreadJobs, may_go_away_in_a_report) {
    FakeMainLoop loop;
    auto jobs = std::make_unique<ThreadJobs>(loop);
    int reports = 0;
    for (int i = 0; i < 3; ++i)
        jobs->run(
            std::make_shared<Progress>(), [](Progress &) {},
            [&](std::exception_ptr) {
                ++reports;
                jobs.reset();
            });
    waitFor(loop, reports, 1);
    loop.runPosts();
    EXPECT_EQ(reports, 1);
}

}  // namespace
}  // namespace kiv
