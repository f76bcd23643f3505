// DynamoRIO, from release 11.3 on.
#pragma once

#include "sve/decode/decoder.h"

#include <cstring>

// A fragment of the code cache may have 32 KiB, which leaves 254 words for each of 32 instructions and 64 for
// the fragment's own. A replacement has some 170; docs/dynamorio.md has the sum.
inline constexpr unsigned most_block_instructions = 32;

// The framework's default is 256 instructions a block: a block of more SVE instructions than fit would end
// the process at some later time.
inline void check_framework_options() {
    uint64 chosen = 0;
    if (!dr_get_integer_option("max_bb_instrs", &chosen) || chosen <= most_block_instructions)
        return;
    dr_fprintf(our_stderr,
               "Usage error: blocks of %u instructions can outgrow DynamoRIO's code cache: "
               "run drrun with -max_bb_instrs %u\n",
               static_cast<unsigned>(chosen), most_block_instructions);
    dr_abort();
}

// Newer versions have the event in drmgr, and hide the older name behind a macro there.
inline void register_process_exit_event(void (*event)()) {
#ifdef dr_register_exit_event
    drmgr_register_exit_event(event);
#else
    dr_register_exit_event(event);
#endif
}

// The published clean call: on the framework's stack, with all registers kept. The floating-point state is
// part of what is kept in any case, and the flag that asks for it is not to be set on AArch64. The callee has
// the address as an argument; the instructions around the call carry it for the framework.
template <typename... Operand>
void dr_insert_call_kelvo(void* drcontext, instrlist_t* ilist, instr_t* where, app_pc, void* callee,
                          uint num_args, Operand... operands) {
    static_assert((__is_same(Operand, opnd_t) && ...));
    dr_insert_clean_call(drcontext, ilist, where, callee, false, num_args, operands...);
}

// A thread that is stopped in a replacement may be told to go on from the replaced instruction, with the
// registers that it has at that moment. The instructions of a replacement that have application status are
// the places where that can happen.

enum class replacement_part { none, before_call, after_call };

// The part of a replacement that an instruction with application status belongs to: what stores or reads a
// system register comes before the call, what loads or writes one after it. The two moves of the stack
// pointer are known by their words.
constexpr replacement_part part_of_replacement(unsigned int word) {
    constexpr unsigned int add_x26_sp = 0x910003FA;
    constexpr unsigned int add_sp_x26 = 0x9100035F;
    constexpr unsigned int load = 1u << 22;
    constexpr unsigned int read = 1u << 21;
    if (word == add_x26_sp)
        return replacement_part::before_call;
    if (word == add_sp_x26)
        return replacement_part::after_call;
    if ((word & 0xFFD00000) == 0xD5100000)
        return (word & read) != 0 ? replacement_part::before_call : replacement_part::after_call;
    if ((word & 0x0A000000) == 0x08000000)
        return (word & load) != 0 ? replacement_part::after_call : replacement_part::before_call;
    return replacement_part::none;
}

inline bool read_word(const byte* address, unsigned int& word) {
    size_t bytes_read = 0;
    return dr_safe_read(address, sizeof word, &word, &bytes_read) && bytes_read == sizeof word;
}

// Before the call, only X26 and X27 don't have the application's values: with them put back, the replaced
// instruction can be executed from its start. After the call it has been executed and must not be again, so
// the framework has to let the thread go on and stop it elsewhere.
inline bool restore_application_state(void* drcontext, bool, dr_restore_state_info_t* info) {
    unsigned int replaced, stopped_at;
    if (!info->raw_mcontext_valid || !read_word(info->mcontext->pc, replaced) ||
        is_sve(replaced) == nullptr || !read_word(info->raw_mcontext->pc, stopped_at))
        return true;
    switch (part_of_replacement(stopped_at)) {
    case replacement_part::before_call:
        info->mcontext->r26 = dr_read_saved_reg(drcontext, x26_slot);
        info->mcontext->r27 = dr_read_saved_reg(drcontext, x27_slot);
        return true;
    case replacement_part::after_call:
        return false;
    case replacement_part::none:
        break;
    }
    return true;
}

inline bool register_framework_events() {
    return drmgr_register_restore_state_ex_event(restore_application_state);
}
