#pragma once

#include "Document/DocumentUi.h"
#include "Editor/Views/Sheet.h"

namespace kiv {

enum class AlertTone { warning, error };

// A message with an explanation and buttons: as a sheet, or as all of a window of its own.
class AlertSheet : public Sheet {
public:
    // `answer` is told the index of the button, once.
    AlertSheet(ViewStyle &style, AlertTone tone, DocumentUi::Question question, std::function<void(std::size_t)> answer,
               QWidget *parent = nullptr);

    // In a window of its own it stands further from the edges and is wider at least.
    void setInWindow();

    QSize sizeFor(const QSize &room) const override;
    void confirm() override { choose(0); }
    void cancel() override;
    void takeFocus() override;

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    struct Texts {
        QString message, informative;
    };
    void makeButtons();
    QList<Button *> rightToLeft() const;
    void choose(std::size_t index);
    int textWidth(int width) const;
    int textsHeight(const Texts &texts, int width) const;
    // As much of them as a sheet of this size can hold.
    Texts textsIn(const QSize &size) const;
    int heightWithout(int width) const;

    AlertTone tone_;
    Texts all_;
    std::vector<std::string> labels_;
    std::optional<std::size_t> cancelIndex_;
    std::function<void(std::size_t)> answer_;
    QList<Button *> buttons_;  // in the question's order
    int edge_ = padding;
    int leastWidth_ = 400;
    int textToButtons_ = 22;
};

}  // namespace kiv
