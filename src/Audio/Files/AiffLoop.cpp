#include <algorithm>
#include <array>
#include <bitset>
#include <optional>

#include "Audio/Files/AiffMetadata.h"
#include "Audio/Files/ByteFields.h"
#include "Audio/Files/LoopChunks.h"

namespace kiv {
namespace {

using namespace InstChunk;

constexpr auto order = std::endian::big;
constexpr std::size_t mostMarkers = 65535;

using MarkerIds = std::vector<std::uint16_t>;

bool contains(const MarkerIds &ids, std::uint16_t id) { return std::find(ids.begin(), ids.end(), id) != ids.end(); }

struct AiffComment {
    std::size_t offset = 0, length = 0;  // the last one's length may reach past the payload
    std::uint16_t marker = 0;            // 0: on none
};

// The comments of a "COMT" payload: as many as it says, or as are there.
std::vector<AiffComment> commentsIn(std::span<const std::byte> payload) {
    constexpr std::size_t marker = 4, textLength = 6, text = 8;
    std::vector<AiffComment> comments;
    if (payload.size() < 2) return comments;
    const std::size_t count = u16At(payload, 0, order);
    for (std::size_t at = 2; comments.size() < count && at < payload.size() && payload.size() - at >= text;) {
        const std::size_t length = u16At(payload, at + textLength, order);
        comments.push_back({at, text + length + length % 2, u16At(payload, at + marker, order)});
        at += comments.back().length;
    }
    return comments;
}

void setCount(AudioFileChunk &chunk, std::size_t count) { putWord(std::span(chunk.data), 0, order, std::uint16_t(count)); }

// Takes the two markers out of a "MARK" chunk, if they are in this one, and returns their ids.
MarkerIds removeMarkers(AudioFileChunk &mark, AudioFileLoop loop) {
    MarkerIds removed;
    std::vector<std::size_t> offsets;
    for (const AudioFilePositionField &field : mark.fields)
        if (field.index == loop.start || field.index == loop.end) offsets.push_back(field.offset - 2);
    if (offsets.empty()) return removed;
    const std::vector<AiffMarker> markers = aiffMarkers(mark.data);
    // The last first, so that the offsets of the others hold.
    for (auto marker = markers.rbegin(); marker != markers.rend(); ++marker) {
        if (std::find(offsets.begin(), offsets.end(), marker->offset) == offsets.end()) continue;
        removed.push_back(marker->id);
        cutOut(mark, marker->offset, marker->length);
    }
    setCount(mark, markers.size() - removed.size());
    return removed;
}

void removeComments(AudioFileChunk &comt, const MarkerIds &ids) {
    const std::vector<AiffComment> comments = commentsIn(comt.data);
    const auto isGone = [&](const AiffComment &comment) { return contains(ids, comment.marker); };
    const auto gone = std::count_if(comments.begin(), comments.end(), isGone);
    if (gone == 0) return;
    const auto all = std::span<const std::byte>(comt.data);
    Bytes kept(all.begin(), all.begin() + 2);
    for (const AiffComment &comment : comments)
        if (!isGone(comment)) append(kept, all.subspan(comment.offset, std::min(comment.length, all.size() - comment.offset)));
    const std::size_t behind = comments.back().offset + comments.back().length;
    if (behind < all.size()) append(kept, all.subspan(behind));
    comt.data = std::move(kept);
    setCount(comt, comments.size() - std::size_t(gone));
}

// A loop that names a marker which is no more would be one of unknown length: it is switched off.
void removeLoops(AudioFileChunk &inst, const MarkerIds &ids) {
    if (inst.data.size() < InstChunk::size) return;
    for (const std::size_t at : {sustainLoop, releaseLoop}) {
        const bool namesOne =
            contains(ids, u16At(inst.data, at + beginMarker, order)) || contains(ids, u16At(inst.data, at + endMarker, order));
        if (namesOne) std::fill_n(inst.data.begin() + std::ptrdiff_t(at), loopSize, std::byte{0});
    }
}

using UsedIds = std::bitset<mostMarkers + 1>;

void markUsed(UsedIds &used, const AudioFileChunk &chunk) {
    if (chunk.id == "MARK")
        for (const AiffMarker &marker : aiffMarkers(chunk.data)) used.set(marker.id);
    if (chunk.id == "COMT")
        for (const AiffComment &comment : commentsIn(chunk.data)) used.set(comment.marker);
    if (chunk.id == "INST" && chunk.data.size() >= InstChunk::size)
        for (const std::size_t at : {sustainLoop, releaseLoop})
            for (const std::size_t slot : {beginMarker, endMarker}) used.set(u16At(chunk.data, at + slot, order));
}

// Two marker ids that nothing in the file names yet, not even a comment on a marker that is not there. 0 is none.
std::optional<std::array<std::uint16_t, 2>> freeMarkerIds(const AudioFileContents &contents) {
    UsedIds used;
    used.set(0);
    for (const AudioFileChunk &chunk : contents.chunks) markUsed(used, chunk);
    std::array<std::uint16_t, 2> ids{};
    std::size_t found = 0;
    for (std::size_t id = 1; id <= mostMarkers && found < ids.size(); ++id)
        if (!used.test(id)) ids[found++] = std::uint16_t(id);
    if (found < ids.size()) return std::nullopt;
    return ids;
}

// The position is left to its field.
Bytes markerRecord(std::uint16_t id, std::string_view name) {
    Bytes record(7);
    putWord(std::span(record), 0, order, id);
    record[6] = std::byte(name.size());
    append(record, name);
    record.resize(record.size() + record.size() % 2);
    return record;
}

void insertMarker(AudioFileChunk &mark, std::size_t offset, const Bytes &record, std::int64_t index) {
    openGap(mark, offset, record.size());
    std::copy(record.begin(), record.end(), mark.data.begin() + std::ptrdiff_t(offset));
    mark.fields.push_back({.offset = std::uint32_t(offset + 2), .index = std::uint32_t(index), .bigEndian = true});
}

// Behind the markers that are there, the last of which gets its full length. False when the count has no room for two more.
bool addMarkers(AudioFileContents &contents, AudioFileLoop loop, std::array<std::uint16_t, 2> ids) {
    AudioFileChunk &mark = chunkOrNew(contents, "MARK", Bytes(2));
    const std::vector<AiffMarker> markers = aiffMarkers(mark.data);
    if (markers.size() + 2 > mostMarkers) return false;
    const std::size_t end = markers.empty() ? 2 : markers.back().offset + markers.back().length;
    mark.data.resize(std::max(mark.data.size(), end));
    insertMarker(mark, end, markerRecord(ids[1], "Loop End"), loop.end);
    insertMarker(mark, end, markerRecord(ids[0], "Loop Start"), loop.start);
    setCount(mark, markers.size() + 2);
    return true;
}

// Middle C, all notes, all velocities, no gain, no loops.
Bytes newInstrument() {
    Bytes inst(InstChunk::size);
    inst[0] = std::byte{60};             // base note
    inst[3] = inst[5] = std::byte{127};  // highest note, highest velocity
    inst[4] = std::byte{1};              // lowest velocity
    return inst;
}

void pointSustainLoop(AudioFileContents &contents, std::array<std::uint16_t, 2> ids) {
    constexpr std::uint16_t forward = 1;
    AudioFileChunk &inst = chunkOrNew(contents, "INST", newInstrument());
    inst.data.resize(std::max(inst.data.size(), InstChunk::size));
    const auto data = std::span(inst.data).subspan(sustainLoop);
    if (u16At(data, playMode, order) == 0) putWord(data, playMode, order, forward);
    putWord(data, beginMarker, order, ids[0]);
    putWord(data, endMarker, order, ids[1]);
}

}  // namespace

bool addAiffLoop(AudioFileContents &contents, AudioFileLoop loop) {
    const auto ids = freeMarkerIds(contents);
    if (!ids || !addMarkers(contents, loop, *ids)) return false;
    pointSustainLoop(contents, *ids);
    return true;
}

void removeAiffLoop(AudioFileContents &contents, AudioFileLoop loop) {
    MarkerIds ids;
    for (AudioFileChunk &chunk : contents.chunks) {
        if (chunk.id != "MARK") continue;
        const MarkerIds removed = removeMarkers(chunk, loop);
        ids.insert(ids.end(), removed.begin(), removed.end());
    }
    for (AudioFileChunk &chunk : contents.chunks) {
        if (chunk.id == "COMT") removeComments(chunk, ids);
        if (chunk.id == "INST") removeLoops(chunk, ids);
    }
}

}  // namespace kiv
