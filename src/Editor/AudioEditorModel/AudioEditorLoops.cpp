#include "Editor/AudioEditorModel/AudioEditorLoops.h"

#include <algorithm>
#include <cmath>

namespace kiv::AudioEditorLoops {
namespace {

using Proposals = std::vector<AudioEditorLoopFinder::Proposal>;

constexpr double minJointHalfSeconds = 0.001, maxJointHalfSeconds = 1;
constexpr const char *nothingFound = "No loop found: the sound is too short or too quiet";

// The model's loop state with something in it changed.
template <class Change>
void update(AudioEditorModel &model, Change change) {
    AudioEditorLoopState next = model.state();
    change(next);
    model.setLoopState(std::move(next));
}

void setNotice(AudioEditorModel &model, std::optional<std::string> notice) {
    update(model, [&](AudioEditorLoopState &next) { next.loopFindNotice = std::move(notice); });
}

std::int64_t crossfadeTableFrames(const AudioEditorState &state) {
    const int step = std::clamp(state.loopCrossfadeStep, 0, maxLoopCrossfadeStep);
    return loopCrossfadeTableMs[std::size_t(step)] * state.buffer.sampleRate() / 1000;
}

// What a search found is taken if it is still what was asked for.
void takeFound(AudioEditorModel &model, LoopFound found) {
    const AudioEditorModel::Batch batch(model);
    const AudioEditorState &state = model.state();
    const bool isWanted =
        state.editLoopEnabled && state.generation == found.generation && state.loopZeroCrossing == found.zeroCrossing;
    const bool isEmpty = found.proposals.empty();
    const FrameRange best = isEmpty ? FrameRange{} : found.proposals[0].loop;
    update(model, [&](AudioEditorLoopState &next) {
        next.loopAnalyzing = false;
        if (!isWanted) return;
        next.loopFound = std::move(found);
        if (isEmpty) next.loopFindNotice = nothingFound;
    });
    if (isWanted && !isEmpty) setLoop(model, best.lo, best.hi);
}

void search(AudioEditorModel &model) {
    const AudioEditorState &state = model.state();
    const auto found = std::make_shared<LoopFound>(LoopFound{{}, state.generation, state.loopZeroCrossing});
    const auto notice = state.loopFindNotice;
    const auto points = state.loopZeroCrossing ? AudioEditorLoopFinder::LoopPoints::atRisingZeroCrossings
                                               : AudioEditorLoopFinder::LoopPoints::anywhere;
    update(model, [](AudioEditorLoopState &next) {
        next.loopAnalyzing = true;
        next.loopFindNotice.reset();
    });
    model.analyse({[found, points, buffer = state.buffer](Progress &progress) {
                       found->proposals = AudioEditorLoopFinder::analyze(buffer, points, &progress);
                   },
                   [found, notice, &model](std::exception_ptr failure) {
                       if (!failure) return takeFound(model, std::move(*found));
                       update(model, [&](AudioEditorLoopState &next) {
                           next.loopAnalyzing = false;
                           next.loopFindNotice = notice;
                       });
                   }});
}

std::int64_t nudged(const AudioEditorState &state, std::int64_t frame, int by) {
    if (!state.loopZeroCrossing) return frame + by;
    return AudioEditorLoopFinder::zeroCrossing(state.buffer, frame, by, std::abs(by)).value_or(frame);
}

}  // namespace

void setLoop(AudioEditorModel &model, std::int64_t start, std::int64_t end) { model.commitLoop(FrameRange{start, end}); }

void nudgeLoop(AudioEditorModel &model, LoopPoint point, int by) {
    const AudioEditorState &state = model.state();
    if (!state.loopPoints || by == 0) return;
    const AudioEditorModel::Batch batch(model);
    setNotice(model, std::nullopt);
    FrameRange loop = *state.loopPoints;
    if (point == LoopPoint::start)
        loop.lo = std::clamp<std::int64_t>(nudged(state, loop.lo, by), 0, loop.hi - 1);
    else
        loop.hi = std::clamp(nudged(state, loop.hi, by), loop.lo + 1, state.buffer.frames());
    setLoop(model, loop.lo, loop.hi);
}

void findLoop(AudioEditorModel &model) {
    if (model.state().loopAnalyzing) return;
    const AudioEditorModel::Batch batch(model);
    model.setEditLoopEnabled(true);
    loopCandidates(model.state()).empty() ? search(model) : stepLoopCandidate(model, 1);
}

void stepLoopCandidate(AudioEditorModel &model, int by) {
    const AudioEditorState &state = model.state();
    const Proposals candidates = loopCandidates(state);
    if (!state.editLoopEnabled || candidates.empty()) return;
    const auto count = std::int64_t(candidates.size());
    const auto shown = loopCandidateIndex(state);
    const std::int64_t next = shown ? ((std::int64_t(*shown) + by) % count + count) % count : by < 1 ? count - 1 : 0;
    const FrameRange loop = candidates[std::size_t(next)].loop;
    setLoop(model, loop.lo, loop.hi);
}

Proposals loopCandidates(const AudioEditorState &state) {
    const auto &found = state.loopFound;
    const bool applies = found && found->generation == state.generation && found->zeroCrossing == state.loopZeroCrossing;
    return applies ? found->proposals : Proposals();
}

std::optional<std::size_t> loopCandidateIndex(const AudioEditorState &state) {
    const Proposals candidates = loopCandidates(state);
    const auto isShown = [&](const AudioEditorLoopFinder::Proposal &proposal) { return proposal.loop == state.loopPoints; };
    const auto found = std::ranges::find_if(candidates, isShown);
    return found == candidates.end() ? std::nullopt : std::optional(std::size_t(found - candidates.begin()));
}

std::string loopFindStatus(const AudioEditorState &state) {
    if (state.loopAnalyzing) return "Analyzing the sound, please wait…";
    const Proposals candidates = loopCandidates(state);
    const std::string count = std::to_string(candidates.size());
    if (const auto shown = loopCandidateIndex(state))
        return "Candidate " + std::to_string(*shown + 1) + " of " + count + " · match " +
               std::to_string(std::llround(candidates[*shown].match * 100)) + " %";
    if (!candidates.empty()) return count + (candidates.size() == 1 ? " loop candidate" : " loop candidates");
    return state.loopFindNotice.value_or("");
}

void setCanStoreLoop(AudioEditorModel &model, bool can) {
    update(model, [&](AudioEditorLoopState &next) { next.canStoreLoop = can; });
}

void setLoopZeroCrossing(AudioEditorModel &model, bool on) {
    update(model, [&](AudioEditorLoopState &next) { next.loopZeroCrossing = on; });
}

void setLoopCrossfadeStep(AudioEditorModel &model, int step) {
    update(model, [&](AudioEditorLoopState &next) { next.loopCrossfadeStep = std::clamp(step, 0, maxLoopCrossfadeStep); });
}

void setLoopCrossfadeEqualPower(AudioEditorModel &model, bool on) {
    update(model, [&](AudioEditorLoopState &next) { next.loopCrossfadeEqualPower = on; });
}

void setJointHalfSeconds(AudioEditorModel &model, double seconds) {
    if (std::isnan(seconds)) return;
    const double limited = std::clamp(seconds, minJointHalfSeconds, maxJointHalfSeconds);
    update(model, [&](AudioEditorLoopState &next) { next.jointHalfSeconds = limited; });
}

std::int64_t loopCrossfadeFrames(const AudioEditorState &state) {
    if (!state.loopPoints) return 0;
    const FrameRange loop = *state.loopPoints;
    return std::max<std::int64_t>(std::min({loop.count(), loop.lo, crossfadeTableFrames(state)}), 0);
}

bool loopCrossfadeLimited(const AudioEditorState &state) {
    return state.loopCrossfadeStep > 0 && loopCrossfadeFrames(state) < crossfadeTableFrames(state);
}

LoopCrossfade loopCrossfade(const AudioEditorState &state) {
    const auto curve = state.loopCrossfadeEqualPower ? LoopCrossfade::Curve::equalPower : LoopCrossfade::Curve::equalGain;
    return {state.loopPoints.value_or(FrameRange{}), loopCrossfadeFrames(state), curve};
}

std::optional<AudioEditorJoint> joint(const AudioEditorState &state) {
    if (!state.loopPoints) return std::nullopt;
    const std::int64_t half = jointHalf(state.jointHalfSeconds, state.buffer.sampleRate());
    return makeJoint(state.buffer, loopCrossfade(state), half, state.generation);
}

void applyLoopCrossfade(AudioEditorModel &model) {
    const AudioEditorState &state = model.state();
    const LoopCrossfade crossfade = loopCrossfade(state);
    if (!state.editLoopEnabled || crossfade.frames < 1 || state.buffer.frames() < crossfade.loop.hi) return;
    const AudioEditorModel::Batch batch(model);
    model.commit(crossfaded(state.buffer, crossfade), state.cursorFrame, state.selection, AudioEditorLengthChange::none());
    setLoopCrossfadeStep(model, 0);
}

void playLoopJoint(AudioEditorModel &model) {
    if (model.state().loopPoints && model.onPlayJoint) model.onPlayJoint();
}

}  // namespace kiv::AudioEditorLoops
