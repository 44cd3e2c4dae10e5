#include "Editor/AudioEditorModel/AudioEditorModel.h"

#include <algorithm>

#include "Editor/AudioEditorModel/AudioEditorSlices.h"

namespace kiv {
namespace {

std::int64_t clampedFrame(std::int64_t frame, const AudioEditorBuffer &buffer) {
    return std::clamp<std::int64_t>(frame, 0, buffer.frames());
}

std::optional<FrameRange> clampedRange(std::optional<FrameRange> range, const AudioEditorBuffer &buffer) {
    return range ? buffer.clampedRange(*range) : std::nullopt;
}

}  // namespace

AudioEditorModel::AudioEditorModel(Settings &settings, Clipboard &clipboard, Peaks peaks)
    : settings_(settings), clipboard_(clipboard), peaks_(peaks) {
    state_.monoSource = monoSourceFromText(settings.get(Setting::monoSource)).value_or(AudioEditorMonoSource::mix);
    state_.gainDb = settings.get(Setting::gainDb);
    state_.normalizeDb = settings.get(Setting::normalizeDb);
    state_.timeUnit =
        settings.get(Setting::timeUnit) == "samples" ? AudioEditorTimeUnit::samples : AudioEditorTimeUnit::seconds;
    state_.loopEnabled = settings.get(Setting::loop);
    state_.followPlayhead = settings.get(Setting::followPlayhead);
    readModeSettings();
    readSpectralSettings();
}

AudioEditorModel::Batch::~Batch() {
    if (--model_.batchDepth_ == 0) model_.flush();
}

void AudioEditorModel::tell(Change change) {
    pending_ |= std::uint32_t(change);
    if (batchDepth_ == 0) flush();
}

void AudioEditorModel::flush() {
    const Changes changes{std::exchange(pending_, 0)};
    if (changes.contains(Change::loopPoints) && onLoopPointsChanged) onLoopPointsChanged();
    if (changes.bits) observers.notify(changes);
}

void AudioEditorModel::expect(AudioEditorBuffer empty) {
    if (state_.generation > 0) return;
    state_.buffer = std::move(empty);
    if (keepsPeaks()) state_.peaks = AudioEditorPeaks(state_.buffer);
    tell(Change::audio);
}

void AudioEditorModel::load(AudioEditorBuffer buffer, std::vector<std::int64_t> markers, std::optional<FrameRange> loop,
                            std::optional<AudioEditorPeaks> peaks) {
    const Batch batch(*this);
    setCursorAndSelection(0, std::nullopt);
    state_.lastSelection.reset();
    zoomToFit();  // stays so when the new sound comes in
    reload(std::move(buffer), std::move(markers), loop, std::move(peaks));
}

void AudioEditorModel::reload(AudioEditorBuffer buffer, std::vector<std::int64_t> markers, std::optional<FrameRange> loop,
                              std::optional<AudioEditorPeaks> peaks) {
    const Batch batch(*this);
    state_.pressLoop.reset();
    state_.pressSlices.reset();
    history_.clear();
    tell(Change::history);
    set(&AudioEditorState::markerFrames, std::move(markers), Change::markers);
    set(&AudioEditorState::loopPoints, loop, Change::loopPoints);
    setSlices({});
    install({std::move(buffer), std::move(peaks), state_.cursorFrame, state_.selection, nextVersion_++});
    if (state_.slicerEnabled) AudioEditorSlices::setSlicerEnabled(*this, true);
}

void AudioEditorModel::takePeaks(Content &content) {
    if (!keepsPeaks()) return;
    state_.peaks = content.peaks ? std::move(*content.peaks)
                                 : AudioEditorPeaks::carried(content.buffer, state_.buffer, std::move(state_.peaks));
}

// Everything else that belongs to the new sound is set by now, for the owner is told here.
void AudioEditorModel::install(Content content) {
    const Batch batch(*this);
    takePeaks(content);
    const AudioEditorBuffer before = std::exchange(state_.buffer, std::move(content.buffer));
    ++state_.generation;
    if (!state_.peaks.isExact())
        onLoosePeaks ? onLoosePeaks() : completePeaks(state_.generation, state_.peaks.measuredTail(state_.buffer));
    state_.contentVersion = content.version;
    lengthChange_ = content.change;
    tell(Change::audio);
    holdSpectral(std::move(content.spectral));
    setCursorAndSelection(content.cursor, content.selection);
    state_.lastSelection = clampedRange(state_.lastSelection, state_.buffer);
    setView(state_.view);
    if (onAudioChanged) onAudioChanged(before, state_.buffer);
}

void AudioEditorModel::completePeaks(std::int64_t generation, const AudioEditorPeaks &tail) {
    if (generation != state_.generation || state_.peaks.isExact()) return;
    state_.peaks.takeTail(tail);
    tell(Change::peaks);
}

std::optional<FrameRange> AudioEditorModel::activeRange() const {
    if (state_.selection) return state_.selection;
    return state_.buffer.clampedRange({0, state_.buffer.frames()});
}

bool AudioEditorModel::canCut() const { return state_.selection && state_.selection->count() < state_.buffer.frames(); }

void AudioEditorModel::placeCursor(std::int64_t frame) { setCursorAndSelection(frame, std::nullopt); }

void AudioEditorModel::select(FrameRange range) { setCursorAndSelection(range.lo, range); }

void AudioEditorModel::selectAll() { select({0, state_.buffer.frames()}); }

void AudioEditorModel::selectNone() { setCursorAndSelection(state_.cursorFrame, std::nullopt); }

void AudioEditorModel::setCursorAndSelection(std::int64_t cursor, std::optional<FrameRange> selection) {
    const Batch batch(*this);
    const auto before = state_.selection;
    set(&AudioEditorState::cursorFrame, clampedFrame(cursor, state_.buffer), Change::cursor);
    if (set(&AudioEditorState::selection, clampedRange(selection, state_.buffer), Change::selection))
        state_.lastSelection = clampedRange(before, state_.buffer);
}

void AudioEditorModel::setLoopEnabled(bool enabled) {
    const Batch batch(*this);
    if (!set(&AudioEditorState::loopEnabled, enabled, Change::playback)) return;
    settings_.set(Setting::loop, enabled);
    if (onLoopChanged) onLoopChanged(enabled);
}

void AudioEditorModel::setPlayheads(std::vector<AudioEditorPlayhead> heads) {
    set(&AudioEditorState::playheads, std::move(heads), Change::playheads);
}

void AudioEditorModel::setPlaying(bool playing) { set(&AudioEditorState::playing, playing, Change::playback); }

void AudioEditorModel::setPreviewPlaying(bool playing) { set(&AudioEditorState::previewPlaying, playing, Change::playback); }

void AudioEditorModel::setMaxLevel(std::optional<float> level) { set(&AudioEditorState::maxLevel, level, Change::maxLevel); }

void AudioEditorModel::openDialog(Dialog dialog) {
    const Batch batch(*this);
    set(&AudioEditorState::dialog, dialog, Change::dialog);
    setDialogText({}, false);
}

void AudioEditorModel::closeDialog() {
    const Batch batch(*this);
    set(&AudioEditorState::dialog, std::nullopt, Change::dialog);
    setDialogText({}, false);
}

void AudioEditorModel::setDialogNumber(double AudioEditorState::*field, const NumberSetting &row, double value) {
    if (value == value && set(field, std::clamp(value, row.lo, row.hi), Change::dialog)) settings_.set(row, state_.*field);
}

void AudioEditorModel::setGainDb(double db) { setDialogNumber(&AudioEditorState::gainDb, Setting::gainDb, db); }

void AudioEditorModel::setNormalizeDb(double db) { setDialogNumber(&AudioEditorState::normalizeDb, Setting::normalizeDb, db); }

void AudioEditorModel::setMonoSource(AudioEditorMonoSource source) {
    if (set(&AudioEditorState::monoSource, source, Change::dialog)) settings_.set(Setting::monoSource, storedText(source));
}

void AudioEditorModel::setStretch(const StretchSettings &settings) {
    set(&AudioEditorState::stretch, clamped(settings), Change::dialog);
}

void AudioEditorModel::setDialogText(std::string text, bool typedAhead) {
    const Batch batch(*this);
    set(&AudioEditorState::dialogText, std::move(text), Change::dialog);
    set(&AudioEditorState::dialogTypedAhead, typedAhead, Change::dialog);
}

void AudioEditorModel::setPointerMode(std::optional<PointerMode> mode) {
    const Batch batch(*this);
    set(&AudioEditorState::resizingEdge, mode && std::holds_alternative<EdgeDrag>(*mode), Change::pointer);
    set(&AudioEditorState::pointerMode, mode, Change::pointer);
}

void AudioEditorModel::setViewDragged(bool dragged) { set(&AudioEditorState::viewDragged, dragged, Change::pointer); }

}  // namespace kiv
