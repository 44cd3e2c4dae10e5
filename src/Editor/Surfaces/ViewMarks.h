#pragma once

#include <optional>
#include <vector>

#include "Editor/Surfaces/TimeAxis.h"

// The marks that stand on the time axis of overview, ruler and waveform alike, in device-pixel columns of the view. Marks that
// lie outside keep their place there; one on the view's right end stands in the last column, where it can be seen.
namespace kiv {

struct ViewMarks {
    std::vector<int> markers;
    std::optional<PixelSpan> loop;       // the columns of its start and of its end
    std::optional<PixelSpan> selection;  // the columns that it covers, at least one
    int cursor = 0;
    std::vector<int> playheads;  // the column boundary that each is nearest to

    friend bool operator==(const ViewMarks &, const ViewMarks &) = default;
};

ViewMarks viewMarks(const AudioEditorState &state, const TimeAxis &axis, int columns);

// The columns of a line `width` wide at a mark, `before` of them left of it. At the view's ends it moves in, lest a part of it
// be cut off.
PixelSpan lineAt(int mark, int width, int columns, int before = 0);

// What has to be painted anew: columns, or all.
struct Damage {
    bool everything = false;
    std::vector<PixelSpan> strips;

    bool isNone() const { return !everything && strips.empty(); }
    void add(int column, int reach) { strips.push_back({column - reach, column + reach}); }
};

// The strips of the marks that differ, each reaching `reach` columns to both sides of its mark.
void addMarksDamage(Damage &damage, const ViewMarks &before, const ViewMarks &now, int reach);

}  // namespace kiv
