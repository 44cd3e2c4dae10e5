#include "Platform/Linux/Decoders/MpegSound.h"

#include <mpg123.h>

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

#include "Platform/Linux/Decoders/CallbackSource.h"
#include "Support/SoundTags.h"

namespace kiv {
namespace {

struct Header {
    bool isThere = false;
    int version = 0;         // 0: 1, 1: 2, 2: 2.5
    int layer = 0;           // 1 … 3
    std::int64_t rate = 0;   // hertz
    std::int64_t bytes = 0;  // of the frame, 0: not told (free format)
    bool isSameKind(const Header &other) const {
        return other.isThere && version == other.version && layer == other.layer && rate == other.rate;
    }
};

// In kilobits a second: layers 1, 2 and 3 of version 1, layer 1 and layers 2 and 3 of the others.
constexpr int bitRates[5][15] = {{0, 32, 64, 96, 128, 160, 192, 224, 256, 288, 320, 352, 384, 416, 448},
                                 {0, 32, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320, 384},
                                 {0, 32, 40, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320},
                                 {0, 32, 48, 56, 64, 80, 96, 112, 128, 144, 160, 176, 192, 224, 256},
                                 {0, 8, 16, 24, 32, 40, 48, 56, 64, 80, 96, 112, 128, 144, 160}};

// The frame header at a place (ISO 11172-3, 2.4.1.3, and 13818-3).
Header headerAt(const ByteSource &source, std::int64_t at) {
    constexpr std::array<int, 3> rates{44100, 48000, 32000};
    std::array<std::byte, 4> bytes;
    if (source.read(at, bytes) < bytes.size()) return {};
    const auto byte = [&](std::size_t i) { return std::to_integer<unsigned>(bytes[i]); };
    const unsigned version = byte(1) >> 3 & 3, layer = byte(1) >> 1 & 3, bitRate = byte(2) >> 4, rate = byte(2) >> 2 & 3;
    if (byte(0) != 0xFF || byte(1) < 0xE0 || version == 1 || layer == 0 || bitRate == 15 || rate == 3) return {};
    Header header{.isThere = true, .version = version == 3 ? 0 : version == 2 ? 1 : 2, .layer = 4 - int(layer)};
    header.rate = rates[rate] >> header.version;
    const int table = header.version == 0 ? header.layer - 1 : header.layer == 1 ? 3 : 4;
    const std::int64_t bits = std::int64_t(bitRates[table][bitRate]) * 1000, padding = byte(2) >> 1 & 1;
    if (bits == 0) return header;
    const std::int64_t eighths = header.layer == 3 && header.version != 0 ? 72 : 144;
    header.bytes = header.layer == 1 ? (12 * bits / header.rate + padding) * 4 : eighths * bits / header.rate + padding;
    return header;
}

bool hasTwoFrames(const ByteSource &source, std::int64_t start) {
    const Header first = headerAt(source, start);
    if (!first.isThere || first.bytes == 0) return first.isThere;
    const std::int64_t next = start + first.bytes;
    return next + 4 > source.size() || first.isSameKind(headerAt(source, next));
}

// Whether the first frame tells how many there are, in one of the two ways that encoders have for it.
bool tellsLength(const ByteSource &source, std::int64_t start) {
    std::string text(200, '\0');
    text.resize(source.read(start, std::as_writable_bytes(std::span(text))));
    const std::size_t xing = std::min(text.find("Xing"), text.find("Info"));
    const bool hasFrames = xing != text.npos && xing + 8 <= text.size() && (text[xing + 7] & 1) != 0;
    return hasFrames || text.find("VBRI") != text.npos;
}

using Texts = std::vector<std::pair<std::string, std::string>>;

void addText(Texts &texts, const char *key, const mpg123_string *text) {
    if (text && text->p && text->fill > 1 && *text->p) texts.emplace_back(key, text->p);
}

Texts textsOf(mpg123_handle *handle) {
    mpg123_id3v1 *v1 = nullptr;
    mpg123_id3v2 *v2 = nullptr;
    Texts texts;
    if (mpg123_id3(handle, &v1, &v2) != MPG123_OK || !v2) return texts;
    addText(texts, "TITLE", v2->title);
    addText(texts, "ARTIST", v2->artist);
    addText(texts, "ALBUM", v2->album);
    addText(texts, "COMMENT", v2->comment);
    addText(texts, "DATE", v2->year);
    addText(texts, "GENRE", v2->genre);
    for (std::size_t i = 0; i < v2->texts; ++i)
        if (std::string_view(v2->text[i].id, 4) == "TRCK") addText(texts, "TRACKNUMBER", &v2->text[i].text);
    return texts;
}

// Damaged bytes may look like a frame or two of another rate, which are passed over; more of them are another sound.
constexpr std::size_t mostForeign = 16 * 1152 * sizeof(float);

// How many frames are decoded before the one that reading begins with: a frame of 32 kbit/s has some of its bits up to 8
// before.
constexpr long framesBefore = 16;

class MpegSound : public DecodedSound {
public:
    MpegSound(const ByteSource &source, std::int64_t start) : source_(source), handle_(mpg123_new(nullptr, nullptr)) {
        if (!handle_) throw std::bad_alloc();
        mpg123_param(handle_.get(), MPG123_ADD_FLAGS, MPG123_FORCE_FLOAT | MPG123_QUIET | MPG123_GAPLESS, 0);
        mpg123_param(handle_.get(), MPG123_REMOVE_FLAGS, MPG123_AUTO_RESAMPLE, 0);
        mpg123_param(handle_.get(), MPG123_RESYNC_LIMIT, -1, 0);
        mpg123_param(handle_.get(), MPG123_PREFRAMES, framesBefore, 0);
        mpg123_replace_reader_handle(handle_.get(), readFrom, seekIn, nullptr);
        isOpen_ = mpg123_open_handle(handle_.get(), &source_) == MPG123_OK && takeFormat();
        source_.rethrow();
        if (isOpen_) expected_ = std::max<off_t>(mpg123_length(handle_.get()), 0);
        tellsLength_ = tellsLength(source, start);
    }

