#pragma once

#include <vector>

#include "Support/ByteSource.h"

namespace kiv {

// One of the sounds that stand one behind the other in an Ogg file, as where files have been put together or a broadcast was
// recorded. Streams that run side by side are one link, of which the first that is sound counts.
struct OggLink {
    std::int64_t start = 0, end = 0;  // in the file
    std::uint32_t serial = 0;         // of the stream that counts
    bool isFlac = false;
    bool isWhole = false;     // its last page is there, and says that it is the last
    bool isEndKnown = false;  // that page is there at least in part
    std::int64_t frames = 0;  // that it has by what its pages say, of a rate of
    std::int64_t rate = 0;    // hertz; 0: the sound's own
    std::int64_t framesAt(std::int64_t sampleRate) const { return rate > 0 ? frames * sampleRate / rate : frames; }
};

// Looks at the headers of all pages. Nothing where there are none.
std::vector<OggLink> oggLinks(const ByteSource &source);

// Whether no page is damaged and none is gone. Reads the whole file.
bool isIntactOgg(const ByteSource &source);

}  // namespace kiv
