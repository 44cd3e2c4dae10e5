#pragma once

#include <algorithm>
#include <cmath>
#include <optional>
#include <vector>

#include "Editor/AudioEditorLoopPanel/AudioEditorLoopFinder.h"

// The search for loops written down as it is defined, end by end in double precision: slow, and the measure of the fast one.
namespace kiv::NaiveLoopSearch {

using Sound = std::vector<float>;  // interleaved

inline std::optional<std::vector<double>> mismatch(const Sound &sound, std::int64_t channels, std::int64_t start,
                                                   FrameRange ends, std::int64_t w) {
    const std::int64_t frames = std::int64_t(sound.size()) / channels;
    const auto at = [&](std::int64_t frame, std::int64_t c) {
        return frame < 0 || frame >= frames ? 0.0 : double(sound[std::size_t(frame * channels + c)]);
    };
    const auto weight = [&](std::int64_t i) {
        const bool isThere = start - w + i >= 0 && start - w + i < frames;
        return isThere ? 1 - std::fabs(double(i - w) + 0.5) / double(w) : 0.0;
    };
    double power = 0, weights = 0;
    for (std::int64_t i = 0; i < 2 * w; ++i) {
        weights += weight(i);
        for (std::int64_t c = 0; c < channels; ++c) power += weight(i) * std::pow(at(start - w + i, c), 2);
    }
    if (!(power / (weights * double(channels)) > 1e-6)) return std::nullopt;
    std::vector<double> result;
    for (std::int64_t end = ends.lo; end < ends.hi; ++end) {
        double difference = 0, both = 0;
        for (std::int64_t i = 0; i < 2 * w; ++i)
            for (std::int64_t c = 0; c < channels; ++c) {
                const double a = at(start - w + i, c), b = at(end - w + i, c);
                difference += weight(i) * (a - b) * (a - b);
                both += weight(i) * (a * a + b * b);
            }
        result.push_back(std::max(difference, 0.0) / std::max(both, 1e-20));
    }
    return result;
}

struct Candidate {
    FrameRange loop;
    double cost, match;
};

struct Search {
    Sound sound;
    std::int64_t channels, rate;
    bool crossings;
    std::int64_t frames = std::int64_t(sound.size()) / channels;
    std::int64_t hop = rate < 200 ? 1 : rate / 100, w = std::max<std::int64_t>(std::int64_t(double(rate) * 0.01), 8);
    std::int64_t apart = rate < 100 ? 1 : rate / 50, lo = 0, hi = 0, minLength = 0;
    std::vector<double> levels{}, smoothed{};

    bool findRegion() {
        for (std::int64_t at = 0; at < frames; at += hop) {
            const auto first = sound.begin() + at * channels, last = sound.begin() + std::min(at + hop, frames) * channels;
            double sum = 0;
            for (auto x = first; x < last; ++x) sum += double(*x) * double(*x);
            levels.push_back(10 * std::log10(sum / double(last - first) + 1e-12));
        }
        const auto count = std::int64_t(levels.size());
        for (std::int64_t i = 0; i < count; ++i) {
            double sum = 0, n = 0;
            for (std::int64_t k = std::max<std::int64_t>(0, i - 5); k <= std::min(count - 1, i + 5); ++k, ++n)
                sum += levels[std::size_t(k)];
            smoothed.push_back(sum / n);
        }
        const double peak = count ? *std::max_element(levels.begin(), levels.end()) : -200;
        if (peak <= -60) return false;
        std::int64_t first = 0, last = count - 1;
        while (levels[std::size_t(first)] < peak - 6) ++first;
        while (levels[std::size_t(last)] < std::max(peak - 40, -70.0)) --last;
        lo = std::min(frames, (first + 3) * hop);
        hi = std::min({lo + 60 * rate, frames, (last + 1) * hop});
        minLength = std::max((hi - lo) / 10, rate / 50);
        return hi - lo >= 2 * minLength;
    }
    double level(std::int64_t frame) const {
        return smoothed[std::size_t(std::min(std::max<std::int64_t>(frame / hop, 0), std::int64_t(smoothed.size()) - 1))];
    }
    double cost(FrameRange loop, double m) const {
        return m + 0.05 * std::fabs(level(loop.hi) - level(loop.lo)) +
               0.1 * std::max(0.0, 1 - double(loop.count()) / (double(hi - lo) * 0.5));
    }
    float sum(std::int64_t frame) const {
        float total = 0;
        for (std::int64_t c = 0; c < channels; ++c) total += sound[std::size_t(frame * channels + c)];
        return total;
    }
    bool rises(std::int64_t f) const { return f >= 1 && f < frames && sum(f - 1) < 0 && sum(f) >= 0; }

