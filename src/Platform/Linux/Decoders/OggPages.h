#pragma once

#include <cstdint>
#include <optional>

#include "Support/ByteSource.h"

namespace kiv {

// A page of an Ogg file, as its header describes it (RFC 3533, 6).
struct OggPage {
    std::int64_t offset = 0, size = 0;  // in the file, header and all
    std::int64_t granule = -1;          // the position behind the last packet that ends on it; below 0: none does
    std::uint32_t serial = 0;           // of its stream
    std::uint32_t number = 0;           // within that
    std::int64_t packets = 0;           // that end on it
    std::int64_t body = 0;              // where its contents start in the file
    bool startsStream = false, endsStream = false;
};

// Whether its bytes are those it was written with: its checksum is theirs.
bool isIntact(const ByteSource &source, const OggPage &page);

bool startsAsOgg(const ByteSource &source);

// The pages of a file, one after the other. Where one is not where it should be, the next is looked for behind that place.
class OggPages {
public:
    explicit OggPages(const ByteSource &source, std::int64_t start = 0) : source_(source), at_(start) {}

    // Nothing at the end.
    std::optional<OggPage> next();
    // At the end: the page in which the file ends.
    const std::optional<OggPage> &cutOff() const { return cutOff_; }
    // Whether anything stood between the pages, or behind them, that is none.
    bool isInterrupted() const { return isInterrupted_; }

private:
    bool isPage(const OggPage &page);
    void seekMark();

    const ByteSource &source_;
    std::int64_t at_;
    std::optional<OggPage> cutOff_;
    bool isInterrupted_ = false;
    int failures_ = 0;
};

}  // namespace kiv
