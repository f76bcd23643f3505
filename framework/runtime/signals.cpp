#include "framework/runtime/signals.h"

#include <cerrno>
#include <cstring>
#include <mutex>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <ucontext.h>
#include <unistd.h>

#include "dr_api.h"
#include "framework/loader/module.h"
#include "framework/runtime/code_cache.h"
#include "framework/runtime/executable_ranges.h"
#include "framework/runtime/interruptible.h"
#include "framework/runtime/process_end.h"
#include "framework/runtime/process_lock.h"
#include "framework/runtime/raw_system_call.h"
#include "framework/runtime/recovery.h"
#include "framework/runtime/threads.h"

namespace {

constexpr unsigned signals_end = sizeof(signal_actions::entry) / sizeof(signal_action_entry);

constexpr std::uint64_t bit_of(unsigned signal) { return std::uint64_t{1} << (signal - 1); }

// Signals that the kernel must always deliver, since the engine and the client live on them.
constexpr unsigned protected_signals[] = {SIGBUS, SIGSEGV, stop_signal};
constexpr std::uint64_t protected_mask = bit_of(SIGBUS) | bit_of(SIGSEGV) | bit_of(stop_signal);

signal_action client_fault_action[signals_end];
std::uint64_t trampoline;

constexpr std::uint64_t default_handler = 0, ignoring_handler = 1;
bool has_handler(const signal_action& action) {
    return action.handler != default_handler && action.handler != ignoring_handler;
}

void set_kernel_mask(std::uint64_t mask) {
    raw_system_call(SYS_rt_sigprocmask, SIG_SETMASK, reinterpret_cast<std::uint64_t>(&mask), 0, sizeof mask);
}

void set_kernel_action(unsigned signal, const signal_action* action, signal_action* old = nullptr) {
    raw_system_call(SYS_rt_sigaction, signal, reinterpret_cast<std::uint64_t>(action),
                    reinterpret_cast<std::uint64_t>(old), sizeof(std::uint64_t));
}

void handle_signal(int number, siginfo_t* information, void* machine);

// The kernel's action for signals of the application that have a handler. Whether system calls are made
// again, and what is told of children, is the kernel's to decide.
void take_signal(unsigned signal, std::uint64_t application_flags) {
    constexpr std::uint64_t passed_on = SA_RESTART | SA_NOCLDSTOP | SA_NOCLDWAIT;
    constexpr std::uint64_t faults = bit_of(SIGBUS) | bit_of(SIGSEGV);
    const signal_action action{reinterpret_cast<std::uint64_t>(handle_signal),
                               SA_SIGINFO | SA_ONSTACK | (application_flags & passed_on), 0,
                               ~std::uint64_t{0} & ~faults};
    set_kernel_action(signal, &action);
}

std::uint64_t handler_now(const thread_context* context, unsigned signal) {
    signal_action& action = context->signals.actions->entry[signal].action;
    return std::atomic_ref(action.handler).load(std::memory_order_relaxed);
}

// The places where a handler may find a thread.

bool is_inside(std::uint64_t pc, std::uint64_t start, std::uint64_t end) { return pc >= start && pc < end; }
std::uint64_t address(const char* label) { return reinterpret_cast<std::uint64_t>(label); }

bool is_in_translated_code(const code_cache& cache, std::uint64_t pc) {
    return is_inside(pc, reinterpret_cast<std::uint64_t>(cache.start),
                     reinterpret_cast<std::uint64_t>(cache.limit));
}

// Makes the code that comes to that place of the cache leave for the dispatcher there.
void leave_at(thread_context* context, a64::word* end, std::uint64_t pc, bool hand_over_saved) {
    thread_signals& signals = context->signals;
    if (signals.patched == end)
        return;
    assert(!signals.patched);
    signals.patched = end;
    signals.patched_word = *end;
    const gates& gate = context->cache->gate;
    const std::uint64_t target = hand_over_saved ? gate.refusing_landing : gate.interrupted_entry;
    *end = a64::b(static_cast<std::int64_t>(target - reinterpret_cast<std::uint64_t>(end)));
    __builtin___clear_cache(reinterpret_cast<char*>(end), reinterpret_cast<char*>(end + 1));
    context->pc = pc;
}

void leave_behind_call(thread_context* context, std::uint64_t return_address) {
    const auto* const where = reinterpret_cast<const a64::word*>(return_address);
    const std::optional<code_place> place = find_place(context->cache->map, where);
    assert(place && place->indivisible);
    leave_at(context, const_cast<a64::word*>(place->end), place->next_pc, false);
}

// Makes the machine leave the cache with the application's state that it holds.
void leave_now(thread_context* context, mcontext_t& machine, std::uint64_t application_pc) {
    context->scratch[0] = machine.regs[hand_over_register];
    context->scratch[1] = machine.regs[hand_over_register_2];
    context->pc = application_pc;
    machine.regs[a64::stolen_register] = reinterpret_cast<std::uint64_t>(context);
    machine.pc = context->cache->gate.refusing_landing;
}

std::uint64_t* registers_of(mcontext_t& machine) {
    static_assert(sizeof machine.regs == 31 * sizeof(std::uint64_t));
    return reinterpret_cast<std::uint64_t*>(machine.regs);
}

void leave_translated_code(thread_context* context, mcontext_t& machine) {
    interrupted_machine interrupted{registers_of(machine), machine.pc};
    const recovery found = recover_state(*context->cache, interrupted);
    machine.pc = interrupted.pc;
    switch (found.found) {
    case recovery::outcome::complete:
        leave_now(context, machine, found.pc);
        return;
    case recovery::outcome::running:
        leave_at(context, found.end, found.pc, found.hand_over_saved);
        return;
    case recovery::outcome::leaving:
        return;
    }
}

// Makes the interrupted thread come to its dispatcher, or not enter the cache from there, soon.
void leave_soon(thread_context* context, mcontext_t& machine) {
    const gates& gate = context->cache->gate;
    const std::uint64_t pc = machine.pc;
    // Wherever the engine is on its way into the cache, it will not arrive.
    context->enter_target = gate.refusing_landing;
    if (is_inside(pc, reinterpret_cast<std::uint64_t>(gate.enter_cache), gate.enter_end))
        machine.regs[hand_over_register] = gate.refusing_landing;
    else if (pc == gate.client_call_entry || is_inside(pc, gate.client_call_returning, gate.client_call_end))
        leave_behind_call(context, machine.regs[a64::link_register]);
    else if (is_in_translated_code(*context->cache, pc))
        leave_translated_code(context, machine);
    else if (context->client_return)
        leave_behind_call(context, context->client_return);
}

// A system call that has not begun, or that the kernel would make again, is given up for the time being.
void refuse_system_call(mcontext_t& machine) {
    if (is_inside(machine.pc, address(interruptible_call_check), address(interruptible_call_done)))
        machine.pc = address(interruptible_call_refused);
}

void arrive(thread_context* context, const siginfo_t& information, ucontext_t& machine) {
    thread_signals& signals = context->signals;
    signals.information = information;
    signals.running_mask = signals.waits_with_mask ? signals.wait_mask : signals.mask;
    signals.pending.store(static_cast<std::uint32_t>(information.si_signo));
    const std::uint64_t all_others = ~protected_mask;
    std::memcpy(&machine.uc_sigmask, &all_others, sizeof all_others);
}

void hold(thread_signals& signals, unsigned signal, const siginfo_t& information) {
    for (unsigned n = 0; n < std::size(protected_signals); ++n)
        if (protected_signals[n] == signal && !(signals.held.load() & bit_of(signal)))
            signals.held_information[n] = information;
    signals.held.fetch_or(bit_of(signal));
}

void pass_to_client(int number, siginfo_t* information, void* machine) {
    const signal_action& action = client_fault_action[number];
    if (!has_handler(action)) {
        // The fault comes again, to the default action.
        set_kernel_action(static_cast<unsigned>(number), &action);
        if (information->si_code <= 0)
            die_of_signal(number);
        return;
    }
    reinterpret_cast<void (*)(int, siginfo_t*, void*)>(action.handler)(number, information, machine);
}

// A fault of an application instruction that the application handles. False if it is none.
bool take_application_fault(thread_context* context, siginfo_t information, ucontext_t& machine) {
    const auto number = static_cast<unsigned>(information.si_signo);
    if (!context || !is_in_translated_code(*context->cache, machine.uc_mcontext.pc))
        return false;
    const std::uint64_t handler = handler_now(context, number);
    if (handler == default_handler || handler == ignoring_handler || context->signals.mask & bit_of(number))
        return false;
    mcontext_t& registers = machine.uc_mcontext;
    interrupted_machine interrupted{registers_of(registers), registers.pc};
    const recovery found = recover_state(*context->cache, interrupted);
    if (found.found != recovery::outcome::complete)
        return false;
    if (number != SIGSEGV && number != SIGBUS) // then the address is that of the instruction
        information.si_addr = reinterpret_cast<void*>(found.pc);
    arrive(context, information, machine);
    leave_now(context, registers, found.pc);
    return true;
}

bool is_fault(const siginfo_t& information) {
    constexpr std::uint64_t faults =
        bit_of(SIGBUS) | bit_of(SIGSEGV) | bit_of(SIGILL) | bit_of(SIGTRAP) | bit_of(SIGFPE);
    return information.si_code > 0 && faults & bit_of(static_cast<unsigned>(information.si_signo));
}

void handle_fault(thread_context* context, siginfo_t* information, ucontext_t& machine) {
    std::uint64_t& pc = reinterpret_cast<std::uint64_t&>(machine.uc_mcontext.pc);
    if (is_inside(pc, reinterpret_cast<std::uint64_t>(copy_guarded), address(copy_guarded_failed))) {
        pc = address(copy_guarded_failed);
        return;
    }
    if (!take_application_fault(context, *information, machine))
        pass_to_client(information->si_signo, information, &machine);
}

// An interruption by another thread of the engine. A system call that it has cut short is made again.
bool take_interruption(thread_context* context, mcontext_t& machine) {
    std::uint32_t count = context->signals.interruptions.load();
    while (count && !context->signals.interruptions.compare_exchange_weak(count, count - 1)) {
    }
    if (!count)
        return false;
    if (machine.pc == address(interruptible_call_done) &&
        machine.regs[0] == -static_cast<std::uint64_t>(EINTR))
        machine.pc = address(interruptible_call_refused);
    leave_soon(context, machine);
    return true;
}

void handle_signal(int number, siginfo_t* information, void* machine_context) {
    const int saved_errno = errno;
    auto& machine = *static_cast<ucontext_t*>(machine_context);
    auto* const context = static_cast<thread_context*>(dr_get_current_drcontext());
    const auto signal = static_cast<unsigned>(number);
    if (is_fault(*information)) {
        handle_fault(context, information, machine);
    } else if (!context) {
        // Only an interruption of a thread that is about to end: all others are blocked.
    } else if (signal == stop_signal && (stop_if_process_ends(context, machine.uc_mcontext.pc) ||
                                         take_interruption(context, machine.uc_mcontext))) {
    } else if (bit_of(signal) & protected_mask & context->signals.mask) {
        hold(context->signals, signal, *information);
    } else if ((signal == SIGSEGV || signal == SIGBUS) && handler_now(context, signal) == default_handler) {
        pass_to_client(number, information, machine_context);
    } else if (bit_of(signal) & protected_mask && context->signals.pending.load()) {
        hold(context->signals, signal, *information);
    } else {
        arrive(context, *information, machine);
        refuse_system_call(machine.uc_mcontext);
        leave_soon(context, machine.uc_mcontext);
    }
    errno = saved_errno;
}

// What the application has not blocked any more of the signals that were held comes next.
void take_held_signal(thread_signals& signals) {
    const std::uint64_t free = signals.held.load() & ~signals.mask;
    if (!free)
        return;
    block_all_signals();
    for (unsigned n = 0; n < std::size(protected_signals) && !signals.pending.load(); ++n) {
        const unsigned signal = protected_signals[n];
        if (!(free & bit_of(signal)))
            continue;
        signals.information = signals.held_information[n];
        signals.running_mask = signals.mask;
        signals.held.fetch_and(~bit_of(signal));
        signals.pending.store(signal);
    }
    if (!signals.pending.load())
        set_kernel_mask(signals.mask & ~protected_mask);
}

// The action that a delivery takes, which may be its last.
signal_action take_action(thread_context* context, unsigned signal) {
    const std::lock_guard lock(process_mutex);
    const signal_action action = application_action(context, signal);
    if (has_handler(action) && action.flags & SA_RESETHAND)
        set_application_action(context, signal,
                               {default_handler, action.flags, action.restorer, action.mask});
    return action;
}

// A signal whose handler has been taken away between its arrival and its delivery.
void act_by_default(unsigned signal) {
    constexpr std::uint64_t without_effect =
        bit_of(SIGCHLD) | bit_of(SIGURG) | bit_of(SIGWINCH) | bit_of(SIGCONT);
    constexpr std::uint64_t stopping = bit_of(SIGTSTP) | bit_of(SIGTTIN) | bit_of(SIGTTOU);
    if (bit_of(signal) & without_effect)
        return;
    if (bit_of(signal) & stopping)
        raw_system_call(SYS_kill, raw_system_call(SYS_getpid), SIGSTOP);
    else
        die_of_signal(static_cast<int>(signal));
}

void deliver(thread_context* context) {
    thread_signals& signals = context->signals;
    const unsigned signal = signals.pending.load();
    const siginfo_t information = signals.information;
    const signal_action action = take_action(context, signal);
    const std::uint64_t saved_mask = signals.mask;
    bool framed = true;
    if (has_handler(action)) {
        framed = push_signal_frame(context, action, information, saved_mask, trampoline);
        if (framed) {
            signals.mask = signals.running_mask | action.mask;
            if (!(action.flags & SA_NODEFER))
                signals.mask |= bit_of(signal);
        }
    }
    signals.pending.store(0);
    set_kernel_mask(signals.mask & ~protected_mask);
    if (action.handler == default_handler)
        act_by_default(signal);
    if (!framed) {
        if (signal == SIGSEGV)
            die_of_signal(SIGSEGV);
        raise_fault(context, SIGSEGV, SI_KERNEL, 0);
    }
}

// MOV X8, #__NR_rt_sigreturn; SVC #0: the words by which debuggers and unwinders know a handler's frame.
std::uint64_t map_trampoline() {
    constexpr a64::word words[] = {0xD2801168, 0xD4000001};
    const auto bytes = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    void* const page = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (page == MAP_FAILED)
        die_with_message(status_cannot_execute, "no memory for a page");
    std::memcpy(page, words, sizeof words);
    mprotect(page, bytes, PROT_READ);
    const auto start = reinterpret_cast<std::uint64_t>(page);
    add_executable_range(start, start + bytes);
    add_library({start, start, start + bytes, start, 0, 0, false}, "[sigreturn]");
    return start;
}

} // namespace

