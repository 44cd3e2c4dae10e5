#include "Platform/Qt/QtAppearance.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QFileInfo>
#include <QGuiApplication>
#include <QMap>
#include <QPalette>

namespace kiv {
namespace {

const QString service = QStringLiteral("org.freedesktop.portal.Desktop");
const QString path = QStringLiteral("/org/freedesktop/portal/desktop");
const QString settingsInterface = QStringLiteral("org.freedesktop.portal.Settings");

// Where the desktops keep these wishes: the common place first, then their own.
const QString common = QStringLiteral("org.freedesktop.appearance");
const QString gnome = QStringLiteral("org.gnome.desktop.interface");
const QString kde = QStringLiteral("org.kde.kdeglobals.KDE");

const QString kdeGeneral = QStringLiteral("org.kde.kdeglobals.General");

using Namespaces = QMap<QString, QVariantMap>;

// "Cantarell 11", "Noto Sans,10,-1,5,50,0,0,0,0,0".
std::optional<DesktopFont> parsedFont(const QString &text, QChar between) {
    const qsizetype at = between == ',' ? text.indexOf(',') : text.lastIndexOf(between);
    const double points = text.mid(at + 1).section(between, 0, 0).toDouble();
    if (at <= 0 || points <= 0) return std::nullopt;
    return DesktopFont{text.left(at).toStdString(), points};
}

// On X11 the toolkit has made the whole window larger already.
double textScale(const QVariantMap &settings) {
    const double factor = settings.value(QStringLiteral("text-scaling-factor"), 1.0).toDouble();
    return QGuiApplication::platformName() == QStringLiteral("xcb") || factor <= 0 ? 1 : factor;
}

std::optional<DesktopFont> fontIn(const Namespaces &settings) {
    if (auto font = parsedFont(settings.value(gnome).value(QStringLiteral("font-name")).toString(), ' ')) {
        font->points *= textScale(settings.value(gnome));
        return font;
    }
    return parsedFont(settings.value(kdeGeneral).value(QStringLiteral("font")).toString(), ',');
}

bool isDark(const QPalette &palette) {
    return palette.color(QPalette::Window).lightness() < palette.color(QPalette::WindowText).lightness();
}

}  // namespace

QDBusConnection QtAppearance::sessionBus() {
    // Without a bus to be found, asking for one would try to start it, which takes long.
    const bool isThere = qEnvironmentVariableIsSet("DBUS_SESSION_BUS_ADDRESS") ||
                         QFileInfo::exists(qEnvironmentVariable("XDG_RUNTIME_DIR") + QStringLiteral("/bus"));
    return isThere ? QDBusConnection::sessionBus() : QDBusConnection(QStringLiteral("none"));
}

QtAppearance::QtAppearance(const QDBusConnection &bus) : bus_(bus), paletteIsDark_(kiv::isDark(QGuiApplication::palette())) {
    if (!bus_.isConnected()) return;
    askSoon_.setSingleShot(true);
    askSoon_.setInterval(20);
    QObject::connect(&askSoon_, &QTimer::timeout, &askSoon_, [this] { ask(); });
    // From whomever: naming the service would wait for the bus to say who that is. A wrong signal only makes us ask.
    bus_.connect(QString(), path, settingsInterface, QStringLiteral("SettingChanged"), &askSoon_, SLOT(start()));
    ask();
}

void QtAppearance::ask() {
    auto question = QDBusMessage::createMethodCall(service, path, settingsInterface, QStringLiteral("ReadAll"));
    question << QStringList{common, gnome, kde, kdeGeneral};
    auto *watcher = new QDBusPendingCallWatcher(bus_.asyncCall(question), &askSoon_);
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, &askSoon_, [this](QDBusPendingCallWatcher *answered) {
        answered->deleteLater();
        if (!answered->isError()) take(wishesIn(answered->reply()));
    });
}

QtAppearance::Wishes QtAppearance::wishesIn(const QDBusMessage &reply) {
    Wishes wishes;
    if (reply.signature() != QStringLiteral("a{sa{sv}}")) return wishes;
    const auto settings = qdbus_cast<Namespaces>(reply.arguments().value(0));
    const uint scheme = settings.value(common).value(QStringLiteral("color-scheme")).toUInt();  // 1 dark, 2 light
    if (scheme == 1 || scheme == 2) wishes.dark = scheme == 1;
    const auto animations = settings.value(gnome).value(QStringLiteral("enable-animations"));
    const auto duration = settings.value(kde).value(QStringLiteral("AnimationDurationFactor"), QStringLiteral("1"));
    wishes.reducesMotion = settings.value(common).value(QStringLiteral("reduced-motion")).toUInt() == 1 ||
                           (animations.isValid() && !animations.toBool()) || duration.toString() == QStringLiteral("0");
    wishes.font = fontIn(settings);
    return wishes;
}

void QtAppearance::take(const Wishes &wishes) {
    const bool same =
        isDark() == wishes.dark.value_or(paletteIsDark_) && reducesMotion() == wishes.reducesMotion && font() == wishes.font;
    portal_ = wishes;
    if (!same) changed.notify(*this);
}

}  // namespace kiv
