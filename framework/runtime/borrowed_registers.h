// Registers that hold, over a stretch of application code, what otherwise stands in the context. What they
// hold for the application stands in the context meanwhile.
#pragma once

#include <vector>

#include "framework/runtime/code_cache.h"

struct borrowed_registers {
    unsigned stolen;         // holds the application's X28; the zero register if that is not named
    unsigned thread_pointer; // holds the application's thread pointer; the zero register if it is not read
    bool writes_stolen;      // the stretch writes X28
};
inline constexpr borrowed_registers none_borrowed{a64::zero_register, a64::zero_register, false};

// Where the registers' own values stand.
inline constexpr std::int64_t stolen_slot = scratch_slot(2);
inline constexpr std::int64_t thread_pointer_slot = scratch_slot(3);

// Takes a register that is not in the set, by bit, and puts it there. The zero register if there is none.
unsigned borrow_register(std::uint32_t& named);

// As the code map has to know of them.
registers_in_place in_place(const borrowed_registers& borrowed);

// Emits the code at the start of the stretch, and what gives the registers back at its end.
void emit_borrowing(emitter& out, const borrowed_registers& borrowed);
std::vector<a64::word> code_of_return(const borrowed_registers& borrowed);

// Emits an instruction of the stretch that is no branch and, unless it is ADR, ADRP, a load of a literal to a
// general register or a read of the thread pointer, does not depend on its own address.
void emit_with_borrowed(emitter& out, const borrowed_registers& borrowed, a64::word instruction, a64::kind k,
                        std::uint64_t pc);

// The instruction with its lowest register field, if that names X28, naming the register borrowed for it.
a64::word rename_lowest(a64::word instruction, const borrowed_registers& borrowed);
