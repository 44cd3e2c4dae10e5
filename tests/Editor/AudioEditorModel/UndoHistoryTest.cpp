#include "Editor/AudioEditorModel/UndoHistory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "Editor/AudioEditorCore/TestSounds.h"

namespace kiv {
namespace {

Snapshot position(std::int64_t version) {
    Snapshot snapshot;
    snapshot.version = version;
    return snapshot;
}

Snapshot sound(std::int64_t version, const AudioEditorBuffer &buffer) {
    Snapshot snapshot = position(version);
    snapshot.buffer = buffer;
    return snapshot;
}

// A sound of a power of two of samples whose memory is a small part of that.
AudioEditorBuffer repeated(int powerOfTwo) {
    AudioEditorBuffer buffer = noise(1 << 15, 2, 1);
    for (int power = 16; power < powerOfTwo; ++power) buffer = buffer.replacing({0, 0}, buffer);
    return buffer;
}

std::vector<std::int64_t> undoVersions(UndoHistory history) {
    std::vector<std::int64_t> versions;
    while (const auto snapshot = history.undo([](const Snapshot &) { return position(-1); }))
        versions.push_back(snapshot->version);
    return versions;
}

TEST(UndoHistory, countsTheSamplesAndNothingElse) {
    Snapshot snapshot = position(0);
    snapshot.markers.resize(1000);
    EXPECT_EQ(snapshot.bytes(), 0);
    snapshot.buffer = noise(100, 3, 1);
    EXPECT_EQ(snapshot.bytes(), 1200);
}

TEST(UndoHistory, theTwoHundredAndFirstStepDropsTheOldest) {
    UndoHistory history;
    for (int i = 0; i < 200; ++i) history.push(position(i));
    EXPECT_EQ(undoVersions(history).back(), 0);
    history.push(position(200));
    EXPECT_EQ(history.undoDepth(), 200u);
    EXPECT_EQ(undoVersions(history).back(), 1);
    EXPECT_EQ(undoVersions(history).front(), 200);
}

TEST(UndoHistory, keepsFortySixStepsOfAMinuteInStereo) {
    const AudioEditorBuffer minute(SampleMemory(60 * 48000 * 2), 2, 48000);
    UndoHistory history;
    for (int i = 0; i < 60; ++i) {
        history.push(sound(i, minute));
        history.push(position(i));
    }
    // Positions are free, but one older than a dropped sound goes with it.
    EXPECT_EQ(history.undoDepth(), 93u);
    EXPECT_EQ(undoVersions(history).back(), 13);
}

TEST(UndoHistory, holdsExactlyTheBound) {
    const AudioEditorBuffer half = repeated(27);
    ASSERT_EQ(sound(0, half).bytes() * 2, UndoHistory::maxBytes);
    UndoHistory history;
    history.push(sound(0, half));
    history.push(sound(1, half));
    EXPECT_EQ(undoVersions(history), (std::vector<std::int64_t>{1, 0}));
    history.push(sound(2, noise(1, 1, 1)));
    EXPECT_EQ(undoVersions(history), (std::vector<std::int64_t>{2, 1}));
}

TEST(UndoHistory, neverDropsTheNewest) {
    const AudioEditorBuffer tooMuch = repeated(29);
    UndoHistory history;
    history.push(position(0));
    history.push(sound(1, tooMuch));
    EXPECT_EQ(undoVersions(history), std::vector<std::int64_t>{1});
    history.push(sound(2, tooMuch));
    EXPECT_EQ(undoVersions(history), std::vector<std::int64_t>{2});
    history.push(position(3));
    EXPECT_EQ(undoVersions(history), std::vector<std::int64_t>{3});
}

TEST(UndoHistory, onlyAPushIsBoundedAndClearsTheRedos) {
    const AudioEditorBuffer tooMuch = repeated(29);
    const auto current = [&](const Snapshot &) { return sound(9, tooMuch); };
    UndoHistory history;
    for (int i = 0; i < 3; ++i) history.push(position(i));
    for (int i = 0; i < 3; ++i) history.undo(current);
    EXPECT_EQ(history.redoDepth(), 3u);
    for (int i = 0; i < 3; ++i) history.redo(current);
    EXPECT_EQ(history.undoDepth(), 3u);
    history.undo(current);
    history.push(position(7));
    EXPECT_EQ(history.redoDepth(), 0u);
    EXPECT_EQ(undoVersions(history), std::vector<std::int64_t>{7});
}

// What comes back of 20 random steps whose undos and redos are known beforehand is what an unlimited history gives.
TEST(UndoHistory, keepingOnlyWhatAScriptCanNeedLosesNothingOfIt) {
    enum class Act { edit, undo, redo };
    std::mt19937 chance(3);
    for (int round = 0; round < 200; ++round) {
        std::vector<Act> script;
        for (int i = 0; i < 20; ++i) script.push_back(Act(chance() % 3));
        UndoHistory whole, lean;
        Snapshot now[2] = {sound(0, noise(1, 1, 0)), sound(0, noise(1, 1, 0))};
        for (std::size_t i = 0; i < script.size(); ++i) {
            lean.keepOnly(std::size_t(std::count(script.begin() + std::ptrdiff_t(i), script.end(), Act::undo)),
                          std::size_t(std::count(script.begin() + std::ptrdiff_t(i), script.end(), Act::redo)));
            for (UndoHistory *history : {&whole, &lean}) {
                Snapshot &current = now[history == &lean];
                const auto counterpart = [&](const Snapshot &) { return current; };
                if (script[i] == Act::edit) {
                    history->push(current);
                    current = sound(std::int64_t(i), noise(10, 1, std::uint32_t(i)));
                } else if (auto back = script[i] == Act::undo ? history->undo(counterpart) : history->redo(counterpart)) {
                    current = *back;
                }
            }
            ASSERT_EQ(now[0].version, now[1].version);
            ASSERT_TRUE(*now[0].buffer == *now[1].buffer) << "round " << round << ", step " << i;
            ASSERT_EQ(whole.undoDepth(), lean.undoDepth());
            ASSERT_EQ(whole.redoDepth(), lean.redoDepth());
        }
    }
}

TEST(UndoHistory, letsSoundsGoThatNobodyWillAskForButStillCountsThem) {
    const AudioEditorBuffer half = repeated(27);
    UndoHistory history;
    history.keepOnly(1, 0);
    history.push(sound(0, half));
    Snapshot measured = sound(1, half);
    measured.peaks.emplace();
    history.push(std::move(measured));
    history.push(sound(2, half));
    EXPECT_EQ(history.undoDepth(), 2u);
    const auto none = [](const Snapshot &) { return position(9); };
    EXPECT_EQ(history.undo(none)->buffer->frames(), half.frames());
    const auto letGo = history.undo(none);
    EXPECT_TRUE(letGo->buffer->isEmpty());
    EXPECT_FALSE(letGo->peaks);
}

}  // namespace
}  // namespace kiv
