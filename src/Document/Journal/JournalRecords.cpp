#include "Document/Journal/JournalRecords.h"

#include <algorithm>
#include <array>
#include <concepts>
#include <cstring>
#include <stdexcept>
#include <type_traits>

#include "Support/ByteDigest.h"

namespace kiv {
namespace {

struct TornRecord : std::runtime_error {
    TornRecord() : std::runtime_error("a record of the journal is torn") {}
};

template <class T>
concept Plain = std::is_arithmetic_v<T> || std::is_enum_v<T>;

class Writer {
public:
    template <Plain T>
    void value(const T &plain) {
        append(&plain, sizeof plain);
    }
    template <class T>
    requires requires(Writer &writer, const T &whole) { fields(writer, whole); }
    void value(const T &whole) { fields(*this, whole); }
    void value(const std::string &text) {
        value(std::uint64_t(text.size()));
        append(text.data(), text.size());
    }
    template <class T>
    void value(const std::vector<T> &list) {
        value(std::uint64_t(list.size()));
        if constexpr (Plain<T>)
            append(list.data(), list.size() * sizeof(T));
        else
            for (const T &each : list) value(each);
    }
    template <class T>
    void value(const std::optional<T> &perhaps) {
        value(std::uint8_t(perhaps.has_value()));
        if (perhaps) value(*perhaps);
    }
    void value(const std::map<std::string, std::string> &map) {
        value(std::uint64_t(map.size()));
        for (const auto &[key, text] : map) all(key, text);
    }
    void all(const auto &...members) { (value(members), ...); }

    Bytes take() { return std::move(bytes_); }

private:
    void append(const void *from, std::size_t count) {
        const auto *first = static_cast<const std::byte *>(from);
        bytes_.insert(bytes_.end(), first, first + count);
    }

    Bytes bytes_;
};

// Takes in what kinds of members a type has, in their order, and nothing of what they hold.
class Shape {
public:
    template <Plain T>
    void value(const T &) {
        add(std::is_floating_point_v<T> ? 'f' : 'i', sizeof(T));
    }
    template <class T>
    requires requires(Shape &shape, const T &whole) { fields(shape, whole); }
    void value(const T &whole) { fields(*this, whole); }
    void value(const std::string &) { add('s', 0); }
    template <class T>
    void value(const std::vector<T> &) {
        add('v', 0), value(T());
    }
    template <class T>
    void value(const std::optional<T> &) {
        add('o', 0), value(T());
    }
    void value(const std::map<std::string, std::string> &) { add('m', 0); }
    void all(const auto &...members) { (value(members), ...); }

    std::uint32_t digest() const { return std::uint32_t(digest_.value()); }

private:
    void add(char kind, std::size_t bytes) {
        const std::array both{std::byte(kind), std::byte(bytes)};
        digest_.add(both);
    }

    ByteDigest digest_;
};

class Reader {
public:
    explicit Reader(std::span<const std::byte> bytes) : bytes_(bytes) {}

    template <Plain T>
    void value(T &plain) {
        copy(&plain, sizeof plain);
    }
    template <class T>
    requires requires(Reader &reader, T &whole) { fields(reader, whole); }
    void value(T &whole) { fields(*this, whole); }
    void value(std::string &text) {
        text.resize(count(1));
        copy(text.data(), text.size());
    }
    template <class T>
    void value(std::vector<T> &list) {
        list.resize(count(Plain<T> ? sizeof(T) : 1));
        if constexpr (Plain<T>)
            copy(list.data(), list.size() * sizeof(T));
        else
            for (T &each : list) value(each);
    }
    template <class T>
    void value(std::optional<T> &perhaps) {
        std::uint8_t has = 0;
        value(has);
        if (has) value(perhaps.emplace());
    }
    void value(std::map<std::string, std::string> &map) {
        for (std::size_t left = count(1); left > 0; --left) {
            std::string key, text;
            all(key, text);
            map[key] = text;
        }
    }
    void all(auto &...members) { (value(members), ...); }

private:
    // How many there are, never more than the bytes that are left could hold.
    std::size_t count(std::size_t bytesEach) {
        std::uint64_t stored = 0;
        value(stored);
        if (stored > bytes_.size() / bytesEach) throw TornRecord();
        return std::size_t(stored);
    }
    void copy(void *to, std::size_t count) {
        if (count > bytes_.size()) throw TornRecord();
        if (count > 0) std::memcpy(to, bytes_.data(), count);
        bytes_ = bytes_.subspan(count);
    }

