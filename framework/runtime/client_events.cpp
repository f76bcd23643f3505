#include "framework/runtime/client_events.h"

#include "framework/ir/callbacks.h"

namespace {

thread_local void* current_drcontext = nullptr;

template <typename Callback, typename... Arguments>
void run_in_order(callback_list<Callback> list, Arguments... arguments) {
    for (int index = 0; index < list.count; ++index)
        list.entry[index](arguments...);
}

template <typename Callback, typename... Arguments>
void run_in_reverse(callback_list<Callback> list, Arguments... arguments) {
    for (int index = list.count - 1; index >= 0; --index)
        list.entry[index](arguments...);
}

} // namespace

void start_client(int argc, const char* argv[]) { dr_client_main(0, argc, argv); }

void raise_thread_init(void* drcontext) { run_in_order(registered_callbacks.thread_init, drcontext); }
void raise_thread_exit(void* drcontext) { run_in_reverse(registered_callbacks.thread_exit, drcontext); }
void raise_process_exit() { run_in_reverse(registered_callbacks.process_exit); }

dr_emit_flags_t raise_block_event(void* drcontext, void* tag, instrlist_t* bb, bool for_trace,
                                  bool translating) {
    unsigned flags = DR_EMIT_DEFAULT;
    const callback_list<drmgr_xform_cb_t> list = registered_callbacks.block;
    for (int index = 0; index < list.count; ++index)
        flags |= list.entry[index](drcontext, tag, bb, for_trace, translating);
    return static_cast<dr_emit_flags_t>(flags);
}

void set_current_drcontext(void* drcontext) { current_drcontext = drcontext; }

extern "C" void* dr_get_current_drcontext(void) { return current_drcontext; }
