#pragma once

#include <array>
#include <string>

#include "Editor/AudioEditorLoopPanel/AudioEditorJoint.h"
#include "Editor/AudioEditorModel/AudioEditorModel.h"

// What is done in Edit Loop. Each operation does nothing where it cannot apply.
namespace kiv::AudioEditorLoops {

inline constexpr std::array loopCrossfadeTableMs{0,  1,   2,   3,   5,   7,   10,  15,  20,   30,   40,   50,
                                                 70, 100, 150, 200, 300, 400, 500, 700, 1000, 1500, 2000, 3000};
inline constexpr int maxLoopCrossfadeStep = int(loopCrossfadeTableMs.size()) - 1;

enum class LoopPoint { start, end };

// The loop that playback jumps in; clamped to the sound. An undoable step.
void setLoop(AudioEditorModel &model, std::int64_t start, std::int64_t end);
// Moves a loop point by frames or, with the zero-crossing setting on, by zero crossings.
void nudgeLoop(AudioEditorModel &model, LoopPoint point, int by);

// Enters Edit Loop, searches the whole sound for loops and takes the best; again: the next candidate.
void findLoop(AudioEditorModel &model);
// To the candidate `by` further on, round and round; from a loop that is none of them, to the first or the last.
void stepLoopCandidate(AudioEditorModel &model, int by);

// Those that were found for the present sound and setting.
std::vector<AudioEditorLoopFinder::Proposal> loopCandidates(const AudioEditorState &state);
// Which of them the loop is.
std::optional<std::size_t> loopCandidateIndex(const AudioEditorState &state);
// What the panel says of the search.
std::string loopFindStatus(const AudioEditorState &state);

void setCanStoreLoop(AudioEditorModel &model, bool can);
void setLoopZeroCrossing(AudioEditorModel &model, bool on);
void setLoopCrossfadeStep(AudioEditorModel &model, int step);  // clamped to the table
void setLoopCrossfadeEqualPower(AudioEditorModel &model, bool on);
void setJointHalfSeconds(AudioEditorModel &model, double seconds);  // clamped to 1 ms … 1 s

// Frames of the crossfade: as the table says, but neither longer than the loop nor than what stands before it.
std::int64_t loopCrossfadeFrames(const AudioEditorState &state);
bool loopCrossfadeLimited(const AudioEditorState &state);
LoopCrossfade loopCrossfade(const AudioEditorState &state);  // of no frames without a loop
// What the joint view shows; nothing without a loop.
std::optional<AudioEditorJoint> joint(const AudioEditorState &state);
// Writes the crossfade into the sound, as one undoable step, and turns its preview off.
void applyLoopCrossfade(AudioEditorModel &model);
// Asks the owner to play the joint.
void playLoopJoint(AudioEditorModel &model);

}  // namespace kiv::AudioEditorLoops
