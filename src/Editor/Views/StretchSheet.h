#pragma once

#include <array>

#include "Editor/Surfaces/StretchSheetGeometry.h"
#include "Editor/Views/Field.h"
#include "Editor/Views/Segments.h"
#include "Editor/Views/Sheet.h"

namespace kiv {

// The Pitch / Time dialog: the mode, its numbers, the length before and after.
class StretchSheet : public Sheet {
public:
    StretchSheet(AudioEditorModel &model, ViewStyle &style, QWidget *parent = nullptr);

    Field &field(StretchField field) const { return *fields_[std::size_t(field)]; }
    Segments &segments() const { return *segments_; }
    Button &autoButton() const { return *auto_; }

    QSize sizeFor(int width) const override;
    void confirm() override;
    void cancel() override { model_.closeDialog(); }
    void takeFocus() override;
    bool takeKey(const KeyPress &press) override;

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *) override { placeControls(); }

private:
    void connectControls();
    void connectField(StretchField field);
    void showTabRing();
    void refresh();
    void placeControls();
    void typeInto(StretchField field, const QString &typed, bool typedAhead);
    void endTyping(StretchField field);
    StretchSheetGeometry geometryFor(int width) const;

    AudioEditorModel &model_;
    StretchSheetScene scene_;
    std::optional<StretchField> typing_;        // its field holds what the user types, which is not to be rewritten
    StretchField latest_ = StretchField::time;  // the field that had the focus last
    Segments *segments_;
    std::array<Field *, stretchNumbers.size()> fields_;
    Button *auto_, *apply_, *cancel_;
    Subscription modelChanges_;
};

}  // namespace kiv
