#include "Editor/AudioEditorLoopPanel/AudioEditorLoopFinder.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "Editor/AudioEditorLoopPanel/LoopRegion.h"
#include "Editor/AudioEditorLoopPanel/SeamMatch.h"
#include "Editor/AudioEditorLoopPanel/ZeroCrossings.h"
#include "Support/Parallel.h"
#include "Support/Vectorised.h"

// The search goes from coarse to fine: 64 starts against all ends of the sound at some 11 kHz, and the best of those at the
// full rate. A candidate's cost is its mismatch, and what its difference in level and its shortness add to that.
namespace kiv::AudioEditorLoopFinder {
namespace {

constexpr int starts = 64;
constexpr std::size_t endsAStart = 4, refinedCandidates = 48, maxProposals = 8;
constexpr double levelCost = 0.05;  // a dB
constexpr double shortCost = 0.1;   // for a loop of no length; none from half the region on

struct Candidate {
    FrameRange loop;
    double cost = 0;
    double match = 0;
};

bool isCheaper(const Candidate &a, const Candidate &b) { return a.cost < b.cost; }

// All that the search goes by; lengths in frames.
struct Search {
    const AudioEditorBuffer &buffer;
    LoopLevels levels;
    LoopRegion region;
    LoopPoints points;
    std::int64_t rate, w, apart;

    double cost(FrameRange loop, double mismatch) const {
        const double wanted = double(region.frames.count()) * 0.5;
        return mismatch + levelCost * std::fabs(levels.at(loop.hi) - levels.at(loop.lo)) +
               shortCost * std::max(0.0, 1 - double(loop.count()) / wanted);
    }
};

// The sound about the region as one channel of some 11 kHz: the mean of a few frames each.
struct CoarseSound {
    std::int64_t first = 0;  // frame of the sound
    std::int64_t step = 1;   // frames a value
    std::vector<float> values;

    explicit CoarseSound(const Search &search) : step(search.rate < 22050 ? 1 : search.rate / 11025) {
        const AudioEditorBuffer &buffer = search.buffer;
        first = std::max<std::int64_t>(search.region.frames.lo - 2 * search.w, 0);
        const std::int64_t end = std::min(buffer.frames(), search.region.frames.hi + 2 * search.w);
        const std::int64_t channels = buffer.channels(), samples = step * channels;
        values.resize(std::size_t((end - first) / step));
        parallelFor(std::int64_t(values.size()), 4096, [&](std::int64_t lo, std::int64_t hi) {
            std::vector<float> frames(std::size_t((hi - lo) * samples));
            buffer.copyFrames({first + lo * step, first + hi * step}, frames.data());
            for (std::int64_t i = lo; i < hi; ++i) values[std::size_t(i)] = mean(frames.data() + (i - lo) * samples, samples);
        });
    }

    static float mean(const float *in, std::int64_t samples) {
        double sum = 0;
        for (std::int64_t i = 0; i < samples; ++i) sum += double(in[i]);
        return float(sum / double(samples));
    }
    SeamSound sound() const { return {values, 1}; }
    std::int64_t frame(std::int64_t value) const { return first + value * step; }
};

std::optional<std::int64_t> nearestRisingCrossing(ChannelSums &sums, std::int64_t frame, std::int64_t within) {
    for (std::int64_t distance = 0; distance <= within; ++distance)
        for (const std::int64_t at : {frame - distance, frame + distance})
            if (sums.rises(at)) return at;
    return std::nullopt;
}

std::vector<std::int64_t> startFrames(const Search &search) {
    const FrameRange region = search.region.frames;
    const double usable = double(region.hi - search.region.minLength - region.lo) * 0.5;
    ChannelSums sums(search.buffer);
    std::vector<std::int64_t> frames;
    for (int k = 0; k < starts; ++k) {
        const std::int64_t nominal = region.lo + std::int64_t(usable * k / (starts - 1));
        const auto frame = search.points == LoopPoints::anywhere ? nominal : nearestRisingCrossing(sums, nominal, search.w);
        if (frame) frames.push_back(*frame);
    }
    return frames;
}

KIV_VECTORISED void addCosts(const double *__restrict mismatches, const double *__restrict levels, double startLevel,
                             double length, double lengthStep, double wanted, std::int64_t count, double *__restrict costs) {
    for (std::int64_t i = 0; i < count; ++i) {
        const double difference = levels[i] - startLevel, lack = 1 - (length + double(i) * lengthStep) / wanted;
        costs[i] = mismatches[i] + levelCost * (difference < 0 ? -difference : difference) + shortCost * (lack > 0 ? lack : 0);
    }
}

// The places of a row of numbers, given piece by piece, that are no higher than both their neighbours.
class LocalMinima {
public:
    struct Place {
        std::int64_t index;
        double cost;
    };