// Takes over what the process has been started with, before the client's own initializers.
__attribute__((constructor(101))) static void note_ignored_signals() {
    for (const unsigned signal : protected_signals) {
        signal_action inherited{};
        set_kernel_action(signal, nullptr, &inherited);
        if (inherited.handler == ignoring_handler)
            process_signal_actions.entry[signal].action = inherited;
    }
}

void start_signals() {
    for (const unsigned signal : protected_signals) {
        set_kernel_action(signal, nullptr, &client_fault_action[signal]);
        take_signal(signal, SA_RESTART);
        process_signal_actions.entry[signal].known = true;
    }
    trampoline = map_trampoline();
}

void start_thread_signals(thread_context* context) {
    set_kernel_mask(context->signals.mask & ~protected_mask);
}

void block_all_signals() { set_kernel_mask(~protected_mask); }

void set_application_mask(thread_context* context, std::uint64_t mask) {
    block_all_signals();
    context->signals.mask = mask & ~(bit_of(SIGKILL) | bit_of(SIGSTOP));
    if (!context->signals.pending.load())
        set_kernel_mask(context->signals.mask & ~protected_mask);
}

bool deliver_signals(thread_context* context) {
    thread_signals& signals = context->signals;
    bool any = false;
    for (;;) {
        if (!signals.pending.load(std::memory_order_relaxed) && signals.held.load(std::memory_order_relaxed))
            take_held_signal(signals);
        if (!signals.pending.load(std::memory_order_relaxed))
            return any;
        deliver(context);
        any = true;
    }
}

