#pragma once

#include "Editor/AudioEditorModel/AudioEditorModel.h"
#include "Editor/EqProcessor/EqAnalyzer.h"
#include "Editor/EqProcessor/EqTargets.h"

namespace kiv {

// The equalizer of one document: its settings, which last as long as the document is open, and what its graph shows. Whether it
// is open, and heard, the editor model says. Main thread only.
class EqModel {
public:
    enum class Change { settings, dbRange, analyzer };
    Observers<Change> observers;

    const EqSettings &settings() const { return settings_; }
    void setSettings(const EqSettings &settings);  // clamped to the ranges
    void reset() { setSettings({}); }

    double dbRange() const { return dbRange_; }  // of the graph
    void stepDbRange();

    const EqAnalyzer &analyzer() const { return analyzer_; }
    // Blocks of EqAnalyzer::fftSize samples, from before and after the equalizer.
    void analyze(std::span<const float> input, std::span<const float> output);
    void resetAnalyzer();

private:
    EqSettings settings_;
    double dbRange_ = 20;
    EqAnalyzer analyzer_;
    bool hasAnalyzed_ = false;
};

// Writes the settings into a range of the sound as one undoable step and then closes the equalizer. Settings that do nothing,
// and a range with nothing in it, only close it.
void applyEq(AudioEditorModel &model, const EqSettings &settings, std::optional<FrameRange> range);

}  // namespace kiv
