#include "Platform/Linux/Ffmpeg/FfmpegInput.h"

#include <cstring>
#include <new>
#include <vector>

namespace kiv {
namespace {

int readPacket(void *data, std::uint8_t *out, int count) {
    auto &source = *static_cast<CallbackSource *>(data);
    const std::size_t done = source.read(out, std::size_t(count));
    if (done > 0) return int(done);
    return source.hasFailed() ? AVERROR(EIO) : AVERROR_EOF;
}

std::int64_t seekTo(void *data, std::int64_t offset, int whence) {
    auto &source = *static_cast<CallbackSource *>(data);
    whence &= ~AVSEEK_FORCE;
    if (whence == AVSEEK_SIZE) return source.size();
    source.seek(whence == SEEK_SET ? offset : whence == SEEK_CUR ? source.position() + offset : source.size() + offset);
    return source.position();
}

// A file is to be read alone: it may not lead to others, let alone over a network.
int refuseToOpen(AVFormatContext *, AVIOContext **, const char *, int, AVDictionary **) { return AVERROR(EPERM); }

// The library prints nothing, and asks for no more memory at once than this, whatever a damaged file says.
void restrain() {
    constexpr std::size_t mostBytesAtOnce = std::size_t(256) << 20;
    av_max_alloc(mostBytesAtOnce);
    av_log_set_level(AV_LOG_QUIET);
}

}  // namespace

void FfmpegInput::FreeIo::operator()(AVIOContext *io) const {
    av_freep(&io->buffer);
    avio_context_free(&io);
}

bool FfmpegInput::open(const AVInputFormat *kind) {
    constexpr int bufferSize = 1 << 16;
    auto *buffer = static_cast<std::uint8_t *>(av_malloc(bufferSize));
    if (!buffer) throw std::bad_alloc();
    io_.reset(avio_alloc_context(buffer, bufferSize, 0, &source_, readPacket, nullptr, seekTo));
    if (!io_) av_free(buffer);
    AVFormatContext *file = io_ ? avformat_alloc_context() : nullptr;
    if (!file) throw std::bad_alloc();
    file->pb = io_.get();
    file->io_open = refuseToOpen;
    if (avformat_open_input(&file, nullptr, kind, nullptr) < 0) return false;  // frees it
    file_.reset(file);
    return true;
}

// Below the score at which the library itself would look for more, any text might be one. Tags in front may be longer than what
// is looked at. Comes before anything else that is asked of the library.
const AVInputFormat *inputFormatOf(const ByteSource &source) {
    restrain();
    std::vector<std::uint8_t> head(65536 + AVPROBE_PADDING_SIZE);
    const std::size_t count = source.read(0, std::as_writable_bytes(std::span(head)).first(65536));
    std::memset(head.data() + count, 0, head.size() - count);
    const AVProbeData probe{"", head.data(), int(count), nullptr};
    int score = 0;
    const AVInputFormat *format = av_probe_input_format3(&probe, 1, &score);
    return score > AVPROBE_SCORE_RETRY ? format : nullptr;
}

}  // namespace kiv
