#include "App/LaunchOptions.h"

#include <QUrl>

#include "Document/Windows/AudioDrag.h"

namespace kiv {

namespace {

std::string pathOf(const std::string &argument) {
    if (!argument.starts_with("file:")) return argument;
    const std::string path = localPath(QUrl::fromEncoded(QByteArray::fromStdString(argument)));
    return path.empty() ? argument : path;
}

}  // namespace

LaunchOptions parseArguments(const std::vector<std::string> &arguments) {
    LaunchOptions options;
    bool onlyFiles = false;
    for (const std::string &argument : arguments) {
        if (onlyFiles || !argument.starts_with('-') || argument == "-")
            options.files.push_back(onlyFiles ? argument : pathOf(argument));
        else if (argument == "--")
            onlyFiles = true;
        else if (argument == "--help" || argument == "-h")
            options.showsHelp = true;
        else if (argument == "--version")
            options.showsVersion = true;
        else if (argument == "--paint-report")
            options.reportsPainting = true;
        else if (argument == "--state-report")
            options.reportsState = true;
        else if (options.unknown.empty())
            options.unknown = argument;
    }
    return options;
}

const char *helpText() {
    return "Usage: kiv-audio-editor [FILE …]\n"
           "Opens each sound file in a window of its own; without one, a window to drop files on.\n"
           "  --help     this text\n"
           "  --version  the version\n"
           "The same editor for scripts: kiv --help\n";
}

}  // namespace kiv
