#include "Editor/Views/Accessible.h"

#include <QAccessible>
#include <QAccessibleWidget>

#include "Editor/Surfaces/DecibelText.h"
#include "Editor/Views/AlertSheet.h"
#include "Editor/Views/BusyLine.h"
#include "Editor/Views/InfoLine.h"
#include "Editor/Views/LevelSliderView.h"
#include "Editor/Views/Notice.h"
#include "Editor/Views/TopBar.h"

namespace kiv {

namespace {

// A slider whose value is in dB and reads as it is shown.
class AccessibleLevel : public QAccessibleWidget, public QAccessibleValueInterface {
public:
    explicit AccessibleLevel(LevelSliderView *slider) : QAccessibleWidget(slider, QAccessible::Slider) {}

    void *interface_cast(QAccessible::InterfaceType type) override {
        if (type == QAccessible::ValueInterface) return static_cast<QAccessibleValueInterface *>(this);
        return QAccessibleWidget::interface_cast(type);
    }
    QString text(QAccessible::Text kind) const override {
        return kind == QAccessible::Value ? QString::fromStdString(decibelText(slider().level()))
                                          : QAccessibleWidget::text(kind);
    }
    QVariant currentValue() const override { return slider().level(); }
    void setCurrentValue(const QVariant &value) override {
        if (slider().onLevel) slider().onLevel(value.toDouble());
    }
    QVariant maximumValue() const override { return slider().maximum() / 10.0; }
    QVariant minimumValue() const override { return slider().minimum() / 10.0; }
    QVariant minimumStepSize() const override { return levelSmallStepDb; }

private:
    LevelSliderView &slider() const { return *static_cast<LevelSliderView *>(widget()); }
};

QAccessibleInterface *interfaceFor(const QString &, QObject *object) {
    if (auto *slider = dynamic_cast<LevelSliderView *>(object)) return new AccessibleLevel(slider);
    auto *widget = qobject_cast<QWidget *>(object);
    if (!widget) return nullptr;
    if (dynamic_cast<AlertSheet *>(widget) || dynamic_cast<Notice *>(widget))
        return new QAccessibleWidget(widget, QAccessible::AlertMessage);
    if (dynamic_cast<Sheet *>(widget)) return new QAccessibleWidget(widget, QAccessible::Dialog);
    if (dynamic_cast<TopBar *>(widget)) return new QAccessibleWidget(widget, QAccessible::ToolBar);
    if (dynamic_cast<InfoLine *>(widget)) return new QAccessibleWidget(widget, QAccessible::StatusBar);
    if (dynamic_cast<BusyLine *>(widget)) return new QAccessibleWidget(widget, QAccessible::ProgressBar);
    return nullptr;
}

}  // namespace

void installAccessibility() { QAccessible::installFactory(interfaceFor); }

}  // namespace kiv
