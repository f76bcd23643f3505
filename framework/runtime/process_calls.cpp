// System calls on processes, threads and signals.
#include <cerrno>
#include <csignal>
#include <sched.h>
#include <sys/prctl.h>
#include <sys/syscall.h>

#include "framework/runtime/announced_sve.h"
#include "framework/runtime/child_processes.h"
#include "framework/runtime/process_end.h"
#include "framework/runtime/raw_system_call.h"
#include "framework/runtime/system_calls.h"
#include "framework/runtime/threads.h"

namespace {

constexpr std::uint64_t error(int number) { return -static_cast<std::uint64_t>(number); }

void refuse(thread_context* context, int number) { context->x[0] = error(number); }
void not_implemented(thread_context* context) { refuse(context, ENOSYS); }

void handle_exit(thread_context* context) { end_thread(context, static_cast<int>(context->x[0])); }
void handle_exit_group(thread_context* context) { end_process(context, static_cast<int>(context->x[0])); }

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
    make_child_process(context, request);
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

// Of the lengths that the kernel would accept, those below the one there is cannot be had, and a program that
// asks for one must not go on with longer vectors. Anything longer is cut down to it, as by the kernel.
constexpr std::uint64_t vector_length_mask = 0xFFFF;
constexpr std::uint64_t length_on_exec = 1 << 18, length_inherited = 1 << 17;

std::uint64_t vector_length(const thread_context* context) {
    return announced_vector_bytes | (context->vector_length_inherited ? length_inherited : 0);
}

std::uint64_t set_vector_length(thread_context* context, std::uint64_t argument) {
    const std::uint64_t length = argument & vector_length_mask;
    const std::uint64_t flags = argument & ~vector_length_mask;
    if (flags & ~(length_on_exec | length_inherited) || length % 16 != 0 || length < announced_vector_bytes ||
        length > 8192)
        return error(EINVAL);
    context->vector_length_inherited = flags & length_inherited;
    return vector_length(context);
}

// The vector length of SVE is the one that is carried out. Without SVE to speak of, and for SME, there is
// none.
void handle_prctl(thread_context* context) {
    constexpr std::uint32_t set_sme_length = 63, get_sme_length = 64; // in newer headers only
    switch (static_cast<std::uint32_t>(context->x[0])) {
    case PR_SVE_SET_VL:
        context->x[0] = sve_is_announced ? set_vector_length(context, context->x[1]) : error(EINVAL);
        return;
    case PR_SVE_GET_VL:
        context->x[0] = sve_is_announced ? vector_length(context) : error(EINVAL);
        return;
    case set_sme_length:
    case get_sme_length:
        return refuse(context, EINVAL);
    default:
        pass_to_kernel(context);
    }
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
