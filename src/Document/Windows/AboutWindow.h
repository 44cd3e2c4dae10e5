#pragma once

#include "Editor/Views/ViewStyle.h"

class QWidget;

namespace kiv {

// The program's name, version and licence, in a window that deletes itself when it is closed.
QWidget *showAboutWindow(ViewStyle &style);

}  // namespace kiv
