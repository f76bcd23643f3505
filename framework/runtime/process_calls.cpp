// System calls on processes, threads and signals.
#include <cerrno>
#include <csignal>
#include <sched.h>
#include <sys/prctl.h>
#include <sys/syscall.h>

#include "framework/runtime/client_events.h"
#include "framework/runtime/process_end.h"
#include "framework/runtime/raw_system_call.h"
#include "framework/runtime/system_calls.h"

namespace {

constexpr std::uint64_t error(int number) { return -static_cast<std::uint64_t>(number); }

void refuse(thread_context* context, int number) { context->x[0] = error(number); }
void not_implemented(thread_context* context) { refuse(context, ENOSYS); }

// With one thread, the end of the thread is the end of the process.
void handle_exit(thread_context* context) {
    const int status = static_cast<int>(context->x[0]);
    raise_thread_exit(context);
    raise_process_exit();
    exit_process(status);
}

// The kernel's struct sigaction: handler, flags, restorer, mask.
struct kernel_sigaction {
    std::uint64_t handler;
    std::uint64_t flags;
    std::uint64_t restorer;
    std::uint64_t mask;
};

// The C library reserves the first two real-time signals for talking to its own threads, and installs its
// handlers right before it makes the first one, which is where the program's end belongs.
bool is_between_threads(std::uint64_t signal) { return signal == 32 || signal == 33; }

void handle_sigaction(thread_context* context) {
    if (is_between_threads(context->x[0])) {
        context->x[0] = 0;
        return;
    }
    const auto* const action = reinterpret_cast<const kernel_sigaction*>(context->x[1]);
    pass_to_kernel(context);
    // After the kernel's success the record is known to be readable.
    if (context->x[0] == 0 && action && action->handler != reinterpret_cast<std::uint64_t>(SIG_DFL) &&
        action->handler != reinterpret_cast<std::uint64_t>(SIG_IGN))
        die_with_message(status_unsupported, "signal handlers are not supported yet");
}

// A child with memory of its own gets a copy of the engine with everything else and just goes on in it.
void handle_clone(thread_context* context) {
    const std::uint64_t flags = context->x[0], stack = context->x[1], thread_pointer = context->x[3];
    if (flags & CLONE_THREAD)
        die_with_message(status_unsupported, "threads are not supported yet");
    if (flags & CLONE_VM)
        die_with_message(status_unsupported, "child processes that share memory (vfork, posix_spawn) are not "
                                             "supported yet");
    // Stack and thread pointer are the application's matter, not that of the engine's code that returns here.
    const std::uint64_t result =
        raw_system_call(SYS_clone, flags & ~std::uint64_t{CLONE_SETTLS}, 0, context->x[2], 0, context->x[4]);
    if (result == 0) {
        if (stack)
            context->sp = stack;
        if (flags & CLONE_SETTLS)
            context->app_tpidr = thread_pointer;
    }
    context->x[0] = result;
}

// The program is told that there is no SVE whose vector length it could choose.
void handle_prctl(thread_context* context) {
    constexpr std::uint64_t vector_length_options[] = {50, 51, 63, 64}; // PR_SVE_SET_VL, _GET_VL, PR_SME_*
    for (const std::uint64_t option : vector_length_options)
        if (static_cast<std::uint32_t>(context->x[0]) == option)
            return refuse(context, EINVAL);
    pass_to_kernel(context);
}

constexpr system_call_row rows[] = {
    {SYS_exit, handle_exit},     {SYS_exit_group, handle_exit}, {SYS_rt_sigaction, handle_sigaction},
    {SYS_clone, handle_clone},   {SYS_clone3, not_implemented}, // the C library falls back on clone
    {SYS_rseq, not_implemented}, // its critical sections do not survive translation
    {SYS_prctl, handle_prctl},
};

} // namespace

system_call_rows process_calls() { return rows; }
