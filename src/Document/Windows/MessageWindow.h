#pragma once

#include <functional>
#include <memory>
#include <string>

#include "Document/DocumentUi.h"
#include "Editor/Views/ViewStyle.h"

class QWidget;

namespace kiv {

// An error that belongs to no document, in a window of its own, which deletes itself when it is closed.
QWidget *showMessageWindow(ViewStyle &style, const std::string &message, const std::string &informative);
// The same with a question; closed without an answer it is answered with the button that Esc means.
QWidget *askInWindow(ViewStyle &style, const DocumentUi::Question &question, std::function<void(std::size_t)> answer);

}  // namespace kiv
