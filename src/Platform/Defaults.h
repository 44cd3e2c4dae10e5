#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace kiv {

// The user's stored settings: a text a key. Typed reading, defaults and ranges are in Preferences. Main thread only. A store
// that cannot be read is empty; one that cannot be written forgets at the end of the program.
class Defaults {
public:
    virtual ~Defaults() = default;
    virtual std::optional<std::string> text(std::string_view key) const = 0;
    virtual void setText(std::string_view key, const std::string &value) = 0;
    virtual void remove(std::string_view key) = 0;
};

}  // namespace kiv
