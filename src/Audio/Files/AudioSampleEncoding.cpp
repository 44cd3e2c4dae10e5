#include "Audio/Files/AudioSampleEncoding.h"

namespace kiv {

std::string AudioSampleEncoding::description() const {
    if (kind == Kind::floating) return std::to_string(bytes * 8) + "-bit float";
    return std::to_string(validBits) + "-bit";
}

}  // namespace kiv
