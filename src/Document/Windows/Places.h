#pragma once

#include <string>
#include <vector>

namespace kiv {

// A folder that a panel offers to go to.
struct Place {
    std::string label;
    std::string path;
};

std::string homeFolder();
// Both may block while a disk does not answer; any thread. Those of the user's own folders that are there:
std::vector<Place> userPlaces();
// Media that are plugged in and can be written.
std::vector<Place> mountedPlaces();

}  // namespace kiv
