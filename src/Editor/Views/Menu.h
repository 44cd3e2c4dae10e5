#pragma once

#include <QMenu>
#include <QMenuBar>

#include "Editor/Views/FloatPainter.h"

namespace kiv {

// A menu of our own look: rows with the shortcut at the right, a check mark before what is on. Needs KivStyle for its measures.
class Menu : public QMenu {
public:
    explicit Menu(const ViewStyle &style, QWidget *parent = nullptr);
    Menu(const ViewStyle &style, const QString &title, QWidget *parent);

    static constexpr int padding = menuPadding;

    // What stands at the right of an action; nothing is bound to it.
    void setShortcutText(QAction *action, const QString &text);
    int rowHeight(bool isSeparator) const;

protected:
    void paintEvent(QPaintEvent *event) override;
    void actionEvent(QActionEvent *event) override;
    void changeEvent(QEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;

private:
    QRect panel() const;
    void updateWidth();
    void paintSurroundings(QPainter &painter, const QRect &changed) const;
    MenuRowLook lookOf(const QAction *action) const;

    const ViewStyle &style_;
    bool isWidthKnown_ = false;
};

class MenuBar : public QMenuBar {
public:
    explicit MenuBar(ViewStyle &style, QWidget *parent = nullptr);

    static constexpr int padding = 6;

    Menu *addOwnMenu(const QString &title);
    QSize itemSize(const QString &text) const;
    // Drops the first menu down, for F10.
    void open();

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    void measureAnew();

    const ViewStyle &style_;
    Subscription styleChanges_;
};

}  // namespace kiv
