#include <algorithm>
#include <array>
#include <cmath>
#include <map>

#include "Audio/Files/ByteFields.h"
#include "Audio/Files/LoopChunks.h"
#include "Audio/Files/SoundNotes.h"
#include "Audio/Files/WavMetadata.h"

namespace kiv {
namespace {

constexpr auto order = std::endian::little;

struct SubChunk {
    std::string id;
    std::size_t payload = 0;  // its offset in the list
    std::span<const std::byte> data;
};

// The parts of a "LIST" that are whole.
std::vector<SubChunk> partsOf(std::span<const std::byte> list) {
    std::vector<SubChunk> parts;
    for (std::size_t at = 4; at < list.size() && list.size() - at >= 8;) {
        const std::size_t size = u32At(list, at + 4, order);
        if (size > list.size() - at - 8) break;
        parts.push_back({idAt(list, at), at + 8, list.subspan(at + 8, size)});
        at += 8 + size + (size & 1);
    }
    return parts;
}

bool isList(const AudioFileChunk &chunk, std::string_view kind) {
    return chunk.id == "LIST" && chunk.data.size() >= 4 && idAt(chunk.data, 0) == kind;
}

// Chunks that say nothing of the sound which the samples and the notes do not say.
bool isSilent(const std::string &id) {
    static constexpr std::array<std::string_view, 10> silent{"fmt ", "fact", "data", "cue ", "smpl",
                                                             "inst", "JUNK", "junk", "PAD ", "FLLR"};
    return std::ranges::find(silent, id) != silent.end() || isStaleChunkId(id);
}

// Reads the notes of one file's chunks.
class WavNotesReader {
public:
    explicit WavNotesReader(const AudioFileContents &contents) : contents_(contents), names_(contents.positions.size()) {}

    SoundNotes read() {
        for (const AudioFileChunk &chunk : contents_.chunks) readLabels(chunk);
        for (const AudioFileChunk &chunk : contents_.chunks) readChunk(chunk);
        for (std::uint32_t i = 0; i < names_.size(); ++i)
            if (!contents_.loop || (contents_.loop->start != i && contents_.loop->end != i))
                notes_.markers.push_back({i, names_[i]});
        if (!contents_.trailing.empty()) notes_.others.push_back("what stood behind the end");
        return std::move(notes_);
    }

private:
    void readLabels(const AudioFileChunk &chunk) {
        if (!isList(chunk, "adtl")) return;
        for (const SubChunk &part : partsOf(chunk.data)) {
            if (part.id == "labl" && part.data.size() >= 4)
                labels_[u32At(part.data, 0, order)] = noteText(part.data.subspan(4));
            if (part.id == "note") addOther("notes on markers");
        }
    }

    void readChunk(const AudioFileChunk &chunk) {
        if (chunk.id == "cue ") nameCues(chunk);
        if (chunk.id == "smpl") readSampler(chunk);
        if (chunk.id == "inst") readInstrument(chunk);
        if (isList(chunk, "adtl")) return nameRegions(chunk);
        if (isList(chunk, "INFO")) return readInfo(chunk);
        if (chunk.id == "id3 " || chunk.id == "ID3 ") {
            notes_.id3 = chunk.data;
        } else if (chunk.id.empty()) {
            addOther("further chunks");
        } else if (!isSilent(chunk.id)) {
            addOther(quotedId(chunk.id));
        }
    }

    void nameCues(const AudioFileChunk &cues) {
        for (const AudioFilePositionField &field : cues.fields) {
            const std::size_t record = (field.offset - CueChunk::header) / CueChunk::record;
            const auto label = labels_.find(u32At(cues.data, CueChunk::header + record * CueChunk::record, order));
            if (label != labels_.end()) names_[field.index] = label->second;
        }
    }

    // A region's end is a marker of its own where there are no regions.
    void nameRegions(const AudioFileChunk &list) {
        for (const AudioFilePositionField &field : list.fields)
            names_[field.index] = (names_[field.from].empty() ? "Region" : names_[field.from]) + " End";
    }

    void readSampler(const AudioFileChunk &smpl) {
        if (smpl.data.size() < SmplChunk::header) return;
        for (std::size_t i = 0; i + 1 < smpl.fields.size(); i += 2) {
            names_[smpl.fields[i].index] = "Loop Start";
            names_[smpl.fields[i + 1].index] = "Loop End";
            const std::size_t record = smpl.fields[i].offset - SmplChunk::recordStart;
            if (contents_.loop && contents_.loop->start == smpl.fields[i].index)
                notes_.alternates = u32At(smpl.data, record + SmplChunk::recordType, order) == 1;
        }
        const std::uint32_t note = u32At(smpl.data, SmplChunk::note, order);
        const int cents = int(std::lround(u32At(smpl.data, SmplChunk::fraction, order) * 100.0 * 0x1p-32));
        if (note == 0 || note > 127 || notes_.instrument) return;  // 0: nobody has said
        const bool isNearerAbove = cents > 50;
        notes_.instrument.emplace();
        notes_.instrument->note = std::min(int(note) + isNearerAbove, 127);
        notes_.instrument->detune = isNearerAbove ? 100 - cents : -cents;
    }

