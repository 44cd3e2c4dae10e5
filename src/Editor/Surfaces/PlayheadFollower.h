#pragma once

#include "Editor/AudioEditorModel/AudioEditorModel.h"

namespace kiv {

// Turns the view when the playhead leaves it, while the document follows its playhead. Where somebody else moves the view off
// the playhead, or drags something, following waits until the playhead is in view again.
class PlayheadFollower {
public:
    explicit PlayheadFollower(AudioEditorModel &model);

private:
    void changed(const Changes &changes);
    bool isHeadInView() const;

    AudioEditorModel &model_;
    bool isSuspended_ = false;
    bool isTurning_ = false;
    Subscription modelChanges_;
};

}  // namespace kiv
