// The threads of the application. Each is a thread of the engine's C library, so that engine and client have
// their thread-local variables, and has a context and a code cache of its own.
#pragma once

#include <vector>

#include "framework/runtime/thread_context.h"

// What the application asks of clone.
struct thread_request {
    std::uint64_t flags;
    std::uint64_t stack;
    std::uint64_t parent_tid;
    std::uint64_t thread_pointer;
    std::uint64_t child_tid;
};

// Runs the application on the calling thread from the context's state until the application's thread ends,
// then frees the context and tells the application. Does not return if the process ends.
void run_thread(thread_context* context);

// What run_thread does at the end, for a thread that has run the application by other means.
void free_thread(thread_context* context);

// Starts a thread that goes on behind the system call under way in `parent`. Returns its number, or a negated
// error number.
std::uint64_t start_thread(thread_context* parent, const thread_request& request);

// Ends the application's thread, so that run_thread returns, or the process if it is the last one.
void end_thread(thread_context* context, int status);

// Ends the process: stops the other threads, raises the client's events, and exits. A process that has
// borrowed its context, and the client's state with it, raises no events.
[[noreturn]] void end_process(thread_context* context, int status);

// If the process is about to end, stops the calling thread for good, provided that the address where it has
// been interrupted shows that it is not in the middle of something that must be completed; if it is, the
// thread will be asked again. False if the process is not ending.
bool stop_if_process_ends(thread_context* context, std::uint64_t pc);

// In a child made by fork only the calling thread goes on.
void forget_other_threads(thread_context* context);

// All threads of the application, to be used under the process's lock.
const std::vector<thread_context*>& application_threads();
