#pragma once

#include <vector>

#include "Editor/AudioEditorModel/AudioEditorModel.h"

namespace kiv {

// For tests that drive the program from outside: says on standard output what a document's views show, a line of JSON whenever
// it changes. Positions are frames; "view" is the first frame in view and how many are. A model may go first.
class StateReport {
public:
    void watch(AudioEditorModel &model);

private:
    std::vector<Subscription> changes_;
};

}  // namespace kiv
