// System calls on signals.
#include <cerrno>
#include <mutex>
#include <sys/syscall.h>

#include "framework/runtime/interruptible.h"
#include "framework/runtime/process_lock.h"
#include "framework/runtime/raw_system_call.h"
#include "framework/runtime/signals.h"
#include "framework/runtime/system_calls.h"

namespace {

constexpr std::uint64_t error(int number) { return -static_cast<std::uint64_t>(number); }
constexpr std::uint64_t mask_bytes = sizeof(std::uint64_t);

// rt_sigaction(signal, action, old action, bytes of a mask)
std::uint64_t change_action(thread_context* context) {
    const std::uint64_t* const x = context->x;
    const std::uint64_t signal = x[0], new_address = x[1], old_address = x[2];
    if (x[3] != mask_bytes || signal < 1 || signal > 64)
        return error(EINVAL);
    signal_action action{};
    if (new_address && !read_application(action, new_address))
        return error(EFAULT);
    if (new_address && (signal == SIGKILL || signal == SIGSTOP))
        return error(EINVAL);
    signal_action old;
    {
        const std::lock_guard lock(process_mutex);
        old = application_action(context, static_cast<unsigned>(signal));
        if (new_address)
            set_application_action(context, static_cast<unsigned>(signal), action);
    }
    return old_address && !write_application(old_address, old) ? error(EFAULT) : 0;
}
void handle_sigaction(thread_context* context) { context->x[0] = change_action(context); }

// rt_sigprocmask(how, set, old set, bytes of a mask)
std::uint64_t change_mask(thread_context* context) {
    const std::uint64_t how = context->x[0], new_address = context->x[1], old_address = context->x[2];
    if (context->x[3] != mask_bytes)
        return error(EINVAL);
    const std::uint64_t old = context->signals.mask;
    if (new_address) {
        std::uint64_t set;
        if (!read_application(set, new_address))
            return error(EFAULT);
        switch (static_cast<int>(how)) {
        case SIG_BLOCK:
            set_application_mask(context, old | set);
            break;
        case SIG_UNBLOCK:
            set_application_mask(context, old & ~set);
            break;
        case SIG_SETMASK:
            set_application_mask(context, set);
            break;
        default:
            return error(EINVAL);
        }
    }
    return old_address && !write_application(old_address, old) ? error(EFAULT) : 0;
}
void handle_sigprocmask(thread_context* context) { context->x[0] = change_mask(context); }

// rt_sigpending(set, bytes of a mask)
void handle_sigpending(thread_context* context) {
    const std::uint64_t address = context->x[0], bytes = context->x[1];
    std::uint64_t set = 0;
    if (!pass_to_kernel(context) || context->x[0] != 0 || bytes != mask_bytes)
        return;
    if (read_application(set, address))
        write_application(address, set | context->signals.held.load());
}

// sigaltstack(stack, old stack)
std::uint64_t change_alternate_stack(thread_context* context) {
    constexpr std::uint64_t least_bytes = 5120; // MINSIGSTKSZ
    const std::uint64_t new_address = context->x[0], old_address = context->x[1];
    stack_t& current = context->signals.alternate;
    const bool in_use = is_on_alternate_stack(context, context->sp);
    stack_t old = current;
    if (in_use)
        old.ss_flags |= SS_ONSTACK;
    if (new_address) {
        stack_t stack;
        if (!read_application(stack, new_address))
            return error(EFAULT);
        const int mode = stack.ss_flags & ~disarms_itself;
        if (in_use)
            return error(EPERM);
        if (mode != 0 && mode != SS_ONSTACK && mode != SS_DISABLE)
            return error(EINVAL);
        if (mode == SS_DISABLE)
            stack = {nullptr, stack.ss_flags, 0};
        else if (stack.ss_size < least_bytes)
            return error(ENOMEM);
        else
            stack.ss_flags &= ~SS_ONSTACK;
        current = stack;
    }
    return old_address && !write_application(old_address, old) ? error(EFAULT) : 0;
}
void handle_sigaltstack(thread_context* context) { context->x[0] = change_alternate_stack(context); }

// rt_sigreturn()
void handle_sigreturn(thread_context* context) {
    std::uint64_t mask;
    if (pop_signal_frame(context, mask))
        set_application_mask(context, mask);
    else
        raise_fault(context, SIGSEGV, SI_KERNEL, 0);
}

// Calls that wait with a mask of their own: while they do, a signal arrives under that one.
void wait_with_mask(thread_context* context, std::uint64_t mask_address) {
    thread_signals& signals = context->signals;
    signals.waits_with_mask = mask_address && read_application(signals.wait_mask, mask_address);
    pass_to_kernel(context);
    signals.waits_with_mask = false;
}
void handle_sigsuspend(thread_context* context) { wait_with_mask(context, context->x[0]); }
void handle_ppoll(thread_context* context) { wait_with_mask(context, context->x[3]); }
void handle_epoll_pwait(thread_context* context) { wait_with_mask(context, context->x[4]); }
void handle_pselect(thread_context* context) {
    struct {
        std::uint64_t address, bytes;
    } mask{};
    if (context->x[5] && !read_application(mask, context->x[5]))
        mask.address = 0;
    wait_with_mask(context, mask.address);
}

constexpr system_call_row rows[] = {
    {SYS_rt_sigaction, handle_sigaction},
    {SYS_rt_sigprocmask, handle_sigprocmask},
    {SYS_sigaltstack, handle_sigaltstack},
    {SYS_rt_sigreturn, handle_sigreturn},
    {SYS_rt_sigpending, handle_sigpending},
    {SYS_rt_sigsuspend, handle_sigsuspend},
    {SYS_ppoll, handle_ppoll},
    {SYS_epoll_pwait, handle_epoll_pwait},
    {441 /* epoll_pwait2 */, handle_epoll_pwait},
    {SYS_pselect6, handle_pselect},
};

} // namespace

system_call_rows signal_calls() { return rows; }
