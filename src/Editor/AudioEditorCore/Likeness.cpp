#include "Editor/AudioEditorCore/Likeness.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "Editor/AudioEditorCore/StretchKernels.h"

namespace kiv {
namespace {

constexpr std::int64_t coarseStep = 4, fineReach = 3;
// Windows are filled up with silence to a whole number of these, so that the loops have no rest.
constexpr std::int64_t padding = 32;

// Rounding each of so many numbers takes at most this off their norm.
float roundedOff(std::int64_t count) { return 0.51f * std::sqrt(float(count)); }

// As large as 16 bits hold, but so that no sum of products of numbers of two such stretches leaves 32 bits.
float scaleFor(const Level &level, std::int64_t count) {
    const float norm = 46000 - roundedOff(count);
    return std::min(norm / std::sqrt(level.energy), 32766 / level.peak);
}

// Beyond these, squares are lost below the smallest numbers or above the largest, or there are samples that are no numbers.
bool isPlain(const Level &level) { return level.energy > 1e-20f && level.energy < 1e30f; }

}  // namespace

struct Likeness::Best {
    std::int64_t place;
    float score;

    void consider(std::int64_t other, float otherScore) {
        if (otherScore > score) *this = {other, otherScore};
    }
};

Likeness::Likeness(std::int64_t window, std::int64_t longestSearch)
    : window_(window),
      padded_((window + padding - 1) / padding * padding),
      x_(std::size_t(longestSearch + padded_ + placesAtOnce * coarseStep), 0),
      wanted_(std::size_t(padded_), 0) {
    const std::int64_t places = longestSearch / coarseStep + 1 + placesAtOnce;
    for (auto *row : {&products_, &energies_}) row->resize(std::size_t(places));
    for (auto *row : {&least_, &most_}) row->resize(std::size_t(places));
}

std::int64_t Likeness::best(const Search &search) {
    const bool isFinite = search.level.energy < 1e30f && search.wantedLevel.energy < 1e30f;
    if (isFinite && (search.level.peak == 0 || search.wantedLevel.peak == 0)) return 0;  // all scores are 0
    if (!isPlain(search.level) || !isPlain(search.wantedLevel)) return bestExactly(search);
    quantiseAll(search);
    return bestNear(search, bestOfEveryFourth(search));
}

float Likeness::score(const Search &search, std::int64_t place) const {
    const DotProducts products = dotProducts(search.x + place, search.wanted, window_);
    return products.withOther / (std::sqrt(products.withSelf) + 1e-9f);
}

std::int64_t Likeness::bestExactly(const Search &search) const {
    Best best{search.otherwise, std::numeric_limits<float>::lowest()};
    for (std::int64_t place = 0; place <= search.last; place += coarseStep) best.consider(place, score(search, place));
    const std::int64_t lo = std::max<std::int64_t>(best.place - fineReach, 0),
                       hi = std::min(best.place + fineReach, search.last);
    for (std::int64_t place = lo; place <= hi; ++place) best.consider(place, score(search, place));
    return best.place;
}

void Likeness::quantiseAll(const Search &search) {
    const std::int64_t length = window_ + search.last;
    const float scale = scaleFor(search.level, length);
    quantise(search.x, scale, length, x_.data());
    std::fill(x_.begin() + length, x_.end(), std::int16_t(0));
    quantise(search.wanted, scaleFor(search.wantedLevel, window_), window_, wanted_.data());
    offset_ = 1e-9f * scale;
    wantedNorm_ = std::sqrt(float(sumOfSquares(wanted_.data(), window_))) + roundedOff(window_);
}

// How much 32-bit sums may be off is a bound for sums of so many numbers, twice over.
void Likeness::boundScoresAt(const Places &places) {
    const std::int16_t *x = x_.data() + places.first;
    for (std::int64_t i = 0; i < places.count; i += placesAtOnce)
        (places.step == 1 ? dotProductsAdjoining : dotProductsFourApart)(x + places.step * i, wanted_.data(), padded_,
                                                                         products_.data() + i);
    energies_[0] = sumOfSquares(x, window_);
    (places.step == 1 ? energyChanges : energyChangesFourApart)(x, x + window_, places.count - 1, energies_.data() + 1);
    for (std::size_t i = 1; i < std::size_t(places.count); ++i) energies_[i] += energies_[i - 1];
    const float slack = wantedNorm_ * float(window_ / 16 + 32) * 0x1p-23f;
    boundScores(products_.data(), energies_.data(), places.count, {offset_, roundedOff(window_), wantedNorm_, slack},
                least_.data(), most_.data());
}

// The places that can be the best; in the order of the places.
const std::vector<std::int64_t> &Likeness::contenders(const Places &places) {
    const float surely = largest(least_.data(), places.count);
    contenders_.clear();
    for (std::int64_t i = 0; i < places.count; ++i)
        if (!(most_[std::size_t(i)] < surely)) contenders_.push_back(places.at(i));
    return contenders_;
}

std::int64_t Likeness::bestOfEveryFourth(const Search &search) {
    const Places places{0, coarseStep, search.last / coarseStep + 1};
    boundScoresAt(places);
    const auto &found = contenders(places);
    if (found.size() == 1) return found[0];
    Best best{0, std::numeric_limits<float>::lowest()};
    for (const std::int64_t place : found) best.consider(place, score(search, place));
    return best.place;
}

std::int64_t Likeness::bestNear(const Search &search, std::int64_t coarse) {
    const std::int64_t lo = std::max<std::int64_t>(coarse - fineReach, 0), hi = std::min(coarse + fineReach, search.last);
    const Places places{lo, 1, hi - lo + 1};
    boundScoresAt(places);
    const auto &found = contenders(places);
    if (found.size() == 1) return found[0];
    Best best{coarse, score(search, coarse)};
    for (const std::int64_t place : found) best.consider(place, score(search, place));
    return best.place;
}

}  // namespace kiv
