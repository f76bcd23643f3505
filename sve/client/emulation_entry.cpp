#include "sve/client/emulation_entry.h"

#include "sve/client/statistics.h"
#include "sve/client/sve_client.h"

#include <cstdio>

namespace {

struct spilled_register {
    int number;
    dr_spill_slot_t slot;
};

constexpr spilled_register spilled_registers[] = {{26, x26_slot}, {27, x27_slot}, {28, x28_slot}};

} // namespace

void emulate_instruction(unsigned int word, unsigned char* pc, opcode_stub stub) {
    void* drcontext = dr_get_current_drcontext();
    cpu_state* state = static_cast<cpu_state*>(drmgr_get_tls_field(drcontext, tls_idx));
    state->pc = reinterpret_cast<unsigned int*>(pc);
    for (const spilled_register& spilled : spilled_registers)
        state->x[spilled.number] = dr_read_saved_reg(drcontext, spilled.slot);

    if (stub(state, word) != aarch64_emulated) {
        // The word in memory, which is what is at fault if it has changed since the block was built.
        std::fprintf(stderr, "Error: failed to emulate SVE instruction 0x%08x at PC %p\n",
                     *reinterpret_cast<unsigned int*>(pc), static_cast<void*>(pc));
    } else {
        update_sve_stats(reinterpret_cast<unsigned int*>(pc), word);
    }

    for (const spilled_register& spilled : spilled_registers)
        dr_write_saved_reg(drcontext, spilled.slot, state->x[spilled.number]);
}
