#include "Platform/Qt/QtAppearance.h"

#include <gtest/gtest.h>

#include <QGuiApplication>
#include <QPalette>
#include <QProcess>

#include "Platform/Qt/FakePortal.h"
#include "Platform/Qt/QtWorld.h"

namespace kiv {
namespace {

// A bus of the test's own.
class Bus {
public:
    Bus() {
        daemon_.start("dbus-daemon", {"--session", "--nofork", "--print-address"});
        daemon_.waitForReadyRead();
        address_ = QString::fromUtf8(daemon_.readLine()).trimmed();
    }
    ~Bus() {
        daemon_.kill();
        daemon_.waitForFinished();
    }
    // Names of connections are one for the whole process, and buses are not.
    QDBusConnection connect(const QString &name) const { return QDBusConnection::connectToBus(address_, name + address_); }

private:
    QProcess daemon_;
    QString address_;
};

class QtAppearanceTest : public testing::Test {
protected:
    static void setPalette(Qt::GlobalColor window, Qt::GlobalColor text) {
        QPalette palette;
        palette.setColor(QPalette::Window, window);
        palette.setColor(QPalette::WindowText, text);
        QGuiApplication::setPalette(palette);
    }

    Bus bus;
};

TEST_F(QtAppearanceTest, goes_by_the_palette_where_no_portal_answers) {
    const std::pair<QDBusConnection, const char *> buses[] = {{bus.connect("alone"), "a bus without a portal"},
                                                              {QDBusConnection("none"), "no bus"}};
    for (const auto &[connection, which] : buses) {
        setPalette(Qt::black, Qt::white);
        const QtAppearance dark(connection);
        setPalette(Qt::white, Qt::black);
        const QtAppearance light(connection);
        waitUntil([] { return false; }, 50);
        EXPECT_TRUE(dark.isDark()) << which;
        EXPECT_FALSE(light.isDark()) << which;
        EXPECT_FALSE(light.reducesMotion()) << which;
    }
}

TEST_F(QtAppearanceTest, is_told_what_the_portal_says_and_each_change) {
    FakePortal portal(bus.connect("portal"));
    portal.set("org.freedesktop.appearance", "color-scheme", 1u);
    setPalette(Qt::white, Qt::black);
    QtAppearance appearance(bus.connect("program"));
    EXPECT_FALSE(appearance.isDark()) << "asking waits for nothing";
    int told = 0;
    const auto telling = appearance.changed.add([&](const Appearance &) { ++told; });
    ASSERT_TRUE(waitUntil([&] { return told == 1; }));
    EXPECT_TRUE(appearance.isDark());

    portal.set("org.freedesktop.appearance", "color-scheme", 2u);
    portal.tell();
    portal.tell();
    ASSERT_TRUE(waitUntil([&] { return told == 2; }));
    EXPECT_FALSE(appearance.isDark());
    EXPECT_EQ(portal.asked, 2) << "changes together are one question";

    portal.set("org.freedesktop.appearance", "contrast", 1u);
    portal.tell();
    ASSERT_TRUE(waitUntil([&] { return portal.asked == 3; }));
    waitUntil([] { return false; }, 50);
    EXPECT_EQ(told, 2) << "nothing that matters has changed";
}

TEST_F(QtAppearanceTest, reads_the_wishes_of_each_desktop) {
    struct Row {
        const char *space, *key;
        QVariant value;
        bool dark, reduces;
    };
    const Row rows[] = {
        {"org.freedesktop.appearance", "color-scheme", 0u, true, false},  // no opinion: the palette's
        {"org.freedesktop.appearance", "color-scheme", 2u, false, false},
        {"org.freedesktop.appearance", "color-scheme", 7u, true, false},
        {"org.freedesktop.appearance", "reduced-motion", 1u, true, true},
        {"org.gnome.desktop.interface", "enable-animations", false, true, true},
        {"org.gnome.desktop.interface", "enable-animations", true, true, false},
        {"org.kde.kdeglobals.KDE", "AnimationDurationFactor", "0", true, true},
        {"org.kde.kdeglobals.KDE", "AnimationDurationFactor", "0.5", true, false},
    };
    FakePortal portal(bus.connect("portal"));
    const auto program = bus.connect("program");
    setPalette(Qt::black, Qt::white);
    for (const Row &row : rows) {
        portal.settings = {{row.space, {{row.key, row.value}}}};
        portal.asked = 0;
        const QtAppearance appearance(program);
        waitUntil([&] { return portal.asked == 1; });
        waitUntil([&] { return appearance.isDark() == row.dark && appearance.reducesMotion() == row.reduces; }, 1000);
        waitUntil([] { return false; }, 30);
        EXPECT_EQ(appearance.isDark(), row.dark) << row.key << " " << row.value.toString().toStdString();
        EXPECT_EQ(appearance.reducesMotion(), row.reduces) << row.key << " " << row.value.toString().toStdString();
    }
}

TEST_F(QtAppearanceTest, reads_the_font_of_each_desktop) {
    struct Row {
        const char *space, *key, *value;
        std::optional<DesktopFont> font;
    };
    const Row rows[] = {
        {"org.gnome.desktop.interface", "font-name", "Cantarell 11", DesktopFont{"Cantarell", 11}},
        {"org.gnome.desktop.interface", "font-name", "Noto Sans Medium 12.5", DesktopFont{"Noto Sans Medium", 12.5}},
        {"org.gnome.desktop.interface", "font-name", "11", std::nullopt},
        {"org.kde.kdeglobals.General", "font", "Noto Sans,10,-1,5,50,0,0,0,0,0", DesktopFont{"Noto Sans", 10}},
        {"org.kde.kdeglobals.General", "font", "Noto Sans", std::nullopt},
    };
    FakePortal portal(bus.connect("portal"));
    const auto program = bus.connect("program");
    for (const Row &row : rows) {
        portal.settings = {{row.space, {{row.key, row.value}}}, {"org.freedesktop.appearance", {{"reduced-motion", 1u}}}};
        const QtAppearance appearance(program);
        ASSERT_TRUE(waitUntil([&] { return appearance.reducesMotion(); })) << row.value;
        EXPECT_EQ(appearance.font(), row.font) << row.value;
    }
}

}  // namespace
}  // namespace kiv
