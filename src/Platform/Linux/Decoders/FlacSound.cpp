#include "Platform/Linux/Decoders/FlacSound.h"

#include <FLAC/stream_decoder.h>

#include <array>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Linux/Decoders/CallbackSource.h"
#include "Support/SoundTags.h"

namespace kiv {
namespace {

constexpr const char *damaged = "the FLAC data is damaged";
constexpr const char *severalStreams = "several FLAC streams stand in it, one behind the other";
constexpr std::string_view streamMark = "fLaC";
constexpr int mostFailures = 100;  // of finding a block behind damage

bool isFlac(const ByteSource &source, std::int64_t start) {
    std::array<char, streamMark.size()> mark;
    const auto bytes = std::as_writable_bytes(std::span(mark));
    return source.read(start, bytes) == mark.size() && std::string_view(mark.data(), mark.size()) == streamMark;
}

class FlacSound : public DecodedSound {
public:
    // Tags before the start and behind the end are kept from the decoder, which might take something in them for a block.
    FlacSound(const ByteSource &source, std::int64_t start, std::int64_t end)
        : whole_(source), start_(start), source_(source, start, end), decoder_(FLAC__stream_decoder_new()) {
        if (!decoder_) throw std::bad_alloc();
        const auto status =
            FLAC__stream_decoder_init_stream(decoder_.get(), readCallback, seekCallback, tellCallback, lengthCallback,
                                             endCallback, writeCallback, metadataCallback, errorCallback, this);
        if (status != FLAC__STREAM_DECODER_INIT_STATUS_OK) throw DecodeFault(damaged);
        FLAC__stream_decoder_process_until_end_of_metadata(decoder_.get());
        source_.rethrow();
        if (total_ < 0 || format_.sampleRate <= 0 || state() == FLAC__STREAM_DECODER_END_OF_STREAM) throw DecodeFault(damaged);
        place_.end = position();
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

    // The first block must be the start, and the last sample where the file says, with nothing like a block behind it.
    std::optional<std::int64_t> countFrames() override {
        const std::int64_t firstBlock = place_.end;
        if (total_ == 0 || !advance() || place_.nextFrame != std::int64_t(held_)) return std::nullopt;
        isCounting_ = true;
        const bool isThere = FLAC__stream_decoder_seek_absolute(decoder_.get(), FLAC__uint64(total_ - 1));
        source_.rethrow();
        if (!isThere || held_ != 1 || isStreamAt(place_.end)) return std::nullopt;
        isBroken_ = false;  // what was tried on the way there does not count
        // The block that was found may be that of another stream.
        if (advance() || isStreamBehind(firstBlock)) return std::nullopt;
        return total_;
    }

    DecodedEnd end() const override {
        // A stream that does not tell its length, and whose last block was cut off.
        const bool isCutOff = total_ == 0 && place_.end < start_ + source_.size() && isBlockAt(place_.end);
        const std::int64_t next = std::max<std::int64_t>(place_.nextFrame, 0);
        return {std::max<std::int64_t>(total_ - next, 0), place_.damagedFrames, place_.end, next, isCutOff};
    }

private:
    // Behind the last block that was read.
    struct Place {
        std::int64_t nextFrame = -1;  // where the next block must start; below 0 before the first
        std::int64_t end = 0;         // in the source
        std::int64_t damagedFrames = 0;
    };
    struct Delete {
        void operator()(FLAC__StreamDecoder *decoder) const { FLAC__stream_decoder_delete(decoder); }
    };

    FLAC__StreamDecoderState state() const { return FLAC__stream_decoder_get_state(decoder_.get()); }

    template <class Sample, class Convert>
    std::int64_t readAs(std::span<Sample> out, Convert convert) {
        const auto channels = std::size_t(format_.channels), wanted = out.size() / channels;
        std::size_t done = 0;
        while (done < wanted && (silent_ > 0 || used_ < held_ || advance())) {
            if (silent_ > 0) {
                const std::size_t count = std::min(wanted - done, silent_);
                std::fill_n(out.data() + done * channels, count * channels, Sample(0));
                done += count;
                silent_ -= count;
                continue;
            }
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
        int failures = 0;
        while (held_ == 0 && state() != FLAC__STREAM_DECODER_END_OF_STREAM && failures < mostFailures) {
            const Place before = place_;
            blocksAtOnce_ = 0;
            isMismatch_ = false;
            failures += FLAC__stream_decoder_process_single(decoder_.get()) ? 0 : 1;
            source_.rethrow();
            if (state() > FLAC__STREAM_DECODER_END_OF_STREAM) throw DecodeFault(damaged);
            if (blocksAtOnce_ > 1) goOnFrom(before);
            if (isBroken_) throw DecodeFault(isStreamAt(before.end) ? severalStreams : damaged);
        }
        const bool holdsNothing = held_ == 0 && place_.nextFrame < 0 && (total_ > 0 || hasLostSync_);
        if (holdsNothing) throw DecodeFault(damaged);
        return held_ > 0;
    }

    // Where blocks are missing, the decoder puts silence in their place, and in that of the one behind them. Started anew it
    // only finds that one.
    void goOnFrom(const Place &place) {
        place_ = place;
        held_ = silent_ = 0;
        isBroken_ = false;
        FLAC__stream_decoder_flush(decoder_.get());
        source_.seek(place.end - start_);
    }

    std::int64_t position() const {
        FLAC__uint64 position = 0;
        return start_ + (FLAC__stream_decoder_get_decode_position(decoder_.get(), &position) ? std::int64_t(position) : 0);
    }

    std::string_view startsAt(std::int64_t offset, std::span<char> out) const {
        return {out.data(), whole_.read(offset, std::as_writable_bytes(out))};
    }
    bool isBlockAt(std::int64_t offset) const {
        std::array<char, 2> sync;
        const std::string_view found = startsAt(offset, sync);
        return found == "\xFF\xF8" || found == "\xFF\xF9";
    }
    bool isStreamAt(std::int64_t offset) const {
        std::array<char, 4> mark;
        return startsAt(offset, mark) == streamMark;
    }

    bool isStreamBehind(std::int64_t offset) const {
        std::string bytes(std::size_t(1) << 20, '\0');
        for (std::size_t count = bytes.size(); count == bytes.size(); offset += std::int64_t(count - streamMark.size())) {
            const std::string_view found = startsAt(offset, bytes);
            if (found.find(streamMark) != found.npos) return true;
            count = found.size();
        }
        return false;
    }

    void takeInfo(const FLAC__StreamMetadata_StreamInfo &info) {
        total_ = std::int64_t(info.total_samples);
        format_ = {.typeName = "FLAC",
                   .identifier = "flac",
                   .bits = int(info.bits_per_sample),
                   .channels = info.channels,
                   .sampleRate = info.sample_rate};
    }

    // A block of another format, or one that is already over, does not belong to this sound.
    void takeBlock(const FLAC__Frame &frame, const FLAC__int32 *const samples[]) {
        const FLAC__FrameHeader &header = frame.header;
        const auto number = std::int64_t(header.number.sample_number), expected = expectedFrame(number);
        if (isMismatch_ && number != expected) return;  // it may be none at all
        ++blocksAtOnce_;
        longestBlock_ = std::max<std::int64_t>(longestBlock_, header.blocksize);
        const bool isOther = header.channels != format_.channels || int(header.bits_per_sample) != format_.bits;
        isBroken_ = isBroken_ || isOther || !canBridge(number - expected);
        if (isBroken_) return;
        held_ = header.blocksize;
        silent_ = std::size_t(number - expected);
        const std::int64_t lost = number - expected + (isMismatch_ ? header.blocksize : 0);
        place_ = {number + header.blocksize, position(), place_.damagedFrames + lost};
        stride_ = held_;
        frame_.resize(stride_ * header.channels);
        for (std::size_t c = 0; c < header.channels; ++c) {
            const auto channel = frame_.begin() + std::ptrdiff_t(c * stride_);
            isMismatch_ ? std::fill_n(channel, held_, 0) : std::copy_n(samples[c], held_, channel);
        }
    }

    // Where the block must start that comes next; a recorded stream may start anywhere.
    std::int64_t expectedFrame(std::int64_t number) const {
        if (isCounting_) return number;
        return place_.nextFrame >= 0 ? place_.nextFrame : hasLostSync_ ? 0 : number;
    }

    // Whether silence can stand for what is gone before a block, so that all behind it stays where it was. No block takes fewer
    // than ten bytes, so there is a limit to what is believed to be gone.
    bool canBridge(std::int64_t gap) const {
        constexpr std::int64_t leastBytes = 10;
        return gap >= 0 && gap / longestBlock_ <= (position() - place_.end) / leastBytes;
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
        const bool isFirst = self(data).total_ < 0;  // damage may look like another
        if (isFirst && metadata->type == FLAC__METADATA_TYPE_STREAMINFO) self(data).takeInfo(metadata->data.stream_info);
    }
    // What is lost is told by the gap that it leaves. A block that is given right after its checksum was found wrong is that
    // one.
    static void errorCallback(const FLAC__StreamDecoder *, FLAC__StreamDecoderErrorStatus status, void *data) {
        self(data).isMismatch_ = status == FLAC__STREAM_DECODER_ERROR_STATUS_FRAME_CRC_MISMATCH;
        self(data).hasLostSync_ = true;
    }

    const ByteSource &whole_;
    const std::int64_t start_;  // of the stream, behind tags
    CallbackSource source_;
    std::unique_ptr<FLAC__StreamDecoder, Delete> decoder_;
    DecodedFormat format_;
    std::int64_t total_ = -1;  // as the file says; 0: unknown
    std::vector<FLAC__int32> frame_;
    std::size_t stride_ = 0, held_ = 0, used_ = 0;
    std::size_t silent_ = 0;  // frames before the block that is held
    Place place_;
    std::int64_t longestBlock_ = 1;
    int blocksAtOnce_ = 0;
    bool isBroken_ = false;    // beyond what silence can stand for
    bool isMismatch_ = false;  // the block at hand is not what its checksum says
    bool hasLostSync_ = false;
    bool isCounting_ = false;
};

// Where a stream may begin and end.
struct Bounds {
    const ByteSource &source;
    std::int64_t start, end;
    FlacSound sound() const { return {source, start, end}; }
};

bool isCertainlyWhole(const Bounds &bounds) {
    try {
        return bounds.sound().countFrames().has_value();
    } catch (const DecodeFault &) {
        return false;
    }
}

std::int64_t framesLost(const Bounds &bounds) {
    try {
        FlacSound sound = bounds.sound();
        std::vector<std::int32_t> block(std::size_t(sound.format().channels << 12));
        while (sound.read(block) > 0) continue;
        return sound.end().missingFrames + sound.end().damagedFrames;
    } catch (const DecodeFault &) {
        return std::numeric_limits<std::int64_t>::max();
    }
}

// Where the blocks end. What looks like a tag are samples, or stands in the metadata, where less is lost with it than without.
std::int64_t streamEnd(const ByteSource &source, std::int64_t start) {
    const std::int64_t end = startOfTagsAtEnd(source, start), size = source.size();
    if (end == size || isCertainlyWhole({source, start, end})) return end;
    const std::int64_t lost = framesLost({source, start, end});
    return lost > 0 && framesLost({source, start, size}) < lost ? size : end;
}

}  // namespace

std::unique_ptr<DecodedSound> openFlac(const ByteSource &source) {
    const std::int64_t start = endOfTagsAtStart(source);
    if (!isFlac(source, start)) return nullptr;
    return std::make_unique<FlacSound>(source, start, streamEnd(source, start));
}

}  // namespace kiv