void raise_fault(thread_context* context, int signal, int code, std::uint64_t at) {
    thread_signals& signals = context->signals;
    const auto number = static_cast<unsigned>(signal);
    siginfo_t information{};
    information.si_signo = signal;
    information.si_code = code;
    information.si_addr = reinterpret_cast<void*>(at);
    const std::uint64_t handler = handler_now(context, number);
    if (handler == default_handler || handler == ignoring_handler || signals.mask & bit_of(number))
        die_of_signal(signal);
    block_all_signals();
    if (signals.pending.load()) // comes first; the fault will happen again behind it
        return;
    signals.information = information;
    signals.running_mask = signals.mask;
    signals.pending.store(number);
}

void interrupt_thread(thread_context* thread) {
    thread->signals.interruptions.fetch_add(1);
    // From a child that shares the memory the thread cannot be reached.
    if (is_error(raw_system_call(SYS_tgkill, raw_system_call(SYS_getpid),
                                 static_cast<std::uint64_t>(thread->number.load()), stop_signal)))
        thread->signals.interruptions.fetch_sub(1);
}

void restore_patched_word(thread_context* context) {
    thread_signals& signals = context->signals;
    if (!signals.patched)
        return;
    *signals.patched = signals.patched_word;
    __builtin___clear_cache(reinterpret_cast<char*>(signals.patched),
                            reinterpret_cast<char*>(signals.patched + 1));
    signals.patched = nullptr;
}

