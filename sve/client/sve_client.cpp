// The client's frame: start-up, thread events and the report at exit.
#include "sve/client/sve_client.h"

#include "droption.h"
#include "sve/client/block_rewriting.h"
#include "sve/client/statistics.h"
#include "sve/decode/cpu_state.h"

#include <cstdio>
#include <cstring>
#include <string>

module_data_t* exe = nullptr;
app_pc exe_start = nullptr;
int tls_idx = -1;

void client_assert(bool condition, const char* text, int line) {
    if (condition)
        return;
    dr_fprintf(our_stderr, "ASSERT FAILURE: %s:%d: %s (%s)\n", "sve/client/sve_client", line, text, "");
    dr_abort();
}

// The client has no options: nothing may stand before "--".
static void check_arguments(int argc, const char* argv[]) {
    using dynamorio::droption::droption_parser_t;
    std::string message;
    int last_index = argc;
    bool accepted = droption_parser_t::parse_argv(dynamorio::droption::DROPTION_SCOPE_CLIENT, argc, argv,
                                                  &message, &last_index);
    // The parser leaves an argument without a dash, and what follows, to its caller.
    if (accepted && last_index < argc && std::strcmp(argv[last_index - 1], "--") != 0) {
        message = std::string("Unknown option: ") + argv[last_index];
        accepted = false;
    }
    if (!accepted) {
        dr_fprintf(our_stderr, "Usage error: %s\n", message.c_str());
        dr_abort();
    }
}

static void event_thread_init(void* drcontext) {
    void* state = dr_thread_alloc(drcontext, sizeof(cpu_state));
    std::memset(state, 0, sizeof(cpu_state));
    drmgr_set_tls_field(drcontext, tls_idx, state);
}

static void event_thread_exit(void* drcontext) {
    void* data = drmgr_get_tls_field(drcontext, tls_idx);
    client_assert(data != nullptr, "data != __null");
    dr_thread_free(drcontext, data, sizeof(cpu_state));
}

static void event_exit() {
    dr_log(nullptr, all_log_categories, 1, "SVE client exiting\n");
    const char* name = basename(exe->full_path);
    std::fprintf(stderr, "%s: %lu SVE instructions executed\n", name, sve_instr_count.load());
    std::fprintf(stderr, "%s: %lu Non-SVE AArch64 instructions executed\n", name, aarch64_instr_count);
    dr_free_module_data(exe);
    client_assert(drmgr_unregister_bb_app2app_event(event_instruction_change), "false");
    client_assert(drreg_exit() == DRREG_SUCCESS, "false");
    drmgr_exit();
}

extern "C" DR_EXPORT void dr_client_main(client_id_t, int argc, const char* argv[]) {
    drreg_options_t options = {};
    options.struct_size = sizeof options;
    dr_set_client_name("Ostrel SVE emulation client", "the Ostrel project's issue tracker");
    check_arguments(argc, argv);
    check_framework_options();

    client_assert(drmgr_init(), "false");
    client_assert(drreg_init(&options) == DRREG_SUCCESS, "false");

    exe = dr_get_main_module();
    if (exe != nullptr)
        exe_start = exe->start;

    drmgr_register_thread_init_event(event_thread_init);
    drmgr_register_thread_exit_event(event_thread_exit);
    register_process_exit_event(event_exit);
    client_assert(drmgr_register_bb_app2app_event(event_instruction_change, nullptr), "false");
    client_assert(register_framework_events(), "false");
    tls_idx = drmgr_register_tls_field();

    sve_instr_count = 0;
    aarch64_instr_count = 0;
    dr_log(nullptr, all_log_categories, 1, "SVE client initializing\n");
}
