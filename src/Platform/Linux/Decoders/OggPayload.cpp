#include "Platform/Linux/Decoders/OggPayload.h"

#include <algorithm>

namespace kiv {

OggPayload::OggPayload(const ByteSource &source, const Stream &stream) : source_(source) {
    OggPages pages(source, stream.start);
    const auto isOurs = [&](const OggPage &page) { return page.serial == stream.serial && page.offset < stream.end; };
    for (auto page = pages.next(); page && page->offset < stream.end; page = pages.next())
        if (isOurs(*page)) add(*page);
    if (pages.cutOff() && isOurs(*pages.cutOff())) add(*pages.cutOff());
    if (pieces_.empty()) return;
    Piece &first = pieces_.front();
    const std::int64_t skip = std::min(stream.skip, first.size);
    first = {0, first.offset + skip, first.size - skip};
    for (std::size_t i = 1; i < pieces_.size(); ++i) pieces_[i].at -= skip;
    size_ -= skip;
}

// As much of it as is there.
void OggPayload::add(const OggPage &page) {
    const std::int64_t end = std::min(page.offset + page.size, source_.size());
    pieces_.push_back({size_, page.body, end - page.body});
    size_ += end - page.body;
}

std::size_t OggPayload::read(std::int64_t offset, std::span<std::byte> out) const {
    std::size_t done = 0;
    auto piece =
        std::upper_bound(pieces_.begin(), pieces_.end(), offset, [](std::int64_t at, const Piece &p) { return at < p.at; });
    if (piece == pieces_.begin()) return 0;
    for (--piece; piece != pieces_.end() && done < out.size(); ++piece) {
        const std::int64_t from = offset + std::int64_t(done) - piece->at;
        if (from >= piece->size) continue;
        const std::size_t count = std::min(out.size() - done, std::size_t(piece->size - from));
        const std::size_t got = source_.read(piece->offset + from, out.subspan(done, count));
        done += got;
        if (got < count) break;
    }
    return done;
}

}  // namespace kiv
