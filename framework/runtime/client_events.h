// Calls from the engine's runtime to the client's registered callbacks.
#pragma once

#include "dr_api.h"

// Runs the client's dr_client_main with argv[0] the client's name and the options from 1.
void start_client(int argc, const char* argv[]);

// Raises the event of that name to every callback registered for it, in the order of registration. Thread
// exit and process exit run the callbacks in reverse order.
void raise_thread_init(void* drcontext);
void raise_thread_exit(void* drcontext);
void raise_process_exit();

// Hands a new block to the app2app callbacks and returns their flags or-ed. `tag` is the block's application
// address. Each callback may change the list.
dr_emit_flags_t raise_block_event(void* drcontext, void* tag, instrlist_t* bb, bool for_trace,
                                  bool translating);

// The context of the calling thread, set by the runtime at thread start; what dr_get_current_drcontext
// returns.
void set_current_drcontext(void* drcontext);
