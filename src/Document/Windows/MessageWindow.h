#pragma once

#include <functional>
#include <memory>
#include <string>

#include "Editor/Views/ViewStyle.h"

class QWidget;

namespace kiv {

// An error that belongs to no document, in a window of its own, which deletes itself when it is closed.
QWidget *showMessageWindow(ViewStyle &style, const std::string &message, const std::string &informative);

}  // namespace kiv
