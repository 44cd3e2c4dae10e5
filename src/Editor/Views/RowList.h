#pragma once

#include <QListView>
#include <functional>

#include "Editor/Views/ListRowPainter.h"

namespace kiv {

// A list of our own look over a toolkit's model, one row an entry; the model gives each as a ListRow. Arrows, Home, End, PgUp,
// PgDn and typing a name move; Enter or a double-click activates a row, a press chooses it. Rows reach from side to side of
// what is not padding.
class RowList : public QListView {
public:
    RowList(ViewStyle &style, QWidget *parent);

    enum Role { isDimRole = Qt::UserRole, isChosenRole, iconRole, secondRole, thirdRole };

    void setColumns(const ListColumns &columns);
    const ListColumns &columns() const { return columns_; }
    ViewStyle &style() const { return style_; }
    // Where an entry that is not the keyboard's shows that it is the one in force, by isChosenRole.
    void setMarksCurrent(bool marks) { marksCurrent_ = marks; }
    bool marksCurrent() const { return marksCurrent_; }
    // What stands where the first row would while there is none; nothing without a text.
    void setNote(const QString &note);
    bool isFocusedByKey() const { return isFocusedByKey_; }

    std::function<void(int row)> onActivated, onPressed;
    // Keys that no list takes; true when it was one.
    std::function<bool(QKeyEvent *)> onOtherKey;

    static constexpr int padding = 8;

protected:
    void paintEvent(QPaintEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;

private:
    void applyStyle();

    ViewStyle &style_;
    ListColumns columns_;
    QString note_;
    bool marksCurrent_ = true;
    bool isFocusedByKey_ = false;
    Subscription styleChanges_;
};

}  // namespace kiv
