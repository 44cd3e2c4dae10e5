#pragma once

#include <QLineEdit>
#include <functional>

#include "Editor/Views/CrispPainting.h"
#include "Editor/Views/ValueEvents.h"
#include "Editor/Views/ViewStyle.h"

namespace kiv {

enum class FieldContent { number, text };

// A text field of our own look: numbers stand at the right with their unit after them, texts at the left. It is two pixels
// larger on every side than the box one sees, for the frame that it wears while it is edited. A number whose input somebody
// takes is stepped as everywhere; a drag sideways chooses text.
class Field : public QLineEdit {
public:
    Field(ViewStyle &style, FieldContent content, QWidget *parent = nullptr);

    static constexpr int frame = 2;

    bool isNumber() const { return content_ == FieldContent::number; }
    void setUnit(const QString &unit);
    // The type of what is typed, 13 medium unless told otherwise.
    void setType(int pixels, QFont::Weight weight);
    // What stays free before a text and after a unit; 10 unless told otherwise.
    void setPadding(int padding);
    // Where it does not stand in a sheet.
    void setGround(AudioEditorThemeColor ground);
    // Which corners are round: the others touch a control that belongs to the field.
    void setCorners(Corners corners);
    // Whether what is typed makes sense; if not, the frame says so.
    void setReadable(bool isReadable);
    bool isReadable() const { return isReadable_; }
    // Without a box: what it stands in draws one. Its unit follows what is typed.
    void setBare(bool isBare);

    ValueInput &input() { return input_; }

    // Keys that are not text.
    std::function<void()> onEnter, onEscape;

protected:
    void paintEvent(QPaintEvent *event) override;
    bool event(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;

private:
    void applyStyle();
    void paintUnit(QPainter &painter) const;
    void paintDragged(QPainter &painter) const;

    ViewStyle &style_;
    FieldContent content_;
    QString unit_;
    int pixels_ = 13;
    int padding_ = 10;
    QFont::Weight weight_ = QFont::Medium;
    std::optional<AudioEditorThemeColor> ground_;
    Corners corners_ = Corners::all;
    bool isReadable_ = true;
    bool isBare_ = false;
    ValueInput input_{stepPixels, Stepping::whole, Sideways::choosesText};
    ValueEvents events_{*this, input_};
    Subscription styleChanges_;
};

}  // namespace kiv
