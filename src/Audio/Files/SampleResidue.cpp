#include "Audio/Files/SampleResidue.h"

#include <algorithm>
#include <bit>
#include <cassert>
#include <cstring>
#include <type_traits>

#include "Audio/Files/ByteFields.h"
#include "Audio/Files/SampleEncoding.h"
#include "Support/Vectorised.h"

namespace kiv {
namespace {

using Kind = AudioSampleEncoding::Kind;

std::endian orderOf(const AudioSampleEncoding &encoding) { return encoding.bigEndian ? std::endian::big : std::endian::little; }

template <class Word>
Word loaded(const std::byte *at, bool swapped) {
    Word word;
    std::memcpy(&word, at, sizeof word);
    return swapped ? byteSwapped(word) : word;
}

// Puts original − encoded into `differences` and returns the bits that their magnitudes take together, the sign lowest.
template <class Word>
KIV_VECTORISED Word subtract(const std::byte *original, const std::byte *encoded, bool swapped, std::size_t count,
                             Word *differences) {
    Word bits = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const Word difference =
            loaded<Word>(original + sizeof(Word) * i, swapped) - loaded<Word>(encoded + sizeof(Word) * i, swapped);
        differences[i] = difference;
        bits |= Word(difference << 1) ^ (Word(0) - Word(difference >> (8 * sizeof(Word) - 1)));
    }
    return bits;
}

template <class Stored, class Word>
KIV_VECTORISED void narrow(const Word *differences, std::size_t count, std::byte *out) {
    for (std::size_t i = 0; i < count; ++i) {
        const auto stored = Stored(differences[i]);
        std::memcpy(out + sizeof stored * i, &stored, sizeof stored);
    }
}

template <class Stored, class Word>
KIV_VECTORISED void addTo(std::byte *encoded, const std::byte *differences, bool swapped, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        Stored stored;
        std::memcpy(&stored, differences + sizeof stored * i, sizeof stored);
        const Word sum = loaded<Word>(encoded + sizeof(Word) * i, swapped) + Word(std::make_signed_t<Word>(stored));
        const Word word = swapped ? byteSwapped(sum) : sum;
        std::memcpy(encoded + sizeof(Word) * i, &word, sizeof word);
    }
}

template <class Word>
SampleOriginals::Part differencesOf(std::span<const std::byte> original, std::span<const std::byte> encoded, bool swapped) {
    const std::size_t count = original.size() / sizeof(Word);
    const auto words = std::make_unique_for_overwrite<Word[]>(count);
    const Word bits = subtract(original.data(), encoded.data(), swapped, count, words.get());
    const int width = bits <= 0xFF ? 1 : bits <= 0xFFFFFFFF ? 4 : 8;
    SampleOriginals::Part result{width, std::make_unique_for_overwrite<std::byte[]>(count * std::size_t(width))};
    if (width == 1) narrow<std::int8_t>(words.get(), count, result.differences.get());
    if (width == 4) narrow<std::int32_t>(words.get(), count, result.differences.get());
    if (width == 8) narrow<std::int64_t>(words.get(), count, result.differences.get());
    return result;
}

template <class Word>
void addDifferences(std::byte *encoded, const std::byte *differences, int width, bool swapped, std::size_t count) {
    if (width == 1) addTo<std::int8_t, Word>(encoded, differences, swapped, count);
    if (width == 4) addTo<std::int32_t, Word>(encoded, differences, swapped, count);
    if (width == 8) addTo<std::int64_t, Word>(encoded, differences, swapped, count);
}

SampleOriginals::Word wordOf(const AudioSampleEncoding &encoding) {
    return encoding.kind == Kind::integer ? SampleOriginals::Word::integer32 : SampleOriginals::Word::float64;
}

}  // namespace

// Up to 24 bits are a float's own, and so are 32-bit floats.
bool SampleResidue::isNeeded(const AudioSampleEncoding &encoding) {
    return encoding.bytes == (encoding.kind == Kind::integer ? 4 : 8);
}

SampleResidue::SampleResidue(const AudioSampleEncoding &encoding, std::int64_t samples) : SampleOriginals(samples) {
    assert(isNeeded(encoding));
    expect(wordOf(encoding));
}

void SampleResidue::keep(std::int64_t first, std::span<const std::byte> original, const AudioSampleEncoding &encoding,
                         std::span<const float> decoded) {
    const bool swapped = orderOf(encoding) != std::endian::native;
    const auto width = std::size_t(encoding.bytes);
    const auto scratch = std::make_unique_for_overwrite<std::byte[]>(std::size_t(partSamples) * width);
    for (; !decoded.empty(); first += partSamples) {
        const std::size_t count = std::min(decoded.size(), std::size_t(partSamples));
        const auto stood = original.first(count * width);
        const std::span encoded(scratch.get(), count * width);
        encodeSamples(decoded.first(count), encoding, encoded);
        if (std::memcmp(stood.data(), encoded.data(), encoded.size()) != 0) {
            const auto subtractAll = width == 4 ? differencesOf<std::uint32_t> : differencesOf<std::uint64_t>;
            SampleOriginals::keep(wordOf(encoding), first, subtractAll(stood, encoded, swapped));
        }
        original = original.subspan(count * width);
        decoded = decoded.subspan(count);
    }
}

void restoreOriginals(const SampleOriginals &originals, std::int64_t first, const AudioSampleEncoding &encoding,
                      std::span<std::byte> encoded) {
    if (!SampleResidue::isNeeded(encoding)) return;
    const bool swapped = orderOf(encoding) != std::endian::native;
    const std::int64_t bytes = encoding.bytes;
    const auto addAll = bytes == 4 ? addDifferences<std::uint32_t> : addDifferences<std::uint64_t>;
    originals.forEachPart(wordOf(encoding), first, std::int64_t(encoded.size()) / bytes,
                          [&](const SampleOriginals::Part &part, std::int64_t within, std::int64_t at, std::int64_t count) {
                              addAll(encoded.data() + at * bytes, part.differences.get() + within * part.width, part.width,
                                     swapped, std::size_t(count));
                          });
}

}  // namespace kiv
