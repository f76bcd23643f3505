// The instrumentation interface that a client sees: the names, types and contracts that DynamoRIO publishes
// for AArch64 Linux, as far as this project's client uses them. What a name does here and there is the same,
// so that one client source builds for both; a limit of this implementation is stated where there is one.
#pragma once

#include <assert.h>
#include <stddef.h>
#include <stdint.h>
#include <sys/types.h>

typedef unsigned int uint;
typedef unsigned char byte;
typedef uint64_t uint64;
typedef int64_t ptr_int_t;
typedef uint64_t ptr_uint_t;
typedef uint64_t reg_t;
typedef byte* app_pc;
typedef uint client_id_t;
typedef int file_t;
typedef unsigned short reg_id_t;
typedef byte opnd_size_t;

#define INVALID_FILE (-1)
#define DR_EXPORT
#define DR_LOG_NONE 0x00000000
#define DR_LOG_ALL 0x00ffffff

// Registers. The order within a file is relied on: DR_REG_X0 + n is Xn. There is no X31: the stack pointer
// and the zero register are names of their own.
enum {
    // clang-format off
    DR_REG_NULL = 0, DR_REG_INVALID = 1,
    DR_REG_X0 = 2, DR_REG_X1, DR_REG_X2, DR_REG_X3, DR_REG_X4, DR_REG_X5, DR_REG_X6, DR_REG_X7, DR_REG_X8,
    DR_REG_X9, DR_REG_X10, DR_REG_X11, DR_REG_X12, DR_REG_X13, DR_REG_X14, DR_REG_X15, DR_REG_X16, DR_REG_X17,
    DR_REG_X18, DR_REG_X19, DR_REG_X20, DR_REG_X21, DR_REG_X22, DR_REG_X23, DR_REG_X24, DR_REG_X25, DR_REG_X26,
    DR_REG_X27, DR_REG_X28, DR_REG_X29, DR_REG_X30, DR_REG_XSP, DR_REG_XZR,
    DR_REG_W0 = 35, DR_REG_W1, DR_REG_W2, DR_REG_W3, DR_REG_W4, DR_REG_W5, DR_REG_W6, DR_REG_W7, DR_REG_W8,
    DR_REG_W9, DR_REG_W10, DR_REG_W11, DR_REG_W12, DR_REG_W13, DR_REG_W14, DR_REG_W15, DR_REG_W16, DR_REG_W17,
    DR_REG_W18, DR_REG_W19, DR_REG_W20, DR_REG_W21, DR_REG_W22, DR_REG_W23, DR_REG_W24, DR_REG_W25, DR_REG_W26,
    DR_REG_W27, DR_REG_W28, DR_REG_W29, DR_REG_W30, DR_REG_WSP, DR_REG_WZR,
    DR_REG_Q0 = 100, DR_REG_Q1, DR_REG_Q2, DR_REG_Q3, DR_REG_Q4, DR_REG_Q5, DR_REG_Q6, DR_REG_Q7, DR_REG_Q8,
    DR_REG_Q9, DR_REG_Q10, DR_REG_Q11, DR_REG_Q12, DR_REG_Q13, DR_REG_Q14, DR_REG_Q15, DR_REG_Q16, DR_REG_Q17,
    DR_REG_Q18, DR_REG_Q19, DR_REG_Q20, DR_REG_Q21, DR_REG_Q22, DR_REG_Q23, DR_REG_Q24, DR_REG_Q25, DR_REG_Q26,
    DR_REG_Q27, DR_REG_Q28, DR_REG_Q29, DR_REG_Q30, DR_REG_Q31,
    DR_REG_NZCV = 260, DR_REG_FPCR, DR_REG_FPSR,
    // clang-format on
};

// Operand sizes are codes, not byte counts.
enum { OPSZ_NA = 0, OPSZ_1 = 2, OPSZ_2 = 3, OPSZ_4 = 4, OPSZ_8 = 6, OPSZ_16 = 8, OPSZ_PTR = OPSZ_8 };

