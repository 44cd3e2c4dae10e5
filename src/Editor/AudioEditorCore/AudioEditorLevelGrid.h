#pragma once

#include <string>
#include <vector>

// The level ruler beside a waveform lane.
namespace kiv::AudioEditorLevelGrid {

struct Mark {
    double db = 0;      // −∞ at the centre
    double offset = 0;  // pixels from the lane's centre line; the same above and below
    friend bool operator==(const Mark &, const Mark &) = default;
};

// The marks of a lane, loudest first. `fullScale` is how many pixels lie between the centre and full scale at a vertical zoom
// of 0 dB; a zoom below that brings full scale nearer the centre, one above lets the loudest levels fall outside, and those
// have no mark. The centre, and 0 dB while it is inside, are always marked; of −6, −12, −18, −24, −36, −48 and −3, in this
// order, each that lies at least 18 pixels from every mark before it and 26 from the centre.
std::vector<Mark> marks(double fullScale, double verticalZoomDb);

// "0", "−6", "−∞".
std::string label(double db);

}  // namespace kiv::AudioEditorLevelGrid
