// Rewriting of single application instructions that cannot run from the code cache as they stand.
#pragma once

#include "framework/aarch64/classify.h"
#include "framework/runtime/emitter.h"

// The most words that one instruction becomes.
inline constexpr unsigned mangled_words_limit = 16;

// Emits what does the work of an application instruction at `pc` that is not a transfer. The application's
// X28 lives in the context, its thread pointer too; everything else is in place, and nothing below SP is
// written.
void emit_application_instruction(emitter& out, a64::word instruction, a64::kind kind, std::uint64_t pc);

// The number of words that this makes of an instruction that does not depend on its address.
unsigned mangled_words(a64::word instruction);
