#pragma once

#include <QTimer>
#include <QWidget>
#include <deque>

#include "Document/DocumentUi.h"
#include "Editor/Views/FloatShadow.h"

namespace kiv {

// A short message over the foot of the waveform: there for four seconds and for as long as the pointer is on it; a click takes
// it away. What is told meanwhile waits until it has gone; what is there or waits already is not told twice.
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
    struct Told {
        NoticeKind kind;
        QString text;
    };
    void showFirst();
    void showNext();

    ViewStyle &style_;
    FloatShadow *shadow_;
    std::deque<Told> told_;  // the first is there, the others wait
    QString shown_;          // as much of the first as there is room for
    QRect area_;
    QTimer timer_;
    Subscription styleChanges_;
};

}  // namespace kiv
