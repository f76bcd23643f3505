// Code from a load-exclusive to its store-exclusive. An access of ours in between, to the context, may make
// the store fail, on some processors each time and for ever. So a stretch that needs the context is
// translated as a whole, with conditional branches in its middle, and what it needs stands in borrowed
// registers.
#pragma once

#include "framework/runtime/borrowed_registers.h"

// How the stretch is translated.
struct exclusive_region {
    unsigned words; // of application code, load and store included; 0 if there is nothing to do
    borrowed_registers borrowed;
};

// The most words of such a stretch.
inline constexpr unsigned exclusive_region_limit = 32;

// True for LDXR, LDAXR, LDXP and LDAXP, of all sizes.
bool is_load_exclusive(a64::word instruction);

// Examines the `count` words from a load-exclusive on. There is nothing to do if the store does not follow,
// if the instructions between can be copied, or if there is one among them for which no way is known.
exclusive_region find_exclusive_region(const a64::word* code, std::size_t count);

// Emits the stretch, which stands at `pc` in the application, and ends the block with a jump to what follows.
void emit_exclusive_region(code_cache& cache, const exclusive_region& region, const a64::word* code,
                           std::uint64_t pc);
