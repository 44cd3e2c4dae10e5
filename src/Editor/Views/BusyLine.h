#pragma once

#include <QTimer>
#include <QWidget>
#include <functional>
#include <optional>

#include "Editor/Views/ViewStyle.h"

namespace kiv {

// The accent line under the top bar that shows how far long work has come. Appears once the work has gone on for 300 ms; its
// timer runs only while there is work.
class BusyLine : public QWidget {
public:
    static constexpr int thickness = 2;

    BusyLine(const ViewStyle &style, QWidget *parent);

    // `fraction` tells 0 … 1 and is asked while busy.
    void setBusy(bool isBusy, std::function<double()> fraction);
    // Told how far the work has come whenever the line shows it, and nothing when the line goes.
    std::function<void(std::optional<double>)> onShown;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    void tick();

    const ViewStyle &style_;
    std::function<double()> fraction_;
    QTimer timer_;
};

}  // namespace kiv
