#pragma once

#include <QWidget>
#include <memory>

#include "Editor/AudioEditorModel/AudioEditorModel.h"
#include "Editor/Views/ViewStyle.h"

namespace kiv {

// The level marks at the left of the waveform, of its height. Sets its own width (44 at the usual type
// size).
class GutterView : public QWidget {
public:
    GutterView(AudioEditorModel &model, ViewStyle &style, QWidget *parent = nullptr);
    ~GutterView() override;

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;

private:
    struct Parts;
    void refresh();
    void takeStyle();

    std::unique_ptr<Parts> parts_;
};

}  // namespace kiv
