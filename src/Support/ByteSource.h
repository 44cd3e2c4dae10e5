#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>
#include <vector>

namespace kiv {

// Bytes that can be read at any place: a file, or memory. read() may be called from several threads at once.
class ByteSource {
public:
    virtual ~ByteSource() = default;
    virtual std::int64_t size() const = 0;
    // Copies up to out.size() bytes from `offset` on and returns how many there were: fewer only where the bytes end. Throws
    // std::system_error when the device fails.
    virtual std::size_t read(std::int64_t offset, std::span<std::byte> out) const = 0;
};

class MemorySource : public ByteSource {
public:
    // The bytes must outlive the source.
    explicit MemorySource(std::span<const std::byte> bytes) : bytes_(bytes) {}
    std::int64_t size() const override { return std::int64_t(bytes_.size()); }
    std::size_t read(std::int64_t offset, std::span<std::byte> out) const override;

private:
    std::span<const std::byte> bytes_;
};

// Where bytes are written one after the other. Throws std::system_error when they cannot be.
class ByteSink {
public:
    virtual ~ByteSink() = default;
    virtual void write(std::span<const std::byte> bytes) = 0;
};

class MemorySink : public ByteSink {
public:
    void write(std::span<const std::byte> bytes) override { bytes_.insert(bytes_.end(), bytes.begin(), bytes.end()); }
    std::vector<std::byte> take() { return std::move(bytes_); }

private:
    std::vector<std::byte> bytes_;
};

}  // namespace kiv