// clang-format off
typedef enum {
    SPILL_SLOT_1 = 0, SPILL_SLOT_2, SPILL_SLOT_3, SPILL_SLOT_4, SPILL_SLOT_5, SPILL_SLOT_6, SPILL_SLOT_7,
    SPILL_SLOT_8, SPILL_SLOT_9, SPILL_SLOT_10, SPILL_SLOT_11, SPILL_SLOT_12, SPILL_SLOT_13, SPILL_SLOT_14,
    SPILL_SLOT_15, SPILL_SLOT_16, SPILL_SLOT_17, SPILL_SLOT_MAX = SPILL_SLOT_17,
} dr_spill_slot_t;
// clang-format on

typedef enum {
    DR_EMIT_DEFAULT = 0,
    DR_EMIT_STORE_TRANSLATIONS = 1,
    DR_EMIT_PERSISTABLE = 2,
    DR_EMIT_MUST_END_TRACE = 4,
    DR_EMIT_GO_NATIVE = 8,
} dr_emit_flags_t;

typedef struct _instr_t instr_t;
typedef struct _instrlist_t instrlist_t;

// An operand by value. Its members are not for clients.
typedef struct _opnd_t {
    byte kind;
    opnd_size_t size;
    reg_id_t reg; // the register, or the base of a memory operand
    int disp;
    ptr_int_t value; // of an immediate
} opnd_t;

typedef void* module_handle_t;

typedef struct _module_names_t {
    const char* module_name;
    const char* file_name;
    uint64 inode;
} module_names_t;

typedef struct _module_segment_data_t {
    app_pc start;
    app_pc end;
    uint prot;
    uint64 offset;
} module_segment_data_t;

// A module of the application. Here `start`, `end`, `entry_point`, `names.file_name`, `full_path` and
// `contiguous` are filled and the rest is 0.
typedef struct _module_data_t {
    union {
        app_pc start;
        module_handle_t handle;
    };
    app_pc end;
    app_pc entry_point;
    uint flags;
    module_names_t names;
    char* full_path;
    bool contiguous;
    uint num_segments;
    module_segment_data_t* segments;
    uint timestamp;
    app_pc preferred_base;
} module_data_t;

