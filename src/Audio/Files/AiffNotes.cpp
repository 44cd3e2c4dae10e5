#include <algorithm>
#include <array>

#include "Audio/Files/AiffMetadata.h"
#include "Audio/Files/ByteFields.h"
#include "Audio/Files/LoopChunks.h"
#include "Audio/Files/SoundNotes.h"

namespace kiv {
namespace {

using namespace InstChunk;

constexpr auto order = std::endian::big;
constexpr std::uint16_t forthAndBack = 2;  // of the loops' play modes
// Two less than a "MARK" chunk counts: a loop takes two.
constexpr std::size_t mostMarkers = 65533;

bool isSilent(const std::string &id) {
    static constexpr std::array<std::string_view, 5> silent{"COMM", "SSND", "FVER", "MARK", "JUNK"};
    return std::ranges::find(silent, id) != silent.end() || isStaleChunkId(id);
}

void nameMarkers(const AudioFileChunk &mark, std::vector<std::string> &names) {
    for (const AudioFilePositionField &field : mark.fields) {
        const auto name = std::span(mark.data).subspan(std::min<std::size_t>(field.offset + 4, mark.data.size()));
        if (name.empty()) continue;
        const std::size_t length = std::min(std::to_integer<std::size_t>(name[0]), name.size() - 1);
        names[field.index] = noteText(name.subspan(1, length));
    }
}

void readInstrument(const AudioFileChunk &inst, SoundNotes &notes) {
    if (inst.data.size() < InstChunk::size) return notes.others.push_back(quotedId(inst.id));
    const auto at = [&](std::size_t i) { return std::to_integer<int>(inst.data[i]); };
    notes.instrument = SoundNotes::Instrument{at(note),
                                              int(std::int8_t(at(detune))),
                                              at(lowNote),
                                              at(highNote),
                                              at(lowVelocity),
                                              at(highVelocity),
                                              int(std::int16_t(u16At(inst.data, gain, order)))};
    notes.alternates = u16At(inst.data, sustainLoop + playMode, order) == forthAndBack;
    if (u16At(inst.data, releaseLoop + playMode, order) != 0) notes.others.push_back("the release loop");
}

void readChunk(const AudioFileChunk &chunk, SoundNotes &notes) {
    const auto key = std::ranges::find_if(textKeys(), [&](const TextKey &each) { return *each.aiff && chunk.id == each.aiff; });
    if (key != textKeys().end()) {
        notes.texts.emplace_back(key->key, noteText(chunk.data));
    } else if (chunk.id == "INST") {
        readInstrument(chunk, notes);
    } else if (chunk.id == "COMT") {
        for (const AiffComment &comment : aiffComments(chunk.data)) notes.texts.emplace_back("COMMENT", noteText(comment.text));
    } else if (chunk.id == "ID3 ") {
        notes.id3 = chunk.data;
    } else if (!isSilent(chunk.id)) {
        notes.others.push_back(chunk.id.empty() ? "further chunks" : quotedId(chunk.id));
    }
}

Bytes instrumentPayload(const SoundNotes::Instrument &instrument) {
    const auto &[baseNote, cents, low, high, lowest, highest, gainDb] = instrument;
    Bytes payload;
    for (const int value : {baseNote, cents, low, high, lowest, highest}) payload.push_back(std::byte(value));
    payload.resize(InstChunk::size);
    putWord(std::span(payload), gain, order, std::uint16_t(gainDb));
    return payload;
}

bool isNameCut(const SoundNotes::Marker &marker) { return marker.name.size() > longestMarkerName; }

void putMarkers(AudioFileContents &contents, std::span<const SoundNotes::Marker> markers) {
    if (markers.empty()) return;
    AudioFileChunk &mark = chunkOrNew(contents, "MARK", Bytes(2));
    putWord(std::span(mark.data), 0, order, std::uint16_t(markers.size()));
    for (std::uint16_t id = 1; const SoundNotes::Marker &marker : markers) {
        mark.fields.push_back({.offset = std::uint32_t(mark.data.size() + 2), .index = marker.index, .bigEndian = true});
        append(mark.data, aiffMarkerRecord(id++, marker.name));
    }
}

}  // namespace

SoundNotes aiffNotes(const AudioFileContents &contents) {
    SoundNotes notes;
    std::vector<std::string> names(contents.positions.size());
    for (const AudioFileChunk &chunk : contents.chunks) {
        if (chunk.id == "MARK") nameMarkers(chunk, names);
        readChunk(chunk, notes);
    }
    for (std::uint32_t i = 0; i < names.size(); ++i)
        if (!contents.loop || (contents.loop->start != i && contents.loop->end != i)) notes.markers.push_back({i, names[i]});
    if (!contents.trailing.empty()) notes.others.push_back("what stood behind the end");
    return notes;
}

std::vector<std::string> putAiffNotes(AudioFileContents &contents, const SoundNotes &notes) {
    std::vector<std::string> left = leftOfNotes(notes);
    putMarkers(contents, std::span(notes.markers).first(std::min(notes.markers.size(), mostMarkers)));
    if (std::ranges::any_of(notes.markers, isNameCut)) left.push_back("the ends of long marker names");
    if (notes.markers.size() > mostMarkers) left.push_back("markers beyond " + std::to_string(mostMarkers));
    if (notes.instrument) addChunk(contents, "INST", instrumentPayload(*notes.instrument));
    if (contents.loop) addAiffLoop(contents, *contents.loop);
    if (contents.loop && notes.alternates) {
        AudioFileChunk &inst = chunkOrNew(contents, "INST", {});
        putWord(std::span(inst.data), sustainLoop + playMode, order, forthAndBack);
    }
    for (std::size_t i = 0; i < notes.texts.size(); ++i) {
        const auto &text = notes.texts[i];
        const auto isIt = [&](const TextKey &each) { return text.first == each.key && *each.aiff; };
        const auto key = std::ranges::find_if(textKeys(), isIt);
        if (key == textKeys().end() && i >= notes.inId3.texts) left.push_back(text.first);
        if (key != textKeys().end()) append(addChunk(contents, key->aiff, {}).data, text.second);
    }
    if (!notes.id3.empty()) addChunk(contents, "ID3 ", notes.id3);
    return left;
}

}  // namespace kiv
