#pragma once

#include <cstddef>
#include <utility>

namespace kiv {

// A block of 32-bit float samples whose contents are not set: whoever asks for one writes all of it. A first touch of fresh
// memory costs far more than a copy, so large blocks come in huge pages where the kernel gives them, and a freed block is
// kept for the next request of a like size. Blocks may be made and freed on any thread but the audio thread.
class SampleMemory {
public:
    SampleMemory() = default;
    // Throws std::bad_alloc.
    explicit SampleMemory(std::size_t samples);
    SampleMemory(SampleMemory &&other) noexcept
        : data_(std::exchange(other.data_, nullptr)),
          size_(std::exchange(other.size_, 0)),
          capacity_(std::exchange(other.capacity_, 0)) {}
    SampleMemory &operator=(SampleMemory &&other) noexcept {
        std::swap(data_, other.data_);
        std::swap(size_, other.size_);
        std::swap(capacity_, other.capacity_);
        return *this;
    }
    ~SampleMemory();

    float *data() { return data_; }
    const float *data() const { return data_; }
    std::size_t size() const { return size_; }

private:
    float *data_ = nullptr;
    std::size_t size_ = 0;
    std::size_t capacity_ = 0;  // bytes, as the block was allocated
};

// Gives the blocks kept for reuse back to the system.
void releaseSampleMemory();

}  // namespace kiv
