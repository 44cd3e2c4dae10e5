#pragma once

#include <bit>
#include <optional>
#include <string>

#include "Support/ByteSource.h"

namespace kiv {

// The headers of the chunks of a RIFF, RIFX or FORM file, one behind the other, in whatever it holds.
class ChunkHeaders {
public:
    struct Chunk {
        std::string id;                    // four characters
        std::int64_t start = 0, size = 0;  // of what it holds, as it says
        std::int64_t end() const { return start + size; }
    };

    explicit ChunkHeaders(const ByteSource &source);

    // Nothing at the end, and in files of other kinds.
    std::optional<Chunk> next();
    std::endian order() const { return order_; }

private:
    const ByteSource &source_;
    std::int64_t at_;
    std::endian order_ = std::endian::big;
};

// Whether a file ends before it says it does: within a chunk, or, of Windows Media, before its stated size.
bool endsTooSoon(const ByteSource &source);

}  // namespace kiv
