#include "Document/SaveFormats.h"

#include <algorithm>
#include <array>
#include <cctype>

#include "Document/AudioExtensions.h"

namespace kiv {
namespace {

using enum AudioSaveFormat::Container;

constexpr std::array<std::string_view, 3> wavExtensions{"wav", "wave", "bwf"};
constexpr std::array<std::string_view, 2> aiffExtensions{"aiff", "aif"};
constexpr std::array<std::string_view, 1> flacExtensions{"flac"};

constexpr std::array wavFormats{AudioSaveFormat{wav, 8}, AudioSaveFormat{wav, 16}, AudioSaveFormat{wav, 24},
                                AudioSaveFormat{wav, 32}, AudioSaveFormat{wav, 32, true}};
constexpr std::array aiffFormats{AudioSaveFormat{aiff, 8}, AudioSaveFormat{aiff, 16}, AudioSaveFormat{aiff, 24},
                                 AudioSaveFormat{aiff, 32}};
constexpr std::array flacFormats{AudioSaveFormat{flac, 16}, AudioSaveFormat{flac, 24}};

constexpr std::array<SaveContainerRow, 3> rows{{{wav, "WAV", wavExtensions, wavFormats},
                                                {aiff, "AIFF", aiffExtensions, aiffFormats},
                                                {flac, "FLAC", flacExtensions, flacFormats}}};

}  // namespace

std::span<const SaveContainerRow> saveContainers() { return rows; }

const SaveContainerRow &saveContainerRow(SaveContainer container) { return rows[std::size_t(container)]; }

std::string bitsLabel(const AudioSaveFormat &format) { return std::to_string(format.bits) + (format.isFloat ? " float" : ""); }

AudioSaveFormat formatIn(SaveContainer container, const AudioSaveFormat &wished) {
    const auto &formats = saveContainerRow(container).formats;
    const auto same = std::ranges::find_if(
        formats, [&](const auto &format) { return format.bits == wished.bits && format.isFloat == wished.isFloat; });
    if (same != formats.end()) return *same;
    const auto enough = std::ranges::find_if(formats, [&](const auto &format) { return format.bits >= wished.bits; });
    return enough != formats.end() ? *enough : formats.back();
}

std::string extensionOf(std::string_view name) {
    const std::size_t dot = name.rfind('.');
    if (dot == name.npos || dot == 0) return {};
    std::string extension(name.substr(dot + 1));
    std::ranges::transform(extension, extension.begin(), [](unsigned char c) { return char(std::tolower(c)); });
    return extension;
}

std::string_view stemOf(std::string_view name) {
    const std::size_t dot = name.rfind('.');
    return dot == name.npos || dot == 0 ? name : name.substr(0, dot);
}

std::optional<SaveContainer> containerOfExtension(std::string_view extension) {
    for (const SaveContainerRow &row : rows)
        if (std::ranges::find(row.extensions, extension) != row.extensions.end()) return row.container;
    return std::nullopt;
}

bool isAudioExtension(std::string_view extension) {
    return std::ranges::find(openableExtensions, extension) != openableExtensions.end();
}

std::string withExtension(std::string_view name, std::string_view extension) {
    const std::string_view stem = isAudioExtension(extensionOf(name)) ? stemOf(name) : name;
    return extension.empty() ? std::string(name) : std::string(stem) + '.' + std::string(extension);
}

std::string finishedName(std::string_view name, std::string_view extension) {
    const std::string own = extensionOf(name);
    const auto container = containerOfExtension(own);
    const bool isSame = own == extension || (container && container == containerOfExtension(extension));
    return isSame ? std::string(name) : withExtension(name, extension);
}

}  // namespace kiv