    std::span<const std::byte> bytes_;
};

// The members of each type, for writing and for reading. All are named, so that one that is added to its type and forgotten
// here does not compile.
template <class T, class U>
concept Is = std::same_as<std::remove_const_t<T>, U>;

void fields(auto &a, Is<std::pair<std::string, std::string>> auto &v) { a.all(v.first, v.second); }
void fields(auto &a, Is<FrameRange> auto &v) { a.all(v.lo, v.hi); }
void fields(auto &a, Is<JournalPiece> auto &v) { a.all(v.from, v.at, v.frames); }
void fields(auto &a, Is<FileSystem::Identity> auto &v) {
    auto &[device, inode, size, modifiedNs, kind] = v;
    a.all(device, inode, size, modifiedNs, kind);
}
void fields(auto &a, Is<AudioSampleEncoding> auto &v) {
    auto &[kind, bytes, validBits, bigEndian, unsigned8] = v;
    a.all(kind, bytes, validBits, bigEndian, unsigned8);
}
void fields(auto &a, Is<AudioFileFormat> auto &v) {
    auto &[container, encoding, sampleRate, typeName, bitsDescription, fileExtension] = v;
    a.all(container, encoding, sampleRate, typeName, bitsDescription, fileExtension);
}
void fields(auto &a, Is<AudioFilePositionField> auto &v) {
    auto &[offset, index, from, kind, bigEndian] = v;
    a.all(offset, index, from, kind, bigEndian);
}
void fields(auto &a, Is<AudioFileChunk> auto &v) {
    auto &[id, data, positions, sizeInFile] = v;
    a.all(id, data, positions, sizeInFile);
}
void fields(auto &a, Is<AudioFileLoop> auto &v) { a.all(v.start, v.end); }
void fields(auto &a, Is<FlacMetadataBlock> auto &v) {
    auto &[type, data] = v;
    a.all(type, data);
}
void fields(auto &a, Is<AudioFileTags> auto &v) {
    auto &[texts, pictures, id3, others, around] = v;
    a.all(texts, pictures, id3, others, around);
}
void fields(auto &a, Is<SampleWrapping::Size> auto &v) {
    auto &[offset, bytes, of, more] = v;
    a.all(offset, bytes, of, more);
}
void fields(auto &a, Is<SampleWrapping::Part> auto &v) {
    auto &[chunk, header, pad, isBare, sizes] = v;
    a.all(chunk, header, pad, isBare, sizes);
}
void fields(auto &a, Is<SampleWrapping> auto &v) {
    auto &[kind, encoding, channels, frames, counts, names, alignment, headerBytes, parts, samplesBefore] = v;
    a.all(kind, encoding, channels, frames, counts, names, alignment, headerBytes, parts, samplesBefore);
}
// The samples are no part of it.
void fields(auto &a, Is<AudioFileContents> auto &v) {
    auto &[format, samples, chunks, positions, loop, settings, flac, tags, wrapping, missing, cutOff, damaged, leading,
           trailing] = v;
    a.all(format, chunks, positions, loop, settings, flac, tags, wrapping, missing, cutOff, damaged, leading, trailing);
}
void fields(auto &a, Is<JournalBase> auto &v) { a.all(v.path, v.identity, v.print, v.kept, v.keptIsLink, v.contents); }
void fields(auto &a, Is<JournalState> auto &v) {
    a.all(v.order, v.writtenAt, v.channels, v.sampleRate, v.pieces, v.markers, v.loop, v.slices, v.cursor, v.selection);
}
void fields(auto &a, Is<JournalSave> auto &v) { a.all(v.path, v.digest, v.order, v.pieces); }
void fields(auto &a, Is<JournalOriginals> auto &v) { a.all(v.at, v.word, v.width, v.differences); }

// Another one as soon as any member of a record is: what a program with other members has written cannot be read.
std::uint32_t layout() {
    static const std::uint32_t digest = [] {
        Shape shape;
        shape.all(JournalBase(), JournalState(), JournalSave(), JournalOriginals());
        return shape.digest();
    }();
    return digest;
}

constexpr std::uint32_t mark = 0x4A76694B;  // "KivJ"

// The same in every version, and so is the path with which a base begins.
struct Header {
    std::uint32_t layout = 0;
    JournalRecord kind{};
    std::uint64_t bytes = 0;
    std::uint64_t digest = 0;

