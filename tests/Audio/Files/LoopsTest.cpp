#include <gtest/gtest.h>

#include "Audio/Files/FileBytes.h"

// Bringing the file's loop in line with the editor's, and the editor's positions with the file's.
namespace kiv {
namespace {

using namespace fileBytes;
using AudioFileCodec::addingLoop;
using AudioFileCodec::removingLoop;

// A loop added, written and read again must be the file's loop, and the other positions as they were.
void expectLoop(const AudioFileContents &contents, FrameRange loop, const std::vector<std::int64_t> &markers) {
    const auto here = editorPositions(contents), again = editorPositions(read(written(contents)));
    EXPECT_EQ(here.loop, loop);
    EXPECT_EQ(again.loop, loop);
    EXPECT_EQ(here.markers, markers);
    std::vector<std::int64_t> sorted = again.markers, expected = markers;
    std::sort(sorted.begin(), sorted.end());
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(sorted, expected);
}

TEST(WavLoop, IsAddedAsANewSmplChunk) {
    const Bytes cue = chunk("cue ", cues({{1, 5, 5}}));
    const auto contents = addingLoop(read(wavOf(100, cue)), 10, 100);
    expectLoop(contents, {10, 100}, {5});
    const Bytes loop = zeros(28) + le32(1) + zeros(4) + zeros(8) + le32(10) + le32(99) + zeros(8);
    EXPECT_EQ(show(written(contents)), show(wavOf(100, cue + chunk("smpl", loop))));
}

TEST(WavLoop, IsAddedInFrontOfWhatASmplChunkHolds) {
    Bytes unused = smpl({{50, 20}}) + text("sampler's own");
    const auto contents = addingLoop(read(wavOf(100, chunk("smpl", unused))), 1, 2);
    expectLoop(contents, {1, 2}, {50, 21});
    EXPECT_EQ(show(written(contents)), show(wavOf(100, chunk("smpl", smpl({{1, 1}, {50, 20}}) + text("sampler's own")))));
    expectLoop(addingLoop(read(wavOf(100, chunk("smpl", zeros(7)))), 1, 2), {1, 2}, {});
}

// Only the one: a sampler's other loops stay, and so do those that have no length.
TEST(WavLoop, IsTakenOutAlone) {
    const auto file = [](const std::vector<FrameRange> &loops) {
        return wavOf(100, chunk("smpl", smpl(loops) + text("own")) + chunk("cue ", cues({{1, 5, 5}})) +
                              chunk("LIST", text("adtl") + ltxt(1, 4)));
    };
    auto contents = removingLoop(read(file({{30, 20}, {10, 40}, {60, 70}, {9, 8}, {0, 99}})));
    EXPECT_EQ(contents.positions, (std::vector<std::int64_t>{5, 30, 21, 60, 71, 9, 9, 0, 100, 9}));
    EXPECT_FALSE(contents.loop);
    EXPECT_EQ(show(written(contents)), show(file({{30, 20}, {60, 70}, {9, 8}, {0, 99}})));
    contents.positions = {5, 31, 22, 61, 72, 8, 7, 1, 100, 9};
    EXPECT_EQ(show(written(contents)), show(file({{31, 21}, {61, 71}, {8, 6}, {1, 99}})));
    // The emptied chunk stays.
    EXPECT_EQ(show(written(removingLoop(read(file({{10, 40}}))))), show(file({})));
}

TEST(AiffLoop, IsAddedAsMarkersAndInstrument) {
    const auto contents = addingLoop(read(aiffOf(100)), 10, 100);
    expectLoop(contents, {10, 100}, {});
    const Bytes markers = be16(2) + be16(1) + be32(10) + hex("0a") + text("Loop Start") + zeros(1) + be16(2) + be32(100) +
                          hex("08") + text("Loop End") + zeros(1);
    const Bytes inst = hex("3c 00 00 7f 01 7f 0000") + be16(1) + be16(1) + be16(2) + zeros(6);
    EXPECT_EQ(show(written(contents)), show(aiffOf(100, beChunk("MARK", markers) + beChunk("INST", inst))));
}

// Ids that markers, comments or loops name already are not given to the new markers.
TEST(AiffLoop, IsAddedWithFreeMarkerIds) {
    const Bytes chunks = beChunk("COMT", be16(1) + comment(2, "on no marker")) + beChunk("INST", instrument(0, 4, 0)) +
                         beChunk("MARK", be16(2) + marker(1, 7, "ab") + marker(3, 8, "c"));
    const auto contents = addingLoop(read(aiffOf(100, chunks)), 20, 30);
    expectLoop(contents, {20, 30}, {7, 8});
    EXPECT_EQ(show(contents.chunks[3].data), show(instrument(1, 5, 6)));
    // An instrument that plays its loop in another way goes on doing so.
    EXPECT_EQ(show(addingLoop(read(aiffOf(100, beChunk("INST", instrument(2, 8, 9)))), 20, 30).chunks[2].data),
              show(instrument(2, 1, 2)));
    EXPECT_EQ(show(AudioFileCodec::patched(contents.chunks[4], contents.positions)),
              show(be16(4) + marker(1, 7, "ab") + marker(3, 8, "c") + marker(5, 20, "Loop Start") + marker(6, 30, "Loop End")));
}

TEST(AiffLoop, IsAddedBehindCutOffChunksAndNotAtAllWhereThereIsNoRoom) {
    const Bytes cutName = beChunk("MARK", be16(3) + be16(1) + be32(7) + byte(200) + text("ab"));
    expectLoop(addingLoop(read(aiffOf(100, cutName + beChunk("INST", zeros(5)))), 20, 30), {20, 30}, {7});
    expectLoop(addingLoop(read(aiffOf(100, beChunk("MARK", zeros(1)))), 20, 30), {20, 30}, {});
    Bytes full = be16(65534);
    for (unsigned id = 1; id < 65535; ++id) append(full, marker(id, 7, ""));
    const auto contents = read(aiffOf(100, beChunk("MARK", full)));
    const auto same = addingLoop(contents, 20, 30);
    EXPECT_TRUE(same.chunks == contents.chunks && same.positions == contents.positions && !same.loop);
}

TEST(AiffLoop, IsTakenOutWithItsMarkersAndTheCommentsOnThem) {
    const auto file = [](const Bytes &markers, const Bytes &comments, const Bytes &loops) {
        return aiffOf(100,
                      beChunk("MARK", markers) + beChunk("COMT", comments) + beChunk("INST", hex("3C00007F017F0000") + loops));
    };
    const Bytes others = marker(1, 10, "one") + marker(3, 30, "three"), end = marker(4, 40, "end");
    const Bytes comments = comment(0, "on none") + comment(3, "last") + text("xx");
    const auto before = [&](const Bytes &release) {
        return file(be16(4) + marker(2, 20, "begin") + others + end,
                    be16(4) + comment(2, "odd") + comment(4, "even") + comments, be16(2) + be16(2) + be16(4) + release);
    };
    auto contents = removingLoop(read(before(zeros(6))));
    EXPECT_EQ(contents.positions, (std::vector<std::int64_t>{10, 30}));
    EXPECT_EQ(show(written(contents)), show(file(be16(2) + others, be16(2) + comments, zeros(12))));
    contents.positions = {11, 31};
    EXPECT_EQ(read(written(contents)).positions, contents.positions);
    // A release loop that needs one of its markers goes with them, another one stays.
    const auto release = [](unsigned last) { return be16(1) + be16(1) + be16(last); };
    for (const auto &[now, then] : {std::pair{release(4), zeros(6)}, {release(3), release(3)}})
        EXPECT_EQ(show(written(removingLoop(read(before(now))))),
                  show(file(be16(2) + others, be16(2) + comments, zeros(6) + then)));
}

TEST(Loop, ComesBackAfterBeingTakenOutAndAdded) {
    const Bytes markers = be16(3) + marker(9, 3, "x") + marker(1, 10, "s") + marker(2, 20, "e");
    for (const Bytes &file : {wavOf(100, chunk("cue ", cues({{1, 3, 3}})) + chunk("smpl", smpl({{10, 19}}))),
                              aiffOf(100, beChunk("MARK", markers) + beChunk("INST", instrument(2, 1, 2)))}) {
        const auto without = removingLoop(read(file));
        EXPECT_FALSE(read(written(without)).loop);
        expectLoop(addingLoop(without, 40, 50), {40, 50}, {3});
        expectLoop(addingLoop(read(file), 40, 50), {40, 50}, {3});  // moved, not a second one
    }
}

TEST(Loop, IsNeitherAddedNorRemovedWhereThereIsNothingToDo) {
    const auto contents = read(wavOf(100));
    EXPECT_EQ(removingLoop(contents).chunks, contents.chunks);
    AudioFileContents decoded;
    decoded.format.container = AudioContainer::coreAudio;
    EXPECT_TRUE(addingLoop(decoded, 1, 2).chunks.empty() && !addingLoop(decoded, 1, 2).loop);
}

TEST(EditorPositions, LeaveTheLoopOutOfTheMarkersAndGoBackToTheirPlaces) {
    const auto contents =
        read(wavOf(100, chunk("cue ", cues({{1, 5, 5}, {2, 6, 6}})) + chunk("smpl", smpl({{10, 19}, {1, 2}}))));
    const auto shown = editorPositions(contents);
    EXPECT_EQ(shown.markers, (std::vector<std::int64_t>{5, 6, 1, 3}));
    EXPECT_EQ(shown.loop, (FrameRange{10, 20}));
    EXPECT_EQ(withEditorPositions(contents, shown.markers, shown.loop).positions, contents.positions);
    EXPECT_EQ(withEditorPositions(contents, {7, 8, 9, 11}, FrameRange{30, 40}).positions,
              (std::vector<std::int64_t>{7, 8, 30, 40, 9, 11}));
    EXPECT_EQ(withEditorPositions(contents, {7, 8, 9, 11}, {}).positions, (std::vector<std::int64_t>{7, 8, 10, 20, 9, 11}));
    EXPECT_EQ(withEditorPositions(read(wavOf(9, chunk("cue ", cues({{1, 5, 5}})))), {2}, FrameRange{0, 1}).positions,
              std::vector<std::int64_t>{2});
}

TEST(ChunkIds, AreShownWithReplacementCharacters) {
    const std::pair<const char *, const char *> rows[] = {
        {"fmt ", "fmt "},
        {"\xC3\xA4uh", "\u00E4uh"},
        {"\xFF\xFE!?", "\uFFFD\uFFFD!?"},
        {"\xE2\x82\x41\x42", "\uFFFDAB"},
        {"\xC0\x80zz", "\uFFFD\uFFFDzz"},
        {"\xED\xA0\x80z", "\uFFFD\uFFFD\uFFFDz"},
        {"\xF0\x9F\x8E\xB5", "\U0001F3B5"},
        {"abc\xE2", "abc\uFFFD"},
    };
    for (const auto &[id, shown] : rows) EXPECT_EQ(displayText(id), shown);
}

}  // namespace
}  // namespace kiv
