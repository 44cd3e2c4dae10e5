#pragma once

#include <vector>

#include "Platform/Linux/Decoders/OggPages.h"

namespace kiv {

// What the pages of a stream hold, one behind the other, without what holds it.
class OggPayload : public ByteSource {
public:
    // The stream with a number, in a part of a file; without its first bytes.
    struct Stream {
        std::int64_t start = 0, end = 0;
        std::uint32_t serial = 0;
        std::int64_t skip = 0;
    };
    OggPayload(const ByteSource &source, const Stream &stream);

    std::int64_t size() const override { return size_; }
    std::size_t read(std::int64_t offset, std::span<std::byte> out) const override;

private:
    struct Piece {
        std::int64_t at, offset, size;  // here, in the file
    };
    void add(const OggPage &page);

    const ByteSource &source_;
    std::vector<Piece> pieces_;
    std::int64_t size_ = 0;
};

}  // namespace kiv
