#include "sve/client/block_rewriting.h"

#include "sve/client/emulation_entry.h"
#include "sve/client/statistics.h"
#include "sve/client/sve_client.h"
#include "sve/decode/cpu_state.h"
#include "sve/decode/decoder.h"

#include <cstring>
#include <iterator>

namespace {

// The inserted code keeps the state pointer in X27 and passes other values through X26. It can't store these
// two, nor X28, which holds the framework's pointer: they go through spill slots.
constexpr reg_id_t scratch = DR_REG_X26;
constexpr reg_id_t state_register = DR_REG_X27;

// General registers stored in pairs, by the number of the first.
constexpr int first_of_pair[] = {0, 2, 4, 6, 8, 10, 12, 14, 16, 18, 20, 22, 24, 29};

constexpr int simd_registers = 32;

struct system_register {
    reg_id_t reg;
    reg_id_t transfer; // the scratch register at the width of the field
    opnd_size_t size;
    std::size_t offset;
};

// In the order of saving; they are restored in reverse.
constexpr system_register system_registers[] = {
    {DR_REG_NZCV, DR_REG_X26, OPSZ_8, offsetof(cpu_state, nzcv)},
    {DR_REG_FPSR, DR_REG_W26, OPSZ_4, offsetof(cpu_state, fpsr)},
    {DR_REG_FPCR, DR_REG_W26, OPSZ_4, offsetof(cpu_state, fpcr)},
};

constexpr std::size_t x_offset(int number) { return offsetof(cpu_state, x) + sizeof(std::uint64_t) * number; }
constexpr std::size_t z_offset(int number) { return offsetof(cpu_state, z) + vector_bytes * number; }
constexpr std::size_t stack_pointer_offset = x_offset(31);

// The instruction being replaced: what is inserted goes ahead of it.
struct replaced_instruction {
    void* drcontext;
    instrlist_t* bb;
    instr_t* instr;
    app_pc pc;
};

// Inserts an instruction of ours as the application's, so that a fault or a state query at it is put down to
// the instruction it replaces. The last one of a replacement also tells the framework where the block goes
// on.
void insert(const replaced_instruction& at, instr_t* created) {
    instrlist_preinsert(at.bb, at.instr, instr_set_translation(created, at.pc));
}

opnd_t state_field(std::size_t offset, opnd_size_t size) {
    return opnd_create_base_disp(state_register, DR_REG_NULL, 0, static_cast<int>(offset), size);
}

void insert_store(const replaced_instruction& at, reg_id_t reg, opnd_size_t size, std::size_t offset) {
    insert(at, INSTR_CREATE_str(at.drcontext, state_field(offset, size), opnd_create_reg(reg)));
}

void insert_load(const replaced_instruction& at, reg_id_t reg, opnd_size_t size, std::size_t offset) {
    insert(at, INSTR_CREATE_ldr(at.drcontext, opnd_create_reg(reg), state_field(offset, size)));
}

void insert_move(const replaced_instruction& at, reg_id_t destination, reg_id_t source) {
    insert(at, XINST_CREATE_move(at.drcontext, opnd_create_reg(destination), opnd_create_reg(source)));
}

// Where each thread runs only blocks that it built itself, the pointer is that of the thread that builds, as
// an immediate. Where threads share their blocks, each fetches its own when it runs one.
void insert_state_pointer(const replaced_instruction& at) {
    if (!dr_using_all_private_caches()) {
        drmgr_insert_read_tls_field(at.drcontext, tls_idx, at.bb, at.instr, state_register);
        return;
    }
    void* state = drmgr_get_tls_field(at.drcontext, tls_idx);
    instrlist_insert_mov_immed_ptrsz(at.drcontext, reinterpret_cast<ptr_int_t>(state),
                                     opnd_create_reg(state_register), at.bb, at.instr, nullptr, nullptr);
}

void insert_save(const replaced_instruction& at) {
    dr_save_reg(at.drcontext, at.bb, at.instr, scratch, x26_slot);
    dr_save_reg(at.drcontext, at.bb, at.instr, state_register, x27_slot);
    dr_insert_get_stolen_reg_value(at.drcontext, at.bb, at.instr, state_register);
    dr_save_reg(at.drcontext, at.bb, at.instr, state_register, x28_slot);
    insert_state_pointer(at);

    insert_move(at, scratch, DR_REG_XSP);
    insert_store(at, scratch, OPSZ_8, stack_pointer_offset);
    for (const int first : first_of_pair)
        insert(at,
               INSTR_CREATE_stp(at.drcontext, state_field(x_offset(first), OPSZ_16),
                                opnd_create_reg(DR_REG_X0 + first), opnd_create_reg(DR_REG_X0 + first + 1)));
    for (int number = 0; number < simd_registers; ++number)
        insert_store(at, DR_REG_Q0 + number, OPSZ_16, z_offset(number));
    for (const system_register& saved : system_registers) {
        insert(at, INSTR_CREATE_mrs(at.drcontext, opnd_create_reg(scratch), opnd_create_reg(saved.reg)));
        insert_store(at, saved.transfer, saved.size, saved.offset);
    }
}

void insert_restore(const replaced_instruction& at) {
    insert_state_pointer(at);

    for (auto saved = std::rbegin(system_registers); saved != std::rend(system_registers); ++saved) {
        insert_load(at, saved->transfer, saved->size, saved->offset);
        insert(at, INSTR_CREATE_msr(at.drcontext, opnd_create_reg(saved->reg), opnd_create_reg(scratch)));
    }
    for (int number = 0; number < simd_registers; ++number)
        insert_load(at, DR_REG_Q0 + number, OPSZ_16, z_offset(number));
    for (const int first : first_of_pair)
        insert(at, INSTR_CREATE_ldp(at.drcontext, opnd_create_reg(DR_REG_X0 + first),
                                    opnd_create_reg(DR_REG_X0 + first + 1),
                                    state_field(x_offset(first), OPSZ_16)));
    insert_load(at, scratch, OPSZ_8, stack_pointer_offset);
    insert_move(at, DR_REG_XSP, scratch);

    dr_restore_reg(at.drcontext, at.bb, at.instr, state_register, x28_slot);
    dr_insert_set_stolen_reg_value(at.drcontext, at.bb, at.instr, state_register);
    dr_restore_reg(at.drcontext, at.bb, at.instr, state_register, x27_slot);
    dr_restore_reg(at.drcontext, at.bb, at.instr, scratch, x26_slot);
}

opnd_t address_operand(const void* address) {
    return opnd_create_immed_uint(reinterpret_cast<ptr_uint_t>(address), OPSZ_8);
}

unsigned int load_word(const byte* address) {
    unsigned int word;
    std::memcpy(&word, address, sizeof word);
    return word;
}

void replace_instruction(void* drcontext, instrlist_t* bb, instr_t* instr, opcode_stub stub) {
    const replaced_instruction at = {drcontext, bb, instr, instr_get_app_pc(instr)};
    const unsigned int word = load_word(at.pc);
    client_assert(dr_get_stolen_reg() == DR_REG_X28, "dr_get_stolen_reg() == DR_REG_X28");

    insert_save(at);
    dr_insert_call_kelvo(drcontext, bb, instr, at.pc, reinterpret_cast<void*>(emulate_instruction), 3,
                         opnd_create_immed_uint(word, OPSZ_4), address_operand(at.pc),
                         address_operand(reinterpret_cast<void*>(stub)));
    insert_restore(at);

    instrlist_remove(bb, instr);
    instr_destroy(drcontext, instr);
}

// Code that is known to lie in another module than the program itself is neither emulated nor counted.
bool is_foreign(app_pc pc) {
    module_data_t* module = dr_lookup_module(pc);
    if (module == nullptr)
        return false;
    const bool foreign = module->start != exe_start;
    dr_free_module_data(module);
    return foreign;
}

} // namespace

dr_emit_flags_t event_instruction_change(void* drcontext, void* tag, instrlist_t* bb, bool, bool) {
    if (is_foreign(dr_fragment_app_pc(tag)))
        return DR_EMIT_DEFAULT;
    for (instr_t* instr = instrlist_first_app(bb); instr != nullptr;) {
        instr_t* next = instr_get_next_app(instr);
        const opcode_stub stub = is_sve(load_word(instr_get_raw_bits(instr)));
        if (stub == nullptr)
            ++aarch64_instr_count;
        else
            replace_instruction(drcontext, bb, instr, stub);
        instr = next;
    }
    return DR_EMIT_DEFAULT;
}