    void add(std::int64_t index, double cost) {
        if (hasLast_ && isFalling_ && last_.cost <= cost) places_.push_back(last_);
        isFalling_ = !hasLast_ || cost <= last_.cost;
        last_ = {index, cost};
        hasLast_ = true;
    }
    std::vector<Place> finish() {
        if (hasLast_ && isFalling_) places_.push_back(last_);
        return std::move(places_);
    }

private:
    std::vector<Place> places_;
    Place last_{};
    bool hasLast_ = false, isFalling_ = true;
};

// The first pass: ends for every start.
class CoarseSearch {
public:
    explicit CoarseSearch(const Search &search)
        : search_(search),
          coarse_(search),
          w_(std::max<std::int64_t>(search.w / coarse_.step, 4)),
          correlator_(coarse_.sound(), w_),
          levels_(coarse_.values.size()) {
        for (std::size_t i = 0; i < levels_.size(); ++i) levels_[i] = search.levels.at(coarse_.frame(std::int64_t(i)));
    }

    std::vector<Candidate> candidates(std::int64_t start) const {
        const std::int64_t step = coarse_.step, first = (start - coarse_.first) / step;
        const FrameRange ends{
            first + std::max<std::int64_t>(search_.region.minLength / step, 1),
            std::min(std::int64_t(levels_.size()) - 1, (search_.region.frames.hi - coarse_.first) / step) + 1};
        if (ends.count() < 2) return {};
        const auto reference = seamReference(coarse_.sound(), first, w_);
        return reference ? best(start, minima(*reference, start, ends)) : std::vector<Candidate>();
    }

private:
    std::vector<LocalMinima::Place> minima(const SeamReference &reference, std::int64_t start, FrameRange ends) const {
        LocalMinima places;
        std::vector<double> costs;
        const double wanted = double(search_.region.frames.count()) * 0.5, startLevel = search_.levels.at(start);
        const auto visit = [&](FrameRange part, const double *mismatches) {
            costs.resize(std::size_t(part.count()));
            addCosts(mismatches, levels_.data() + part.lo, startLevel, double(coarse_.frame(part.lo) - start),
                     double(coarse_.step), wanted, part.count(), costs.data());
            for (std::int64_t i = 0; i < part.count(); ++i) places.add(part.lo + i, costs[std::size_t(i)]);
        };
        if (reference.isInside) {
            SeamCorrelator::Scratch scratch(correlator_);
            correlator_.forEachEnds(reference, ends, scratch, visit);
        } else {
            const auto mismatches = *mismatch(coarse_.values, 1, (start - coarse_.first) / coarse_.step, ends, w_);
            visit(ends, mismatches.data());
        }
        return places.finish();
    }

    // The cheapest, each some way from the others. Ties go to the earlier.
    std::vector<Candidate> best(std::int64_t start, const std::vector<LocalMinima::Place> &places) const {
        std::vector<Candidate> kept;
        while (kept.size() < endsAStart) {
            const LocalMinima::Place *cheapest = nullptr;
            for (const LocalMinima::Place &place : places) {
                if (cheapest && place.cost >= cheapest->cost) continue;
                const std::int64_t end = coarse_.frame(place.index);
                const auto isNear = [&](const Candidate &other) { return std::abs(end - other.loop.hi) < search_.apart; };
                if (std::ranges::none_of(kept, isNear)) cheapest = &place;
            }
            if (!cheapest) break;
            kept.push_back({{start, coarse_.frame(cheapest->index)}, cheapest->cost, 0});
        }
        return kept;
    }

