#pragma once

#include <QApplication>
#include <QFont>

namespace kiv {

// The one application object that widgets need, made at the first call, with a font that is the same everywhere.
inline QApplication &testApplication() {
    static int count = 1;
    static char name[] = "test";
    static char *arguments[] = {name, nullptr};
    static QApplication *application = [] {
        auto *existing = qobject_cast<QApplication *>(QCoreApplication::instance());
        auto *made = existing ? existing : new QApplication(count, arguments);
        QApplication::setFont(QFont("Inter", 10));
        return made;
    }();
    return *application;
}

}  // namespace kiv
