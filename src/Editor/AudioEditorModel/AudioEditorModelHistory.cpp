#include <algorithm>

#include "Editor/AudioEditorModel/AudioEditorModel.h"
#include "Editor/AudioEditorModel/AudioEditorSlices.h"

namespace kiv {
namespace {

// From so many samples on measuring peaks again takes longer than copying those of an hour.
constexpr std::int64_t longToMeasure = std::int64_t(1) << 22;

// Whether so much of the sound before an edit is not in the one after it that its peaks are worth keeping.
bool leavesMuchOut(const AudioEditorBuffer &before, const AudioEditorBuffer &after) {
    const std::int64_t shared = after.sharedPrefix(before) + after.sharedSuffix(before);
    return (before.frames() - shared) * before.channels() > longToMeasure;
}

}  // namespace

Snapshot AudioEditorModel::currentSnapshot(Keep keep) const {
    Snapshot snapshot;
    if (keep == Keep::sound) snapshot.buffer = state_.buffer;
    if (keep == Keep::sound) snapshot.spectral = state_.spectral;
    snapshot.cursor = state_.cursorFrame;
    snapshot.selection = state_.selection;
    snapshot.version = state_.contentVersion;
    snapshot.markers = state_.markerFrames;
    snapshot.slices = state_.slices;
    snapshot.loop = state_.loopPoints;
    return snapshot;
}

void AudioEditorModel::pushHistory(Snapshot snapshot) {
    history_.push(std::move(snapshot));
    tell(Change::history);
}

void AudioEditorModel::commit(AudioEditorBuffer buffer, std::int64_t cursor, std::optional<FrameRange> selection,
                              AudioEditorLengthChange change) {
    commitOutcome({std::move(buffer), change, EditOutcome::Place{cursor, selection}, {}});
}

bool AudioEditorModel::commit(std::int64_t generation, EditOutcome outcome) {
    if (generation != state_.generation) return false;
    commitOutcome(std::move(outcome));
    return true;
}

void AudioEditorModel::apply(EditPlan plan) {
    if (plan.isLong() && onLongEdit) return onLongEdit(std::move(plan));
    Progress unwatched;
    if (auto outcome = plan.carryOut(unwatched)) commitOutcome(std::move(*outcome));
}

void AudioEditorModel::commitOutcome(EditOutcome outcome) {
    const Batch batch(*this);
    endMoves();
    Snapshot before = currentSnapshot(Keep::sound);
    if (outcome.peaks)
        before.peaks = std::move(state_.peaks);
    else if (leavesMuchOut(state_.buffer, outcome.buffer))
        before.peaks = state_.peaks;
    pushHistory(std::move(before));
    const std::int64_t frames = outcome.buffer.frames();
    std::vector<std::int64_t> markers = state_.markerFrames;
    for (std::int64_t &marker : markers) marker = outcome.change.map(marker, frames);
    set(&AudioEditorState::markerFrames, std::move(markers), Change::markers);
    if (state_.loopPoints)
        set(&AudioEditorState::loopPoints, outcome.change.mapLoop(*state_.loopPoints, frames), Change::loopPoints);
    setSlices(outcome.change.mapRanges(state_.slices, frames));
    const auto place = outcome.place.value_or(EditOutcome::Place{state_.cursorFrame, state_.selection});
    install({std::move(outcome.buffer), std::move(outcome.peaks), place.cursor, place.selection, nextVersion_++,
             std::move(outcome.spectral), outcome.change});
    if (outcome.closesEq) setEqEnabled(false);
}

std::optional<FrameRange> AudioEditorModel::clampedLoop(std::optional<FrameRange> loop) const {
    const std::int64_t frames = state_.buffer.frames();
    if (!loop || frames == 0) return std::nullopt;
    const std::int64_t lo = std::clamp<std::int64_t>(loop->lo, 0, frames - 1);
    return FrameRange{lo, std::clamp<std::int64_t>(loop->hi, lo + 1, frames)};
}

void AudioEditorModel::commitLoop(std::optional<FrameRange> loop) {
    const Batch batch(*this);
    endMoves();
    const auto clamped = clampedLoop(loop);
    if (clamped == state_.loopPoints || clamped.has_value() != loop.has_value()) return;
    pushHistory(currentSnapshot(Keep::marksOnly));
    set(&AudioEditorState::loopPoints, clamped, Change::loopPoints);
    state_.contentVersion = nextVersion_++;
}

void AudioEditorModel::commitSlices(std::vector<FrameRange> slices) {
    if (slices == state_.slices) return;
    const Batch batch(*this);
    pushHistory(currentSnapshot(Keep::marksOnly));
    setSlices(std::move(slices));
    state_.contentVersion = nextVersion_++;
}

void AudioEditorModel::moveLoop(FrameRange loop) {
    const auto clamped = clampedLoop(loop);
    if (!clamped) return;
    if (!state_.pressLoop) state_.pressLoop = LoopPress{state_.loopPoints};
    set(&AudioEditorState::loopPoints, clamped, Change::loopPoints);
}

// The step is taken from the loop as it was, so that undoing goes back to the press.
void AudioEditorModel::endLoopMove() {
    if (!state_.pressLoop) return;
    const Batch batch(*this);
    const auto moved = state_.loopPoints;
    cancelLoopMove();
    commitLoop(moved);
}

void AudioEditorModel::cancelLoopMove() {
    if (!state_.pressLoop) return;
    set(&AudioEditorState::loopPoints, state_.pressLoop->old, Change::loopPoints);
    state_.pressLoop.reset();
}

void AudioEditorModel::endMoves() {
    endLoopMove();
    AudioEditorSlices::endSliceMove(*this);
}

std::optional<AudioEditorBuffer> AudioEditorModel::soundOfVersion(std::int64_t version) const {
    if (state_.contentVersion == version) return state_.buffer;
    const AudioEditorBuffer *sound = history_.soundOf(version, state_.buffer);
    return sound ? std::optional(*sound) : std::nullopt;
}

void AudioEditorModel::undo() {
    const Batch batch(*this);
    endMoves();
    restore(history_.undo([this](const Snapshot &taken) { return counterpart(taken); }));
}

void AudioEditorModel::redo() {
    const Batch batch(*this);
    endMoves();
    restore(history_.redo([this](const Snapshot &taken) { return counterpart(taken); }));
}

void AudioEditorModel::recover(Snapshot edited) {
    const Batch batch(*this);
    pushHistory(currentSnapshot(Keep::sound));
    edited.version = nextVersion_++;
    restore(std::move(edited));
}

// Where the peaks come back with a sound, those of the present one go with it.
Snapshot AudioEditorModel::counterpart(const Snapshot &taken) {
    Snapshot snapshot = currentSnapshot(taken.buffer ? Keep::sound : Keep::marksOnly);
    if (taken.peaks) snapshot.peaks = std::move(state_.peaks);
    return snapshot;
}

void AudioEditorModel::restore(std::optional<Snapshot> snapshot) {
    if (!snapshot) return;
    const Batch batch(*this);
    tell(Change::history);
    set(&AudioEditorState::markerFrames, std::move(snapshot->markers), Change::markers);
    set(&AudioEditorState::loopPoints, snapshot->loop, Change::loopPoints);
    setSlices(std::move(snapshot->slices));
    set(&AudioEditorState::loopFindNotice, std::nullopt, Change::editLoop);
    if (snapshot->buffer)
        install({std::move(*snapshot->buffer), std::move(snapshot->peaks), snapshot->cursor, snapshot->selection,
                 snapshot->version, std::move(snapshot->spectral)});
    else
        state_.contentVersion = snapshot->version;
}

}  // namespace kiv
