// What the examples share.
#ifndef EXAMPLES_EXAMPLE_H
#define EXAMPLES_EXAMPLE_H

#include <stddef.h>
#include <stdint.h>

// A loop that is the subject of an example. It stands in a function of its own, which is easy to find in a
// disassembly, and the compiler doesn't fold the arguments of its calls into it.
#if defined(__GNUC__) && !defined(__clang__)
#define KERNEL __attribute__((noipa)) static void
#else
#define KERNEL __attribute__((noinline)) static void
#endif

// All the rest of an example, as drawing its input and printing its output, which is compiled without
// vectors, so that the counts in the report are those of the kernels.
#if defined(__GNUC__) && !defined(__clang__)
#define SCALAR __attribute__((optimize("no-tree-vectorize")))
#else
#define SCALAR
#endif

// FNV-1a over the bytes. Each step needs the one before, so that it comes out of a scalar loop in every
// build.
static inline uint32_t checksum(const void* data, size_t bytes) {
    const uint8_t* byte = data;
    uint32_t hash = 2166136261u;
    for (size_t i = 0; i < bytes; ++i)
        hash = (hash ^ byte[i]) * 16777619u;
    return hash;
}

// A stream of 64-bit test data (xorshift); the state must not be zero.
static inline uint64_t next_random(uint64_t* state) {
    *state ^= *state << 13;
    *state ^= *state >> 7;
    *state ^= *state << 17;
    return *state;
}

#endif
