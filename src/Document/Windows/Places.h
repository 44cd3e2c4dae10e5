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
// The home and those of the user's own folders that are there.
std::vector<Place> userPlaces();
// Media that are plugged in. May block while one of them does not answer; any thread.
std::vector<Place> mountedPlaces();

}  // namespace kiv
