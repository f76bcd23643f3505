#include "tests/client/recorded_calls.h"

#include "drmgr.h"
#include "drreg.h"

#include <cstdarg>
#include <cstdio>

template <typename Result> Result failure() { return Result(); }
template <> drreg_status_t failure<drreg_status_t>() { return DRREG_ERROR; }

// The linker sends the client's call of NAME to __wrap_NAME, and __real_NAME to the framework.
#define RECORD(result, name, parameters, arguments)                                                          \
    extern "C" result __real_##name parameters;                                                              \
    extern "C" result __wrap_##name parameters {                                                             \
        recorded_calls.push_back(#name);                                                                     \
        return failing_call == #name ? failure<result>() : __real_##name arguments;                          \
    }

RECORD(bool, dr_set_client_name, (const char* name, const char* url), (name, url))
RECORD(bool, drmgr_init, (), ())
RECORD(drreg_status_t, drreg_init, (drreg_options_t * options), (options))
RECORD(module_data_t*, dr_get_main_module, (), ())
RECORD(bool, drmgr_register_thread_init_event, (void (*event)(void*)), (event))
RECORD(bool, drmgr_register_thread_exit_event, (void (*event)(void*)), (event))
RECORD(bool, drmgr_register_exit_event, (void (*event)()), (event))
RECORD(bool, drmgr_register_bb_app2app_event, (drmgr_xform_cb_t event, drmgr_priority_t* priority),
       (event, priority))
RECORD(int, drmgr_register_tls_field, (), ())
RECORD(bool, drmgr_unregister_bb_app2app_event, (drmgr_xform_cb_t event), (event))
RECORD(drreg_status_t, drreg_exit, (), ())
RECORD(void, drmgr_exit, (), ())
RECORD(void*, dr_thread_alloc, (void* drcontext, size_t size), (drcontext, size))
RECORD(void, dr_thread_free, (void* drcontext, void* memory, size_t size), (drcontext, memory, size))
RECORD(module_data_t*, dr_lookup_module, (byte * pc), (pc))
RECORD(void, dr_free_module_data, (module_data_t * data), (data))
RECORD(reg_id_t, dr_get_stolen_reg, (), ())
RECORD(bool, dr_using_all_private_caches, (), ())

extern "C" void __wrap_dr_log(void* drcontext, uint mask, uint level, const char* format, ...) {
    char text[256];
    std::snprintf(text, sizeof text, "dr_log %s %#x %u ", drcontext == nullptr ? "global" : "thread", mask,
                  level);
    recorded_calls.push_back(std::string(text) + format);
}

// is_sve, by the name that the linker knows it by.
extern "C" opcode_stub __real__Z6is_svej(unsigned int word);
extern "C" opcode_stub __wrap__Z6is_svej(unsigned int word) {
    const opcode_stub stub = __real__Z6is_svej(word);
    return stub != nullptr && stub_in_place != nullptr ? stub_in_place : stub;
}
