#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "Editor/EqCore/EqBiquad.h"

namespace kiv {

// Two channels of a frame. Every machine has vectors of this size.
using EqPair = double __attribute__((vector_size(16)));

// The nine sections of the equalizer in 64-bit float, in transposed direct form II, with their memory for any number of
// channels, which are worked on two at a time. Nothing here allocates but the constructor.
class EqSections {
public:
    enum Index { lowCut = 0, bands = 3, highCut = 7, count = 9 };

    explicit EqSections(std::int64_t channels) : memory_(std::size_t((channels + 1) / 2)) {}

    std::array<EqBiquad, count> coefficients;

    // Forgets what `number` sections have heard.
    void clear(std::size_t first, std::size_t number);
    // Runs a block of two channels, 2 · `pair` and the next, through the sections given by number, one after the other.
    void run(std::span<const std::uint8_t> sections, std::int64_t pair, std::span<EqPair> block);

private:
    struct State {
        EqPair s1{}, s2{};
    };

    template <int n>
    void runSome(const std::uint8_t *sections, std::array<State, count> &states, std::span<EqPair> block);

    std::vector<std::array<State, count>> memory_;
};

}  // namespace kiv
