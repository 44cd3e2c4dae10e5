#include "Editor/AudioEditorModel/EqModel.h"

#include "Editor/EqProcessor/EqProcessor.h"

namespace kiv {
namespace {

// Nine filters on a sample, counted in samples multiplied by a gain.
constexpr double filteringCost = 12;

}  // namespace

void EqModel::setSettings(const EqSettings &settings) {
    const EqSettings next = clamped(settings);
    if (settings_ == next) return;
    settings_ = next;
    observers.notify(Change::settings);
}

void EqModel::stepDbRange() {
    dbRange_ = EqGrid::nextDbRange(dbRange_);
    observers.notify(Change::dbRange);
}

void EqModel::analyze(std::span<const float> input, std::span<const float> output) {
    analyzer_.push(input, EqAnalyzer::input);
    analyzer_.push(output, EqAnalyzer::output);
    hasAnalyzed_ = true;
    observers.notify(Change::analyzer);
}

void EqModel::resetAnalyzer() {
    if (!std::exchange(hasAnalyzed_, false)) return;
    analyzer_.reset(EqAnalyzer::input);
    analyzer_.reset(EqAnalyzer::output);
    observers.notify(Change::analyzer);
}

void applyEq(AudioEditorModel &model, const EqSettings &settings, std::optional<FrameRange> range) {
    const AudioEditorBuffer &buffer = model.state().buffer;
    const auto inside = range ? buffer.clampedRange(*range) : std::nullopt;
    if (!inside || settings.isTransparent()) return model.setEqEnabled(false);
    const auto carryOut = [buffer, settings, range = *inside](Progress &progress) {
        EditOutcome outcome{.buffer = EqProcessor::applied(range, settings, buffer, &progress)};
        outcome.closesEq = true;
        return std::optional(std::move(outcome));
    };
    model.apply({double(inside->count() * buffer.channels()) * filteringCost, {1}, carryOut});
}

}  // namespace kiv
