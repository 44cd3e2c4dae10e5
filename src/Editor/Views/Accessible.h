#pragma once

namespace kiv {

// Tells assistive tools what our own widgets are where the toolkit cannot know: sheets, alerts, notices, bars, sliders with
// their values as shown. Once, before the first window.
void installAccessibility();

}  // namespace kiv
