#include "Platform/Linux/Decoders/FlacSound.h"

#include <FLAC/stream_decoder.h>

#include <array>
#include <string_view>
#include <vector>

#include "Platform/Linux/Decoders/CallbackSource.h"

namespace kiv {
namespace {

constexpr const char *damaged = "the FLAC data is damaged";

// Where the stream starts: behind an ID3 tag that some programs put there.
std::int64_t streamStart(const ByteSource &source) {
    std::array<std::byte, 10> head;
    if (source.read(0, head) < head.size()) return 0;
    const auto at = [&](std::size_t i) { return std::to_integer<std::int64_t>(head[i]); };
    if (at(0) != 'I' || at(1) != 'D' || at(2) != '3') return 0;
    const std::int64_t footer = at(5) & 0x10 ? 10 : 0;
    return 10 + footer + (at(6) << 21 | at(7) << 14 | at(8) << 7 | at(9));
}

bool isFlac(const ByteSource &source) {
    std::array<char, 4> mark;
    const auto bytes = std::as_writable_bytes(std::span(mark));
    return source.read(streamStart(source), bytes) == mark.size() && std::string_view(mark.data(), mark.size()) == "fLaC";
}

class FlacSound : public DecodedSound {
public:
    explicit FlacSound(const ByteSource &source) : source_(source), decoder_(FLAC__stream_decoder_new()) {
        if (!decoder_) throw std::bad_alloc();
        const auto status =
            FLAC__stream_decoder_init_stream(decoder_.get(), readCallback, seekCallback, tellCallback, lengthCallback,
                                             endCallback, writeCallback, metadataCallback, errorCallback, this);
        if (status != FLAC__STREAM_DECODER_INIT_STATUS_OK) throw DecodeFault(damaged);
        FLAC__stream_decoder_process_until_end_of_metadata(decoder_.get());
        source_.rethrow();
        if (total_ < 0 || state() == FLAC__STREAM_DECODER_END_OF_STREAM) throw DecodeFault(damaged);
    }

    const DecodedFormat &format() const override { return format_; }
    std::int64_t read(std::span<float> out) override {
        const float scale = 1.0f / float(std::int64_t(1) << (format_.bits - 1));
        return readAs(out, [scale](FLAC__int32 sample) { return float(sample) * scale; });
    }
    std::int64_t read(std::span<std::int32_t> out) override {
        const int shift = 32 - format_.bits;
        return readAs(out, [shift](FLAC__int32 sample) { return std::int32_t(std::uint32_t(sample) << shift); });
    }

    // The first block must be the start, and the last sample where the file says, with nothing behind it.
    std::optional<std::int64_t> countFrames() override {
        if (total_ == 0 || !advance() || nextFrame_ != std::int64_t(held_)) return std::nullopt;
        isCounting_ = true;
        const bool isThere = FLAC__stream_decoder_seek_absolute(decoder_.get(), FLAC__uint64(total_ - 1));
        source_.rethrow();
        if (!isThere || held_ != 1) return std::nullopt;
        isDamaged_ = false;  // what was tried on the way there does not count
        if (advance()) return std::nullopt;
        return total_;
    }

private:
    struct Delete {
        void operator()(FLAC__StreamDecoder *decoder) const { FLAC__stream_decoder_delete(decoder); }
    };

    FLAC__StreamDecoderState state() const { return FLAC__stream_decoder_get_state(decoder_.get()); }

    template <class Sample, class Convert>
    std::int64_t readAs(std::span<Sample> out, Convert convert) {
        const auto channels = std::size_t(format_.channels), wanted = out.size() / channels;
        std::size_t done = 0;
        while (done < wanted && (used_ < held_ || advance())) {
            const std::size_t count = std::min(wanted - done, held_ - used_);
            for (std::size_t c = 0; c < channels; ++c) {
                const FLAC__int32 *in = frame_.data() + c * stride_ + used_;
                Sample *to = out.data() + done * channels + c;
                for (std::size_t i = 0; i < count; ++i) to[i * channels] = convert(in[i]);
            }
            done += count;
            used_ += count;
        }
        return std::int64_t(done);
    }

    // Decodes the next block; false at the end.
    bool advance() {
        used_ = held_ = 0;
        while (held_ == 0) {
            const bool went = FLAC__stream_decoder_process_single(decoder_.get());
            source_.rethrow();
            if (isDamaged_ || !went) throw DecodeFault(damaged);
            if (state() == FLAC__STREAM_DECODER_END_OF_STREAM) break;
        }
        return held_ > 0;
    }

    void takeInfo(const FLAC__StreamMetadata_StreamInfo &info) {
        total_ = std::int64_t(info.total_samples);
        format_ = {.typeName = "FLAC",
                   .identifier = "flac",
                   .bits = int(info.bits_per_sample),
                   .channels = info.channels,
                   .sampleRate = info.sample_rate};
    }

