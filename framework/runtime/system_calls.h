// The application's system calls. Most go to the kernel as they are; the rest touch what the engine owns.
#pragma once

#include <span>

#include "framework/runtime/thread_context.h"

// Carries out the system call that the context's registers describe and leaves its result in X0. Does not
// return for those that end the process.
void handle_system_call(thread_context* context);

// The calls of each subject. A handler takes the place of the call and leaves the result in X0.
using system_call_handler = void (*)(thread_context*);
struct system_call_row {
    unsigned number;
    system_call_handler handler;
};
using system_call_rows = std::span<const system_call_row>;
system_call_rows memory_calls();
system_call_rows process_calls();
system_call_rows path_calls();
system_call_rows signal_calls();
system_call_rows exec_calls();

// Makes the call with the context's registers and stores its result.
void call_kernel(thread_context* context);

// The same for calls that may wait, to be made without a lock: the process may end in the meantime. If a
// signal comes before the call has had any effect it returns false, and the handler must leave everything as
// it was: the call will be made again behind the signal's handler.
bool pass_to_kernel(thread_context* context);
