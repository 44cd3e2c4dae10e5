#pragma once

#include <QWidget>
#include <map>

#include "Editor/Surfaces/InfoLineScene.h"
#include "Editor/Views/ValueReadout.h"

namespace kiv {

// The line at the foot of the window: cursor or selection, what is under the pointer, and what kind of file it is.
class InfoLine : public QWidget {
public:
    InfoLine(AudioEditorModel &model, ViewStyle &style, QWidget *parent);

    void setPointer(std::optional<WaveformHover> pointer);
    void setFacts(const FileFacts &facts);
    // How far long work has come, 0 … 1; nothing: there is none.
    void setProgress(std::optional<double> fraction);
    int lineHeight() const { return style_.grown(28); }
    const InfoLineScene &scene() const { return scene_; }
    ValueReadout *value(InfoField field) const { return values_.at(field); }

    // The places in words.
    QString spokenText() const;

    std::function<void()> onLeft;                       // a field of the line has closed
    std::function<void(const QString &)> onSpokenText;  // the places in words, when they have changed

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void makeValues();
    void refresh();
    void layOut();
    QFont fontOf(const InfoText &text) const;

    AudioEditorModel &model_;
    ViewStyle &style_;
    std::optional<WaveformHover> pointer_;
    FileFacts facts_;
    std::optional<double> progress_;
    InfoLineScene scene_;
    std::vector<PlacedInfoText> placed_;
    std::map<InfoField, ValueReadout *> values_;
    Subscription modelChanges_, styleChanges_;
};

}  // namespace kiv
