// Code that names X28 often: where it is executed often too, the application's X28 stands in a borrowed
// register over a stretch of it, which costs less than to fetch it for each instruction.
#pragma once

#include "framework/runtime/code_cache.h"

// Emits what emit_instructions does, for code that is executed often.
void emit_frequent_instructions(code_cache& cache, const read_instruction* instructions, unsigned count,
                                std::uint64_t pc);