    std::uint32_t own() const {
        Writer writer;
        writer.all(layout, kind, bytes, digest);
        return std::uint32_t(digestOf(writer.take()));
    }
};
void fields(auto &a, Is<Header> auto &v) {
    std::uint32_t begin = mark, own = v.own();
    a.all(begin, own, v.layout, v.kind, v.bytes, v.digest);
    if (begin != mark || own != v.own()) throw TornRecord();
}

template <class T>
Bytes record(JournalRecord kind, const T &value) {
    Writer writer;
    writer.value(value);
    const Bytes own = writer.take();
    Bytes whole = recordHeader(kind, own);
    whole.insert(whole.end(), own.begin(), own.end());
    return whole;
}

template <class T>
T decoded(std::span<const std::byte> bytes) {
    Reader reader(bytes);
    T value;
    reader.value(value);
    return value;
}

constexpr std::size_t blockBytes = std::size_t(1) << 20;

Bytes bytesAt(const ByteSource &source, std::int64_t at, std::uint64_t count) {
    if (at > source.size() || count > std::uint64_t(source.size() - at)) throw TornRecord();
    Bytes bytes((std::size_t(count)));
    if (source.read(at, bytes) < bytes.size()) throw TornRecord();
    return bytes;
}

// What a file that ends in the midst of a record says is what a crash leaves, and no damage.
struct EndsEarly : TornRecord {};

Header readHeader(const ByteSource &source, std::int64_t at) {
    if (source.size() - at < journalRecordHeader) throw EndsEarly();
    const auto header = decoded<Header>(bytesAt(source, at, journalRecordHeader));
    if (header.bytes > std::uint64_t(source.size() - at - journalRecordHeader)) throw EndsEarly();
    return header;
}

bool areSamplesWhole(const ByteSource &source, std::int64_t at, const Header &header) {
    ByteDigest digest;
    for (std::uint64_t left = header.bytes; left > 0;) {
        const Bytes block = bytesAt(source, at, std::min<std::uint64_t>(left, blockBytes));
        digest.add(block);
        at += std::int64_t(block.size());
        left -= block.size();
    }
    return digest.value() == header.digest;
}

Bytes readWhole(const ByteSource &source, std::int64_t at, const Header &header) {
    Bytes bytes = bytesAt(source, at, header.bytes);
    if (digestOf(bytes) != header.digest) throw TornRecord();
    return bytes;
}

class JournalReader {
public:
    JournalReader(const ByteSource &source, JournalCheck check) : source_(source), check_(check) {}

    JournalContents read() {
        try {
            while (found_.whole < source_.size()) readNext();
        } catch (const EndsEarly &) {
        } catch (const TornRecord &) {
            found_.isDamaged = true;
        }
        return std::move(found_);
    }

private:
    // What stands behind a record that is damaged may be whole.
    void readNext() {
        const Header header = readHeader(source_, found_.whole);
        const std::int64_t at = found_.whole + journalRecordHeader;
        if (header.layout != layout()) return readForeign(at, header);
        if (header.kind == JournalRecord::samples || header.kind == JournalRecord::originals) {
            if (check_ == JournalCheck::samplesToo) readSamples(at, header);
        } else {
            readRecord(at, header);
        }
        found_.whole = at + std::int64_t(header.bytes);
    }

