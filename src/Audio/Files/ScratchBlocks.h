#pragma once

#include <cstddef>
#include <memory>
#include <mutex>
#include <span>
#include <utility>
#include <vector>

namespace kiv {

// Blocks of bytes for the threads of one job: as many as run at once, each given back when it goes out of scope.
class ScratchBlocks {
public:
    explicit ScratchBlocks(std::size_t size) : size_(size) {}

    class Block {
    public:
        Block(ScratchBlocks &home, std::unique_ptr<std::byte[]> memory) : home_(home), memory_(std::move(memory)) {}
        Block(const Block &) = delete;
        Block &operator=(const Block &) = delete;
        ~Block() { home_.give(std::move(memory_)); }
        std::span<std::byte> bytes() const { return {memory_.get(), home_.size_}; }

    private:
        ScratchBlocks &home_;
        std::unique_ptr<std::byte[]> memory_;
    };

    // Its contents are not set.
    Block take() {
        const std::lock_guard lock(mutex_);
        if (free_.empty()) {
            free_.reserve(++made_);  // so that giving back cannot fail
            return {*this, std::make_unique_for_overwrite<std::byte[]>(size_)};
        }
        auto memory = std::move(free_.back());
        free_.pop_back();
        return {*this, std::move(memory)};
    }

private:
    void give(std::unique_ptr<std::byte[]> memory) {
        const std::lock_guard lock(mutex_);
        free_.push_back(std::move(memory));
    }

    std::size_t size_;
    std::size_t made_ = 0;
    std::mutex mutex_;
    std::vector<std::unique_ptr<std::byte[]>> free_;
};

}  // namespace kiv
