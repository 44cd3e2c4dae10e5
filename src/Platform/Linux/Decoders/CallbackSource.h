#pragma once

#include <algorithm>
#include <exception>

#include "Support/ByteSource.h"

namespace kiv {

// A source as C libraries read it: with a place to go on from, and with failures kept until one is out of the library again.
class CallbackSource {
public:
    explicit CallbackSource(const ByteSource &source) : CallbackSource(source, 0, source.size()) {}
    // As if there were nothing but a part of the source.
    CallbackSource(const ByteSource &source, std::int64_t start, std::int64_t end)
        : source_(source), start_(start), size_(std::max<std::int64_t>(end - start, 0)) {}

    std::int64_t size() const { return size_; }
    std::int64_t position() const { return position_; }
    void seek(std::int64_t position) { position_ = std::clamp<std::int64_t>(position, 0, size()); }
    bool isAtEnd() const { return position_ >= size(); }

    // How many bytes were read; 0 at the end and after a failure.
    std::size_t read(void *out, std::size_t count) noexcept {
        if (failure_) return 0;
        try {
            const std::size_t left = std::size_t(size_ - position_);
            const std::size_t done = source_.read(start_ + position_, {static_cast<std::byte *>(out), std::min(count, left)});
            position_ += std::int64_t(done);
            return done;
        } catch (...) {
            failure_ = std::current_exception();
            return 0;
        }
    }

    bool hasFailed() const { return failure_ != nullptr; }
    void rethrow() const {
        if (failure_) std::rethrow_exception(failure_);
    }

private:
    const ByteSource &source_;
    const std::int64_t start_, size_;
    std::int64_t position_ = 0;
    std::exception_ptr failure_;
};

}  // namespace kiv
