#include <algorithm>
#include <optional>

#include "Audio/Files/ByteFields.h"
#include "Audio/Files/ChunkScan.h"
#include "Audio/Files/PackedNames.h"
#include "Audio/Files/WrappingReader.h"

namespace kiv {
namespace {

using Size = SampleWrapping::Size;

std::optional<AudioSampleEncoding> auEncoding(std::uint32_t number) {
    constexpr auto floating = AudioSampleEncoding::Kind::floating;
    switch (number) {
        case 2:
        case 3:
        case 4:
        case 5:
            return AudioSampleEncoding{.bytes = int(number) - 1, .validBits = 8 * (int(number) - 1), .bigEndian = true};
        case 6:
            return AudioSampleEncoding{.kind = floating, .bytes = 4, .validBits = 32, .bigEndian = true};
        case 7:
            return AudioSampleEncoding{.kind = floating, .bytes = 8, .validBits = 64, .bigEndian = true};
        default:
            return std::nullopt;
    }
}

}  // namespace

// A header with a note of any length, samples, and perhaps something behind them.
std::optional<NativeFile> takeAuApart(const SourceReader &reader, WrappedSamples samples) {
    constexpr auto order = std::endian::big;
    constexpr std::int64_t plainHeader = 24;
    if (reader.size() < plainHeader) return std::nullopt;
    const Bytes head = reader.bytes(0, plainHeader);
    const std::int64_t start = u32At(head, 4, order), channels = u32At(head, 20, order), declared = u32At(head, 8, order);
    const std::int64_t rate = u32At(head, 16, order), left = reader.size() - start;
    const auto own = auEncoding(u32At(head, 12, order));
    if ((!own && samples == WrappedSamples::plain) || start < plainHeader || left < 0 || rate == 0) return std::nullopt;
    if (!areChannels(channels)) return std::nullopt;
    const AudioSampleEncoding encoding = own.value_or(AudioSampleEncoding{.bytes = 1});
    const bool isOpen = isOpenSize(declared, 4);
    const std::int64_t bytes = isOpen ? left : std::min(declared, left), frameBytes = channels * encoding.bytes;
    NativeFile file;
    SampleWrapping &wrapping = file.contents.wrapping.emplace();
    wrapping.samplesBefore = 1;
    wrapping.parts.push_back(keptPart(reader.bytes(plainHeader, start - plainHeader)));
    wrapping.parts[0].header = head;
    wrapping.parts[0].isBare = true;
    if (!isOpen) wrapping.parts[0].sizes = {{8, 4, Size::Of::samples, 0}};
    if (bytes < left) wrapping.parts.push_back(keptPart(reader.bytes(start + bytes, left - bytes)));
    const std::string packed = own ? "" : packedAuName(u32At(head, 12, order));
    describeWrapped(file.contents, packed.empty() ? "AU" : packed + " AU", {channels, double(rate), encoding});
    file.audio = {start, bytes / frameBytes};
    wrapping.frames = file.audio.frames;
    file.contents.missingFrames = isLeftOpen(declared) ? 0 : declared / frameBytes - wrapping.frames;
    return file;
}

}  // namespace kiv
