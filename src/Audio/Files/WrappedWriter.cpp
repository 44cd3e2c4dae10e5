#include <algorithm>
#include <memory>

#include "Audio/Files/AudioFileCodec.h"
#include "Audio/Files/ByteFields.h"
#include "Audio/Files/PcmSamples.h"

namespace kiv::AudioFileCodec {
namespace {

using Size = SampleWrapping::Size;

struct Amounts {
    std::int64_t samples = 0, frames = 0, file = 0;  // bytes, frames, bytes

    std::int64_t of(const Size &size) const {
        const std::int64_t amount = size.of == Size::Of::samples ? samples : size.of == Size::Of::frames ? frames : file;
        return amount + size.more;
    }
};

Bytes withSizes(const SampleWrapping::Part &part, const Amounts &amounts, std::endian order) {
    constexpr std::int64_t largest = 0xFFFFFFFF;
    Bytes bytes = part.bytes;
    for (const Size &size : part.sizes) {
        const std::int64_t amount = amounts.of(size);
        if (size.bytes == 8) {
            putWord(std::span(bytes), size.offset, order, std::uint64_t(amount));
            continue;
        }
        if (amount >= largest) throw AudioFileError::tooLarge();
        putWord(std::span(bytes), size.offset, order, std::uint32_t(amount));
    }
    return bytes;
}

}  // namespace

AudioFileImage wrappedImage(const AudioFileContents &contents) {
    const SampleWrapping &wrapping = *contents.wrapping;
    const AudioEditorBuffer &buffer = contents.buffer;
    if (!wrapping.fits(buffer)) throw AudioFileError::writeCheckFailed();
    Amounts amounts{buffer.frames() * buffer.channels() * wrapping.encoding.bytes, buffer.frames(), 0};
    const std::int64_t over = (amounts.samples + wrapping.headerBytes) % wrapping.alignment;
    const std::int64_t padding = over == 0 ? 0 : wrapping.alignment - over;
    amounts.file = amounts.samples + padding;
    for (const auto &part : wrapping.parts) amounts.file += std::int64_t(part.bytes.size());
    const std::endian order = wrapping.bigEndian ? std::endian::big : std::endian::little;
    std::vector<AudioFileImage::Piece> pieces(2);
    pieces[0].samples = true;
    pieces[1].bytes.resize(std::size_t(padding));
    for (std::size_t i = 0; i < wrapping.parts.size(); ++i)
        append(pieces[i < wrapping.samplesBefore ? 0 : 1].bytes, withSizes(wrapping.parts[i], amounts, order));
    return {std::move(pieces), std::make_shared<PcmSamples>(buffer, wrapping.encoding)};
}

}  // namespace kiv::AudioFileCodec
