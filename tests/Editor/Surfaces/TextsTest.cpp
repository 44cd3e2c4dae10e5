#include <gtest/gtest.h>

#include <limits>

#include "Editor/Surfaces/DecibelText.h"
#include "Editor/Surfaces/TimeEntry.h"

namespace kiv {
namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

TEST(DecibelText, CarriesASignOnEitherSideOfZeroOnly) {
    struct Row {
        double db;
        const char *text;
    };
    for (const Row &row : {Row{-3.14, "−3.1 dB"},
                           {2, "+2.0 dB"},
                           {0, "0.0 dB"},
                           {-0.04, "0.0 dB"},
                           {0.04, "0.0 dB"},
                           {-0.05001, "−0.1 dB"},
                           {-infinity, "−∞ dB"},
                           {infinity, "+∞ dB"},
                           {-120, "−120.0 dB"}})
        EXPECT_EQ(decibelText(row.db), row.text);
    EXPECT_EQ(decibelNumber(-4.5), "−4.5");
    EXPECT_EQ(wholeDecibelText(6), "+6 dB");
    EXPECT_EQ(wholeDecibelText(0), "0 dB");
    EXPECT_EQ(wholeDecibelText(-12), "−12 dB");
    EXPECT_DOUBLE_EQ(amplitudeDb(10), 20);
    EXPECT_EQ(amplitudeDb(0), -infinity);
}

struct EntryRow {
    const char *typed;
    AudioEditorTimeUnit unit;
    std::optional<std::int64_t> frames;
};

TEST(TimeEntry, UnderstandsTimesAndSamplesInEitherUnit) {
    constexpr auto seconds = AudioEditorTimeUnit::seconds, samples = AudioEditorTimeUnit::samples;
    constexpr std::int64_t rate = 48000, length = 354480;  // 7.385 s
    const EntryRow rows[] = {
        {"2.5", seconds, 120000},
        {"2,5 s", samples, 120000},
        {" 1.5S ", seconds, 72000},
        {"250 ms", samples, 12000},
        {"0:02.5", samples, 120000},
        {"1:02:03", seconds, 3723 * rate},
        {"30680", samples, 30680},
        {"30680 smp", seconds, 30680},
        {"100 samples", seconds, 100},
        {"5", seconds, 5 * rate},
        {"5", samples, 5},
        {"30680", seconds, 30680},
        {"0", seconds, 0},
        {"0.00001", seconds, 0},
        {"0.0000104166667", seconds, 1},
        {"7", seconds, 7 * rate},
        {"400000", seconds, 400000 * rate},  // beyond the sound either way
        {"", seconds, {}},
        {"-1", seconds, {}},
        {"1:2.5:3", seconds, {}},
        {"abc", seconds, {}},
        {"1e3", samples, {}},
        {".", seconds, {}},
        {"1..2", seconds, {}},
        {"nan", seconds, {}},
        {":", seconds, {}},
        {"99999999999999999999", samples, {}},
        {"s", seconds, {}},
    };
    for (const EntryRow &row : rows) EXPECT_EQ(parseTimeEntry(row.typed, row.unit, rate, length), row.frames) << row.typed;
}

TEST(TimeEntry, ReadsBackWhatIsShown) {
    for (const auto unit : {AudioEditorTimeUnit::seconds, AudioEditorTimeUnit::samples})
        for (const std::int64_t frame : {0, 44100, 66150, 70 * 44100, 3 * 3600 * 44100}) {
            const std::string shown = format(unit, double(frame), 44100);
            EXPECT_EQ(parseTimeEntry(shown, unit, 44100, 4 * 3600 * 44100LL), frame) << shown;
        }
}

}  // namespace
}  // namespace kiv
