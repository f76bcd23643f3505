// The frames of the application's signal handlers, laid out as the kernel does it on AArch64.
#pragma once

#include "framework/runtime/thread_context.h"

// The kernel's struct sigaction.
struct signal_action {
    std::uint64_t handler;
    std::uint64_t flags;
    std::uint64_t restorer;
    std::uint64_t mask;
};

// Puts a frame with the context's state on the application's stack, or on its alternate one, and makes the
// context enter the handler. `saved_mask` is what the return from the handler blocks again, and `trampoline`
// where a handler without a restorer returns to. False if the stack cannot be written.
bool push_signal_frame(thread_context* context, const signal_action& action, const siginfo_t& information,
                       std::uint64_t saved_mask, std::uint64_t trampoline);

// Takes the context's state, but for the blocked signals, which are returned in `mask`, from the frame at its
// SP. False if there is none.
bool pop_signal_frame(thread_context* context, std::uint64_t& mask);

// True if the address lies on the thread's alternate stack while that is in use.
bool is_on_alternate_stack(const thread_context* context, std::uint64_t sp);
