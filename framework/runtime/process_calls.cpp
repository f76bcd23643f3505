// System calls on processes, threads and signals.
#include <cerrno>
#include <csignal>
#include <sched.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "framework/runtime/process_end.h"
#include "framework/runtime/process_lock.h"
#include "framework/runtime/raw_system_call.h"
#include "framework/runtime/signals.h"
#include "framework/runtime/system_calls.h"
#include "framework/runtime/threads.h"

namespace {

constexpr std::uint64_t error(int number) { return -static_cast<std::uint64_t>(number); }

void refuse(thread_context* context, int number) { context->x[0] = error(number); }
void not_implemented(thread_context* context) { refuse(context, ENOSYS); }

void handle_exit(thread_context* context) { end_thread(context, static_cast<int>(context->x[0])); }
void handle_exit_group(thread_context* context) { end_process(context, static_cast<int>(context->x[0])); }

// A child with memory of its own gets a copy of the engine with everything else and just goes on in it. Made
// by the C library's fork, so that its locks are free in the child; anything special, by clone itself.
std::uint64_t fork_process(const thread_request& request) {
    constexpr std::uint64_t done_here =
        CLONE_SETTLS | CLONE_PARENT_SETTID | CLONE_CHILD_SETTID | CLONE_CHILD_CLEARTID;
    if ((request.flags & ~done_here) != SIGCHLD)
        return raw_system_call(SYS_clone, request.flags & ~std::uint64_t{CLONE_SETTLS}, 0, request.parent_tid,
                               0, request.child_tid);
    const pid_t child = fork();
    if (child < 0)
        return error(errno);
    if (child > 0 && request.flags & CLONE_PARENT_SETTID)
        *reinterpret_cast<int*>(request.parent_tid) = child;
    if (child == 0 && request.flags & CLONE_CHILD_SETTID)
        *reinterpret_cast<int*>(request.child_tid) = static_cast<int>(raw_system_call(SYS_gettid));
    return static_cast<std::uint64_t>(child);
}

void handle_fork(thread_context* context, const thread_request& request) {
    const std::scoped_lock locks(mappings_mutex, process_mutex);
    block_all_signals(); // so that none arrives in the child as if in the parent
    const std::uint64_t result = fork_process(request);
    if (result == 0) {
        forget_signals_of_parent(context);
        // Stack and thread pointer are the application's matter, not that of the engine's code that is here.
        if (request.stack)
            context->sp = request.stack;
        if (request.flags & CLONE_SETTLS)
            context->app_tpidr = request.thread_pointer;
        context->clear_child_tid = request.flags & CLONE_CHILD_CLEARTID ? request.child_tid : 0;
        forget_other_threads(context);
    } else {
        set_application_mask(context, context->signals.mask);
    }
    context->x[0] = result;
}

void handle_clone(thread_context* context) {
    const std::uint64_t* const x = context->x;
    const thread_request request{x[0], x[1], x[2], x[3], x[4]};
    const std::uint64_t flags = request.flags;
    if ((flags & CLONE_THREAD && !(flags & CLONE_SIGHAND)) || (flags & CLONE_SIGHAND && !(flags & CLONE_VM)))
        return refuse(context, EINVAL);
    if (flags & CLONE_THREAD) {
        context->x[0] = start_thread(context, request);
        return;
    }
    if (flags & CLONE_VM)
        die_with_message(status_unsupported, "child processes that share memory (vfork, posix_spawn) are not "
                                             "supported yet");
    handle_fork(context, request);
}

void handle_set_tid_address(thread_context* context) {
    context->clear_child_tid = context->x[0];
    context->x[0] = raw_system_call(SYS_gettid);
}

void handle_set_robust_list(thread_context* context) {
    const std::uint64_t head = context->x[0];
    if (pass_to_kernel(context) && !is_error(context->x[0]))
        context->robust_list = head;
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
    {SYS_exit, handle_exit},
    {SYS_exit_group, handle_exit_group},
    {SYS_set_tid_address, handle_set_tid_address},
    {SYS_set_robust_list, handle_set_robust_list},
    {SYS_clone, handle_clone},
    {SYS_clone3, not_implemented}, // the C library falls back on clone
    {SYS_rseq, not_implemented},   // its critical sections do not survive translation
    {SYS_prctl, handle_prctl},
};

} // namespace

system_call_rows process_calls() { return rows; }