void forget_signals_of_parent(thread_context* context) {
    block_all_signals();
    context->signals.pending.store(0);
    context->signals.held.store(0);
    context->signals.interruptions.store(0);
    if (context->signals.actions != &process_signal_actions) {
        process_signal_actions = *context->signals.actions;
        context->signals.actions = &process_signal_actions;
    }
    set_kernel_mask(context->signals.mask & ~protected_mask);
}

lent_signals::lent_signals(thread_context* lent)
    : context(lent), actions(lent->signals.actions), information(lent->signals.information),
      running_mask(lent->signals.running_mask), mask(lent->signals.mask), held(lent->signals.held.load()),
      pending(lent->signals.pending.load()), alternate(lent->signals.alternate) {
    std::memcpy(held_information, context->signals.held_information, sizeof held_information);
    {
        const std::lock_guard lock(process_mutex);
        childs_actions = *actions;
    }
    context->signals.actions = &childs_actions;
    context->signals.pending.store(0);
    context->signals.held.store(0);
}

lent_signals::~lent_signals() {
    thread_signals& signals = context->signals;
    signals.actions = actions;
    signals.information = information;
    std::memcpy(signals.held_information, held_information, sizeof held_information);
    signals.running_mask = running_mask;
    signals.mask = mask;
    signals.held.store(held);
    signals.pending.store(pending);
    signals.alternate = alternate;
}

