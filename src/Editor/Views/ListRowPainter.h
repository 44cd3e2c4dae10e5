#pragma once

#include <QRectF>
#include <QString>
#include <string>

#include "Editor/Views/ViewStyle.h"

class QPainter;

namespace kiv {

// A row of a list: its text at the left, up to two more at the right ends of their columns.
struct ListRow {
    QString text, second, third;
    std::string icon = {};  // before the text
};

struct ListRowLook {
    bool isChosen = false;
    bool isHovered = false;
    bool isDim = false;      // cannot be what is wanted
    bool isFocused = false;  // by a key
};

// How wide the columns at the right are, with what stands free before each.
struct ListColumns {
    int second = 0, third = 0;
};

void paintListRow(QPainter &painter, const QRectF &rect, const ListRow &row, const ListRowLook &look,
                  const ListColumns &columns, const ViewStyle &style);
// The names of the columns over a rule.
void paintListHeader(QPainter &painter, const QRectF &rect, const ListRow &names, const ListColumns &columns,
                     const ViewStyle &style);
// What stands where the first row would while there are no rows.
void paintListNote(QPainter &painter, const QRectF &rect, const QString &note, const ViewStyle &style);
int listRowHeight(const ViewStyle &style);
int listHeaderHeight(const ViewStyle &style);
// The box that a list stands in.
void paintListBox(QPainter &painter, const QRectF &rect, const ViewStyle &style);

}  // namespace kiv
