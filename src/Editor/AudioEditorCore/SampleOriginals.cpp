#include "Editor/AudioEditorCore/SampleOriginals.h"

#include <algorithm>
#include <cassert>
#include <cstring>

namespace kiv {
namespace {

template <class Stored>
void narrow(std::span<const std::int64_t> differences, std::byte *out) {
    for (std::size_t i = 0; i < differences.size(); ++i) {
        const auto stored = Stored(differences[i]);
        std::memcpy(out + sizeof stored * i, &stored, sizeof stored);
    }
}

template <class Stored>
void widen(const std::byte *stored, std::span<std::int64_t> out) {
    for (std::size_t i = 0; i < out.size(); ++i) {
        Stored difference;
        std::memcpy(&difference, stored + sizeof difference * i, sizeof difference);
        out[i] = difference;
    }
}

SampleOriginals::Part partOf(std::span<const std::int64_t> differences) {
    std::uint64_t bits = 0;  // that the magnitudes take together, the sign lowest
    for (const std::int64_t difference : differences)
        bits |= (std::uint64_t(difference) << 1) ^ std::uint64_t(difference >> 63);
    if (bits == 0) return {};
    const int width = bits <= 0xFF ? 1 : bits <= 0xFFFFFFFF ? 4 : 8;
    SampleOriginals::Part part{width, std::make_unique_for_overwrite<std::byte[]>(differences.size() * std::size_t(width))};
    const auto store = width == 1 ? narrow<std::int8_t> : width == 4 ? narrow<std::int32_t> : narrow<std::int64_t>;
    store(differences, part.differences.get());
    return part;
}

}  // namespace

void SampleOriginals::expect(Word word) {
    parts_[std::size_t(word)].resize(std::size_t((samples_ + partSamples - 1) / partSamples));
}

void SampleOriginals::keep(Word word, std::int64_t first, std::span<const std::int64_t> differences) {
    for (; !differences.empty(); first += partSamples) {
        const auto here = differences.first(std::min(differences.size(), std::size_t(partSamples)));
        keep(word, first, partOf(here));
        differences = differences.subspan(here.size());
    }
}

void SampleOriginals::keep(Word word, std::int64_t first, Part part) {
    assert(first % partSamples == 0);
    parts_[std::size_t(word)][std::size_t(first / partSamples)] = std::move(part);
}

void SampleOriginals::read(Word word, std::int64_t first, std::span<std::int64_t> differences) const {
    if (!has(word)) std::ranges::fill(differences, 0);
    forEachPart(word, first, std::int64_t(differences.size()), [&](const Part &part, auto within, auto at, auto count) {
        read(part, within, differences.subspan(std::size_t(at), std::size_t(count)));
    });
}

void SampleOriginals::read(const Part &part, std::int64_t within, std::span<std::int64_t> differences) {
    const std::byte *stored = part.differences.get() + within * part.width;
    if (part.width == 0) std::ranges::fill(differences, 0);
    if (part.width == 1) widen<std::int8_t>(stored, differences);
    if (part.width == 4) widen<std::int32_t>(stored, differences);
    if (part.width == 8) widen<std::int64_t>(stored, differences);
}

std::int64_t SampleOriginals::bytes(std::int64_t first, std::int64_t samples) const {
    std::int64_t bytes = 0;
    for (const Word word : words)
        forEachPart(word, first, samples, [&](const Part &part, auto, auto, auto count) { bytes += part.width * count; });
    return bytes;
}

bool SampleOriginals::isEmpty() const {
    return std::ranges::all_of(
        parts_, [](const auto &parts) { return std::ranges::all_of(parts, [](const Part &part) { return part.width == 0; }); });
}

}  // namespace kiv
