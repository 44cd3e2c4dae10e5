#pragma once

#include "Platform/DecodedReader.h"

// What a module of decoders exports.
namespace kiv {

constexpr const char *decoderModuleSymbol = "kivDecodedReader";
using DecoderModuleEntry = DecodedReader *();  // lives as long as the program

}  // namespace kiv
