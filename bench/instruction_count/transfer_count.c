// A plugin for qemu's user-mode emulation that counts executed instructions by what they have to do with
// indirect transfers. It knows the words that the engine emits for them. Prints to the plugin log at exit:
//
//     own           of the executable itself: the program's, or under `ostrel` the engine's
//     other         of all other code: under `ostrel` what the engine has emitted
//     returns       RET, in the executable itself
//     indirect      BR and BLR, in the executable itself
//     return-lookups, indirect-lookups   look-ups of the targets of returns and of other transfers
//     comparisons   of return addresses
//
// The declarations are those of the plugin interface, version 1; Debian's qemu-user has no header for it.
#include <inttypes.h>
#include <stddef.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>

#define EXPORTED __attribute__((visibility("default")))

typedef uint64_t qemu_plugin_id_t;
typedef struct qemu_info_t qemu_info_t;
struct qemu_plugin_tb;
struct qemu_plugin_insn;
enum qemu_plugin_op { QEMU_PLUGIN_INLINE_ADD_U64 };

void qemu_plugin_register_vcpu_tb_trans_cb(qemu_plugin_id_t id,
                                           void (*callback)(qemu_plugin_id_t, struct qemu_plugin_tb*));
void qemu_plugin_register_vcpu_insn_exec_inline(struct qemu_plugin_insn* instruction,
                                                enum qemu_plugin_op operation, void* counter,
                                                uint64_t addend);
void qemu_plugin_register_atexit_cb(qemu_plugin_id_t id, void (*callback)(qemu_plugin_id_t, void*),
                                    void* data);
size_t qemu_plugin_tb_n_insns(const struct qemu_plugin_tb* block);
struct qemu_plugin_insn* qemu_plugin_tb_get_insn(const struct qemu_plugin_tb* block, size_t index);
const void* qemu_plugin_insn_data(const struct qemu_plugin_insn* instruction);
uint64_t qemu_plugin_insn_vaddr(const struct qemu_plugin_insn* instruction);
uint64_t qemu_plugin_start_code(void);
uint64_t qemu_plugin_end_code(void);
void qemu_plugin_outs(const char* text);

EXPORTED int qemu_plugin_version = 1;

enum kind { own, other, returns, indirect, return_lookups, indirect_lookups, comparisons, kinds };
static const char* const names[kinds] = {
    "own", "other", "returns", "indirect", "return-lookups", "indirect-lookups", "comparisons"};

// Sums over all threads; exact for a program with one.
static uint64_t executed[kinds];

static int kind_of(uint32_t word, int is_own) {
    if (is_own) {
        if ((word & 0xFFFFFC1F) == 0xD65F0000)
            return returns;
        return (word & 0xFFDFFC1F) == 0xD61F0000 ? indirect : kinds;
    }
    // AND of the target's low bits into X14 or X15, and SUB of X30 from a constant in X28.
    if ((word & 0xFFFFFC1E) == 0x927E3C0E)
        return (word >> 5 & 31) == 30 ? return_lookups : indirect_lookups;
    return word == 0xCB1E039C ? comparisons : kinds;
}

static void on_translation(qemu_plugin_id_t id, struct qemu_plugin_tb* block) {
    (void)id;
    for (size_t n = 0; n < qemu_plugin_tb_n_insns(block); ++n) {
        struct qemu_plugin_insn* const instruction = qemu_plugin_tb_get_insn(block, n);
        const uint64_t address = qemu_plugin_insn_vaddr(instruction);
        const int is_own = address >= qemu_plugin_start_code() && address < qemu_plugin_end_code();
        uint32_t word;
        memcpy(&word, qemu_plugin_insn_data(instruction), sizeof word);
        qemu_plugin_register_vcpu_insn_exec_inline(instruction, QEMU_PLUGIN_INLINE_ADD_U64,
                                                   &executed[is_own ? own : other], 1);
        const int kind = kind_of(word, is_own);
        if (kind != kinds)
            qemu_plugin_register_vcpu_insn_exec_inline(instruction, QEMU_PLUGIN_INLINE_ADD_U64,
                                                       &executed[kind], 1);
    }
}

static void on_exit_of_program(qemu_plugin_id_t id, void* data) {
    (void)id;
    (void)data;
    for (int n = 0; n < kinds; ++n) {
        char line[64];
        snprintf(line, sizeof line, "%s: %" PRIu64 "\n", names[n], executed[n]);
        qemu_plugin_outs(line);
    }
}

EXPORTED int qemu_plugin_install(qemu_plugin_id_t id, const qemu_info_t* info, int argc, char** argv) {
    (void)info;
    (void)argc;
    (void)argv;
    qemu_plugin_register_vcpu_tb_trans_cb(id, on_translation);
    qemu_plugin_register_atexit_cb(id, on_exit_of_program, NULL);
    return 0;
}
