// Paints every control in every state in both themes at scale 1 and 2, to be looked at, and prints the contrasts of all texts
// and marks. Takes the folder for the pictures; without one only the contrasts are printed. Ends with 1 when one is too low.
#include <QApplication>
#include <QDir>
#include <cstdio>

#include "ComponentSheet.h"
#include "Contrast.h"

int main(int argc, char **argv) {
    using namespace kiv;
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    int below = 0;
    for (const auto &[name, theme] :
         {std::pair{"dark", AudioEditorTheme::dark()}, std::pair{"light", AudioEditorTheme::light()}}) {
        below += printContrast(name, theme);
        if (argc < 2) continue;
        ViewStyle style(theme);
        style.setTranslucency(true);
        for (const int scale : {1, 2}) {
            const QString path = QDir(argv[1]).filePath(QString("components-%1-%2.png").arg(name).arg(scale));
            if (!componentSheet(style, scale).save(path))
                return std::fprintf(stderr, "%s cannot be written\n", qPrintable(path)), 1;
        }
    }
    return below > 0;
}
