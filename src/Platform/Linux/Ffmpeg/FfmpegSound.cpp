#include "Platform/Linux/Ffmpeg/FfmpegSound.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/mem.h>
#include <libavutil/opt.h>
}

#include <algorithm>
#include <array>
#include <cstring>
#include <map>
#include <utility>
#include <vector>

#include "Platform/Linux/Ffmpeg/FfmpegInput.h"

namespace kiv {
namespace {

constexpr const char *damaged = "its audio data is damaged";
constexpr const char *nothingKnown = "the part that describes its sound is damaged or missing";

struct FreeDecoder {
    void operator()(AVCodecContext *context) const { avcodec_free_context(&context); }
};
struct FreeFrame {
    void operator()(AVFrame *frame) const { av_frame_free(&frame); }
};
struct FreePacket {
    void operator()(AVPacket *packet) const { av_packet_free(&packet); }
};
struct Kind {
    const char *name, *identifier;
};

// FLAC inside another kind of file is not what the FLAC writer writes, so it goes by another name.
Kind kindOf(AVCodecID codec) {
    static const std::map<AVCodecID, Kind> kinds{
        {AV_CODEC_ID_AAC, {"AAC", "aac "}},         {AV_CODEC_ID_ALAC, {"ALAC", "alac"}},
        {AV_CODEC_ID_WAVPACK, {"WavPack", "wvpk"}}, {AV_CODEC_ID_WMAV1, {"WMA", "wma "}},
        {AV_CODEC_ID_WMAV2, {"WMA", "wma "}},       {AV_CODEC_ID_WMAPRO, {"WMA", "wma "}},
        {AV_CODEC_ID_WMALOSSLESS, {"WMA", "wma "}}, {AV_CODEC_ID_MP3, {"MP3", ".mp3"}},
        {AV_CODEC_ID_MP2, {"MP2", ".mp2"}},         {AV_CODEC_ID_MP1, {"MP1", ".mp1"}},
        {AV_CODEC_ID_FLAC, {"FLAC", "fLaO"}},       {AV_CODEC_ID_VORBIS, {"Vorbis", "vorb"}},
        {AV_CODEC_ID_OPUS, {"Opus", "opus"}},       {AV_CODEC_ID_AC3, {"AC-3", "ac-3"}},
        {AV_CODEC_ID_EAC3, {"E-AC-3", "ec-3"}},     {AV_CODEC_ID_APE, {"Monkey's Audio", "ape "}},
        {AV_CODEC_ID_TTA, {"TTA", "tta "}},         {AV_CODEC_ID_DTS, {"DTS", "dts "}},
    };
    const auto kind = kinds.find(codec);
    return kind == kinds.end() ? Kind{nullptr, "lpcm"} : kind->second;
}

std::string typeNameOf(const AVFormatContext &file, AVCodecID codec) {
    if (const char *known = kindOf(codec).name) return known;
    const char *name = avcodec_get_name(codec);
    return name ? name : file.iformat->long_name;
}

// WavPack can be either, and nearly always is lossless.
bool isLossless(AVCodecID codec) {
    const AVCodecDescriptor *descriptor = avcodec_descriptor_get(codec);
    const bool isNever = descriptor && (descriptor->props & AV_CODEC_PROP_LOSSY) && codec != AV_CODEC_ID_WAVPACK;
    return descriptor && (descriptor->props & AV_CODEC_PROP_LOSSLESS) && !isNever;
}

bool isFloatFormat(AVSampleFormat format) {
    const AVSampleFormat packed = av_get_packed_sample_fmt(format);
    return packed == AV_SAMPLE_FMT_FLT || packed == AV_SAMPLE_FMT_DBL;
}

DecodedFormat described(const AVFormatContext &file, const AVCodecContext &decoder) {
    DecodedFormat format{.typeName = typeNameOf(file, decoder.codec_id),
                         .identifier = kindOf(decoder.codec_id).identifier,
                         .isFloat = isFloatFormat(decoder.sample_fmt),
                         .channels = decoder.ch_layout.nb_channels,
                         .sampleRate = decoder.sample_rate};
    const int width = 8 * av_get_bytes_per_sample(decoder.sample_fmt);
    const int told = decoder.bits_per_raw_sample;
    if (isLossless(decoder.codec_id)) format.bits = told > 0 && told <= width ? told : width;
    return format;
}

// A sample as FFmpeg decodes it, at the top of its width.
float toFloat(std::uint8_t sample) { return float(int(sample) - 128) * 0x1p-7f; }
float toFloat(std::int16_t sample) { return float(sample) * 0x1p-15f; }
float toFloat(std::int32_t sample) { return float(sample) * 0x1p-31f; }
float toFloat(std::int64_t sample) { return float(double(sample) * 0x1p-63); }
float toFloat(float sample) { return sample; }
float toFloat(double sample) { return float(sample); }
// The same at the top of 32 bits. Floats are never asked for that way.
std::int32_t toWide(std::uint8_t sample) { return std::int32_t(std::uint32_t(sample - 128) << 24); }
std::int32_t toWide(std::int16_t sample) { return std::int32_t(std::uint32_t(sample) << 16); }
std::int32_t toWide(std::int32_t sample) { return sample; }
std::int32_t toWide(std::int64_t sample) {
    return std::int32_t(std::min<std::int64_t>((sample >> 32) + (sample >> 31 & 1), INT32_MAX));
}
std::int32_t toWide(double) { return 0; }
void put(float &out, auto sample) { out = toFloat(sample); }
void put(std::int32_t &out, auto sample) { out = toWide(sample); }

// `count` samples of one channel, which in a packed frame are `stride` apart.
template <class Sample, class Out>
void convert(const std::uint8_t *in, std::size_t stride, std::size_t count, Out *out, std::size_t channels) {
    const auto *samples = reinterpret_cast<const Sample *>(in);
    for (std::size_t i = 0; i < count; ++i) put(out[i * channels], samples[i * stride]);
}

template <class Out>
void convertChannel(const AVFrame &frame, std::size_t channel, std::size_t from, std::size_t count, Out *out) {
    const auto format = AVSampleFormat(frame.format);
    const auto channels = std::size_t(frame.ch_layout.nb_channels), bytes = std::size_t(av_get_bytes_per_sample(format));
    const bool isPlanar = av_sample_fmt_is_planar(format) != 0;
    const std::size_t stride = isPlanar ? 1 : channels;
    const std::uint8_t *in = frame.extended_data[isPlanar ? channel : 0] + (from * stride + (isPlanar ? 0 : channel)) * bytes;
    out += channel;
    switch (av_get_packed_sample_fmt(format)) {
        case AV_SAMPLE_FMT_U8:
            return convert<std::uint8_t>(in, stride, count, out, channels);
        case AV_SAMPLE_FMT_S16:
            return convert<std::int16_t>(in, stride, count, out, channels);
        case AV_SAMPLE_FMT_S32:
            return convert<std::int32_t>(in, stride, count, out, channels);
        case AV_SAMPLE_FMT_S64:
            return convert<std::int64_t>(in, stride, count, out, channels);
        case AV_SAMPLE_FMT_FLT:
            return convert<float>(in, stride, count, out, channels);
        default:
            return convert<double>(in, stride, count, out, channels);
    }
}

class FfmpegSound : public DecodedSound {
public:
    explicit FfmpegSound(const ByteSource &source) : input_(source) {}