    bool goTo(std::int64_t frame) {
        isPart_ = true;
        const bool isThere = mpg123_seek(handle_.get(), off_t(frame), SEEK_SET) == off_t(frame);
        source_.rethrow();
        frames_ = frame;
        return isThere;
    }

    bool isOpen() const { return isOpen_; }
    Texts texts() const { return textsOf(handle_.get()); }
    const DecodedFormat &format() const override { return format_; }

    std::int64_t read(std::span<float> out) override {
        const std::size_t frameBytes = sizeof(float) * std::size_t(format_.channels);
        const std::size_t wanted = out.size() / std::size_t(format_.channels) * frameBytes;
        auto *bytes = reinterpret_cast<unsigned char *>(out.data());
        std::size_t done = 0;
        while (done < wanted && !isAtEnd_) {
            std::size_t count = 0;
            const int result = mpg123_read(handle_.get(), bytes + done, wanted - done, &count);
            source_.rethrow();
            (isForeign_ ? foreignBytes_ : done) += count;
            if (foreignBytes_ > (isPart_ ? 0 : mostForeign)) throw DecodeFault("its channels or sample rate change on the way");
            if (result == MPG123_NEW_FORMAT) isForeign_ = !isSameFormat();
            isAtEnd_ = result != MPG123_OK && result != MPG123_NEW_FORMAT;
        }
        const auto frames = std::int64_t(done / frameBytes);
        frames_ += frames;
        return frames;
    }
    std::int64_t read(std::span<std::int32_t>) override { return 0; }

