#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusVariant>
#include <QDBusVirtualObject>
#include <QMap>

namespace kiv {

// What a desktop runs: answers which settings there are and tells of changes.
class FakePortal : public QDBusVirtualObject {
public:
    explicit FakePortal(const QDBusConnection &bus) : bus_(bus) {
        qDBusRegisterMetaType<QMap<QString, QVariantMap>>();
        bus_.registerVirtualObject("/org/freedesktop/portal/desktop", this);
        bus_.registerService("org.freedesktop.portal.Desktop");
    }
    ~FakePortal() override { bus_.unregisterObject("/org/freedesktop/portal/desktop"); }

    void set(const QString &space, const QString &key, const QVariant &value) { settings[space][key] = value; }
    void tell() {
        auto signal =
            QDBusMessage::createSignal("/org/freedesktop/portal/desktop", "org.freedesktop.portal.Settings", "SettingChanged");
        signal << "org.freedesktop.appearance"
               << "color-scheme" << QVariant::fromValue(QDBusVariant(1u));
        bus_.send(signal);
    }

    bool handleMessage(const QDBusMessage &question, const QDBusConnection &bus) override {
        if (question.member() != "ReadAll" || question.interface() != "org.freedesktop.portal.Settings") return false;
        ++asked;
        QMap<QString, QVariantMap> answer;
        for (const QString &name : question.arguments().value(0).toStringList())
            if (settings.contains(name)) answer[name] = settings[name];
        return bus.send(question.createReply(QVariant::fromValue(answer)));
    }
    QString introspect(const QString &) const override { return {}; }

    QMap<QString, QVariantMap> settings;
    int asked = 0;

private:
    QDBusConnection bus_;
};

}  // namespace kiv
