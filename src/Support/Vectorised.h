#pragma once

// KIV_VECTORISED before a function with a plain inner loop compiles it for several instruction sets and picks the best one
// when the program starts. Empty under ThreadSanitizer, which crashes in the picking code, and for clang.
#if defined(__GNUC__) && !defined(__clang__) && defined(__x86_64__) && !defined(__SANITIZE_THREAD__) && \
    !defined(__SANITIZE_ADDRESS__)
#define KIV_VECTORISED __attribute__((target_clones("avx2", "default")))
#else
#define KIV_VECTORISED
#endif

namespace kiv {

// Four samples worked on at once, for extremes over many: a plain inner loop over an array of accumulators is turned by g++ 12,
// depending on their number, into single numbers or into loads in an order that the memory does not like. Every machine has
// vectors of this size, so that functions made of them need no KIV_VECTORISED; wider ones are taken apart before it applies.
using FourFloats = float __attribute__((vector_size(16)));

}  // namespace kiv
