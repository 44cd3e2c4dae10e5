#include "Platform/Linux/Decoders/OggSound.h"

#include <algorithm>

#include "Platform/Linux/Decoders/FlacSound.h"
#include "Platform/Linux/Decoders/OggLinks.h"
#include "Platform/Linux/Decoders/OggPayload.h"
#include "Platform/Linux/Decoders/SndfileSound.h"

namespace kiv {
namespace {

class PartSource : public ByteSource {
public:
    PartSource(const ByteSource &whole, std::int64_t start, std::int64_t end) : whole_(whole), start_(start), end_(end) {}
    std::int64_t size() const override { return end_ - start_; }
    std::size_t read(std::int64_t offset, std::span<std::byte> out) const override {
        const std::int64_t left = std::max<std::int64_t>(size() - offset, 0);
        return whole_.read(start_ + offset, out.first(std::size_t(std::min(left, std::int64_t(out.size())))));
    }

private:
    const ByteSource &whole_;
    const std::int64_t start_, end_;
};

// A link being decoded. What its pages hold is a FLAC file, behind what says so.
struct Decoded {
    Decoded(const ByteSource &whole, const OggLink &link) {
        constexpr std::int64_t mappingBytes = 9;
        if (link.isFlac)
            source = std::make_unique<OggPayload>(whole, OggPayload::Stream{link.start, link.end, link.serial, mappingBytes});
        else
            source = std::make_unique<PartSource>(whole, link.start, link.end);
        sound = link.isFlac ? openFlac(*source) : openWithSndfile(*source);
        if (!sound) return;
        format = sound->format();
        if (link.isFlac) format.identifier = "fLaO";  // it is not what the writer of FLAC files writes
    }
    std::unique_ptr<ByteSource> source;
    std::unique_ptr<DecodedSound> sound;
    DecodedFormat format;
};

bool isSameKind(const DecodedFormat &a, const DecodedFormat &b) {
    return a.identifier == b.identifier && a.channels == b.channels && a.sampleRate == b.sampleRate && a.bits == b.bits;
}

class OggSound : public DecodedSound {
public:
    OggSound(const ByteSource &source, std::vector<OggLink> links) : source_(source), links_(std::move(links)) {
        present_ = std::make_unique<Decoded>(source_, links_.front());
        isOpen_ = present_->sound != nullptr;
        format_ = present_->format;
        for (std::size_t i = 1; i < links_.size() && isOpen_; ++i) isOpen_ = goesOnWith(i);
    }

    bool isOpen() const { return isOpen_; }
    const DecodedFormat &format() const override { return format_; }
    std::int64_t read(std::span<float> out) override { return readAs(out); }
    std::int64_t read(std::span<std::int32_t> out) override { return readAs(out); }

    std::optional<std::int64_t> countFrames() override {
        const bool isWhole = std::all_of(links_.begin(), links_.end(), [](const OggLink &link) { return link.isWhole; });
        if (!isWhole || !isIntactOgg(source_)) return std::nullopt;
        std::int64_t total = 0;
        for (const OggLink &link : links_) {
            const auto frames = Decoded(source_, link).sound->countFrames();
            if (!frames || *frames != link.framesAt(format_.sampleRate)) return std::nullopt;
            total += *frames;
        }
        return total;
    }

    DecodedEnd end() const override { return end_; }

private:
    // The last one may have been cut off before its sound begins.
    bool goesOnWith(std::size_t index) {
        const bool mayBeRest = index + 1 == links_.size() && !links_.back().isWhole;
        try {
            const Decoded link(source_, links_[index]);
            if (link.sound) return isSameKind(link.format, format_);
        } catch (const DecodeFault &) {
            if (!mayBeRest) throw;
        }
        if (mayBeRest) links_.pop_back();
        return mayBeRest;
    }

    template <class Sample>
    std::int64_t readAs(std::span<Sample> out) {
        const std::int64_t wanted = std::int64_t(out.size()) / format_.channels;
        std::int64_t done = 0;
        while (done < wanted && present_) {
            const std::int64_t count = present_->sound->read(out.subspan(std::size_t(done * format_.channels)));
            frames_ += count;
            done += count;
            if (done < wanted) goOn();
        }
        return done;
    }

    // At the end of a link.
    void goOn() {
        const DecodedEnd end = present_->sound->end();
        const std::int64_t missing = links_[index_].framesAt(format_.sampleRate) - frames_;
        end_.missingFrames += std::max(missing, end.missingFrames);
        end_.damagedFrames += end.damagedFrames;
        end_.isCutOff = !links_[index_].isEndKnown && end.missingFrames == 0;
        hasSound_ = hasSound_ || frames_ > 0;
        frames_ = 0;
        present_.reset();
        if (++index_ < links_.size()) present_ = std::make_unique<Decoded>(source_, links_[index_]);
        const bool isBroken = present_ ? !present_->sound : !hasSound_ && (end_.isCutOff || end_.missingFrames > 0);
        if (isBroken) throw DecodeFault("nothing of its sound is there");
    }

    const ByteSource &source_;
    std::vector<OggLink> links_;
    DecodedFormat format_;
    std::unique_ptr<Decoded> present_;  // null at the end
    std::size_t index_ = 0;
    std::int64_t frames_ = 0;  // read of the present link
    DecodedEnd end_;
    bool isOpen_ = false, hasSound_ = false;
};

}  // namespace

std::unique_ptr<DecodedSound> openOgg(const ByteSource &source) {
    if (!startsAsOgg(source)) return nullptr;
    auto links = oggLinks(source);
    if (links.empty()) return nullptr;
    auto sound = std::make_unique<OggSound>(source, std::move(links));
    if (!sound->isOpen()) return nullptr;
    return sound;
}

}  // namespace kiv
