#pragma once

namespace kiv {

// Whether somebody composes the desktop, so that windows can have round corners and shadows.
bool windowsMayBeTranslucent();

}  // namespace kiv
