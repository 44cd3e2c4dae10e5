#include <QCoreApplication>
#include <QSocketNotifier>
#include <iostream>
#include <string>

#include "Platform/Qt/FakePortal.h"

// A desktop portal on the session bus. Every line that it reads is the colour scheme it has from then on: 1 dark, 2 light; it
// answers with the same line once it has told everybody, and ends with its input.
int main(int argc, char **argv) {
    QCoreApplication application(argc, argv);
    kiv::FakePortal portal(QDBusConnection::sessionBus());
    QSocketNotifier input(0, QSocketNotifier::Read);
    QObject::connect(&input, &QSocketNotifier::activated, &application, [&] {
        std::string line;
        if (!std::getline(std::cin, line)) return QCoreApplication::quit();
        portal.set("org.freedesktop.appearance", "color-scheme", uint(std::stoul(line)));
        portal.tell();
        std::cout << line << std::endl;
    });
    return QCoreApplication::exec();
}
