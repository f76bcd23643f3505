#include "sve/client/emulation_entry.h"

#include "sve/client/statistics.h"
#include "sve/client/sve_client.h"

#include <cstdio>

void emulate_instruction(unsigned int word, unsigned char* pc, opcode_stub stub) {
    void* drcontext = dr_get_current_drcontext();
    cpu_state* state = static_cast<cpu_state*>(drmgr_get_tls_field(drcontext, tls_idx));
    state->pc = reinterpret_cast<unsigned int*>(pc);
    state->x[26] = dr_read_saved_reg(drcontext, x26_slot);
    state->x[27] = dr_read_saved_reg(drcontext, x27_slot);
    state->x[28] = dr_read_saved_reg(drcontext, x28_slot);

    if (stub(state, word) != aarch64_emulated) {
        // The word in memory, which is what is at fault if it has changed since the block was built.
        std::fprintf(stderr, "Error: failed to emulate SVE instruction 0x%08x at PC %p\n",
                     *reinterpret_cast<unsigned int*>(pc), static_cast<void*>(pc));
    } else {
        update_sve_stats(reinterpret_cast<unsigned int*>(pc), word);
    }

    dr_write_saved_reg(drcontext, x26_slot, state->x[26]);
    dr_write_saved_reg(drcontext, x27_slot, state->x[27]);
    dr_write_saved_reg(drcontext, x28_slot, state->x[28]);
}
