// Declarations of DynamoRIO's published interface on AArch64 Linux, of what the client may use and nothing
// else: code that compiles here keeps to it. The records are opaque where clients must not look into them.
// PUBLISHED_VERSION is the version in the form that the framework itself uses, major * 100 + minor: 1103 for
// release 11.3, 1191 for the newest.
#pragma once

#if !defined(LINUX) || !defined(ARM_64) || defined(X86_64) || defined(X86_32) || defined(ARM_32)
#error "exactly one system and one architecture are to be chosen"
#endif
#ifndef PUBLISHED_VERSION
#error "PUBLISHED_VERSION is missing"
#endif

#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>
#include <stdio.h>
#include <sys/types.h>

#define UNIX
#define X64
#define AARCH64
#define AARCHXX
#define DYNAMORIO_API

#ifdef USE_VISIBILITY_ATTRIBUTES
#define DR_EXPORT __attribute__((visibility("default")))
#else
#define DR_EXPORT
#endif

#define DR_PARAM_IN
#define DR_PARAM_OUT
#define DR_PARAM_INOUT

#ifdef __cplusplus
extern "C" {
#endif

// By this the framework recognises a client.
int _USES_DR_VERSION_ __attribute__((weak)) = PUBLISHED_VERSION;

typedef unsigned int uint;
typedef unsigned short ushort;
typedef unsigned char byte;
typedef signed char sbyte;
typedef int64_t int64;
typedef uint64_t uint64;
typedef int64_t ptr_int_t;
typedef uint64_t ptr_uint_t;
typedef uint64_t reg_t;
typedef byte* app_pc;
typedef uint client_id_t;
typedef int file_t;
typedef ushort reg_id_t;
typedef byte opnd_size_t;
typedef void* module_handle_t;

#define INVALID_FILE -1
extern file_t our_stdout;
extern file_t our_stderr;
extern file_t our_stdin;
#define STDOUT our_stdout
#define STDERR our_stderr
#define STDIN our_stdin

#define DR_LOG_NONE 0x00000000
#define DR_LOG_ALL 0x00ffffff

typedef struct _instr_t instr_t;
typedef struct _instrlist_t instrlist_t;

// Passed by value; what is in it is nobody's business.
class opnd_t {
    uint64 opaque[2];
};

// Registers of a file follow each other; between the files there are others.
enum {
    // clang-format off
    DR_REG_NULL, DR_REG_INVALID,
    DR_REG_X0, DR_REG_X1, DR_REG_X2, DR_REG_X3, DR_REG_X4, DR_REG_X5, DR_REG_X6, DR_REG_X7, DR_REG_X8,
    DR_REG_X9, DR_REG_X10, DR_REG_X11, DR_REG_X12, DR_REG_X13, DR_REG_X14, DR_REG_X15, DR_REG_X16, DR_REG_X17,
    DR_REG_X18, DR_REG_X19, DR_REG_X20, DR_REG_X21, DR_REG_X22, DR_REG_X23, DR_REG_X24, DR_REG_X25, DR_REG_X26,
    DR_REG_X27, DR_REG_X28, DR_REG_X29, DR_REG_X30, DR_REG_XSP, DR_REG_XZR,
    DR_REG_W0, DR_REG_W1, DR_REG_W2, DR_REG_W3, DR_REG_W4, DR_REG_W5, DR_REG_W6, DR_REG_W7, DR_REG_W8,
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

enum { OPSZ_NA, OPSZ_1 = 2, OPSZ_2, OPSZ_4, OPSZ_8 = 6, OPSZ_16 = 8, OPSZ_32 = 33, OPSZ_PTR = OPSZ_8 };

enum { OP_add = 10, OP_ldp, OP_ldr, OP_mrs, OP_msr, OP_orr, OP_stp, OP_str };

// clang-format off
typedef enum {
    SPILL_SLOT_1 = 0, SPILL_SLOT_2, SPILL_SLOT_3, SPILL_SLOT_4, SPILL_SLOT_5, SPILL_SLOT_6, SPILL_SLOT_7,
    SPILL_SLOT_8, SPILL_SLOT_9,
} dr_spill_slot_t;
// clang-format on

typedef enum {
    DR_EMIT_DEFAULT = 0,
    DR_EMIT_STORE_TRANSLATIONS = 1,
    DR_EMIT_PERSISTABLE = 2,
    DR_EMIT_MUST_END_TRACE = 4,
    DR_EMIT_GO_NATIVE = 8,
} dr_emit_flags_t;

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

// Of the context, the part that does not change with the version.
typedef struct _dr_mcontext_t {
    size_t size;
    int flags;
    // clang-format off
    reg_t r0, r1, r2, r3, r4, r5, r6, r7, r8, r9, r10, r11, r12, r13, r14, r15, r16, r17, r18, r19, r20, r21,
        r22, r23, r24, r25, r26, r27, r28, r29;
    // clang-format on
    union {
        reg_t r30;
        reg_t lr;
    };
    union {
        reg_t r31;
        reg_t sp;
        reg_t xsp;
    };
    byte* pc;
} dr_mcontext_t;

typedef struct _dr_fault_fragment_info_t {
    void* tag;
    byte* cache_start_pc;
    bool is_trace;
    bool app_code_consistent;
    instrlist_t* ilist;
} dr_fault_fragment_info_t;

typedef struct _dr_restore_state_info_t {
    dr_mcontext_t* mcontext;
    bool raw_mcontext_valid;
    dr_mcontext_t* raw_mcontext;
    dr_fault_fragment_info_t fragment_info;
} dr_restore_state_info_t;

DR_EXPORT void dr_client_main(client_id_t id, int argc, const char* argv[]);

bool dr_set_client_name(const char* name, const char* report_URL);
void dr_abort(void);
ssize_t dr_fprintf(file_t f, const char* fmt, ...);
void dr_log(void* drcontext, uint mask, uint level, const char* fmt, ...);
void dr_register_exit_event(void (*func)(void));
module_data_t* dr_get_main_module(void);
module_data_t* dr_lookup_module(byte* pc);
void dr_free_module_data(module_data_t* data);
void* dr_get_current_drcontext(void);
void* dr_thread_alloc(void* drcontext, size_t size);
void dr_thread_free(void* drcontext, void* mem, size_t size);
app_pc dr_fragment_app_pc(void* tag);
bool dr_safe_read(const void* base, size_t size, void* out_buf, size_t* bytes_read);
bool dr_using_all_private_caches(void);
bool dr_get_integer_option(const char* option_name, uint64* val);

reg_id_t dr_get_stolen_reg(void);
bool dr_insert_get_stolen_reg_value(void* drcontext, instrlist_t* ilist, instr_t* instr, reg_id_t reg);
bool dr_insert_set_stolen_reg_value(void* drcontext, instrlist_t* ilist, instr_t* instr, reg_id_t reg);

void dr_save_reg(void* drcontext, instrlist_t* ilist, instr_t* where, reg_id_t reg, dr_spill_slot_t slot);
void dr_restore_reg(void* drcontext, instrlist_t* ilist, instr_t* where, reg_id_t reg, dr_spill_slot_t slot);
reg_t dr_read_saved_reg(void* drcontext, dr_spill_slot_t slot);
void dr_write_saved_reg(void* drcontext, dr_spill_slot_t slot, reg_t value);

instr_t* instrlist_first_app(instrlist_t* ilist);
instr_t* instr_get_next_app(instr_t* instr);
void instrlist_preinsert(instrlist_t* ilist, instr_t* where, instr_t* instr);
void instrlist_remove(instrlist_t* ilist, instr_t* instr);
void instrlist_insert_mov_immed_ptrsz(void* drcontext, ptr_int_t val, opnd_t dst, instrlist_t* ilist,
                                      instr_t* where, instr_t** first, instr_t** last);
byte* instr_get_raw_bits(instr_t* instr);
app_pc instr_get_app_pc(instr_t* instr);
instr_t* instr_set_translation(instr_t* instr, app_pc addr);
void instr_destroy(void* drcontext, instr_t* instr);

opnd_t opnd_create_reg(reg_id_t r);
opnd_t opnd_create_immed_int(ptr_int_t i, opnd_size_t data_size);
opnd_t opnd_create_immed_uint(ptr_uint_t i, opnd_size_t data_size);
opnd_t opnd_create_base_disp(reg_id_t base_reg, reg_id_t index_reg, int scale, int disp, opnd_size_t size);
reg_id_t opnd_get_reg(opnd_t opnd);

instr_t* instr_create_1dst_1src(void* drcontext, int opcode, opnd_t dst, opnd_t src);
instr_t* instr_create_1dst_2src(void* drcontext, int opcode, opnd_t dst, opnd_t src1, opnd_t src2);
instr_t* instr_create_2dst_1src(void* drcontext, int opcode, opnd_t dst1, opnd_t dst2, opnd_t src);

void dr_insert_clean_call(void* drcontext, instrlist_t* ilist, instr_t* where, void* callee,
                          bool save_fpstate, uint num_args, ...);

#ifdef __cplusplus
}
#endif

// Creation is by macros, some of them bare conditional expressions that use an argument more than once.
#define INSTR_CREATE_str(dc, mem, rt) instr_create_1dst_1src((dc), OP_str, (mem), (rt))
#define INSTR_CREATE_ldr(dc, rt, mem) instr_create_1dst_1src((dc), OP_ldr, (rt), (mem))
#define INSTR_CREATE_stp(dc, mem, rt1, rt2) instr_create_1dst_2src((dc), OP_stp, (mem), (rt1), (rt2))
#define INSTR_CREATE_ldp(dc, rt1, rt2, mem) instr_create_2dst_1src((dc), OP_ldp, (rt1), (rt2), (mem))
#define INSTR_CREATE_mrs(dc, xt, sysreg) instr_create_1dst_1src((dc), OP_mrs, (xt), (sysreg))
#define INSTR_CREATE_msr(dc, sysreg, xt) instr_create_1dst_1src((dc), OP_msr, (sysreg), (xt))
#define INSTR_CREATE_add(dc, rd, rn, rm_or_imm) instr_create_1dst_2src((dc), OP_add, (rd), (rn), (rm_or_imm))
#define INSTR_CREATE_orr(dc, rd, rn, rm) instr_create_1dst_2src((dc), OP_orr, (rd), (rn), (rm))
#define XINST_CREATE_move(dc, d, s)                                                                          \
    (opnd_get_reg(d) == DR_REG_XSP || opnd_get_reg(s) == DR_REG_XSP || opnd_get_reg(d) == DR_REG_WSP ||      \
     opnd_get_reg(s) == DR_REG_WSP)                                                                          \
        ? INSTR_CREATE_add(dc, d, s, opnd_create_immed_int(0, OPSZ_8))                                       \
        : INSTR_CREATE_orr(dc, d, opnd_create_reg(DR_REG_XZR), s)