    const Search &search_;
    const CoarseSound coarse_;
    const std::int64_t w_;
    const SeamCorrelator correlator_;
    std::vector<double> levels_;  // at each coarse value
};

std::vector<float> framesAround(const AudioEditorBuffer &buffer, FrameRange wanted) {
    const std::int64_t channels = buffer.channels();
    std::vector<float> frames(std::size_t(wanted.count() * channels), 0.0f);
    if (const auto there = buffer.clampedRange(wanted))
        buffer.copyFrames(*there, frames.data() + (there->lo - wanted.lo) * channels);
    return frames;
}

// The second pass moves the end of a candidate, by a little, to where it matches best; nothing when it may lie nowhere.
std::optional<Candidate> refined(const Search &search, const Candidate &coarse, std::int64_t radius) {
    const std::int64_t channels = search.buffer.channels(), w = search.w, start = coarse.loop.lo;
    const FrameRange ends{std::max(coarse.loop.hi - radius, start + 1),
                          std::min(search.buffer.frames(), coarse.loop.hi + radius) + 1};
    // Around the start nothing counts that lies outside the sound, so its surroundings keep the sound's own edges.
    const FrameRange about = *search.buffer.clampedRange({start - w, start + w});
    const std::vector<float> startFrames = framesAround(search.buffer, about);
    const auto reference = seamReference({startFrames, channels}, start - about.lo, w);
    if (ends.isEmpty() || !reference) return std::nullopt;
    const std::vector<float> around = framesAround(search.buffer, {ends.lo - w, ends.hi + w});
    ChannelSums sums(search.buffer);
    std::optional<Candidate> found;
    double least = std::numeric_limits<double>::infinity();
    for (std::int64_t end = ends.lo; end < ends.hi; ++end) {
        if (search.points == LoopPoints::atRisingZeroCrossings && !sums.rises(end)) continue;
        const double mismatch = seamMismatch(*reference, around.data() + (end - ends.lo) * channels);
        if (!(mismatch < least)) continue;
        found = Candidate{{start, end}, search.cost({start, end}, mismatch), std::max(0.0, 1 - mismatch)};
        least = mismatch;
    }
    return found;
}

std::vector<Candidate> coarseCandidates(const Search &search, const CoarseSearch &coarse, Progress &progress) {
    const std::vector<std::int64_t> frames = startFrames(search);
    std::vector<std::vector<Candidate>> found(frames.size());
    progress.start(std::int64_t(frames.size()));
    parallelFor(std::int64_t(frames.size()), 1, [&](std::int64_t i, std::int64_t) {
        found[std::size_t(i)] = coarse.candidates(frames[std::size_t(i)]);
        progress.add(1);
    });
    std::vector<Candidate> all;
    for (const auto &each : found) all.insert(all.end(), each.begin(), each.end());
    std::ranges::stable_sort(all, isCheaper);
    all.resize(std::min(all.size(), refinedCandidates));
    return all;
}

std::vector<Proposal> ranked(std::vector<Candidate> candidates, std::int64_t apart) {
    std::ranges::stable_sort(candidates, isCheaper);
    std::vector<Proposal> kept;
    for (const Candidate &candidate : candidates) {
        const auto isLike = [&](const Proposal &other) {
            return std::abs(other.loop.lo - candidate.loop.lo) < apart && std::abs(other.loop.hi - candidate.loop.hi) < apart;
        };
        if (kept.size() < maxProposals && std::ranges::none_of(kept, isLike)) kept.push_back({candidate.loop, candidate.match});
    }
    return kept;
}

// From this number on transforms are faster.
constexpr std::int64_t fewEnds = 256;

std::vector<double> compared(const std::vector<float> &around, std::int64_t channels, const SeamReference &reference,
                             std::int64_t count) {
    std::vector<double> mismatches;
    for (std::int64_t i = 0; i < count; ++i) mismatches.push_back(seamMismatch(reference, around.data() + i * channels));
    return mismatches;
}

std::vector<double> correlated(SeamSound around, const SeamReference &reference, std::int64_t count) {
    const SeamCorrelator correlator(around, reference.w);
    SeamCorrelator::Scratch scratch(correlator);
    std::vector<double> mismatches;
    correlator.forEachEnds(reference, {reference.w, reference.w + count}, scratch, [&](FrameRange ends, const double *values) {
        mismatches.insert(mismatches.end(), values, values + ends.count());
    });
    return mismatches;
}

}  // namespace

std::optional<std::vector<double>> mismatch(std::span<const float> samples, std::int64_t channels, std::int64_t start,
                                            FrameRange ends, std::int64_t w) {
    if (channels < 1 || w < 1 || ends.isEmpty() || start >= std::int64_t(samples.size()) / channels) return std::nullopt;
    const SeamSound sound{samples, channels};
    const auto reference = seamReference(sound, start, w);
    if (!reference) return std::nullopt;
    const std::vector<float> around = seamSurroundings(sound, ends, w);
    return reference->isInside && ends.count() > fewEnds ? correlated({around, channels}, *reference, ends.count())
                                                         : compared(around, channels, *reference, ends.count());
}

std::vector<Proposal> analyze(const AudioEditorBuffer &buffer, LoopPoints points, Progress *progress) {
    const std::int64_t rate = buffer.sampleRate();
    LoopLevels levels(buffer);
    const auto region = loopRegion(buffer, levels);
    if (!region) return {};
    const std::int64_t w = std::max<std::int64_t>(std::int64_t(double(rate) * 0.01), 8), apart = rate < 100 ? 1 : rate / 50;
    const Search search{buffer, std::move(levels), *region, points, rate, w, apart};
    Progress unwatched;
    const CoarseSearch coarse(search);
    const std::int64_t step = rate < 22050 ? 1 : rate / 11025;
    const std::int64_t radius = points == LoopPoints::atRisingZeroCrossings ? w / 2 : 2 * step + 2;
    std::vector<Candidate> candidates;
    for (const Candidate &candidate : coarseCandidates(search, coarse, progress ? *progress : unwatched))
        if (const auto better = refined(search, candidate, radius)) candidates.push_back(*better);
    return ranked(std::move(candidates), apart);
}

}  // namespace kiv::AudioEditorLoopFinder
