#pragma once

#include <QImage>

#include "Editor/Views/ViewStyle.h"

namespace kiv {

// Every control in every state on one sheet of 1280 x 800 logical pixels, painted by the very painters of the window.
QImage componentSheet(ViewStyle &style, double scale);

}  // namespace kiv
