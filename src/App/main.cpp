#include <QApplication>
#include <cstdio>
#include <cstdlib>

#include "App/Application.h"
#include "Editor/Views/KivStyle.h"

int main(int argc, char **argv) {
    const double millisecondsAtMain = kiv::millisecondsSinceStart();
    const kiv::LaunchOptions options = kiv::parseArguments({argv + 1, argv + argc});
    if (!options.unknown.empty())
        return std::fprintf(stderr, "There is no option %s\n%s", options.unknown.c_str(), kiv::helpText()), 2;
    if (options.showsHelp) return std::fputs(kiv::helpText(), stdout), 0;
    if (options.showsVersion) return std::puts("Kiv Audio Editor " KIV_VERSION), 0;
    // Before the application object, which would else load the desktop's style plugin.
    QApplication::setStyle(new kiv::KivStyle);
    QApplication application(argc, argv);
    QApplication::setApplicationVersion(KIV_VERSION);
    QApplication::setDesktopFileName("kiv-audio-editor");
    kiv::Application editor(options, millisecondsAtMain);
    const int code = QApplication::exec();
    if (!editor.end()) std::fflush(nullptr), std::_Exit(code);
    return code;
}
