#include "Support/SampleMemory.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <fstream>
#include <new>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace kiv {
namespace {

constexpr std::size_t mib = std::size_t(1) << 20;
constexpr std::size_t samplesPerMib = mib / sizeof(float);

#ifdef __SANITIZE_ADDRESS__
constexpr bool mapsLargeBlocks = false;
#else
constexpr bool mapsLargeBlocks = true;
#endif

std::uintptr_t address(const SampleMemory &memory) { return reinterpret_cast<std::uintptr_t>(memory.data()); }

bool kernelHasHugePages() {
    std::ifstream file("/sys/kernel/mm/transparent_hugepage/enabled");
    std::string modes;
    return std::getline(file, modes) && modes.find("[never]") == std::string::npos;
}

// One field of the mapping that holds an address, as the kernel tells it.
std::string mappingField(std::uintptr_t where, const std::string &field) {
    std::ifstream maps("/proc/self/smaps");
    bool inside = false;
    for (std::string line; std::getline(maps, line);) {
        std::uintptr_t lo = 0, hi = 0;
        char dash = 0;
        if (std::istringstream(line) >> std::hex >> lo >> dash >> hi && dash == '-') inside = where >= lo && where < hi;
        if (inside && line.rfind(field, 0) == 0) return line.substr(field.size());
    }
    return {};
}

TEST(SampleMemory, HoldsWhatWasWrittenInBlocksOfEverySize) {
    for (const std::size_t size : {std::size_t(1), std::size_t(1000), 2 * samplesPerMib - 1, 2 * samplesPerMib,
                                   2 * samplesPerMib + 1, 5 * samplesPerMib}) {
        SampleMemory memory(size);
        ASSERT_EQ(memory.size(), size);
        EXPECT_EQ(address(memory) % 64, 0u);
        for (std::size_t i = 0; i < size; ++i) memory.data()[i] = float(i);
        for (std::size_t i = 0; i < size; i += 997) ASSERT_EQ(memory.data()[i], float(i));
    }
    EXPECT_EQ(SampleMemory().data(), nullptr);
    EXPECT_EQ(SampleMemory(0).size(), 0u);
}

TEST(SampleMemory, RefusesMoreThanThereIs) {
    EXPECT_THROW(SampleMemory(SIZE_MAX), std::bad_alloc);
    EXPECT_THROW(SampleMemory(SIZE_MAX / 4 + 2), std::bad_alloc) << "4 · size would wrap around";
    if (mapsLargeBlocks) {
        EXPECT_THROW(SampleMemory(std::size_t(1) << 58), std::bad_alloc);
    }
}

TEST(SampleMemory, MovesKeepTheBlockAndFreeIt) {
    SampleMemory a(1000);
    a.data()[999] = 7;
    const float *block = a.data();
    SampleMemory b(std::move(a));
    EXPECT_EQ(b.data(), block);
    SampleMemory c(3 * samplesPerMib);
    c = std::move(b);
    EXPECT_EQ(c.data(), block);
    EXPECT_EQ(c.size(), 1000u);
    EXPECT_EQ(c.data()[999], 7);
}

TEST(SampleMemory, LargeBlocksAskForHugePages) {
    if (!mapsLargeBlocks || !kernelHasHugePages()) GTEST_SKIP() << "no huge pages here";
    releaseSampleMemory();
    SampleMemory memory(8 * samplesPerMib);
    EXPECT_EQ(address(memory) % (2 * mib), 0u);
    EXPECT_NE(mappingField(address(memory), "VmFlags:").find(" hg"), std::string::npos);
}

TEST(SampleMemory, AFreedBlockServesARequestOfALikeSizeOnly) {
    if (!mapsLargeBlocks) GTEST_SKIP();
    releaseSampleMemory();
    const auto freed = [](std::size_t samples) { return address(SampleMemory(samples)); };
    const std::uintptr_t sixteen = freed(16 * samplesPerMib);
    SampleMemory small(4 * samplesPerMib);  // would waste more than a quarter of itself
    SampleMemory like(15 * samplesPerMib);
    EXPECT_NE(address(small), sixteen);
    EXPECT_EQ(address(like), sixteen);
    releaseSampleMemory();
    like.data()[15 * samplesPerMib - 1] = 1;  // blocks in use are not given back
}

TEST(SampleMemory, KeepsNoMoreThanAQuarterGibibyteWhenNothingIsInUse) {
    if (!mapsLargeBlocks) GTEST_SKIP();
    releaseSampleMemory();
    std::vector<std::uintptr_t> places;
    {
        std::vector<SampleMemory> blocks;  // 320 MiB, untouched
        for (int i = 0; i < 5; ++i) places.push_back(address(blocks.emplace_back(64 * samplesPerMib)));
    }
    int stillMapped = 0;
    for (const std::uintptr_t place : places) stillMapped += !mappingField(place, "Size:").empty();
    EXPECT_EQ(stillMapped, 4);
    releaseSampleMemory();
}

TEST(SampleMemory, BlocksComeAndGoOnManyThreads) {
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([t] {
            for (int i = 0; i < 100; ++i) {
                SampleMemory memory((2 + std::size_t(i + t) % 3) * samplesPerMib);
                memory.data()[0] = memory.data()[memory.size() - 1] = float(t);
                std::this_thread::yield();
                ASSERT_EQ(memory.data()[0] + memory.data()[memory.size() - 1], float(2 * t)) << "shared with another";
            }
        });
    for (std::thread &thread : threads) thread.join();
}

}  // namespace
}  // namespace kiv
