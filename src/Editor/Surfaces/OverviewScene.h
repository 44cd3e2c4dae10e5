#pragma once

#include <optional>
#include <string>

#include "Editor/Surfaces/OverviewGeometry.h"
#include "Editor/Surfaces/ViewMarks.h"

namespace kiv {

// What is to be seen in the overview beside the sound itself. Marks are in columns of the strip.
struct OverviewScene {
    OverviewGeometry geometry;
    std::int64_t generation = 0, powersRevision = 0;
    ViewMarks marks;  // cursor and playheads: only what is drawn, a playhead in place of the cursor

    bool showsCursor() const { return marks.playheads.empty(); }
    friend bool operator==(const OverviewScene &, const OverviewScene &) = default;
};

OverviewScene overviewScene(const AudioEditorState &state, ViewSize size, std::int64_t powersRevision);
// In columns of the strip.
Damage overviewDamage(const OverviewScene &before, const OverviewScene &now);

// The part in view in words, for a screen reader: "In view 0.000 s – 7.385 s".
std::string spokenView(const AudioEditorState &state);

}  // namespace kiv
