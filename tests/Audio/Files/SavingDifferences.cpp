#include "Audio/Files/SavingDifferences.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "Audio/Files/ByteFields.h"

namespace kiv {
namespace {

using enum SavingDifference;
using Span = std::span<const std::byte>;

struct Chunk {
    std::string id;
    std::uint32_t declaredSize = 0;
    Span payload, pad;
};

struct Form {
    std::uint32_t size = 0;
    std::vector<Chunk> chunks;
    Span trailing;
};

bool equal(Span a, Span b) { return std::equal(a.begin(), a.end(), b.begin(), b.end()); }

// Told apart by hand here, so that a fault of the program's own scan would show.
Form parsed(const Bytes &file, std::endian order, const std::string &audioId) {
    const Span all(file);
    Form form{.size = u32At(all, 4, order), .chunks = {}, .trailing = {}};
    bool audioSeen = false;
    std::size_t at = 12;
    while (at + 8 <= all.size()) {
        Chunk chunk{.id = idAt(all, at), .declaredSize = u32At(all, at + 4, order), .payload = {}, .pad = {}};
        const bool unfinished =
            chunk.id == audioId && !audioSeen && (chunk.declaredSize == 0 || chunk.declaredSize == 0xFFFFFFFF);
        audioSeen = audioSeen || chunk.id == audioId;
        const std::size_t rest = all.size() - at - 8,
                          size = unfinished ? rest : std::min<std::size_t>(chunk.declaredSize, rest);
        chunk.payload = all.subspan(at + 8, size);
        chunk.pad = all.subspan(at + 8 + size, std::min(size % 2, rest - size));
        at += 8 + size + size % 2;
        form.chunks.push_back(chunk);
    }
    if (at < all.size()) form.trailing = all.subspan(at);
    return form;
}

class Comparison {
public:
    Comparison(const Bytes &before, const Bytes &after, const AudioFileContents &contents)
        : contents_(contents),
          isWav_(contents.format.container == AudioContainer::wav),
          order_(isWav_ ? std::endian::little : std::endian::big),
          before_(parsed(before, order_, audioId())),
          after_(parsed(after, order_, audioId())) {
        check(
            equal(Span(before).first(4), Span(after).first(4)) && equal(Span(before).subspan(8, 4), Span(after).subspan(8, 4)),
            "another kind of file");
        check(after_.size == after.size() - 8, "a wrong form size");
        if (before_.size != after_.size) note(formSize);
        compareChunks();
        compareTrailing();
    }

    ComparedFiles result;

private:
    std::string audioId() const { return isWav_ ? "data" : "SSND"; }
    void note(SavingDifference difference) { result.differences.insert(difference); }
    void check(bool holds, const std::string &fault) {
        if (!holds && result.fault.empty()) result.fault = fault;
    }

    void compareChunks() {
        static const std::set<std::string> stale{"PEAK", "peak", "levl", "md5 ", "MD5 "};
        std::size_t next = 0;
        for (std::size_t i = 0; i < before_.chunks.size(); ++i) {
            const Chunk &chunk = before_.chunks[i];
            if (stale.contains(chunk.id))
                note(staleChunk);
            else if (next < after_.chunks.size())
                compareChunk(chunk, after_.chunks[next++], contents_.chunks[i]);
            else
                check(false, "a chunk is missing: " + chunk.id);
        }
        check(after_.chunks.size() == next, "a chunk too many");
    }

    void compareTrailing() { check(equal(before_.trailing, after_.trailing), "other bytes behind the last chunk"); }

    void compareChunk(const Chunk &before, const Chunk &after, const AudioFileChunk &read) {
        check(before.id == after.id, "another chunk: " + after.id + " for " + before.id);
        check(after.declaredSize == after.payload.size(), "a wrong chunk size: " + after.id);
        check(after.pad.size() == after.payload.size() % 2 && (after.pad.empty() || after.pad[0] == std::byte{0}),
              "a wrong pad");
        if (before.declaredSize != before.payload.size()) note(chunkSize);
        const bool samePadding = before.payload.size() % 2 == after.payload.size() % 2;
        if (samePadding && !equal(before.pad, after.pad)) note(padByte);
        if (!equal(before.payload, after.payload)) comparePayload(before, after, read);
    }

