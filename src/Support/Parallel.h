#pragma once

#include <cstdint>
#include <functional>

namespace kiv {

// The number of threads that work is spread over: the machine's, at least 1.
int parallelThreads();

// Calls body(lo, hi) for consecutive parts that together cover 0 ..< count, each of `grain` items but the last. Parts run
// side by side on all cores, the calling thread included, in no particular order; the call returns when all are done. Each
// part must write only what belongs to it. An exception thrown by a part is thrown again here, after the others have
// stopped; parts not yet begun are then left out. May be called from any thread but the audio thread.
void parallelFor(std::int64_t count, std::int64_t grain, const std::function<void(std::int64_t lo, std::int64_t hi)> &body);

}  // namespace kiv
