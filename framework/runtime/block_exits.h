// Emission of the ways out of a block: linkable direct exits, look-ups of indirect branches, and the stubs
// that leave the cache.
#pragma once

#include <span>

#include "framework/aarch64/classify.h"
#include "framework/runtime/code_cache.h"

// The most words that one transfer takes, its stubs and literals included.
inline constexpr unsigned transfer_words_limit = 48;

// The first word of a block that is entered by its landing.
void emit_landing(emitter& out);

// Ends the block with a jump to that application address.
void emit_direct_exit(code_cache& cache, std::uint64_t target);

// Emits a transfer, conditional or B, to that application address from the middle of the block. The code is
// run on the way.
void emit_side_exit(code_cache& cache, a64::word transfer, std::uint64_t target, std::vector<a64::word> code);

// Leaves the cache for the dispatcher to do what the kind says, then goes on at `target`.
void emit_dispatcher_exit(code_cache& cache, exit_kind kind, std::uint64_t target, unsigned detail);

// Emits an application transfer at `pc`. A conditional one ends with its untaken side, to the next
// instruction.
void emit_transfer(code_cache& cache, a64::word instruction, a64::kind kind, std::uint64_t pc);

// Emits what is left of a return to a known address: nothing if X30 holds it for sure, else a comparison; if
// that fails, the dispatcher finds the target.
void emit_known_return(code_cache& cache, std::uint64_t return_address, bool link_intact);

// Emits the stubs and literals of the code that ends at the cache's cursor, and for each of its blocks that
// has no landing yet a landing that goes to its entry.
void place_cold_code(code_cache& cache, std::span<block> blocks);

// Makes the exit go to the block until it has been executed `executions` times, and then leave once more. May
// make it go to the block for good.
void link_counting(code_cache& cache, exit_record& exit, const block& target, std::uint32_t executions);