    void readInstrument(const AudioFileChunk &inst) {
        if (inst.data.size() < 7) return;
        const auto at = [&](std::size_t i) { return std::to_integer<int>(inst.data[i]); };
        const auto signedAt = [&](std::size_t i) { return int(std::int8_t(at(i))); };
        notes_.instrument = SoundNotes::Instrument{at(0), signedAt(1), at(3), at(4), at(5), at(6), signedAt(2)};
    }

    void readInfo(const AudioFileChunk &list) {
        for (const SubChunk &part : partsOf(list.data)) {
            const auto key = std::ranges::find_if(textKeys(), [&](const TextKey &each) { return part.id == each.info; });
            key == textKeys().end() ? addOther(quotedId(part.id))
                                    : void(notes_.texts.emplace_back(key->key, noteText(part.data)));
        }
    }

    void addOther(std::string what) { notes_.others.push_back(std::move(what)); }

    const AudioFileContents &contents_;
    std::map<std::uint32_t, std::string> labels_;  // by the cue's id
    std::vector<std::string> names_;               // by position
    SoundNotes notes_;
};

void appendWord(Bytes &to, std::uint32_t word) {
    std::array<std::byte, 4> bytes;
    putWord(std::span<std::byte>(bytes), 0, order, word);
    append(to, bytes);
}

void appendPart(Bytes &list, std::string_view id, std::span<const std::byte> data, std::string_view text) {
    append(list, id);
    appendWord(list, std::uint32_t(data.size() + text.size() + 1));
    append(list, data);
    append(list, text);
    list.resize(list.size() + 1 + (data.size() + text.size() + 1) % 2);
}

// Both places of a cue's position are left to their fields.
void putCues(AudioFileContents &contents, const std::vector<SoundNotes::Marker> &markers) {
    if (markers.empty()) return;
    AudioFileChunk &cues = chunkOrNew(contents, "cue ", {});
    Bytes labels;
    append(labels, "adtl");
    appendWord(cues.data, std::uint32_t(markers.size()));
    for (std::uint32_t i = 0; i < markers.size(); ++i) {
        const std::size_t record = cues.data.size();
        appendWord(cues.data, i + 1);
        cues.data.resize(record + CueChunk::record);
        std::copy_n(std::as_bytes(std::span("data")).begin(), 4,
                    cues.data.begin() + std::ptrdiff_t(record + CueChunk::chunkId));
        for (const std::size_t slot : {CueChunk::position, CueChunk::sampleOffset})
            cues.fields.push_back({.offset = std::uint32_t(record + slot), .index = markers[i].index});
        if (markers[i].name.empty()) continue;
        Bytes id;
        appendWord(id, i + 1);
        appendPart(labels, "labl", id, markers[i].name);
    }
    if (labels.size() > 4) addChunk(contents, "LIST", std::move(labels));
}

void putSampler(AudioFileContents &contents, const SoundNotes &notes) {
    Bytes header(SmplChunk::header);
    if (notes.instrument) {
        const int detune = std::clamp(notes.instrument->detune, -50, 50);  // a file may say anything
        const int note = std::clamp(notes.instrument->note - (detune > 0), 0, 127);
        const double fraction = (detune > 0 ? 100 - detune : -detune) / 100.0;
        putWord(std::span(header), SmplChunk::note, order, std::uint32_t(note));
        putWord(std::span(header), SmplChunk::fraction, order, std::uint32_t(fraction * 0x1p32));
    }
    AudioFileChunk &smpl = chunkOrNew(contents, "smpl", std::move(header));
    if (!contents.loop) return;
    addWavLoop(contents, *contents.loop);
    if (notes.alternates) putWord(std::span(smpl.data), SmplChunk::header + SmplChunk::recordType, order, std::uint32_t(1));
}

Bytes instrumentPayload(const SoundNotes::Instrument &instrument) {
    const auto &[note, detune, low, high, lowVelocity, highVelocity, gain] = instrument;
    Bytes payload;
    for (const int value : {note, detune, std::clamp(gain, -128, 127), low, high, lowVelocity, highVelocity})
        payload.push_back(std::byte(value));
    return payload;
}

void putInfo(AudioFileContents &contents, const SoundNotes &notes, std::vector<std::string> &left) {
    Bytes info;
    append(info, "INFO");
    for (const auto &text : notes.texts) {
        const auto key = std::ranges::find_if(textKeys(), [&](const TextKey &each) { return text.first == each.key; });
        if (key == textKeys().end() && !notes.isAllInId3) left.push_back(text.first);
        if (key != textKeys().end()) appendPart(info, key->info, {}, text.second);
    }
    if (info.size() > 4) addChunk(contents, "LIST", std::move(info));
}

}  // namespace

SoundNotes wavNotes(const AudioFileContents &contents) { return WavNotesReader(contents).read(); }

std::vector<std::string> putWavNotes(AudioFileContents &contents, const SoundNotes &notes) {
    std::vector<std::string> left = leftOfNotes(notes);
    putCues(contents, notes.markers);
    if (contents.loop || notes.instrument) putSampler(contents, notes);
    if (notes.instrument) addChunk(contents, "inst", instrumentPayload(*notes.instrument));
    putInfo(contents, notes, left);
    if (!notes.id3.empty()) addChunk(contents, "id3 ", notes.id3);
    return left;
}

}  // namespace kiv
