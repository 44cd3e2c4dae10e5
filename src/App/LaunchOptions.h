#pragma once

#include <string>
#include <vector>

namespace kiv {

// What the program was called with.
struct LaunchOptions {
    std::vector<std::string> files;
    bool showsHelp = false, showsVersion = false;
    bool reportsPainting = false;  // --paint-report, for measuring
    bool reportsState = false;     // --state-report, for tests from outside
    std::string unknown;           // an option that there is not
};

// `arguments` without the program's name. "--" ends the options. A file: URL counts as the path it means.
LaunchOptions parseArguments(const std::vector<std::string> &arguments);
const char *helpText();

}  // namespace kiv
