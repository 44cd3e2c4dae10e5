#pragma once

#include <array>

#include "Editor/Surfaces/StretchSheetGeometry.h"
#include "Editor/Views/DialogSheet.h"
#include "Editor/Views/Field.h"
#include "Editor/Views/Segments.h"

namespace kiv {

// The Pitch / Time dialog: the mode, its numbers, the length before and after.
class StretchSheet : public DialogSheet {
public:
    StretchSheet(AudioEditorModel &model, ViewStyle &style, QWidget *parent = nullptr);

    Field &field(StretchField field) const { return *fields_[std::size_t(field)]; }
    Segments &segments() const { return *segments_; }
    Button &autoButton() const { return *auto_; }

    void takeFocus() override;
    bool takeKey(const KeyPress &press) override;

protected:
    void refresh() override;
    int wishedWidth() const override;
    int bodyHeight(int width, const DialogSheetDistances &distances) const override;
    void placeBody(const QRect &body, const DialogSheetDistances &distances) override;
    void paintBody(QPainter &painter) const override;
    int paintNote(QPainter *painter, const QRectF &row) const override;

private:
    void makeField(const StretchNumber &number);
    void connectInput(StretchField field);
    void showOrder();
    void typeInto(StretchField field, const QString &typed, bool typedAhead);
    void endTyping(StretchField field);
    StretchSheetGeometry controls(int top, int width, const DialogSheetDistances &distances) const;
    StretchSheetGeometry::Widths widths() const;

    StretchSheetScene scene_;
    std::optional<StretchField> typing_;        // its field holds what the user types, which is not to be rewritten
    StretchField latest_ = StretchField::time;  // the field that was typed into last
    Segments *segments_;
    std::array<Field *, stretchNumbers.size()> fields_;
    Button *auto_;
    std::optional<StretchSheetGeometry> placed_;
};

}  // namespace kiv