    // False when there is no sound in it that can be decoded.
    bool open(const AVInputFormat *kind) {
        const bool isThere = input_.open(kind);
        input_.rethrow();
        if (!isThere) throw DecodeFault(nothingKnown);
        return avformat_find_stream_info(input_.file(), nullptr) >= 0 && openDecoder();
    }
    void rethrow() const { input_.rethrow(); }

    const DecodedFormat &format() const override { return format_; }
    std::int64_t read(std::span<float> out) override { return readAs(out); }
    std::int64_t read(std::span<std::int32_t> out) override { return readAs(out); }
    std::optional<std::int64_t> countFrames() override { return std::nullopt; }
    DecodedEnd end() const override {
        const bool isKnown = statedFrames() && (format_.bits > 0 || missingFrames() > 0);
        return {.missingFrames = missingFrames(), .damagedFrames = damagedFrames_, .isCutOff = isBroken_ && !isKnown};
    }

private:
    bool openDecoder() {
        const AVCodec *codec = nullptr;
        stream_ = av_find_best_stream(input_.file(), AVMEDIA_TYPE_AUDIO, -1, -1, &codec, 0);
        if (stream_ < 0 || !codec) return isUnknown();
        for (unsigned i = 0; i < input_.file()->nb_streams; ++i)
            if (int(i) != stream_) input_.file()->streams[i]->discard = AVDISCARD_ALL;
        decoder_.reset(avcodec_alloc_context3(codec));
        AVStream *stream = input_.file()->streams[stream_];
        if (!decoder_ || avcodec_parameters_to_context(decoder_.get(), stream->codecpar) < 0) return false;
        decoder_->pkt_timebase = stream->time_base;
        decoder_->err_recognition |= AV_EF_CRCCHECK;
        const bool isOpen = avcodec_open2(decoder_.get(), codec, nullptr) >= 0;
        format_ = described(*input_.file(), *decoder_);
        if (!isOpen || format_.channels <= 0 || format_.sampleRate <= 0 || decoder_->sample_fmt == AV_SAMPLE_FMT_NONE)
            throw DecodeFault(nothingKnown);
        return true;
    }

    // Sound of which a file does not get to say what it is.
    bool isUnknown() const {
        const std::span streams(input_.file()->streams, input_.file()->nb_streams);
        const bool isSound = std::ranges::any_of(streams, [](const AVStream *stream) {
            const AVCodecParameters &told = *stream->codecpar;
            return told.codec_type == AVMEDIA_TYPE_AUDIO && avcodec_find_decoder(told.codec_id) &&
                   (told.sample_rate <= 0 || told.ch_layout.nb_channels <= 0);
        });
        if (isSound) throw DecodeFault(nothingKnown);
        return false;
    }

