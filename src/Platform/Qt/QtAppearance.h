#pragma once

#include <QDBusConnection>
#include <QTimer>
#include <optional>

#include "Platform/Appearance.h"

class QDBusMessage;
class QDBusPendingCallWatcher;

namespace kiv {

// What the desktop portal says about dark windows, motion and fonts, now and after changes. The portal is asked without
// waiting; until it answers, and where it has no opinion or is not there, the application's palette tells dark from light as it
// was when this object was made. Make it before the application sets a palette of its own.
class QtAppearance : public Appearance {
public:
    // The bus that the portal is on; one that is not connected means there is none.
    explicit QtAppearance(const QDBusConnection &bus);
    // The session's bus, without starting one where there is none.
    static QDBusConnection sessionBus();

    bool isDark() const override { return portal_.dark.value_or(paletteIsDark_); }
    bool reducesMotion() const override { return portal_.reducesMotion; }
    std::optional<DesktopFont> font() const override { return portal_.font; }

private:
    struct Wishes {
        std::optional<bool> dark;
        bool reducesMotion = false;
        std::optional<DesktopFont> font;
        friend bool operator==(const Wishes &, const Wishes &) = default;
    };
    static Wishes wishesIn(const QDBusMessage &reply);

    void ask();
    void take(const Wishes &wishes);

    QDBusConnection bus_;
    bool paletteIsDark_;
    Wishes portal_;
    // Started by the portal's signal: the bus wants a slot by name, and this one is there. Several changes are one question.
    QTimer askSoon_;
};

}  // namespace kiv