    std::vector<std::int64_t> starts() const {
        std::vector<std::int64_t> found;
        for (int k = 0; k < 64; ++k) {
            const std::int64_t s = lo + std::int64_t(double(hi - minLength - lo) * 0.5 * k / 63);
            for (std::int64_t d = crossings ? 0 : w + 1; d <= w; ++d) {
                if (!rises(s - d) && !rises(s + d)) continue;
                found.push_back(rises(s - d) ? s - d : s + d);
                break;
            }
            if (!crossings) found.push_back(s);
        }
        return found;
    }

    std::vector<Candidate> coarse() const {
        const std::int64_t step = rate < 22050 ? 1 : rate / 11025, from = std::max<std::int64_t>(0, lo - 2 * w);
        const std::int64_t count = (std::min(frames, hi + 2 * w) - from) / step;
        Sound low;
        for (std::int64_t i = 0; i < count; ++i) {
            double mean = 0;
            for (std::int64_t k = 0; k < step * channels; ++k)
                mean += double(sound[std::size_t((from + i * step) * channels + k)]);
            low.push_back(float(mean / double(step * channels)));
        }
        std::vector<Candidate> all;
        for (const std::int64_t s : starts()) {
            const std::int64_t sd = (s - from) / step, e0 = sd + std::max<std::int64_t>(minLength / step, 1);
            const std::int64_t e1 = std::min(count - 1, (hi - from) / step);
            if (e0 >= e1) continue;
            const auto m = mismatch(low, 1, sd, {e0, e1 + 1}, std::max<std::int64_t>(w / step, 4));
            if (!m) continue;
            std::vector<Candidate> minima;
            std::vector<double> costs;
            const auto end = [&](std::size_t j) { return from + (e0 + std::int64_t(j)) * step; };
            for (std::size_t j = 0; j < m->size(); ++j) costs.push_back(cost({s, end(j)}, (*m)[j]));
            for (std::size_t j = 0; j < costs.size(); ++j)
                if ((j == 0 || costs[j] <= costs[j - 1]) && (j + 1 == costs.size() || costs[j] <= costs[j + 1]))
                    minima.push_back({{s, end(j)}, costs[j], 0});
            std::stable_sort(minima.begin(), minima.end(), [](auto &a, auto &b) { return a.cost < b.cost; });
            std::vector<Candidate> kept;
            for (const Candidate &c : minima)
                if (kept.size() < 4 &&
                    std::none_of(kept.begin(), kept.end(), [&](auto &k) { return std::abs(k.loop.hi - c.loop.hi) < apart; }))
                    kept.push_back(c);
            all.insert(all.end(), kept.begin(), kept.end());
        }
        std::stable_sort(all.begin(), all.end(), [](auto &a, auto &b) { return a.cost < b.cost; });
        all.resize(std::min<std::size_t>(all.size(), 48));
        return all;
    }

    std::vector<Candidate> run() {
        if (!findRegion()) return {};
        const std::int64_t step = rate < 22050 ? 1 : rate / 11025, r = crossings ? w / 2 : 2 * step + 2;
        std::vector<Candidate> fine, kept;
        for (const Candidate &c : coarse()) {
            const std::int64_t s = c.loop.lo, first = std::max(c.loop.hi - r, s + 1), last = std::min(frames, c.loop.hi + r);
            const auto m = last < first ? std::nullopt : mismatch(sound, channels, s, {first, last + 1}, w);
            std::optional<std::size_t> best;
            for (std::size_t j = 0; m && j < m->size(); ++j)
                if ((!crossings || rises(first + std::int64_t(j))) && (!best || (*m)[j] < (*m)[*best])) best = j;
            if (!best) continue;
            const FrameRange loop{s, first + std::int64_t(*best)};
            fine.push_back({loop, cost(loop, (*m)[*best]), std::max(0.0, 1 - (*m)[*best])});
        }
        std::stable_sort(fine.begin(), fine.end(), [](auto &a, auto &b) { return a.cost < b.cost; });
        for (const Candidate &c : fine)
            if (kept.size() < 8 && std::none_of(kept.begin(), kept.end(), [&](auto &k) {
                    return std::abs(k.loop.lo - c.loop.lo) < apart && std::abs(k.loop.hi - c.loop.hi) < apart;
                }))
                kept.push_back(c);
        return kept;
    }
};

}  // namespace kiv::NaiveLoopSearch
