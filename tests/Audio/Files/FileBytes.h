#pragma once

#include <bit>
#include <cmath>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "Audio/Files/AudioFileCodec.h"
#include "Audio/Files/ByteFields.h"

// A small language for the bytes of sound files: riff("WAVE", chunk("fmt ", fmt({})) + chunk("data", le16(1) + le16(2))). Names
// that start with be are for AIFF.
namespace kiv::fileBytes {

inline Bytes operator+(Bytes a, const Bytes &b) {
    append(a, b);
    return a;
}

template <class Word>
Bytes word(std::uint64_t value, std::endian order) {
    Bytes bytes(sizeof(Word));
    putWord(std::span(bytes), 0, order, Word(value));
    return bytes;
}

inline Bytes byte(std::uint64_t value) { return word<std::uint8_t>(value, std::endian::little); }
inline Bytes le16(std::uint64_t value) { return word<std::uint16_t>(value, std::endian::little); }
inline Bytes le32(std::uint64_t value) { return word<std::uint32_t>(value, std::endian::little); }
inline Bytes be16(std::uint64_t value) { return word<std::uint16_t>(value, std::endian::big); }
inline Bytes be32(std::uint64_t value) { return word<std::uint32_t>(value, std::endian::big); }
inline Bytes be64(std::uint64_t value) { return word<std::uint64_t>(value, std::endian::big); }
inline Bytes zeros(std::size_t count) { return Bytes(count); }
inline Bytes text(std::string_view characters) {
    Bytes bytes;
    append(bytes, characters);
    return bytes;
}
// Pairs of digits; blanks between them are passed over.
inline Bytes hex(std::string_view digits) {
    std::string pairs;
    for (const char digit : digits)
        if (digit != ' ') pairs += digit;
    Bytes bytes;
    for (std::size_t i = 0; i < pairs.size(); i += 2) bytes.push_back(std::byte(std::stoi(pairs.substr(i, 2), nullptr, 16)));
    return bytes;
}

inline Bytes padded(Bytes payload) { return payload.size() % 2 == 0 ? payload : payload + zeros(1); }
inline Bytes chunk(std::string_view id, const Bytes &payload) { return text(id) + le32(payload.size()) + padded(payload); }
inline Bytes beChunk(std::string_view id, const Bytes &payload) { return text(id) + be32(payload.size()) + padded(payload); }
inline Bytes riff(std::string_view form, const Bytes &chunks) {
    return text("RIFF") + le32(chunks.size() + 4) + text(form) + chunks;
}
inline Bytes form(std::string_view type, const Bytes &chunks) {
    return text("FORM") + be32(chunks.size() + 4) + text(type) + chunks;
}

struct Fmt {
    unsigned tag = 1, channels = 1, rate = 44100, bits = 16;
    int blockAlign = -1;  // as it should be
};
inline Bytes fmt(Fmt f) {
    const unsigned blockAlign = f.blockAlign < 0 ? f.channels * ((f.bits + 7) / 8) : unsigned(f.blockAlign);
    return le16(f.tag) + le16(f.channels) + le32(f.rate) + le32(f.rate * blockAlign) + le16(blockAlign) + le16(f.bits);
}
// The format tag stands in the first two bytes of the GUID.
inline Bytes extensible(Fmt f, unsigned validBits, unsigned mask) {
    const unsigned tag = std::exchange(f.tag, 0xFFFEu);
    return fmt(f) + le16(22) + le16(validBits) + le32(mask) + le16(tag) + hex("000000001000800000AA00389B71");
}

struct Cue {
    unsigned id = 1, position = 0, sampleOffset = 0;
};
inline Bytes cues(const std::vector<Cue> &list) {
    Bytes payload = le32(list.size());
    for (const Cue &c : list)
        payload = payload + le32(c.id) + le32(c.position) + text("data") + zeros(8) + le32(c.sampleOffset);
    return payload;
}
inline Bytes smpl(const std::vector<FrameRange> &storedLoops) {
    Bytes payload = zeros(12) + le32(60) + zeros(12) + le32(storedLoops.size()) + zeros(4);
    for (const FrameRange &loop : storedLoops) payload = payload + zeros(8) + le32(loop.lo) + le32(loop.hi) + zeros(8);
    return payload;
}
inline Bytes ltxt(unsigned cue, unsigned length) { return chunk("ltxt", le32(cue) + le32(length) + text("rgn ") + zeros(8)); }

// An 80-bit extended number that a double holds.
inline Bytes extended(double value) {
    int exponent = 0;
    const double fraction = std::frexp(std::abs(value), &exponent);
    const unsigned sign = std::signbit(value) ? 0x8000 : 0;
    if (value == 0) return zeros(10);
    return be16(sign | unsigned(exponent + 16382)) + be64(std::uint64_t(std::ldexp(fraction, 64)));
}

struct Comm {
    unsigned channels = 1, frames = 0, bits = 16;
    Bytes rate = extended(44100);
};
inline Bytes comm(const Comm &c) { return be16(c.channels) + be32(c.frames) + be16(c.bits) + c.rate; }
inline Bytes compressed(const Comm &c, std::string_view type) { return comm(c) + text(type) + padded(byte(4) + text("name")); }
inline Bytes ssnd(const Bytes &samples) { return beChunk("SSND", zeros(8) + samples); }
inline Bytes marker(unsigned id, unsigned position, std::string_view name) {
    return be16(id) + be32(position) + padded(byte(name.size()) + text(name));
}
inline Bytes instrument(unsigned mode, unsigned begin, unsigned end) {
    return hex("3C00007F017F0000") + be16(mode) + be16(begin) + be16(end) + zeros(6);
}
inline Bytes comment(unsigned markerId, std::string_view words) {
    return be32(7) + be16(markerId) + be16(words.size()) + padded(text(words));
}

inline Bytes noise(std::size_t count, unsigned seed) {
    std::mt19937 random(seed);
    Bytes bytes(count);
    for (std::byte &b : bytes) b = std::byte(random() & 0xFF);
    return bytes;
}

// Reading that must succeed, and saving what was read.
inline AudioFileContents read(const Bytes &file) { return AudioFileCodec::readNative(file).value(); }
inline Bytes written(const AudioFileContents &contents) { return AudioFileCodec::nativeImage(contents).bytes(); }

// A WAV and an AIFF file of one channel of 16-bit zeros, with these chunks behind.
inline Bytes wavOf(std::size_t frames, const Bytes &more = {}) {
    return riff("WAVE", chunk("fmt ", fmt({})) + chunk("data", zeros(2 * frames)) + more);
}
inline Bytes aiffOf(unsigned frames, const Bytes &more = {}) {
    return form("AIFF", beChunk("COMM", comm({.frames = frames})) + ssnd(zeros(2 * frames)) + more);
}

// How failures read.
inline std::string show(const Bytes &bytes) {
    static constexpr const char *digits = "0123456789abcdef";
    std::string shown;
    for (const std::byte b : bytes) {
        shown += digits[std::to_integer<unsigned>(b) >> 4];
        shown += digits[std::to_integer<unsigned>(b) & 15];
        shown += ' ';
    }
    return shown;
}

// What becomes of a file: "read", "not ours", or the error's text.
inline std::string outcome(const Bytes &file) {
    try {
        return AudioFileCodec::readNative(file) ? "read" : "not ours";
    } catch (const AudioFileError &error) {
        return error.what();
    }
}

}  // namespace kiv::fileBytes