extern "C" {

// Process. `dr_client_main` is the client's: it is called once, before any application code, with the
// client's own name in argv[0] and its options from 1.
DR_EXPORT void dr_client_main(client_id_t id, int argc, const char* argv[]);
bool dr_set_client_name(const char* name, const char* report_URL); // kept by pointer; false if either is null
[[noreturn]] void dr_abort(void); // the process ends at once with status 255; no exit event runs
bool dr_using_all_private_caches(void);

// Output. `dr_fprintf` writes once, unbuffered, cut at 2559 bytes, and returns the bytes written or -1.
extern file_t our_stdout, our_stderr, our_stdin;
__attribute__((format(printf, 2, 3))) ssize_t dr_fprintf(file_t f, const char* fmt, ...);
__attribute__((format(printf, 4, 5))) void dr_log(void* drcontext, uint mask, uint level, const char* fmt,
                                                  ...);

// Modules: heap copies, or null; the caller frees them. Freeing null is allowed.
module_data_t* dr_get_main_module(void);
module_data_t* dr_lookup_module(byte* pc);
void dr_free_module_data(module_data_t* data);

// Threads. Memory is aligned to 8 bytes and not cleared; freeing repeats the exact size.
void* dr_get_current_drcontext(void);
void* dr_thread_alloc(void* drcontext, size_t size);
void dr_thread_free(void* drcontext, void* mem, size_t size);

// Blocks and instruction lists.
app_pc dr_fragment_app_pc(void* tag);
instr_t* instrlist_first(instrlist_t* ilist);
instr_t* instrlist_last(instrlist_t* ilist);
instr_t* instrlist_first_app(instrlist_t* ilist);
void instrlist_append(instrlist_t* ilist, instr_t* instr);
void instrlist_preinsert(instrlist_t* ilist, instr_t* where, instr_t* instr); // a null `where` appends
void instrlist_meta_preinsert(instrlist_t* ilist, instr_t* where, instr_t* instr);
void instrlist_remove(instrlist_t* ilist, instr_t* instr); // unlinks; the instruction lives on
instr_t* instr_get_next(instr_t* instr);
instr_t* instr_get_prev(instr_t* instr);
instr_t* instr_get_next_app(instr_t* instr);
bool instr_is_app(instr_t* instr);
bool instr_is_meta(instr_t* instr);
void instr_set_app(instr_t* instr);
void instr_set_meta(instr_t* instr);
byte* instr_get_raw_bits(instr_t* instr); // null for an instruction built by hand
app_pc instr_get_app_pc(instr_t* instr);
instr_t* instr_set_translation(instr_t* instr, app_pc addr); // returns its argument
void instr_destroy(void* drcontext, instr_t* instr);

// Registers.
reg_id_t dr_get_stolen_reg(void);
bool reg_is_stolen(reg_id_t reg); // also the W view
bool reg_is_gpr(reg_id_t reg);    // X and W registers, the stack pointer and the zero register
uint opnd_size_in_bytes(opnd_size_t size);

// Operands.
opnd_t opnd_create_reg(reg_id_t r);
opnd_t opnd_create_immed_int(ptr_int_t i, opnd_size_t data_size);
opnd_t opnd_create_immed_uint(ptr_uint_t i, opnd_size_t data_size);
opnd_t opnd_create_base_disp(reg_id_t base_reg, reg_id_t index_reg, int scale, int disp,
                             opnd_size_t data_size);

// Creation. Everything created has application status and no translation. Offsets of STR and LDR are
// multiples of the size up to 4095 times it, those of STP and LDP -512 to 504 by 8; the size of a pair's
// memory operand is that of both registers together. Here the instruction is encoded at once, and an operand
// that does not fit fails an assertion.
instr_t* INSTR_CREATE_str(void* drcontext, opnd_t mem, opnd_t rt);
instr_t* INSTR_CREATE_ldr(void* drcontext, opnd_t rt, opnd_t mem);
instr_t* INSTR_CREATE_stp(void* drcontext, opnd_t mem, opnd_t rt1, opnd_t rt2);
instr_t* INSTR_CREATE_ldp(void* drcontext, opnd_t rt1, opnd_t rt2, opnd_t mem);
instr_t* INSTR_CREATE_mrs(void* drcontext, opnd_t xt, opnd_t sysreg);
instr_t* INSTR_CREATE_msr(void* drcontext, opnd_t sysreg, opnd_t xt);
instr_t* XINST_CREATE_move(void* drcontext, opnd_t d,
                           opnd_t s); // ADD d, s, #0 if either is SP, else ORR d, zr, s

// Meta MOVZ and up to three MOVK into an X register. `first` and `last` may be null; of a single instruction
// both are that instruction.
void instrlist_insert_mov_immed_ptrsz(void* drcontext, ptr_int_t val, opnd_t dst, instrlist_t* ilist,
                                      instr_t* where, instr_t** first, instr_t** last);

// What a context begins with. Not for clients: it is here so that access to a slot takes no call.
typedef struct _dr_context_start_t {
    uint64 not_for_clients[2];
    reg_t spill_slot[9];
} dr_context_start_t;

// Spill slots 1 to 9: meta code for X registers other than SP, and access from a clean call. A slot's
// contents last until the next application instruction that names the stolen register.
void dr_save_reg(void* drcontext, instrlist_t* ilist, instr_t* where, reg_id_t reg, dr_spill_slot_t slot);
void dr_restore_reg(void* drcontext, instrlist_t* ilist, instr_t* where, reg_id_t reg, dr_spill_slot_t slot);
inline reg_t dr_read_saved_reg(void* drcontext, dr_spill_slot_t slot) {
    assert(slot <= SPILL_SLOT_9);
    return static_cast<dr_context_start_t*>(drcontext)->spill_slot[slot];
}
inline void dr_write_saved_reg(void* drcontext, dr_spill_slot_t slot, reg_t value) {
    assert(slot <= SPILL_SLOT_9);
    static_cast<dr_context_start_t*>(drcontext)->spill_slot[slot] = value;
}

// Meta code between an X register other than the stolen one and the application's value of that one. Always
// true.
bool dr_insert_get_stolen_reg_value(void* drcontext, instrlist_t* ilist, instr_t* where, reg_id_t reg);
bool dr_insert_set_stolen_reg_value(void* drcontext, instrlist_t* ilist, instr_t* where, reg_id_t reg);

} // extern "C"
