#pragma once

#include <stdexcept>
#include <string>

namespace kiv {

// Why a file could not be read or written. what() is the text for the user.
class AudioFileError : public std::runtime_error {
public:
    enum class Case { unreadable, unsupported, tooLarge, writeCheckFailed };

    static AudioFileError unreadable(const std::string &text);   // "The file could not be read: " + text + "."
    static AudioFileError unsupported(const std::string &text);  // "This audio format is not supported (" + text + ")."
    static AudioFileError tooLarge();
    static AudioFileError writeCheckFailed();

    Case kind() const { return kind_; }

private:
    AudioFileError(Case kind, const std::string &text) : std::runtime_error(text), kind_(kind) {}
    Case kind_;
};

}  // namespace kiv
