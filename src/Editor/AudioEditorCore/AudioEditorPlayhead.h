#pragma once

#include <cstdint>

namespace kiv {

// One moving play position. Heads are matched by id between updates; the frame is fractional, for playback may run at a rate
// other than the sound's.
struct AudioEditorPlayhead {
    std::int64_t id = 0;
    double frame = 0;
    friend bool operator==(const AudioEditorPlayhead &, const AudioEditorPlayhead &) = default;
};

}  // namespace kiv
