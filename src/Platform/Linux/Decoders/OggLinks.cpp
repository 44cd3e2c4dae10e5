#include "Platform/Linux/Decoders/OggLinks.h"

#include <algorithm>
#include <array>
#include <map>
#include <string_view>

#include "Platform/Linux/Decoders/OggPages.h"

namespace kiv {
namespace {

// What the first page of a stream says of it.
struct Codec {
    std::int64_t mostFrames = 0;  // that a packet may hold; 0: it is no sound that is known
    std::int64_t rate = 0;        // that positions count in, hertz; 0: the sound's own
    std::int64_t skip = 0;        // frames at its start that are not to be heard
    bool isFlac = false;
};

// Vorbis I, 4.2.2; RFC 7845, 5.1; the mapping of FLAC to Ogg.
Codec codecAt(const ByteSource &source, std::int64_t body) {
    std::array<char, 29> bytes{};
    const std::string_view head(bytes.data(), source.read(body, std::as_writable_bytes(std::span(bytes))));
    const auto byte = [&](std::size_t i) { return std::int64_t(std::uint8_t(bytes[i])); };
    if (head.starts_with("\x01vorbis")) return {.mostFrames = std::int64_t(1) << (byte(28) >> 4) >> 1};
    if (head.starts_with("OpusHead")) return {.mostFrames = 5760, .rate = 48000, .skip = byte(10) | byte(11) << 8};
    if (head.starts_with("\x7F"
                         "FLAC"))
        return {.mostFrames = byte(19) << 8 | byte(20), .isFlac = true};
    return {};
}

// Takes the pages of one link.
class LinkReader {
public:
    LinkReader(const ByteSource &source, std::int64_t start) : source_(source) { link_.start = start; }

    // Streams that run side by side all start before any of them goes on.
    bool isOver(const OggPage &page) const { return goesOn_ && page.startsStream; }

    void take(const OggPage &page) {
        if (page.startsStream) takeStart(page);
        goesOn_ = goesOn_ || !page.startsStream;
        if (page.serial != link_.serial) return;
        packets_ += page.packets;
        link_.isWhole = link_.isEndKnown = page.endsStream;
        if (page.granule <= 0) return;
        if (marks_.empty()) packetsToFirst_ = packets_;
        marks_.push_back(page);
    }

    OggLink finished(std::int64_t end, const std::optional<OggPage> &cutOff) {
        link_.end = end;
        takeCutOff(cutOff);
        link_.rate = codec_.rate;
        link_.isFlac = codec_.isFlac;
        while (!marks_.empty() && !isIntact(source_, marks_.back())) marks_.pop_back();
        if (marks_.empty()) return link_;
        std::int64_t last = marks_.back().granule;
        if (cutOff && cutOff->serial == link_.serial && isPlausible(cutOff->granule - last, cutOff->packets + 1))
            last = cutOff->granule;
        // A stream that was recorded from its middle counts from where it began.
        const std::int64_t first = marks_.front().granule;
        link_.frames = std::max<std::int64_t>(last - (isPlausible(first, packetsToFirst_) ? 0 : first) - codec_.skip, 0);
        return link_;
    }

private:
    void takeCutOff(const std::optional<OggPage> &page) {
        if (!page || page->serial != link_.serial) return;
        link_.isWhole = false;
        link_.isEndKnown = page->endsStream;
    }

    void takeStart(const OggPage &page) {
        const Codec codec = codecAt(source_, page.body);
        const bool isFirst = !hasStarted_, isBetter = codec_.mostFrames == 0 && codec.mostFrames > 0;
        hasStarted_ = true;
        if (!isFirst && !isBetter) return;
        codec_ = codec;
        link_.serial = page.serial;
    }

    bool isPlausible(std::int64_t frames, std::int64_t packets) const {
        return frames > 0 && frames / packets <= codec_.mostFrames;
    }

    const ByteSource &source_;
    OggLink link_;
    Codec codec_;
    std::vector<OggPage> marks_;  // that tell a position
    std::int64_t packets_ = 0, packetsToFirst_ = 0;
    bool hasStarted_ = false, goesOn_ = false;
};

}  // namespace

std::vector<OggLink> oggLinks(const ByteSource &source) {
    std::vector<OggLink> links;
    OggPages pages(source);
    std::optional<LinkReader> reader;
    while (const auto page = pages.next()) {
        if (reader && reader->isOver(*page)) {
            links.push_back(reader->finished(page->offset, std::nullopt));
            reader.reset();
        }
        if (!reader) reader.emplace(source, page->offset);
        reader->take(*page);
    }
    if (reader) links.push_back(reader->finished(source.size(), pages.cutOff()));
    return links;
}

bool isIntactOgg(const ByteSource &source) {
    OggPages pages(source);
    std::map<std::uint32_t, std::uint32_t> numbers;  // of the next page of each stream
    while (const auto page = pages.next()) {
        const bool isNext = page->startsStream || numbers[page->serial] == page->number;
        if (!isNext || !isIntact(source, *page)) return false;
        numbers[page->serial] = page->number + 1;
    }
    return !pages.isInterrupted();
}

}  // namespace kiv