    // A block that is not where the last one ended, or of another format, means that something is missing.
    void takeBlock(const FLAC__Frame &frame, const FLAC__int32 *const samples[]) {
        const FLAC__FrameHeader &header = frame.header;
        if (header.channels != format_.channels || int(header.bits_per_sample) != format_.bits) isDamaged_ = true;
        if (isDamaged_) return;
        const auto number = std::int64_t(header.number.sample_number);
        const bool isFirst = nextFrame_ < 0 && !hasLostSync_;  // of a recorded stream, which may start anywhere
        if (!isCounting_ && !isFirst && number != std::max<std::int64_t>(nextFrame_, 0)) isDamaged_ = true;
        held_ = header.blocksize;
        nextFrame_ = number + header.blocksize;
        stride_ = held_;
        frame_.resize(stride_ * header.channels);
        for (std::size_t c = 0; c < header.channels; ++c)
            std::copy_n(samples[c], held_, frame_.begin() + std::ptrdiff_t(c * stride_));
    }

    static FlacSound &self(void *data) { return *static_cast<FlacSound *>(data); }
    static FLAC__StreamDecoderReadStatus readCallback(const FLAC__StreamDecoder *, FLAC__byte out[], size_t *bytes,
                                                      void *data) {
        CallbackSource &source = self(data).source_;
        *bytes = source.read(out, *bytes);
        if (source.hasFailed()) return FLAC__STREAM_DECODER_READ_STATUS_ABORT;
        return *bytes > 0 ? FLAC__STREAM_DECODER_READ_STATUS_CONTINUE : FLAC__STREAM_DECODER_READ_STATUS_END_OF_STREAM;
    }
    static FLAC__StreamDecoderSeekStatus seekCallback(const FLAC__StreamDecoder *, FLAC__uint64 offset, void *data) {
        self(data).source_.seek(std::int64_t(offset));
        return FLAC__STREAM_DECODER_SEEK_STATUS_OK;
    }
    static FLAC__StreamDecoderTellStatus tellCallback(const FLAC__StreamDecoder *, FLAC__uint64 *offset, void *data) {
        *offset = FLAC__uint64(self(data).source_.position());
        return FLAC__STREAM_DECODER_TELL_STATUS_OK;
    }
    static FLAC__StreamDecoderLengthStatus lengthCallback(const FLAC__StreamDecoder *, FLAC__uint64 *length, void *data) {
        *length = FLAC__uint64(self(data).source_.size());
        return FLAC__STREAM_DECODER_LENGTH_STATUS_OK;
    }
    static FLAC__bool endCallback(const FLAC__StreamDecoder *, void *data) { return self(data).source_.isAtEnd(); }
    static FLAC__StreamDecoderWriteStatus writeCallback(const FLAC__StreamDecoder *, const FLAC__Frame *frame,
                                                        const FLAC__int32 *const samples[], void *data) {
        try {
            self(data).takeBlock(*frame, samples);
            return FLAC__STREAM_DECODER_WRITE_STATUS_CONTINUE;
        } catch (...) {
            return FLAC__STREAM_DECODER_WRITE_STATUS_ABORT;
        }
    }
    static void metadataCallback(const FLAC__StreamDecoder *, const FLAC__StreamMetadata *metadata, void *data) {
        if (metadata->type == FLAC__METADATA_TYPE_STREAMINFO) self(data).takeInfo(metadata->data.stream_info);
    }
    // A lost sync is told by the gap that it leaves: what stands behind the last block may be a tag.
    static void errorCallback(const FLAC__StreamDecoder *, FLAC__StreamDecoderErrorStatus status, void *data) {
        const bool isMismatch = status == FLAC__STREAM_DECODER_ERROR_STATUS_FRAME_CRC_MISMATCH;
        (isMismatch ? self(data).isDamaged_ : self(data).hasLostSync_) = true;
    }

    CallbackSource source_;
    std::unique_ptr<FLAC__StreamDecoder, Delete> decoder_;
    DecodedFormat format_;
    std::int64_t total_ = -1;  // as the file says; 0: unknown
    std::vector<FLAC__int32> frame_;
    std::size_t stride_ = 0, held_ = 0, used_ = 0;
    std::int64_t nextFrame_ = -1;  // where the next block must start; below 0 before the first
    bool isDamaged_ = false, hasLostSync_ = false;
    bool isCounting_ = false;
};

}  // namespace

std::unique_ptr<DecodedSound> openFlac(const ByteSource &source) {
    if (!isFlac(source)) return nullptr;
    return std::make_unique<FlacSound>(source);
}

}  // namespace kiv
