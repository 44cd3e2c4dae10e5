#pragma once

#include <string>
#include <string_view>

namespace kiv {

// A source text as this platform prints it: "⇧⌘S" as "Ctrl+Shift+S", "with ⇧ = 1 ms" as "with Shift = 1 ms", key symbols as
// their names, "macOS" as "the system". Names in “quotation marks” stay as they are. Called where a text reaches the screen and
// nowhere else.
std::string screenText(std::string_view source);

}  // namespace kiv
