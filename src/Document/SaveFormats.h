#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "Audio/Files/AudioSaveFormat.h"

// What a sound can be saved as, as the user is offered it: the containers with their names, extensions and sample widths, and
// file names with the extension that fits.
namespace kiv {

using SaveContainer = AudioSaveFormat::Container;

struct SaveContainerRow {
    SaveContainer container;
    std::string_view label;                        // "AIFF"
    std::span<const std::string_view> extensions;  // in lower case without the dot; the first is the one given
    std::span<const AudioSaveFormat> formats;      // from the fewest bits on
};

std::span<const SaveContainerRow> saveContainers();
const SaveContainerRow &saveContainerRow(SaveContainer container);
std::string bitsLabel(const AudioSaveFormat &format);  // "24", "32 float"

// The same sample width in a container, or where it is not offered the next larger one, which loses nothing, or the largest.
AudioSaveFormat formatIn(SaveContainer container, const AudioSaveFormat &wished);

// The part after the last dot in lower case; empty where there is none, or nothing before it.
std::string extensionOf(std::string_view name);
std::string_view stemOf(std::string_view name);
std::optional<SaveContainer> containerOfExtension(std::string_view extension);
bool isAudioExtension(std::string_view extension);  // of a file that the program can open

// The name with an extension: in the place of another one that says what audio it holds, else after it.
std::string withExtension(std::string_view name, std::string_view extension);
// The name as it will be written: it keeps its extension where that means the same as `extension`.
std::string finishedName(std::string_view name, std::string_view extension);

}  // namespace kiv