    // What is damaged shows when it is decoded.
    std::optional<std::int64_t> countFrames() override { return std::nullopt; }
    DecodedEnd end() const override {
        return {.missingFrames = tellsLength_ ? std::max<std::int64_t>(expected_ - frames_, 0) : 0};
    }
    std::int64_t expectedFrames() const override { return expected_; }
    std::unique_ptr<DecodedSound> from(const ByteSource &source, std::int64_t frame) const override;

private:
    struct Delete {
        void operator()(mpg123_handle *handle) const { mpg123_delete(handle); }
    };
    struct Format {
        long rate = 0;
        int channels = 0, encoding = 0;
    };

    Format present() const {
        Format format;
        if (mpg123_getformat(handle_.get(), &format.rate, &format.channels, &format.encoding) != MPG123_OK) return {};
        return format;
    }
    bool isSameFormat() const {
        const Format now = present();
        return now.rate == format_.sampleRate && now.channels == format_.channels;
    }

    bool takeFormat() {
        const Format format = present();
        mpg123_frameinfo info{};
        if (format.rate <= 0 || format.channels <= 0 || mpg123_info(handle_.get(), &info) != MPG123_OK) return false;
        constexpr std::array<std::pair<const char *, const char *>, 3> layers{
            {{"MP1", ".mp1"}, {"MP2", ".mp2"}, {"MP3", ".mp3"}}};
        const auto &[name, identifier] = layers[std::size_t(std::clamp(info.layer, 1, 3) - 1)];
        format_ = {.typeName = name, .identifier = identifier, .channels = format.channels, .sampleRate = format.rate};
        // So that it stays with the channels of the start where a few frames have others.
        mpg123_format_none(handle_.get());
        const long *rates = nullptr;
        std::size_t count = 0;
        for (mpg123_rates(&rates, &count); count > 0; --count, ++rates)
            mpg123_format(handle_.get(), *rates, format.channels, MPG123_ENC_FLOAT_32);
        return true;
    }

    static mpg123_ssize_t readFrom(void *data, void *out, std::size_t count) {
        auto &source = *static_cast<CallbackSource *>(data);
        const std::size_t done = source.read(out, count);
        return source.hasFailed() ? -1 : mpg123_ssize_t(done);
    }
    static off_t seekIn(void *data, off_t offset, int whence) {
        auto &source = *static_cast<CallbackSource *>(data);
        source.seek((whence == SEEK_SET ? 0 : whence == SEEK_CUR ? source.position() : source.size()) + offset);
        return off_t(source.position());
    }

    CallbackSource source_;
    std::unique_ptr<mpg123_handle, Delete> handle_;
    DecodedFormat format_;
    std::int64_t expected_ = 0;  // frames in all; a guess from the size where the file does not tell
    std::int64_t frames_ = 0;    // before the next one
    std::size_t foreignBytes_ = 0;
    bool isOpen_ = false, isAtEnd_ = false, tellsLength_ = false;
    bool isPart_ = false;     // does not begin at the start
    bool isForeign_ = false;  // what is being read has another rate
};

std::unique_ptr<MpegSound> opened(const ByteSource &source) {
    const std::int64_t start = endOfTagsAtStart(source);
    if (!hasTwoFrames(source, start)) return nullptr;
    auto sound = std::make_unique<MpegSound>(source, start);
    if (!sound->isOpen()) return nullptr;
    return sound;
}

std::unique_ptr<DecodedSound> MpegSound::from(const ByteSource &source, std::int64_t frame) const {
    auto part = opened(source);
    if (!part || !part->goTo(frame)) return nullptr;
    return part;
}

}  // namespace

bool startsAsMpeg(const ByteSource &source) {
    const std::int64_t start = endOfTagsAtStart(source);
    return start > 0 || headerAt(source, 0).isThere;
}

std::unique_ptr<DecodedSound> openMpeg(const ByteSource &source) { return opened(source); }

std::optional<DecodedTags> tagsOfMpeg(const ByteSource &source) {
    const auto sound = opened(source);
    if (!sound) return std::nullopt;
    return DecodedTags{sound->texts(), {}, {}};
}

}  // namespace kiv
