#pragma once

#include <QObject>
#include <memory>

#include "Editor/Views/ViewStyle.h"

class QWidget;

namespace kiv {

// Shows the tool tips of all widgets in our own look: under the control once the pointer has rested on it, gone at a press or
// when the pointer leaves. One for the program; filters the application's events.
class Tips : public QObject {
public:
    explicit Tips(const ViewStyle &style);
    ~Tips() override;

    bool eventFilter(QObject *watched, QEvent *event) override;
    bool isShown() const;

private:
    class Window;
    void show(QWidget *control);
    void hide();

    const ViewStyle &style_;
    std::unique_ptr<Window> window_;  // made when first needed
    QWidget *control_ = nullptr;      // that the tip belongs to; only compared
};

}  // namespace kiv
