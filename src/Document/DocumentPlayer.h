#pragma once

#include <vector>

#include "Audio/Playback/PlaybackEngine.h"
#include "Editor/AudioEditorModel/AudioEditorModel.h"
#include "Editor/AudioEditorModel/EqModel.h"
#include "Editor/Surfaces/PlayheadFollower.h"

namespace kiv {

// A document's part in the playback: plays the model's sound through its equalizer, keeps what is heard up with the edits, and
// tells the model of the playhead, the peaks and the end. Main thread only. Made after both models and gone before them.
class DocumentPlayer : public PlaybackEngine::Client {
public:
    DocumentPlayer(PlaybackEngine *playback, AudioEditorModel &model, EqModel &eq);  // without playback nothing is played
    DocumentPlayer(const DocumentPlayer &) = delete;
    DocumentPlayer &operator=(const DocumentPlayer &) = delete;
    ~DocumentPlayer() override;

    bool canPlay() const;
    void togglePlay();  // the selection, or from the cursor (at the sound's end: from its start); stops what plays
    // Stops what plays, and plays this, through the equalizer as it is set here.
    void play(PlaybackEngine::Request request);
    void playSlice(std::size_t index);  // once, with the slices' fades
    void playLoopJoint();               // the loop, over and over, from a second before its end, with the crossfade that is set
    void stop();
    bool isPlaying() const;
    // Place the cursor there and show it. While playing, playback goes on from the start, and stops at the end.
    void goToStart();
    void goToEnd();

    void playbackPeak(float level) override;
    void playbackMoved(double frame) override;
    void playbackStopped() override;

private:
    void followLoop(const Changes &changes);
    EqTargets eqTargets() const { return {eq_.settings(), model_.state().eqEnabled}; }
    void updateEq();
    void feedAnalyzer();

    PlaybackEngine *playback_;
    AudioEditorModel &model_;
    EqModel &eq_;
    PlayheadFollower follower_{model_};
    bool jointPlaying_ = false;
    std::vector<float> eqInput_, eqOutput_;  // what the analyzer is fed with
    bool analyzerRests_ = false;             // at this tick
    Subscription loopChanges_, eqChanges_;
};

}  // namespace kiv
