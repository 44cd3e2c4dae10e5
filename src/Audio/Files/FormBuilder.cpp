#include "Audio/Files/FormBuilder.h"

#include <algorithm>
#include <array>
#include <memory>
#include <utility>

#include "Audio/Files/AudioFileError.h"
#include "Audio/Files/ByteFields.h"
#include "Audio/Files/PcmSamples.h"

namespace kiv {
namespace {

constexpr std::int64_t largestSize = 0xFFFFFFFF;
constexpr std::size_t formSize = 4;  // where the size of all that follows it stands
constexpr std::int64_t formHeader = 8;

}  // namespace

FormBuilder::FormBuilder(std::string_view group, std::string_view form, std::endian order, const AudioFileContents &contents,
                         Limits limits)
    : contents_(contents), order_(order), pieces_(1) {
    if (!contents.format.encoding) throw AudioFileError::unsupported("no PCM encoding");
    const AudioEditorBuffer &buffer = contents.buffer;
    if (buffer.channels() > limits.channels || buffer.sampleRate() > limits.rate) throw AudioFileError::writeCheckFailed();
    header(group, 0);
    append(bytes(), form);
}

void FormBuilder::chunk(std::string_view id, std::span<const std::byte> payload) {
    header(id, std::int64_t(payload.size()));
    append(bytes(), payload);
    pad(std::int64_t(payload.size()));
}

void FormBuilder::audioChunk(std::string_view id, std::span<const std::byte> chunkHeader) {
    const AudioEditorBuffer &buffer = contents_.buffer;
    sampleBytes_ = buffer.frames() * buffer.channels() * contents_.format.encoding->bytes;
    const std::int64_t size = std::int64_t(chunkHeader.size()) + sampleBytes_;
    header(id, size);
    append(bytes(), chunkHeader);
    pieces_.back().samples = true;
    pieces_.emplace_back();
    pad(size);
}

void FormBuilder::raw(std::span<const std::byte> all) { append(bytes(), all); }

AudioFileCodec::AudioFileImage FormBuilder::finish() {
    std::int64_t total = sampleBytes_;
    for (const auto &piece : pieces_) total += std::int64_t(piece.bytes.size());
    if (total - formHeader > largestSize) throw AudioFileError::tooLarge();
    putWord(std::span(pieces_.front().bytes), formSize, order_, std::uint32_t(total - formHeader));
    return {std::move(pieces_), std::make_shared<PcmSamples>(contents_.buffer, *contents_.format.encoding)};
}

// A size that does not fit here makes the form too large as well, which finish() finds.
void FormBuilder::header(std::string_view id, std::int64_t size) {
    std::array<std::byte, 4> field;
    putWord(std::span<std::byte>(field), 0, order_, std::uint32_t(size));
    append(bytes(), id);
    append(bytes(), field);
}

void FormBuilder::pad(std::int64_t size) {
    if (size % 2 != 0) bytes().push_back(std::byte{0});
}

const AudioFileChunk *firstChunk(const AudioFileContents &contents, std::string_view id) {
    const auto found = std::find_if(contents.chunks.begin(), contents.chunks.end(),
                                    [&](const AudioFileChunk &chunk) { return chunk.id == id; });
    return found == contents.chunks.end() ? nullptr : &*found;
}

}  // namespace kiv
