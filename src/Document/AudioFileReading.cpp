#include "Document/AudioFileReading.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <string_view>

#include "Audio/Files/AudioFileCodec.h"
#include "Document/DecodedFile.h"

namespace kiv {

namespace {

struct Signature {
    std::size_t offset;
    std::string_view bytes;
    const char *name;
};

constexpr std::array signatures{
    Signature{0, "fLaC", "FLAC"}, Signature{0, "caff", "CAF"},    Signature{0, "OggS", "Ogg"},
    Signature{0, "ID3", "MP3"},   Signature{0, "RF64", "RF64"},   Signature{0, "BW64", "BW64"},
    Signature{0, "RIFX", "RIFX"}, Signature{0, "riff", "Wave64"}, Signature{0, ".snd", "AU"},
    Signature{0, "MThd", "MIDI"}, Signature{4, "ftyp", "MPEG-4"}, Signature{0, "\x1A\x45\xDF\xA3", "Matroska"},
};

// An MPEG audio frame without a tag before it: eleven bits set, a layer, and a bit rate that is none of the forbidden ones.
bool isMpegFrame(std::string_view head) {
    if (head.size() < 3 || head[0] != '\xFF') return false;
    const auto second = std::uint8_t(head[1]), third = std::uint8_t(head[2]);
    return (second & 0xE0) == 0xE0 && (second & 0x06) != 0 && (third & 0xF0) != 0xF0;
}

// Names what stands in a file that we have no reader for, from its first bytes.
std::string describe(const ByteSource &source) {
    std::array<char, 12> bytes{};
    const std::string_view head(bytes.data(), source.read(0, std::as_writable_bytes(std::span(bytes))));
    const auto known = std::find_if(signatures.begin(), signatures.end(), [&](const Signature &signature) {
        return head.size() > signature.offset && head.substr(signature.offset).starts_with(signature.bytes);
    });
    if (known != signatures.end()) return known->name;
    return isMpegFrame(head) ? "MP3" : "unknown kind of file";
}

std::unique_ptr<ByteSource> opened(Files &files, const std::string &path) {
    auto source = files.open(path);
    if (source->size() == 0) throw AudioFileError::unreadable("the file is empty");
    return source;
}

// Takes the bytes that a file is expected to hold.
class ComparingSink : public ByteSink {
public:
    struct Different {};

    explicit ComparingSink(const ByteSource &source) : source_(source) {}
    void write(std::span<const std::byte> bytes) override {
        found_.resize(bytes.size());
        const bool isThere = source_.read(at_, found_) == bytes.size();
        if (!isThere || !std::equal(bytes.begin(), bytes.end(), found_.begin())) throw Different();
        at_ += std::int64_t(bytes.size());
    }

private:
    const ByteSource &source_;
    std::int64_t at_ = 0;
    Bytes found_;
};

bool isImage(const ByteSource &source, const AudioFileCodec::AudioFileImage &image) {
    if (source.size() != image.size()) return false;
    try {
        ComparingSink sink(source);
        image.writeTo(sink);
        return true;
    } catch (const ComparingSink::Different &) {
        return false;
    }
}

[[noreturn]] void refuse(const ByteSource &source) {
    AudioFileCodec::throwIfUnsupported(source);
    throw AudioFileError::unsupported(describe(source));
}

}  // namespace

AudioFileOnDisk readAudioFile(Files &files, DecodedReader *decoders, const std::string &path, Progress &progress) {
    const auto recovery = files.recoverInterrupted(path);
    // The identity comes first: a file that changes while it is read then counts as changed.
    const auto identity = files.identity(path);
    const auto source = opened(files, path);
    auto contents = AudioFileCodec::readNative(*source, &progress);
    if (!contents && (contents = AudioFileCodec::readWrapped(*source, &progress)))
        contents->format.fileExtension = pathExtension(path);
    if (!contents && decoders) contents = readDecoded(*decoders, *source, path, progress);
    if (!contents) refuse(*source);
    return {std::move(*contents), identity, recovery};
}

AudioFileCodec::AudioFileSummary summarizeAudioFile(Files &files, DecodedReader *decoders, const std::string &path,
                                                    Progress &progress) {
    files.recoverInterrupted(path);
    const auto source = opened(files, path);
    auto summary = AudioFileCodec::summarizeNative(*source);
    if (!summary && (summary = AudioFileCodec::summarizeWrapped(*source)))
        summary->contents.format.fileExtension = pathExtension(path);
    if (!summary && decoders) summary = summarizeDecoded(*decoders, *source, path, progress);
    if (!summary) refuse(*source);
    return std::move(*summary);
}

std::optional<AudioEditorBuffer> audioFileShape(Files &files, DecodedReader *decoders, const std::string &path) {
    const auto source = opened(files, path);
    if (auto summary = AudioFileCodec::summarizeNative(*source)) return std::move(summary->contents.buffer);
    if (auto summary = AudioFileCodec::summarizeWrapped(*source)) return std::move(summary->contents.buffer);
    const auto sound = decoders ? decoders->open(*source) : nullptr;
    if (!sound) return std::nullopt;
    return AudioEditorBuffer(sound->format().channels, sound->format().sampleRate);
}

bool holdsStill(Files &files, DecodedReader *decoders, const std::string &path, const AudioFileContents &contents) {
    try {
        const auto source = opened(files, path);
        if (contents.wrapping || contents.format.container != AudioContainer::coreAudio)
            return isImage(*source, AudioFileCodec::fileImage(contents));
        Progress unwatched;
        const auto found = decoders ? readDecoded(*decoders, *source, path, unwatched) : std::nullopt;
        return found && found->format == contents.format && found->flacMetadata == contents.flacMetadata &&
               found->buffer == contents.buffer;
    } catch (const std::exception &) {
        return false;
    }
}

}  // namespace kiv
