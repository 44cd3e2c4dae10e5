#pragma once

#include <optional>
#include <string>
#include <string_view>

// Single letters of UTF-8 texts, the same in every locale. Case is known for the scripts of keyboards: Latin, Greek, Cyrillic,
// Armenian.
namespace kiv {

// The code point when the text is exactly one, well-formed; else nothing.
std::optional<char32_t> singleCodePoint(std::string_view text);
// The length in bytes of the code point that a well-formed text starts with; 0 for an empty text, at most what is left.
std::size_t firstLength(std::string_view text);
std::string utf8(char32_t codePoint);

// A letter without the other case, and a text that is not one code point, stay as they are.
std::string lowerCased(std::string_view letter);
std::string upperCased(std::string_view letter);

}  // namespace kiv
