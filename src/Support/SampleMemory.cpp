#include "Support/SampleMemory.h"

#include <sys/mman.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <mutex>
#include <new>
#include <vector>

namespace kiv {
namespace {

constexpr std::size_t hugePage = std::size_t(2) << 20;
constexpr std::align_val_t alignment{64};

// How much freed memory may be kept while so much is in use: the same again for sounds of ordinary size, half of it for very
// long ones, and a little when everything is closed.
std::size_t keptAtMost(std::size_t inUse) {
    constexpr std::size_t quarterGibibyte = std::size_t(256) << 20, gibibyte = std::size_t(1) << 30;
    return std::max({inUse / 2, std::min(inUse, gibibyte), quarterGibibyte});
}

// Mapped memory has no red zones, so under AddressSanitizer every block comes from the ordinary allocator.
#ifdef __SANITIZE_ADDRESS__
constexpr bool mapsLargeBlocks = false;
#else
constexpr bool mapsLargeBlocks = true;
#endif

struct Block {
    float *data = nullptr;
    std::size_t bytes = 0;
};

bool isMapped(std::size_t bytes) { return mapsLargeBlocks && bytes >= hugePage; }

// A mapping aligned to huge pages: mapped one page longer, and both overhangs given back.
Block mapped(std::size_t bytes) {
    void *raw = mmap(nullptr, bytes + hugePage, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (raw == MAP_FAILED) throw std::bad_alloc();
    const auto start = reinterpret_cast<std::uintptr_t>(raw);
    const std::size_t before = (hugePage - start % hugePage) % hugePage;
    std::byte *aligned = static_cast<std::byte *>(raw) + before;
    if (before > 0) munmap(raw, before);
    if (before < hugePage) munmap(aligned + bytes, hugePage - before);
#ifdef MADV_HUGEPAGE
    madvise(aligned, bytes, MADV_HUGEPAGE);  // without huge pages it is only slower
#endif
    return {reinterpret_cast<float *>(aligned), bytes};
}

// Lets the kernel take the pages back when memory gets short. Until then, and after the next write, they stay as they are.
void lendToKernel([[maybe_unused]] Block block) noexcept {
#ifdef MADV_FREE
    madvise(block.data, block.bytes, MADV_FREE);
#endif
}

// Freed mappings with their pages already touched, oldest first, so that whole-sound edits one after the other find their
// memory.
class KeptBlocks {
public:
    // The smallest kept block that holds `bytes` and wastes at most a quarter; else a new one.
    Block take(std::size_t bytes) {
        if (const Block found = takeKept(bytes); found.data) return found;
        const Block fresh = mapped(bytes);
        const std::lock_guard lock(mutex_);
        inUse_ += bytes;
        return fresh;
    }

    // Must not throw: runs in destructors. A block that cannot be listed is unmapped.
    void give(Block block) noexcept {
        lendToKernel(block);
        std::unique_lock lock(mutex_);
        inUse_ -= block.bytes;
        try {
            kept_.push_back(block);
            keptBytes_ += block.bytes;
        } catch (...) {
            munmap(block.data, block.bytes);
        }
        shrink(lock, keptAtMost(inUse_));
    }

    void clear() {
        std::unique_lock lock(mutex_);
        shrink(lock, 0);
    }

private:
    Block takeKept(std::size_t bytes) {
        const std::lock_guard lock(mutex_);
        auto best = kept_.end();
        for (auto block = kept_.begin(); block != kept_.end(); ++block) {
            const bool fits = block->bytes >= bytes && block->bytes - bytes <= bytes / 4;
            if (fits && (best == kept_.end() || block->bytes < best->bytes)) best = block;
        }
        if (best == kept_.end()) return {};
        const Block found = *best;
        kept_.erase(best);
        keptBytes_ -= found.bytes;
        inUse_ += found.bytes;
        return found;
    }

    // Unmapping gigabytes takes a while: the lock is let go meanwhile.
    void shrink(std::unique_lock<std::mutex> &lock, std::size_t limit) {
        while (keptBytes_ > limit) {
            const Block oldest = kept_.front();
            kept_.erase(kept_.begin());
            keptBytes_ -= oldest.bytes;
            lock.unlock();
            munmap(oldest.data, oldest.bytes);
            lock.lock();
        }
    }

    std::mutex mutex_;
    std::vector<Block> kept_;
    std::size_t keptBytes_ = 0;
    std::size_t inUse_ = 0;
};

// Never destroyed: blocks may be freed until the very end of the program.
KeptBlocks &keptBlocks() {
    static KeptBlocks &blocks = *new KeptBlocks;
    return blocks;
}

std::size_t wholePages(std::size_t bytes) { return (bytes + hugePage - 1) / hugePage * hugePage; }

Block allocate(std::size_t samples) {
    if (samples > std::numeric_limits<std::size_t>::max() / sizeof(float) / 2) throw std::bad_alloc();
    const std::size_t bytes = samples * sizeof(float);
    if (isMapped(bytes)) return keptBlocks().take(wholePages(bytes));
    return {static_cast<float *>(operator new(bytes, alignment)), bytes};
}

}  // namespace

SampleMemory::SampleMemory(std::size_t samples) {
    if (samples == 0) return;
    const Block block = allocate(samples);
    data_ = block.data;
    size_ = samples;
    capacity_ = block.bytes;
}

SampleMemory::~SampleMemory() {
    if (data_ && isMapped(capacity_)) keptBlocks().give({data_, capacity_});
    if (data_ && !isMapped(capacity_)) operator delete(data_, alignment);
}

void releaseSampleMemory() { keptBlocks().clear(); }

}  // namespace kiv
