// A plugin for qemu's user-mode emulation that counts the instructions that a program executes, those of code
// that the program itself wrote included. Prints "instructions: N" to the plugin log at exit:
//
//     qemu-aarch64 -plugin ./libinstruction_count.so -d plugin PROGRAM ARG...
//
// and "so far: N instructions, M system calls" whenever the program asks for its parent's process number.
//
// The declarations are those of the plugin interface, version 1; Debian's qemu-user has no header for it.
#include <inttypes.h>
#include <stddef.h>
#include <stdint.h>
#include <stdio.h>

#define EXPORTED __attribute__((visibility("default")))

typedef uint64_t qemu_plugin_id_t;
typedef struct qemu_info_t qemu_info_t;
struct qemu_plugin_tb;
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
void qemu_plugin_outs(const char* text);

EXPORTED int qemu_plugin_version = 1;

// The sum over all threads; exact for a program with one.
static uint64_t executed;
static uint64_t system_calls;

// A block that is left in its middle, by a fault, counts whole.
static void on_translation(qemu_plugin_id_t id, struct qemu_plugin_tb* block) {
    (void)id;
    qemu_plugin_register_vcpu_tb_exec_inline(block, QEMU_PLUGIN_INLINE_ADD_U64, &executed,
                                             qemu_plugin_tb_n_insns(block));
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
    char line[64];
    snprintf(line, sizeof line, "instructions: %" PRIu64 "\n", executed);
    qemu_plugin_outs(line);
}

EXPORTED int qemu_plugin_install(qemu_plugin_id_t id, const qemu_info_t* info, int argc, char** argv) {
    (void)info;
    (void)argc;
    (void)argv;
    qemu_plugin_register_vcpu_tb_trans_cb(id, on_translation);
    qemu_plugin_register_vcpu_syscall_cb(id, on_system_call);
    qemu_plugin_register_atexit_cb(id, on_exit_of_program, NULL);
    return 0;
}
