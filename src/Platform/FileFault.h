#pragma once

#include <string>
#include <system_error>

namespace kiv {

// A std::system_error that says what happened in words of its own.
class FileFault : public std::system_error {
public:
    FileFault(std::error_code code, std::string text) : std::system_error(code), text_(std::move(text)) {}
    FileFault(std::errc code, std::string text) : FileFault(std::make_error_code(code), std::move(text)) {}
    const char *what() const noexcept override { return text_.c_str(); }

private:
    std::string text_;
};

}  // namespace kiv