executing_signals::executing_signals(thread_context* executing) : context(executing) {
    block_all_signals();
    if (context->signals.pending.load()) // comes first
        return;
    const std::uint64_t held = context->signals.held.exchange(0);
    for (const unsigned signal : protected_signals) {
        const signal_action ignoring{ignoring_handler, 0, 0, 0};
        if (handler_now(context, signal) == ignoring_handler)
            set_kernel_action(signal, &ignoring);
    }
    set_kernel_mask(context->signals.mask);
    for (const unsigned signal : protected_signals)
        if (held & bit_of(signal))
            raw_system_call(SYS_tgkill, raw_system_call(SYS_getpid), raw_system_call(SYS_gettid), signal);
}

executing_signals::~executing_signals() {
    for (const unsigned signal : protected_signals) {
        const std::lock_guard lock(process_mutex);
        if (handler_now(context, signal) == ignoring_handler)
            set_application_action(context, signal, application_action(context, signal));
    }
    set_application_mask(context, context->signals.mask);
}

signal_action application_action(thread_context* context, unsigned signal) {
    signal_action_entry& entry = context->signals.actions->entry[signal];
    if (!entry.known) {
        set_kernel_action(signal, nullptr, &entry.action);
        entry.known = true;
    }
    return entry.action;
}

void set_application_action(thread_context* context, unsigned signal, const signal_action& action) {
    signal_action_entry& entry = context->signals.actions->entry[signal];
    entry.known = true;
    entry.action.flags = action.flags;
    entry.action.restorer = action.restorer;
    entry.action.mask = action.mask & ~(bit_of(SIGKILL) | bit_of(SIGSTOP));
    // A signal that arrives meanwhile finds an action that can be carried out.
    if (has_handler(action))
        std::atomic_ref(entry.action.handler).store(action.handler);
    if (bit_of(signal) & protected_mask)
        take_signal(signal, signal == stop_signal || has_handler(action) ? action.flags : SA_RESTART);
    else if (has_handler(action))
        take_signal(signal, action.flags);
    else
        set_kernel_action(signal, &action);
    std::atomic_ref(entry.action.handler).store(action.handler);
}
