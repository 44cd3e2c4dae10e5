#include "Document/DecodedSamples.h"

#include <gtest/gtest.h>

#include <array>
#include <limits>

#include "Support/Parallel.h"

namespace kiv {
namespace {

constexpr std::int64_t nowhere = std::numeric_limits<std::int64_t>::max();

struct Plan {
    const char *what;
    std::int64_t frames = 3 << 20, expected = frames;
    std::int64_t late = 0;         // how many frames of a part are not yet right
    std::int64_t fault = nowhere;  // the frame at which a part, which the first would read, gives up
    std::int64_t missing = 0;
    std::int64_t astray = 0;  // how many frames a part is ahead of where it says it is
    bool isSilent = false;    // around its middle
    float sampleAt(std::int64_t frame) const {
        const bool isMiddle = frame > frames / 2 - 50000 && frame < frames / 2 + 50000;
        return isSilent && isMiddle ? 0.0f : float(frame);
    }
};

// Each frame holds its own number.
class Numbered : public DecodedSound {
public:
    Numbered(const Plan &plan, std::int64_t start) : plan_(plan), start_(start), at_(start) {}
    const DecodedFormat &format() const override { return format_; }
    std::int64_t read(std::span<float> out) override {
        const auto count = std::min<std::int64_t>(std::int64_t(out.size()), plan_.frames - at_);
        if (start_ > 0 && at_ + count > plan_.fault) throw DecodeFault("a fault");
        for (std::int64_t i = 0; i < count; ++i, ++at_) out[std::size_t(i)] = sampleAt(at_);
        return count;
    }
    std::int64_t place() const override { return at_ + (start_ > 0 ? plan_.astray : 0); }
    std::int64_t read(std::span<std::int32_t>) override { return 0; }
    std::optional<std::int64_t> countFrames() override { return std::nullopt; }
    DecodedEnd end() const override { return {.missingFrames = at_ == plan_.frames ? plan_.missing : -1}; }
    std::int64_t expectedFrames() const override { return plan_.expected; }
    std::unique_ptr<DecodedSound> from(const ByteSource &, std::int64_t frame) const override {
        return frame < plan_.frames ? std::make_unique<Numbered>(plan_, frame) : nullptr;
    }

private:
    // Too early a part is wrong where anything is to be heard.
    float sampleAt(std::int64_t frame) const {
        const bool isPart = start_ > 0;
        const float right = plan_.sampleAt(frame + (isPart ? plan_.astray : 0));
        return isPart && frame - start_ < plan_.late && right != 0 ? -1.0f : right;
    }

    const Plan &plan_;
    const std::int64_t start_;
    std::int64_t at_;
    DecodedFormat format_;
};

// However the parts turn out, what comes is what reading from the start to the end gives.
TEST(DecodedSamples, OfASoundReadOnSeveralCoresAreThoseOfOne) {
    constexpr std::int64_t frames = 3 << 20, half = frames / 2;
    const Plan plans[] = {{.what = "as expected"},
                          {.what = "no length expected", .expected = 0},
                          {.what = "more than expected", .expected = 2 << 20},
                          {.what = "a little less", .expected = frames + 1000, .missing = 1000},
                          {.what = "next to nothing of what was expected", .expected = 100 * frames},
                          {.what = "parts that begin late", .late = 100},
                          {.what = "parts that are right too late", .late = 10000},
                          {.what = "a fault in the joint", .fault = half + 10},
                          {.what = "a fault at the end", .fault = frames - 1},
                          {.what = "a part that is wrong behind silence", .late = 60000, .isSilent = true},
                          {.what = "a part in silence that is elsewhere", .astray = 1152, .isSilent = true}};
    for (const Plan &plan : plans) {
        Numbered sound(plan, 0);
        const std::array<std::byte, 1000> bytes{};
        const MemorySource memory(bytes);
        Progress progress;
        CountedSource source(memory, progress);
        const DecodedSamples samples = readAllSamples(sound, source);
        ASSERT_EQ(samples.buffer.frames(), frames) << plan.what;
        std::int64_t wrong = 0;
        samples.buffer.forEachSpan({0, frames}, [&](std::span<const float> part, FrameRange range) {
            for (std::int64_t i = 0; i < range.count(); ++i) wrong += part[std::size_t(i)] != plan.sampleAt(range.lo + i);
        });
        EXPECT_EQ(wrong, 0) << plan.what;
        EXPECT_EQ(samples.end.missingFrames, plan.missing) << plan.what;
        EXPECT_TRUE(plan.expected != frames || parallelThreads() < 2 || progress.fraction() > 0.99) << plan.what;
    }
}

}  // namespace
}  // namespace kiv
