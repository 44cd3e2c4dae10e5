#include "Platform/Linux/Decoders/SndfileSound.h"

#include <sndfile.h>

#include <algorithm>
#include <array>
#include <span>
#include <vector>

#include "Platform/Linux/Decoders/CallbackSource.h"
#include "Platform/Linux/Decoders/OggLinks.h"
#include "Platform/Linux/Decoders/SndfileKinds.h"

namespace kiv {
namespace {

struct Named {
    int value;
    const char *name;
};

template <std::size_t count>
const char *nameOf(const std::array<Named, count> &names, int value, const char *otherwise) {
    const auto found = std::find_if(names.begin(), names.end(), [&](const Named &each) { return each.value == value; });
    return found == names.end() ? otherwise : found->name;
}

constexpr std::array majors{
    Named{SF_FORMAT_WAV, "WAV"},     Named{SF_FORMAT_WAVEX, "WAV"}, Named{SF_FORMAT_AIFF, "AIFC"},
    Named{SF_FORMAT_AU, "AU"},       Named{SF_FORMAT_CAF, "CAF"},   Named{SF_FORMAT_W64, "W64"},
    Named{SF_FORMAT_RF64, "RF64"},   Named{SF_FORMAT_OGG, "Ogg"},   Named{SF_FORMAT_FLAC, "FLAC"},
    Named{SF_FORMAT_VOC, "VOC"},     Named{SF_FORMAT_SVX, "8SVX"},  Named{SF_FORMAT_NIST, "NIST"},
    Named{SF_FORMAT_IRCAM, "IRCAM"}, Named{SF_FORMAT_PAF, "PAF"},   Named{SF_FORMAT_MPC2K, "MPC 2000"},
};

// Where the kind of samples says more than the kind of file.
constexpr std::array kinds{
    Named{SF_FORMAT_VORBIS, "Ogg Vorbis"},
    Named{SF_FORMAT_OPUS, "Opus"},
};

constexpr std::array identifiers{
    Named{SF_FORMAT_VORBIS, "vorb"},  Named{SF_FORMAT_OPUS, "opus"},      Named{SF_FORMAT_ULAW, "ulaw"},
    Named{SF_FORMAT_ALAW, "alaw"},    Named{SF_FORMAT_IMA_ADPCM, "ima4"}, Named{SF_FORMAT_MS_ADPCM, "msad"},
    Named{SF_FORMAT_GSM610, "gsm "},  Named{SF_FORMAT_ALAC_16, "alac"},   Named{SF_FORMAT_ALAC_20, "alac"},
    Named{SF_FORMAT_ALAC_24, "alac"}, Named{SF_FORMAT_ALAC_32, "alac"},
};

int bitsOf(int kind) {
    switch (kind) {
        case SF_FORMAT_PCM_S8:
        case SF_FORMAT_PCM_U8:
        case SF_FORMAT_DPCM_8:
            return 8;
        case SF_FORMAT_PCM_16:
        case SF_FORMAT_DPCM_16:
        case SF_FORMAT_ALAC_16:
            return 16;
        case SF_FORMAT_ALAC_20:
            return 20;
        case SF_FORMAT_PCM_24:
        case SF_FORMAT_ALAC_24:
            return 24;
        case SF_FORMAT_PCM_32:
        case SF_FORMAT_ALAC_32:
        case SF_FORMAT_FLOAT:
            return 32;
        case SF_FORMAT_DOUBLE:
            return 64;
        default:
            return 0;
    }
}

// The size that a big-endian RIFF file states, and the 64-bit ones, are the library's business; what the user knows is the
// name.
std::string typeNameOf(const ByteSource &source, int format) {
    std::array<char, 4> head{};
    source.read(0, std::as_writable_bytes(std::span(head)));
    const std::string mark(head.data(), head.size());
    if (mark == "RIFX" || mark == "BW64") return mark;
    return nameOf(kinds, format & SF_FORMAT_SUBMASK, nameOf(majors, format & SF_FORMAT_TYPEMASK, "Audio"));
}

DecodedFormat described(const ByteSource &source, const SF_INFO &info) {
    const int kind = info.format & SF_FORMAT_SUBMASK;
    return {.typeName = typeNameOf(source, info.format),
            .identifier = nameOf(identifiers, kind, "lpcm"),
            .bits = bitsOf(kind),
            .isFloat = kind == SF_FORMAT_FLOAT || kind == SF_FORMAT_DOUBLE,
            .channels = info.channels,
            .sampleRate = info.samplerate};
}

// Vorbis and Opus have channels in an order of their own (Vorbis I, 4.3.9; RFC 7845, 5.1.1.2): which of theirs stand at the
// places that all other formats have them in. Nothing where the orders agree.
std::span<const int> channelOrder(int kind, std::int64_t channels) {
    static constexpr std::array<int, 3> three{0, 2, 1};
    static constexpr std::array<int, 5> five{0, 2, 1, 3, 4};
    static constexpr std::array<int, 6> six{0, 2, 1, 5, 3, 4};
    static constexpr std::array<int, 7> seven{0, 2, 1, 6, 5, 3, 4};
    static constexpr std::array<int, 8> eight{0, 2, 1, 7, 5, 6, 3, 4};
    if (kind != SF_FORMAT_VORBIS && kind != SF_FORMAT_OPUS) return {};
    static constexpr std::array<std::span<const int>, 9> orders{{{}, {}, {}, three, {}, five, six, seven, eight}};
    return channels < std::int64_t(orders.size()) ? orders[std::size_t(channels)] : std::span<const int>();
}

template <class Sample>
void reorder(std::span<Sample> samples, std::span<const int> order) {
    std::array<Sample, 8> frame;
    for (std::size_t at = 0; at + order.size() <= samples.size(); at += order.size()) {
        std::copy_n(samples.begin() + std::ptrdiff_t(at), order.size(), frame.begin());
        for (std::size_t c = 0; c < order.size(); ++c) samples[at + c] = frame[std::size_t(order[c])];
    }
}

constexpr std::array texts{
    Named{SF_STR_TITLE, "TITLE"},     Named{SF_STR_ARTIST, "ARTIST"},           Named{SF_STR_ALBUM, "ALBUM"},
    Named{SF_STR_COMMENT, "COMMENT"}, Named{SF_STR_COPYRIGHT, "COPYRIGHT"},     Named{SF_STR_DATE, "DATE"},
    Named{SF_STR_GENRE, "GENRE"},     Named{SF_STR_TRACKNUMBER, "TRACKNUMBER"},
};

std::vector<std::pair<std::string, std::string>> textsOf(SNDFILE *file) {
    std::vector<std::pair<std::string, std::string>> found;
    for (const Named &text : texts)
        if (const char *value = sf_get_string(file, text.value); value && *value) found.emplace_back(text.name, value);
    return found;
}

CallbackSource &callbackSource(void *data) { return *static_cast<CallbackSource *>(data); }
sf_count_t lengthOf(void *data) { return callbackSource(data).size(); }
sf_count_t seekIn(sf_count_t offset, int whence, void *data) {
    CallbackSource &source = callbackSource(data);
    const std::int64_t from = whence == SEEK_SET ? 0 : whence == SEEK_CUR ? source.position() : source.size();
    source.seek(from + offset);
    return source.position();
}
sf_count_t readFrom(void *out, sf_count_t count, void *data) {
    return sf_count_t(callbackSource(data).read(out, std::size_t(std::max<sf_count_t>(count, 0))));
}
sf_count_t writeTo(const void *, sf_count_t, void *) { return 0; }
sf_count_t tellOf(void *data) { return callbackSource(data).position(); }

class SndfileSound : public DecodedSound {
public:
    explicit SndfileSound(const ByteSource &source) : source_(source) {
        SF_VIRTUAL_IO io{lengthOf, seekIn, readFrom, writeTo, tellOf};
        file_.reset(sf_open_virtual(&io, SFM_READ, &info_, &source_));
        source_.rethrow();
        if (!file_) return;
        format_ = described(source, info_);
        order_ = channelOrder(info_.format & SF_FORMAT_SUBMASK, format_.channels);
    }

