#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace kiv {

// What 32-bit floats leave out of the words that a block of samples was read from, where those are wider: for each sample a
// difference, which whoever reads and writes such words takes from one and adds to the other (nothing here knows how). It is
// kept only for the parts of a block where there is any, and no wider than it has to be; it goes wherever the samples go.
class SampleOriginals {
public:
    enum class Word { integer32, float64 };
    static constexpr std::array words{Word::integer32, Word::float64};
    // Samples that are kept or left out together.
    static constexpr std::int64_t partSamples = 32768;
    struct Part {
        int width = 0;  // of a difference, in bytes: 0 for none, 1, 4 or 8
        std::unique_ptr<std::byte[]> differences;
    };

    // So many samples, of which nothing is left out.
    explicit SampleOriginals(std::int64_t samples) : samples_(samples) {}
    virtual ~SampleOriginals() = default;
    // Makes room for words of a kind, before any are kept.
    void expect(Word word);

    // From a part's first sample on, a whole number of parts or up to the last sample. Several threads may keep different parts
    // at once.
    void keep(Word word, std::int64_t first, std::span<const std::int64_t> differences);
    void keep(Word word, std::int64_t first, Part part);

    // Calls visit(part, within, at, count) for the parts that samples from a first one on are in, where words of that kind are
    // kept: `count` of them, which are the part's from `within` on, and the `at`th of those asked for.
    template <class Visit>
    void forEachPart(Word word, std::int64_t first, std::int64_t samples, Visit visit) const {
        for (std::int64_t at = 0; has(word) && at < samples;) {
            const std::int64_t within = (first + at) % partSamples, count = std::min(partSamples - within, samples - at);
            visit(partsOf(word)[std::size_t((first + at) / partSamples)], within, at, count);
            at += count;
        }
    }
    // Of the samples from a first one on; 0 for those of which nothing is left out.
    void read(Word word, std::int64_t first, std::span<std::int64_t> differences) const;
    static void read(const Part &part, std::int64_t within, std::span<std::int64_t> differences);
    // That they take.
    std::int64_t bytes(std::int64_t first, std::int64_t samples) const;
    bool has(Word word) const { return !partsOf(word).empty(); }
    bool isEmpty() const;

private:
    const std::vector<Part> &partsOf(Word word) const { return parts_[std::size_t(word)]; }

    std::int64_t samples_;
    std::array<std::vector<Part>, words.size()> parts_;
};

}  // namespace kiv
