#pragma once

#include <QTimer>
#include <QWidget>

#include "Editor/Views/FloatShadow.h"

namespace kiv {

// A short message over the foot of the waveform: there for four seconds and for as long as the pointer is on it; a click takes
// it away. A new one takes the old one's place.
class Notice : public QWidget {
public:
    Notice(ViewStyle &style, QWidget *parent);

    void tell(const QString &text);
    // Centred over the area, 24 above its foot.
    void placeOver(const QRect &area);

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void enterEvent(QEnterEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;

private:
    QSize pillSize() const;

    ViewStyle &style_;
    FloatShadow *shadow_;
    QString text_;
    QRect area_;
    QTimer timer_;
    Subscription styleChanges_;
};

}  // namespace kiv