    template <class Sample>
    std::int64_t readAs(std::span<Sample> out) {
        const auto channels = std::size_t(format_.channels), wanted = out.size() / channels;
        std::size_t done = 0;
        while (done < wanted && (silent_ > 0 || used_ < std::size_t(frame_->nb_samples) || advance())) {
            const std::size_t left = silent_ > 0 ? silent_ : std::size_t(frame_->nb_samples) - used_;
            const std::size_t count = std::min(wanted - done, left);
            Sample *to = out.data() + done * channels;
            if (silent_ > 0)
                std::fill_n(to, count * channels, Sample(0));
            else
                for (std::size_t c = 0; c < channels; ++c) convertChannel(*frame_, c, used_, count, to);
            (silent_ > 0 ? silent_ -= count : used_ += count);
            done += count;
        }
        frames_ += std::int64_t(done);
        return std::int64_t(done);
    }

    // The next frame that holds anything, with silence before it in the place of others; false at the end.
    bool advance() {
        used_ = 0;
        for (;;) {
            const int got = avcodec_receive_frame(decoder_.get(), frame_.get());
            if (got == AVERROR_EOF) return endsWell(), false;
            if (got == AVERROR(EAGAIN)) {
                feed();
                continue;
            }
            if (got < 0) {
                lose();
                continue;
            }
            if (frame_->ch_layout.nb_channels != format_.channels || frame_->sample_rate != format_.sampleRate)
                throw DecodeFault("its channels or sample rate change on the way");
            if (frame_->nb_samples <= 0) continue;
            frameLength_ = frame_->nb_samples;
            silent_ = std::exchange(lost_, 0);
            damagedFrames_ += std::int64_t(silent_);
            return true;
        }
    }

    // What is lost at the end is missing. A file of which nothing could be decoded is no sound.
    void endsWell() {
        isBroken_ = isBroken_ || lost_ > 0;
        if (isBroken_ && frameLength_ == 0) throw DecodeFault(damaged);
    }

    // Silence will stand in the place of a packet that cannot be decoded, as long as the frame before it, once another comes.
    void lose() {
        const int length = frameLength_ > 0 ? frameLength_ : decoder_->frame_size;
        if (length <= 0) throw DecodeFault(damaged);
        lost_ += std::size_t(length);
    }

    // Gives the decoder the next packet, or the end. A packet that it cannot take is one that is damaged.
    void feed() {
        for (;;) {
            av_packet_unref(packet_.get());
            const int got = av_read_frame(input_.file(), packet_.get());
            input_.rethrow();
            if (got < 0) {
                isBroken_ = got != AVERROR_EOF;
                avcodec_send_packet(decoder_.get(), nullptr);
                return;
            }
            if (packet_->stream_index != stream_) continue;
            if (avcodec_send_packet(decoder_.get(), packet_.get()) < 0) lose();
            return;
        }
    }

    // The length that the file states.
    std::optional<std::int64_t> statedFrames() const {
        const AVFormatContext &file = *input_.file();
        const AVStream &stream = *file.streams[stream_];
        const bool isAlone = file.nb_streams == 1, isOwn = stream.duration > 0;
        const std::int64_t stated = isOwn ? stream.duration : isAlone ? file.duration : 0;
        if (stated <= 0 || file.duration_estimation_method != AVFMT_DURATION_FROM_STREAM) return std::nullopt;
        return av_rescale_q(stated, isOwn ? stream.time_base : AV_TIME_BASE_Q, {1, int(format_.sampleRate)});
    }

    // It may be told in milliseconds, and need not be exact where frames are dropped at the ends.
    std::int64_t missingFrames() const {
        const std::int64_t inexact = format_.sampleRate / (format_.bits > 0 ? 500 : 10);
        const std::int64_t missing = statedFrames().value_or(0) - frames_;
        return missing > (isBroken_ ? 0 : inexact) ? missing : 0;
    }

    FfmpegInput input_;
    std::unique_ptr<AVCodecContext, FreeDecoder> decoder_;
    std::unique_ptr<AVPacket, FreePacket> packet_{av_packet_alloc()};
    std::unique_ptr<AVFrame, FreeFrame> frame_{av_frame_alloc()};
    int stream_ = -1;
    std::size_t used_ = 0, silent_ = 0;
    std::size_t lost_ = 0;  // since the last one
    int frameLength_ = 0;   // of the last one that was decoded
    std::int64_t frames_ = 0, damagedFrames_ = 0;
    bool isBroken_ = false;  // the file could not be read on
    DecodedFormat format_;
};

}  // namespace

std::unique_ptr<DecodedSound> openWithFfmpeg(const ByteSource &source) {
    constexpr std::size_t mostBytesAtOnce = std::size_t(256) << 20;  // whatever a damaged file asks for
    av_max_alloc(mostBytesAtOnce);
    av_log_set_level(AV_LOG_QUIET);
    const AVInputFormat *kind = inputFormatOf(source);
    if (!kind) return nullptr;
    auto sound = std::make_unique<FfmpegSound>(source);
    const bool isOpen = sound->open(kind);
    sound->rethrow();
    if (!isOpen) return nullptr;
    return sound;
}

}  // namespace kiv
