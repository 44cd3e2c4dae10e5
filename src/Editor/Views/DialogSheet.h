#pragma once

#include "Editor/AudioEditorModel/AudioEditorModel.h"
#include "Editor/Surfaces/DialogSheetGeometry.h"
#include "Editor/Views/Sheet.h"

namespace kiv {

// An edit dialog as a sheet: its title and what it acts on at the top, at the foot a text and the buttons. Those that derive from
// it say what stands between.
class DialogSheet : public Sheet {
public:
    struct Words {
        std::string title;
        std::string confirm;  // of the default button
    };
    DialogSheet(AudioEditorModel &model, Dialog dialog, const Words &words, ViewStyle &style, QWidget *parent);

    QSize sizeFor(const QSize &room) const final;
    void confirm() final;
    void cancel() final { model_.closeDialog(); }

protected:
    // The model has changed while the dialog is open.
    virtual void refresh() = 0;
    virtual std::string target() const = 0;
    // Whether what is typed can be read, without which nothing is confirmed.
    virtual bool isReadable() const { return true; }
    virtual int wishedWidth() const = 0;
    virtual int bodyHeight(int width, const DialogSheetDistances &distances) const = 0;
    virtual void placeBody(const QRect &body, const DialogSheetDistances &distances) = 0;
    virtual void paintBody(QPainter &) const {}
    // Paints the text at the foot, or only measures it without a painter. Returns its width.
    virtual int paintNote(QPainter *painter, const QRectF &row) const = 0;

    AudioEditorModel &model() const { return model_; }
    // To be called by refresh() and the constructor, once all is known that the calls above tell.
    void layOut();
    QList<QWidget *> footButtons() const { return {apply_, cancel_}; }
    // "Scroll or drag up / down = 5 %, with ⇧ = 1 %; double-click = 100 %."
    static QString stepHelp(const std::string &step, const std::string &smallStep, const std::string &reset);
    DialogSheetMeasures measures() const;
    // The words of a line one after the other, each with what stays free behind it.
    struct Word {
        std::string text;
        QFont::Weight weight;
        Rgba color;
        int after;
    };
    int paintWords(QPainter *painter, QRectF row, const std::vector<Word> &words) const;

    void paintEvent(QPaintEvent *event) final;
    void resizeEvent(QResizeEvent *) final { layOut(); }

private:
    const DialogSheetDistances &distancesFor(int width, int height) const;
    DialogSheetGeometry geometryFor(int width, const DialogSheetDistances &distances) const;
    DialogSheetGeometry geometryNow() const;

    AudioEditorModel &model_;
    Dialog dialog_;
    QString title_;
    Button *apply_, *cancel_;
    Subscription modelChanges_;
};

}  // namespace kiv
