#include "Audio/Files/AudioFileError.h"

namespace kiv {

AudioFileError AudioFileError::unreadable(const std::string &text) {
    return {Case::unreadable, "The file could not be read: " + text + "."};
}

AudioFileError AudioFileError::unsupported(const std::string &text) {
    return {Case::unsupported, "This audio format is not supported (" + text + ")."};
}

AudioFileError AudioFileError::tooLarge() {
    return {Case::tooLarge, "The audio is too large for this file format (4 GB limit)."};
}

AudioFileError AudioFileError::writeCheckFailed() {
    return {Case::writeCheckFailed, "The audio could not be written in this file's format (the file was left untouched)."};
}

}  // namespace kiv
