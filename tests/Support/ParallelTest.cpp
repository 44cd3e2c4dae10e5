#include "Support/Parallel.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <numeric>
#include <stdexcept>
#include <thread>
#include <vector>

namespace kiv {
namespace {

struct Split {
    std::int64_t count, grain;
};

class ParallelFor : public testing::TestWithParam<Split> {};

TEST_P(ParallelFor, CoversEveryItemOnceInPartsOfTheGrain) {
    const auto [count, grain] = GetParam();
    std::vector<int> visits(std::size_t(std::max<std::int64_t>(count, 0)));
    std::atomic<int> oddParts{0};
    parallelFor(count, grain, [&, count = count, grain = grain](std::int64_t lo, std::int64_t hi) {
        oddParts += lo % std::max<std::int64_t>(grain, 1) != 0 || (hi - lo != grain && hi != count);
        for (std::int64_t i = lo; i < hi; ++i) ++visits[std::size_t(i)];
    });
    EXPECT_EQ(visits, std::vector<int>(visits.size(), 1));
    EXPECT_EQ(oddParts, 0);
}

INSTANTIATE_TEST_SUITE_P(Splits, ParallelFor,
                         testing::Values(Split{0, 1}, Split{-3, 2}, Split{1, 1}, Split{7, 1}, Split{7, 7}, Split{7, 8},
                                         Split{8, 7}, Split{100000, 3}, Split{1000, INT64_MAX}));

TEST(Parallel, PartsRunOnSeveralThreadsAtOnce) {
    if (parallelThreads() < 2) GTEST_SKIP() << "one core";
    // Each of two parts waits for the other: only threads side by side can end this.
    std::atomic<int> arrived{0};
    parallelFor(2, 1, [&](std::int64_t, std::int64_t) {
        ++arrived;
        while (arrived < 2) std::this_thread::yield();
    });
    EXPECT_EQ(arrived, 2);
}

TEST(Parallel, CallsMayNestAndComeFromManyThreads) {
    std::atomic<std::int64_t> sum{0};
    const auto nested = [&] {
        for (int round = 0; round < 50; ++round)
            parallelFor(8, 1, [&](std::int64_t, std::int64_t) {
                parallelFor(100, 9, [&](std::int64_t lo, std::int64_t hi) { sum += hi - lo; });
            });
    };
    std::vector<std::thread> callers;
    for (int i = 0; i < 4; ++i) callers.emplace_back(nested);
    for (std::thread &caller : callers) caller.join();
    EXPECT_EQ(sum, 4 * 50 * 8 * 100);
}

TEST(Parallel, WhatPartsWroteIsSeenAfterTheCall) {
    std::vector<std::int64_t> squares(4096);
    for (int round = 0; round < 200; ++round) {
        parallelFor(4096, 64, [&](std::int64_t lo, std::int64_t hi) {
            for (std::int64_t i = lo; i < hi; ++i) squares[std::size_t(i)] += i;
        });
        ASSERT_EQ(std::accumulate(squares.begin(), squares.end(), std::int64_t(0)), (round + 1) * 4096LL * 4095 / 2);
    }
}

TEST(Parallel, AnExceptionComesOutAndLeavesOutPartsNotYetBegun) {
    std::atomic<int> begun{0};
    // The first part fails only once another thread is at work too.
    const auto failing = [&](std::int64_t lo, std::int64_t) {
        ++begun;
        while (lo == 0 && begun < std::min(parallelThreads(), 2)) std::this_thread::yield();
        if (lo == 0) throw std::runtime_error("part 0");
        std::this_thread::yield();
    };
    EXPECT_THROW(parallelFor(1'000'000, 1, failing), std::runtime_error);
    EXPECT_LT(begun, 1'000'000);
    EXPECT_THROW(parallelFor(1, 1, [](std::int64_t, std::int64_t) { throw std::runtime_error("the only part"); }),
                 std::runtime_error);
}

}  // namespace
}  // namespace kiv
