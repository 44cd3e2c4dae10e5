#include <array>
#include <memory>

#include "Audio/Files/AudioFileCodec.h"
#include "Audio/Files/ByteFields.h"
#include "Audio/Files/FlacFrames.h"

namespace kiv::AudioFileCodec {
namespace {

constexpr auto order = std::endian::big;
constexpr std::uint32_t lastBlock = 0x80000000;

void appendBlock(Bytes &to, std::uint32_t head, std::span<const std::byte> data) {
    if (data.size() > FlacMetadataBlock::mostBytes) throw AudioFileError::writeCheckFailed();
    std::array<std::byte, 4> header;
    putWord(std::span<std::byte>(header), 0, order, head | std::uint32_t(data.size()));
    append(to, header);
    append(to, data);
}

// The sizes of the frames and the checksum of the samples stay 0, which means that they are not known.
Bytes streamInfo(const AudioEditorBuffer &buffer, int bits) {
    constexpr std::size_t size = 34, sizes = 0, format = 10;
    constexpr std::uint32_t blockSize = FlacFrames::frameSamples;
    constexpr std::int64_t mostFrames = (std::int64_t(1) << 36) - 1;  // more are not known either
    const auto frames = std::uint64_t(buffer.frames() > mostFrames ? 0 : buffer.frames());
    Bytes info(size);
    putWord(std::span(info), sizes, order, blockSize << 16 | blockSize);
    putWord(std::span(info), format, order,
            std::uint64_t(buffer.sampleRate()) << 44 | std::uint64_t(buffer.channels() - 1) << 41 |
                std::uint64_t(bits - 1) << 36 | frames);
    return info;
}

}  // namespace

AudioFileImage flacImage(const AudioFileContents &contents, int bits) {
    const AudioEditorBuffer &buffer = contents.buffer;
    if (bits < 4 || bits > 32 || buffer.channels() > FlacFrames::mostChannels || buffer.sampleRate() > FlacFrames::highestRate)
        throw AudioFileError::writeCheckFailed();
    const auto &kept = contents.flacMetadata;
    Bytes head = contents.leading;
    append(head, "fLaC");
    appendBlock(head, kept.empty() ? lastBlock : 0, streamInfo(buffer, bits));
    for (std::size_t i = 0; i < kept.size(); ++i) {
        const std::uint32_t last = i + 1 == kept.size() ? lastBlock : 0;
        appendBlock(head, last | std::uint32_t(kept[i].type) << 24, kept[i].data);
    }
    std::vector<AudioFileImage::Piece> pieces{{std::move(head), true}, {contents.trailing, false}};
    return {std::move(pieces), std::make_shared<FlacFrames>(buffer, bits)};
}

}  // namespace kiv::AudioFileCodec
