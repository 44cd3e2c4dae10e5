#include "Editor/EqProcessor/EqSections.h"

#include "Support/Vectorised.h"

namespace kiv {
namespace {

struct Section {
    EqPair b0, b1, b2, a1, a2, s1, s2;

    EqPair step(EqPair x) {
        const EqPair y = b0 * x + s1;
        s1 = b1 * x - a1 * y + s2;
        s2 = b2 * x - a2 * y;
        return y;
    }
};

EqPair both(double value) { return EqPair{value, value}; }

// A tail that decays for ever would end among numbers that many processors are slow with.
EqPair withoutTraces(EqPair s) {
    constexpr double inaudible = 1e-30;
    const EqPair magnitude = s < 0 ? -s : s;
    return magnitude < inaudible ? EqPair{} : s;
}

// Each section waits for its own last result, so sections are staggered: while one works on a frame, the next works on the
// frame before it. `carried` holds what each has given and its successor has not yet taken.
template <int n>
__attribute__((always_inline)) inline void stagger(Section *sections, EqPair *block, std::int64_t frames) {
    Section s[n];
    EqPair carried[n] = {};
    for (int k = 0; k < n; ++k) s[k] = sections[k];
    const auto edge = [&](std::int64_t t) {
        for (int k = n - 1; k >= 0; --k) {
            if (t - k < 0 || t - k >= frames) continue;
            const EqPair y = s[k].step(k == 0 ? block[t] : carried[k - 1]);
            (k == n - 1 ? block[t - k] : carried[k]) = y;
        }
    };
    std::int64_t t = 0;
    for (; t < n - 1; ++t) edge(t);
    for (; t < frames; ++t) {
        const EqPair in = block[t];
        for (int k = n - 1; k >= 0; --k) {
            const EqPair y = s[k].step(k == 0 ? in : carried[k - 1]);
            (k == n - 1 ? block[t - k] : carried[k]) = y;
        }
    }
    for (; t < frames + n - 1; ++t) edge(t);
    for (int k = 0; k < n; ++k) sections[k] = s[k];
}

KIV_VECTORISED void staggerOne(Section *sections, EqPair *block, std::int64_t frames) { stagger<1>(sections, block, frames); }
KIV_VECTORISED void staggerTwo(Section *sections, EqPair *block, std::int64_t frames) { stagger<2>(sections, block, frames); }
KIV_VECTORISED void staggerThree(Section *sections, EqPair *block, std::int64_t frames) { stagger<3>(sections, block, frames); }

template <int n>
void staggered(Section *sections, std::span<EqPair> block) {
    const std::int64_t frames = std::int64_t(block.size());
    if constexpr (n == 1) return staggerOne(sections, block.data(), frames);
    if constexpr (n == 2) return staggerTwo(sections, block.data(), frames);
    if constexpr (n == 3) return staggerThree(sections, block.data(), frames);
}

}  // namespace

void EqSections::clear(std::size_t first, std::size_t number) {
    for (auto &states : memory_)
        for (std::size_t k = first; k < first + number; ++k) states[k] = {};
}

template <int n>
void EqSections::runSome(const std::uint8_t *sections, std::array<State, count> &states, std::span<EqPair> block) {
    Section some[n];
    for (int k = 0; k < n; ++k) {
        const EqBiquad &c = coefficients[sections[k]];
        const State &state = states[sections[k]];
        some[k] = {both(c.b0), both(c.b1), both(c.b2), both(c.a1), both(c.a2), state.s1, state.s2};
    }
    staggered<n>(some, block);
    for (int k = 0; k < n; ++k) states[sections[k]] = {withoutTraces(some[k].s1), withoutTraces(some[k].s2)};
}

// Three at a time: their memory and what is on its way between them fill the registers.
void EqSections::run(std::span<const std::uint8_t> sections, std::int64_t pair, std::span<EqPair> block) {
    auto &states = memory_[std::size_t(pair)];
    for (; sections.size() >= 3; sections = sections.subspan(3)) runSome<3>(sections.data(), states, block);
    if (sections.size() == 2) runSome<2>(sections.data(), states, block);
    if (sections.size() == 1) runSome<1>(sections.data(), states, block);
}

}  // namespace kiv
