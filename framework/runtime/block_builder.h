// Translation of application code, one basic block at a time.
#pragma once

#include "framework/runtime/code_cache.h"

// Translates the block at the context's `pc`, which must not be in the cache yet. Flushes the cache first if
// it is full. `from` is the exit by which execution comes there, or null: the block is built in place of the
// exit's branch if it can be, and linked to it otherwise. Null if the address holds no executable code: the
// fault that the processor would have raised is then pending.
const block* build_block(thread_context* context, exit_record* from);

// Emits application instructions that stand one behind the other from `pc` on, of which the last may end a
// block. The code map gets them.
void emit_instructions(code_cache& cache, const read_instruction* instructions, unsigned count,
                       std::uint64_t pc);
