#include <algorithm>
#include <array>
#include <bitset>
#include <map>
#include <optional>
#include <set>

#include "Audio/Files/AiffMetadata.h"
#include "Audio/Files/ByteFields.h"
#include "Audio/Files/LoopChunks.h"
#include "Audio/Files/PositionTable.h"

namespace kiv {
namespace {

using namespace InstChunk;

constexpr auto order = std::endian::big;
constexpr std::size_t mostMarkers = 65535;

using MarkerIds = std::set<std::uint16_t>;

void setCount(AudioFileChunk &chunk, std::size_t count) { putWord(std::span(chunk.data), 0, order, std::uint16_t(count)); }

// A loop of an "INST" chunk that is switched on.
struct NamedLoop {
    std::uint16_t begin = 0, end = 0;
};
std::optional<NamedLoop> loopAt(const AudioFileChunk &chunk, std::size_t at) {
    if (chunk.id != "INST" || chunk.data.size() < InstChunk::size || u16At(chunk.data, at + playMode, order) == 0) return {};
    return NamedLoop{u16At(chunk.data, at + beginMarker, order), u16At(chunk.data, at + endMarker, order)};
}

PositionIds markersById(const AudioFileContents &contents) {
    PositionIds ids;
    for (const AudioFileChunk &chunk : contents.chunks)
        for (const AudioFilePositionField &field : chunk.fields)
            if (chunk.id == "MARK") ids.add(u16At(chunk.data, field.offset - 2, order), field.index);
    return ids;
}

std::optional<AudioFileLoop> sustainLoopOf(const AudioFileChunk &chunk, PositionIds &ids) {
    const auto named = loopAt(chunk, sustainLoop);
    const auto start = named ? ids.find(named->begin) : std::nullopt, end = named ? ids.find(named->end) : std::nullopt;
    if (!start || !end) return std::nullopt;
    return AudioFileLoop{*start, *end};
}

bool hasLength(const AudioFileContents &contents, AudioFileLoop loop) {
    return contents.positions[std::size_t(loop.start)] < contents.positions[std::size_t(loop.end)];
}

// Returns the positions of the loop switched off.
std::set<std::uint32_t> switchOffLoop(AudioFileContents &contents) {
    PositionIds ids = markersById(contents);
    for (AudioFileChunk &chunk : contents.chunks) {
        const auto loop = sustainLoopOf(chunk, ids);
        if (!loop || !hasLength(contents, *loop)) continue;
        std::fill_n(chunk.data.begin() + sustainLoop, loopSize, std::byte{0});
        return {std::uint32_t(loop->start), std::uint32_t(loop->end)};
    }
    return {};
}

// Takes the markers at positions out of a "MARK" chunk.
struct RemovedMarkers {
    MarkerIds ids;
    std::vector<std::uint32_t> positions;
};
void removeMarkers(AudioFileChunk &mark, const std::set<std::uint32_t> &positions, RemovedMarkers &removed) {
    std::map<std::size_t, std::uint32_t> gone;  // markers by their offset, with their positions
    for (const AudioFilePositionField &field : mark.fields)
        if (positions.contains(field.index)) gone[field.offset - 2] = field.index;
    if (gone.empty()) return;
    const std::vector<AiffMarker> markers = aiffMarkers(mark.data);
    // The last first, so that the offsets of the others hold.
    for (auto marker = markers.rbegin(); marker != markers.rend(); ++marker) {
        const auto found = gone.find(marker->offset);
        if (found == gone.end()) continue;
        removed.ids.insert(marker->id);
        removed.positions.push_back(found->second);
        cutOut(mark, marker->offset, marker->length);
    }
    setCount(mark, markers.size() - gone.size());
}

void removeComments(AudioFileChunk &comt, const MarkerIds &ids) {
    const std::vector<AiffComment> comments = aiffComments(comt.data);
    const auto isGone = [&](const AiffComment &comment) { return ids.contains(comment.marker); };
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

// A release loop on the same markers is the same loop to whoever removes it; without them it would point at nothing.
void switchOffLoopsOn(AudioFileChunk &inst, const MarkerIds &ids) {
    for (const std::size_t at : {sustainLoop, releaseLoop})
        if (const auto named = loopAt(inst, at); named && (ids.contains(named->begin) || ids.contains(named->end)))
            std::fill_n(inst.data.begin() + std::ptrdiff_t(at), loopSize, std::byte{0});
}

using UsedIds = std::bitset<mostMarkers + 1>;

void markUsed(UsedIds &used, const AudioFileChunk &chunk) {
    if (chunk.id == "MARK")
        for (const AiffMarker &marker : aiffMarkers(chunk.data)) used.set(marker.id);
    if (chunk.id == "COMT")
        for (const AiffComment &comment : aiffComments(chunk.data)) used.set(comment.marker);
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
    insertMarker(mark, end, aiffMarkerRecord(ids[1], "Loop End"), loop.end);
    insertMarker(mark, end, aiffMarkerRecord(ids[0], "Loop Start"), loop.start);
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

std::optional<AudioFileLoop> aiffLoop(const AudioFileContents &contents) {
    PositionIds ids = markersById(contents);
    for (const AudioFileChunk &chunk : contents.chunks)
        if (const auto loop = sustainLoopOf(chunk, ids); loop && hasLength(contents, *loop)) return loop;
    return std::nullopt;
}

std::vector<std::uint32_t> removeAiffLoop(AudioFileContents &contents) {
    const std::set<std::uint32_t> positions = switchOffLoop(contents);
    RemovedMarkers removed;
    for (AudioFileChunk &chunk : contents.chunks)
        if (chunk.id == "MARK") removeMarkers(chunk, positions, removed);
    for (AudioFileChunk &chunk : contents.chunks) {
        if (chunk.id == "COMT") removeComments(chunk, removed.ids);
        switchOffLoopsOn(chunk, removed.ids);
    }
    std::sort(removed.positions.begin(), removed.positions.end());
    return removed.positions;
}

}  // namespace kiv
