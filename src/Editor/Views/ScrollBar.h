#pragma once

#include <QScrollBar>

#include "Editor/Views/ViewStyle.h"

namespace kiv {

// An upright scroll bar of our own look: a thin thumb and nothing else, in a strip as wide as a list's padding.
class ScrollBar : public QScrollBar {
public:
    ScrollBar(ViewStyle &style, QWidget *parent);

    static constexpr int thickness = 8;

    QSize sizeHint() const override { return {thickness, 0}; }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    ViewStyle &style_;
    Subscription styleChanges_;
};

}  // namespace kiv
