#include "Editor/Views/Accessible.h"

#include <QAccessible>

#include "Editor/Views/AccessibleValues.h"
#include "Editor/Views/AlertSheet.h"
#include "Editor/Views/BusyLine.h"
#include "Editor/Views/GutterView.h"
#include "Editor/Views/InfoLine.h"
#include "Editor/Views/Knob.h"
#include "Editor/Views/LevelSliderView.h"
#include "Editor/Views/Notice.h"
#include "Editor/Views/OverviewView.h"
#include "Editor/Views/ParameterCell.h"
#include "Editor/Views/RulerView.h"
#include "Editor/Views/Segments.h"
#include "Editor/Views/TopBar.h"
#include "Editor/Views/WaveformView.h"

namespace kiv {

namespace {

// Adjustable controls in the role that fits each.
QAccessible::Role roleOf(const QWidget &control) {
    if (dynamic_cast<const Knob *>(&control)) return QAccessible::Dial;
    return dynamic_cast<const ParameterCell *>(&control) ? QAccessible::SpinBox : QAccessible::Slider;
}

// Choices in their order: the chosen one lies above its neighbours, which is not to be heard.
class AccessibleSegments : public QAccessibleWidget {
public:
    explicit AccessibleSegments(Segments &segments)
        : QAccessibleWidget(&segments, QAccessible::Grouping), segments_(segments) {}

    int childCount() const override { return segments_.count(); }
    QAccessibleInterface *child(int index) const override {
        return index >= 0 && index < childCount() ? QAccessible::queryAccessibleInterface(segments_.button(index)) : nullptr;
    }
    int indexOfChild(const QAccessibleInterface *child) const override {
        for (int i = 0; child && i < childCount(); ++i)
            if (child->object() == segments_.button(i)) return i;
        return -1;
    }

private:
    Segments &segments_;
};

bool isPicture(const QWidget &widget) {
    return dynamic_cast<const WaveformView *>(&widget) || dynamic_cast<const OverviewView *>(&widget) ||
           dynamic_cast<const RulerView *>(&widget) || dynamic_cast<const GutterView *>(&widget);
}

QAccessibleInterface *interfaceFor(const QString &, QObject *object) {
    auto *widget = qobject_cast<QWidget *>(object);
    if (!widget) return nullptr;
    if (auto *adjustable = dynamic_cast<Adjustable *>(widget)) return new AccessibleValue(widget, *adjustable, roleOf(*widget));
    if (isPicture(*widget)) return new AccessiblePicture(widget);
    if (dynamic_cast<AlertSheet *>(widget) || dynamic_cast<Notice *>(widget))
        return new QAccessibleWidget(widget, QAccessible::AlertMessage);
    if (dynamic_cast<Sheet *>(widget)) return new QAccessibleWidget(widget, QAccessible::Dialog);
    if (auto *segments = dynamic_cast<Segments *>(widget)) return new AccessibleSegments(*segments);
    if (dynamic_cast<TopBar *>(widget)) return new QAccessibleWidget(widget, QAccessible::ToolBar);
    if (dynamic_cast<InfoLine *>(widget)) return new QAccessibleWidget(widget, QAccessible::StatusBar);
    if (dynamic_cast<BusyLine *>(widget)) return new QAccessibleWidget(widget, QAccessible::ProgressBar);
    // A window of ours has no frame of the toolkit's that would say so.
    if (widget->windowType() == Qt::Window) return new QAccessibleWidget(widget, QAccessible::Window);
    if (widget->windowType() == Qt::Dialog) return new QAccessibleWidget(widget, QAccessible::Dialog);
    return nullptr;
}

}  // namespace

void installAccessibility() { QAccessible::installFactory(interfaceFor); }

}  // namespace kiv
