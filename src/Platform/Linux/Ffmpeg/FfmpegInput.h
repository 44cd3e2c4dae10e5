#pragma once

extern "C" {
#include <libavformat/avformat.h>
}

#include <memory>

#include "Platform/Linux/Decoders/CallbackSource.h"

namespace kiv {

// A source as libavformat reads it: alone, with nothing opened besides.
class FfmpegInput {
public:
    explicit FfmpegInput(const ByteSource &source) : source_(source) {}

    // False when it is not what it looks like.
    bool open(const AVInputFormat *kind);
    void rethrow() const { source_.rethrow(); }
    AVFormatContext *file() const { return file_.get(); }

private:
    struct CloseInput {
        void operator()(AVFormatContext *context) const { avformat_close_input(&context); }
    };
    struct FreeIo {
        void operator()(AVIOContext *io) const;
    };

    CallbackSource source_;
    std::unique_ptr<AVIOContext, FreeIo> io_;
    std::unique_ptr<AVFormatContext, CloseInput> file_;
};

// What a file's first bytes look like; null for what is not known with confidence.
const AVInputFormat *inputFormatOf(const ByteSource &source);

}  // namespace kiv