    bool isOpen() const { return file_ && info_.channels > 0 && info_.samplerate > 0; }

    const DecodedFormat &format() const override { return format_; }
    std::vector<std::pair<std::string, std::string>> texts() const { return textsOf(file_.get()); }
    std::int64_t read(std::span<float> out) override { return readAs(out, sf_readf_float); }
    std::int64_t read(std::span<std::int32_t> out) override { return readAs(out, sf_readf_int); }

    // The last frame must be there, and none behind it.
    std::optional<std::int64_t> countFrames() override {
        std::vector<float> frames(2 * std::size_t(format_.channels));
        const bool isThere = seeksFromItsStart() && info_.seekable && info_.frames > 0 &&
                             sf_seek(file_.get(), info_.frames - 1, SEEK_SET) >= 0 &&
                             sf_readf_float(file_.get(), frames.data(), 2) == 1;
        source_.rethrow();
        if (!isThere) return std::nullopt;
        return info_.frames;
    }

private:
    // A header that is wrong about where the samples begin may send a seek elsewhere than reading starts. Samples that are not
    // packed stand where they are looked for.
    bool seeksFromItsStart() {
        const int kind = info_.format & SF_FORMAT_SUBMASK;
        const bool isPacked = bitsOf(kind) == 0 && kind != SF_FORMAT_ULAW && kind != SF_FORMAT_ALAW;
        const std::int64_t start = source_.position();
        return isPacked || (sf_seek(file_.get(), 0, SEEK_SET) == 0 && source_.position() == start);
    }

    struct Close {
        void operator()(SNDFILE *file) const { sf_close(file); }
    };

    template <class Sample>
    std::int64_t readAs(std::span<Sample> out, sf_count_t (*readFrames)(SNDFILE *, Sample *, sf_count_t)) {
        const std::int64_t wanted = std::int64_t(out.size()) / format_.channels;
        std::int64_t done = 0;
        while (done < wanted) {
            const sf_count_t count = readFrames(file_.get(), out.data() + done * format_.channels, wanted - done);
            source_.rethrow();
            if (count <= 0) break;
            done += count;
        }
        if (!order_.empty()) reorder(out.first(std::size_t(done * format_.channels)), order_);
        return done;
    }

    CallbackSource source_;
    SF_INFO info_{};
    std::unique_ptr<SNDFILE, Close> file_;
    DecodedFormat format_;
    std::span<const int> order_;
};

}  // namespace

// Of several Ogg streams, one behind the other, the library reads the first alone: they are left to who reads them all.
std::unique_ptr<DecodedSound> openWithSndfile(const ByteSource &source) {
    if (hasSeveralOggLinks(source) || !isForSndfile(source)) return nullptr;
    auto sound = std::make_unique<SndfileSound>(source);
    if (!sound->isOpen()) return nullptr;
    return sound;
}

std::optional<DecodedTags> tagsWithSndfile(const ByteSource &source) {
    if (!isForSndfile(source)) return std::nullopt;
    SndfileSound sound(source);
    if (!sound.isOpen()) return std::nullopt;
    return DecodedTags{sound.texts(), {}, {}};
}

}  // namespace kiv
