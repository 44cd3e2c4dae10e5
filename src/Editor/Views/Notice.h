#pragma once

#include <QTimer>
#include <QWidget>

#include "Document/DocumentUi.h"
#include "Editor/Views/FloatShadow.h"

namespace kiv {

// A short message over the foot of the waveform: there for four seconds and for as long as the pointer is on it; a click takes
// it away. A new one takes the old one's place.
class Notice : public QWidget {
public:
    Notice(ViewStyle &style, QWidget *parent);

    void tell(NoticeKind kind, const QString &text);
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
    ViewStyle &style_;
    FloatShadow *shadow_;
    NoticeKind kind_ = NoticeKind::done;
    QString text_, shown_;  // and as much of it as there is room for
    QRect area_;
    QTimer timer_;
    Subscription styleChanges_;
};

}  // namespace kiv
