#pragma once

#include <QRectF>
#include <QString>

#include "Document/DocumentUi.h"
#include "Editor/Views/ViewStyle.h"

class QPainter;

// What floats over a window: menus, tips, notices. Without see-through windows they are square in a thin edge.
namespace kiv {

// The box with its edge around it and, where windows may be see-through, its shadow, which is shifted down by `shadowFrom`
// where there is no room for it above.
void paintFloat(QPainter &painter, const QRectF &box, double radius, const ViewStyle &style, double shadowFrom = 0);

struct MenuRowLook {
    QString text, shortcut;
    bool isChosen = false;
    bool isEnabled = true;
    bool isChecked = false;
    bool hasCheckColumn = false;  // of its own or a neighbour
};

inline constexpr double menuRadius = 8;
inline constexpr int menuPadding = 6;
void paintMenuRow(QPainter &painter, const QRectF &row, const MenuRowLook &look, const ViewStyle &style);
void paintMenuRule(QPainter &painter, const QRectF &row, const ViewStyle &style);
// The width that a row asks for, and the heights of rows and rules.
double menuRowWidth(const MenuRowLook &look, const ViewStyle &style);
int menuRowHeight(const ViewStyle &style);
inline constexpr int menuRuleHeight = 9;

inline constexpr double tipRadius = 6;
inline constexpr int widestTip = 430;
QSize tipSize(const QString &text, const ViewStyle &style, int widest = widestTip);
void paintTipText(QPainter &painter, const QRectF &box, const QString &text, const ViewStyle &style);

// Shortened in the middle when it would be wider than `widest`.
QString noticeText(const QString &text, int widest, const ViewStyle &style);
QSize noticeSize(const QString &text, const ViewStyle &style);
void paintNotice(QPainter &painter, const QRectF &pill, NoticeKind kind, const QString &text, const ViewStyle &style);

}  // namespace kiv