    void comparePayload(const Chunk &before, const Chunk &after, const AudioFileChunk &read) {
        const Span was = before.payload, is = after.payload;
        if (before.id == audioId()) return isWav_ ? compareSamples(was, is) : compareSound(was, is);
        check(was.size() == is.size(), "a chunk of another size: " + before.id);
        if (before.id == "fmt " && sameBut(was, is, {8, 14})) return note(rateAndAlign);
        if (before.id == "fact" && sameBut(was, is, {0, 4})) return note(factFrames);
        if (before.id == "COMM" && sameBut(was, is, {2, 6})) return note(commonFrames);
        check(!read.fields.empty(), "a changed chunk: " + before.id);
        comparePositions(was, is, read);
    }

    static bool sameBut(Span was, Span is, FrameRange allowed) {
        for (std::size_t i = 0; i < std::min(was.size(), is.size()); ++i)
            if (was[i] != is[i] && !allowed.contains(std::int64_t(i))) return false;
        return true;
    }

    // Every byte that differs must be part of a position, and that must have been beyond the end and be at the end now.
    void comparePositions(Span was, Span is, const AudioFileChunk &read) {
        Bytes put(was.begin(), was.end());
        for (const AudioFilePositionField &field : read.fields) {
            const std::uint32_t before = u32At(was, field.offset, order_), after = u32At(is, field.offset, order_);
            putWord(std::span(put), field.offset, order_, after);
            if (before == after) continue;
            note(positionBeyondEnd);
            const bool isEnd = field.kind == AudioFilePositionField::Kind::inclusiveEnd;
            const bool isLength = field.kind == AudioFilePositionField::Kind::length;
            const std::int64_t frames = contents_.buffer.frames(), shift = isEnd      ? 1
                                                                           : isLength ? contents_.positions[field.from]
                                                                                      : 0;
            check(before + shift > frames && after + shift == std::max(frames, shift), "a position was moved: " + read.id);
        }
        check(equal(put, is), "a changed chunk: " + read.id);
    }

    void compareSound(Span was, Span is) {
        if (was.size() < 8) return note(soundHeader);
        const std::size_t offset = u32At(was, 0, order_);
        if (!equal(was.first(8), is.first(8))) note(soundHeader);
        compareSamples(was.subspan(8).subspan(std::min(offset, was.size() - 8)), is.subspan(8));
    }

    // What the file holds beyond the frames it says it has is cut off as an incomplete frame is.
    void compareSamples(Span was, Span is) {
        if (contents_.buffer.isEmpty() && is.size() == 1) return note(incompleteFrame);
        const auto width = std::size_t(contents_.format.encoding->bytes);
        const std::size_t frame = width * std::size_t(contents_.buffer.channels());
        check(is.size() == frame * std::size_t(contents_.buffer.frames()) && is.size() <= was.size(),
              "another number of samples");
        if (is.size() < was.size()) note(incompleteFrame);
        if (isWav_) check(was.size() - is.size() < frame, "more than an incomplete frame is missing");
        check(equal(was.first(is.size()), is), "a sample was changed");
    }

    const AudioFileContents &contents_;
    const bool isWav_;
    const std::endian order_;
    const Form before_, after_;
};

}  // namespace

const std::map<SavingDifference, std::string> &documentedDifferences() {
    static const std::map<SavingDifference, std::string> words{
        {staleChunk, "Chunks that describe the samples are left out"},
        {formSize, "The file's size in its header is set right"},
        {chunkSize, "A chunk's size is set right"},
        {padByte, "A pad byte is added, or set to zero"},
        {incompleteFrame, "An incomplete last frame is left out"},
        {positionBeyondEnd, "Positions beyond the end of the audio are brought back to it"},
        {rateAndAlign, "Byte rate and block align are set right"},
        {factFrames, "The number of frames in \"fact\" is set right"},
        {commonFrames, "The number of frames in \"COMM\" is set right"},
        {soundHeader, "Offset and block size of the audio chunk become 0"},
    };
    return words;
}

ComparedFiles compareSaved(const Bytes &before, const Bytes &after, const AudioFileContents &contents) {
    return Comparison(before, after, contents).result;
}

}  // namespace kiv
