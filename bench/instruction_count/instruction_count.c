// A plugin for qemu's user-mode emulation that counts the instructions that a program executes, those of code
// that the program itself wrote included. Prints "instructions: N" to the plugin log at exit:
//
//     qemu-aarch64 -plugin ./libinstruction_count.so -d plugin PROGRAM ARG...
//
// and "so far: N instructions, M system calls" whenever the program asks for its parent's process number.
//
// With ",symbols=on" after the plugin's name, lines come before it that say where: for a block of the program
// file "SYMBOL INSTRUCTIONS EXECUTIONS", and for one of any other code "- INSTRUCTIONS EXECUTIONS", with the
// instructions that the block has. A symbol has as many lines as it has blocks.
//
// The declarations are those of the plugin interface, version 1; Debian's qemu-user has no header for it.
#include <inttypes.h>
#include <stddef.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#define EXPORTED __attribute__((visibility("default")))

typedef uint64_t qemu_plugin_id_t;
typedef struct qemu_info_t qemu_info_t;
struct qemu_plugin_tb;
struct qemu_plugin_insn;
enum qemu_plugin_op { QEMU_PLUGIN_INLINE_ADD_U64 };

void qemu_plugin_register_vcpu_tb_trans_cb(qemu_plugin_id_t id,
                                           void (*callback)(qemu_plugin_id_t, struct qemu_plugin_tb*));
void qemu_plugin_register_vcpu_tb_exec_inline(struct qemu_plugin_tb* block, enum qemu_plugin_op operation,
                                              void* counter, uint64_t addend);
void qemu_plugin_register_vcpu_syscall_cb(qemu_plugin_id_t id,
                                          void (*callback)(qemu_plugin_id_t, unsigned int vcpu,
                                                           int64_t number, uint64_t, uint64_t, uint64_t,
                                                           uint64_t, uint64_t, uint64_t, uint64_t, uint64_t));
void qemu_plugin_register_atexit_cb(qemu_plugin_id_t id, void (*callback)(qemu_plugin_id_t, void*),
                                    void* data);
size_t qemu_plugin_tb_n_insns(const struct qemu_plugin_tb* block);
struct qemu_plugin_insn* qemu_plugin_tb_get_insn(const struct qemu_plugin_tb* block, size_t index);
const char* qemu_plugin_insn_symbol(const struct qemu_plugin_insn* instruction);
void qemu_plugin_outs(const char* text);

EXPORTED int qemu_plugin_version = 1;

// The sum over all threads; exact for a program with one.
static uint64_t executed;
static uint64_t system_calls;

struct block {
    struct block* next;
    const char* symbol;
    uint64_t instructions;
    uint64_t executions;
};
static struct block* blocks;
static int by_symbol;

// A block that is left in its middle, by a fault, counts whole.
static void on_translation(qemu_plugin_id_t id, struct qemu_plugin_tb* translated) {
    (void)id;
    const size_t instructions = qemu_plugin_tb_n_insns(translated);
    qemu_plugin_register_vcpu_tb_exec_inline(translated, QEMU_PLUGIN_INLINE_ADD_U64, &executed, instructions);
    if (!by_symbol)
        return;
    struct block* const block = calloc(1, sizeof *block);
    if (block == NULL)
        abort();
    block->next = blocks;
    block->symbol = qemu_plugin_insn_symbol(qemu_plugin_tb_get_insn(translated, 0));
    block->instructions = instructions;
    blocks = block;
    qemu_plugin_register_vcpu_tb_exec_inline(translated, QEMU_PLUGIN_INLINE_ADD_U64, &block->executions, 1);
}

enum { number_of_getppid = 173 };

// The call's own block has been counted whole.
static void on_system_call(qemu_plugin_id_t id, unsigned int vcpu, int64_t number, uint64_t a1, uint64_t a2,
                           uint64_t a3, uint64_t a4, uint64_t a5, uint64_t a6, uint64_t a7, uint64_t a8) {
    (void)id, (void)vcpu, (void)a1, (void)a2, (void)a3, (void)a4, (void)a5, (void)a6, (void)a7, (void)a8;
    if (number != number_of_getppid) {
        ++system_calls;
        return;
    }
    char line[100];
    snprintf(line, sizeof line, "so far: %" PRIu64 " instructions, %" PRIu64 " system calls\n", executed,
             system_calls);
    qemu_plugin_outs(line);
}

static void on_exit_of_program(qemu_plugin_id_t id, void* data) {
    (void)id;
    (void)data;
    char line[512];
    for (const struct block* block = blocks; block != NULL; block = block->next) {
        const char* const symbol = block->symbol != NULL && *block->symbol != '\0' ? block->symbol : "-";
        snprintf(line, sizeof line, "%.400s %" PRIu64 " %" PRIu64 "\n", symbol, block->instructions,
                 block->executions);
        qemu_plugin_outs(line);
    }
    snprintf(line, sizeof line, "instructions: %" PRIu64 "\n", executed);
    qemu_plugin_outs(line);
}

EXPORTED int qemu_plugin_install(qemu_plugin_id_t id, const qemu_info_t* info, int argc, char** argv) {
    (void)info;
    for (int i = 0; i < argc; ++i) {
        if (strcmp(argv[i], "symbols=on") != 0)
            return -1;
        by_symbol = 1;
    }
    qemu_plugin_register_vcpu_tb_trans_cb(id, on_translation);
    qemu_plugin_register_vcpu_syscall_cb(id, on_system_call);
    qemu_plugin_register_atexit_cb(id, on_exit_of_program, NULL);
    return 0;
}
