#pragma once

#include "Editor/AudioEditorModel/AudioEditorModel.h"
#include "Editor/Surfaces/DialogSheetGeometry.h"
#include "Editor/Views/Sheet.h"

namespace kiv {

// An edit dialog as a sheet: its title and what it acts on at the top, at the foot a text and the buttons. Those that derive
// from it say what stands between.
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
    virtual int wishedWidth() const = 0;
    virtual int bodyHeight(int width, const DialogSheetDistances &distances) const = 0;
    virtual void placeBody(const QRect &body, const DialogSheetDistances &distances) = 0;
    virtual void paintBody(QPainter &) const {}
    // Paints the text at the foot, or only measures it without a painter. Returns its width.
    virtual int paintNote(QPainter *painter, const QRectF &row) const = 0;

    AudioEditorModel &model() const { return model_; }
    // At the end of refresh(), which the constructor calls first: what it acts on, and whether what is typed can be read,
    // without which nothing is confirmed.
    void layOut(const std::string &target, bool isReadable = true);
    // The order of the Tab key and that in which it is read to those who cannot see it: the body's controls, then the buttons.
    void setOrder(const QList<QWidget *> &tabs, const QList<QWidget *> &read);
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
    void resizeEvent(QResizeEvent *) final { layOut(target_, isReadable_); }

private:
    const DialogSheetDistances &distancesFor(int width, int height) const;
    DialogSheetGeometry geometryFor(int width, const DialogSheetDistances &distances) const;
    DialogSheetGeometry geometryNow() const;

    AudioEditorModel &model_;
    Dialog dialog_;
    QString title_;
    std::string target_;
    bool isReadable_ = true;
    Button *apply_, *cancel_;
    Subscription modelChanges_;
};

}  // namespace kiv