    // Originals that are damaged may be those of any samples since the last state.
    void readSamples(std::int64_t at, const Header &header) {
        const std::int64_t end = at + std::int64_t(header.bytes);
        if (!areSamplesWhole(source_, at, header)) return damaged_.push_back({stateEnd_, end});
        if (header.kind == JournalRecord::samples) return;
        const auto found = decoded<JournalOriginals>(bytesAt(source_, at, header.bytes));
        const auto bytes = std::int64_t(found.differences.size());
        if (found.width < 1) throw TornRecord();
        found_.originals.push_back({found.at, found.word, found.width, bytes / found.width, end - bytes});
    }

    void readRecord(std::int64_t at, const Header &header) try {
        const Bytes bytes = readWhole(source_, at, header);
        if (header.kind == JournalRecord::base) found_.base = decoded<JournalBase>(bytes);
        if (header.kind == JournalRecord::save) found_.saves.push_back(decoded<JournalSave>(bytes));
        if (header.kind == JournalRecord::state) take(decoded<JournalState>(bytes));
        if (header.kind == JournalRecord::state) stateEnd_ = at;
    } catch (const TornRecord &) {
        found_.isDamaged = true;
        damaged_.push_back({at, at + std::int64_t(header.bytes)});
    }

    void take(JournalState state) {
        found_.isDamaged = std::ranges::any_of(state.pieces, [&](const JournalPiece &piece) {
            const std::int64_t end = piece.at + piece.frames * state.channels * std::int64_t(sizeof(float));
            return piece.from == JournalPiece::From::journal &&
                   std::ranges::any_of(damaged_, [&](FrameRange each) { return piece.at < each.hi && each.lo < end; });
        });
        if (!found_.isDamaged) found_.state = std::move(state);
    }

    void readForeign(std::int64_t at, const Header &header) {
        if (header.kind != JournalRecord::base) throw TornRecord();
        const Bytes bytes = readWhole(source_, at, header);
        Reader(bytes).value(found_.foreign.emplace());
        found_.whole = source_.size();
    }

    const ByteSource &source_;
    JournalCheck check_;
    JournalContents found_;
    std::vector<FrameRange> damaged_;  // bytes
    std::int64_t stateEnd_ = 0;
};

}  // namespace

Bytes recordHeader(JournalRecord kind, std::span<const std::byte> bytes) {
    Writer writer;
    writer.value(Header{layout(), kind, bytes.size(), digestOf(bytes)});
    return writer.take();
}

Bytes encoded(const JournalBase &base) { return record(JournalRecord::base, base); }
Bytes encoded(const JournalState &state) { return record(JournalRecord::state, state); }
Bytes encoded(const JournalSave &save) { return record(JournalRecord::save, save); }
Bytes encoded(const JournalOriginals &originals) { return record(JournalRecord::originals, originals); }

JournalContents readJournal(const ByteSource &source, JournalCheck check) { return JournalReader(source, check).read(); }

std::uint64_t filePrint(const ByteSource &source) {
    constexpr std::int64_t partBytes = 4096, parts = 64;
    ByteDigest digest;
    std::array<std::byte, partBytes> part;
    const std::int64_t span = std::max<std::int64_t>(source.size() - partBytes, 0);
    for (std::int64_t i = 0; i < parts; ++i)
        digest.add(
            std::span(part).first(source.read(span / (parts - 1) * i + (i == parts - 1 ? span % (parts - 1) : 0), part)));
    return digest.value();
}

std::uint64_t fileDigest(const ByteSource &source) {
    ByteDigest digest;
    Bytes block(blockBytes);
    std::int64_t at = 0;
    for (std::size_t count; (count = source.read(at, block)) > 0; at += std::int64_t(count))
        digest.add(std::span(block).first(count));
    return digest.value();
}

}  // namespace kiv
