#pragma once

#include <string>
#include <string_view>

// What people call the kinds of samples that are not ours to read; empty for those that have no name.
namespace kiv {

std::string packedWavName(unsigned formatTag);
// By the four characters that CAF and AIFC files have for them.
std::string packedName(std::string_view fourCharacters);
// By the number that AU files have for them.
std::string packedAuName(unsigned encoding);

}  // namespace kiv
