#include "framework/runtime/threads.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <ctime>
#include <linux/futex.h>
#include <pthread.h>
#include <sched.h>
#include <sys/syscall.h>

#include "framework/ir/instruction.h"
#include "framework/runtime/client_events.h"
#include "framework/runtime/code_cache.h"
#include "framework/runtime/dispatcher.h"
#include "framework/runtime/process_end.h"
#include "framework/runtime/process_lock.h"
#include "framework/runtime/raw_system_call.h"
#include "framework/runtime/report_file.h"
#include "framework/runtime/robust_list.h"
#include "framework/runtime/signals.h"

namespace {

std::vector<thread_context*> threads;
std::atomic<bool> process_ends;

// Many threads share the address space, and each translates only what it runs itself.
constexpr std::size_t further_cache_bytes = std::size_t{16} << 20;

// What a host thread needs before and after it runs on the stack of its context.
constexpr std::size_t host_stack_bytes = std::size_t{256} << 10;

// Threads are waited for that long before the process ends without their consent.
constexpr unsigned stop_rounds = 2000;
constexpr timespec stop_pause = {0, 500'000};

std::uint32_t* futex_at(std::uint64_t address) { return reinterpret_cast<std::uint32_t*>(address); }

void wake_futex(const void* address, int count) {
    raw_system_call(SYS_futex, reinterpret_cast<std::uint64_t>(address), FUTEX_WAKE,
                    static_cast<std::uint64_t>(count));
}

void store_if_wanted(std::uint64_t address, std::uint32_t value) {
    if (address)
        std::atomic_ref(*futex_at(address)).store(value);
}

// Never comes back; whoever ends the process sees that this thread holds nothing and changes nothing.
[[noreturn]] void stop_for_good(thread_context* context) {
    context->stopped.store(true);
    static std::uint32_t never_changes = 0;
    for (;;)
        raw_system_call(SYS_futex, reinterpret_cast<std::uint64_t>(&never_changes), FUTEX_WAIT, 0);
}

void set_signal_stack(void* start, std::size_t bytes) {
    const stack_t stack{start, start ? 0 : SS_DISABLE, bytes};
    raw_system_call(SYS_sigaltstack, reinterpret_cast<std::uint64_t>(&stack), 0);
}

// Asks every other thread to stop until all have.
void stop_other_threads(const thread_context* self) {
    const std::uint64_t process = raw_system_call(SYS_getpid);
    for (unsigned round = 0; round < stop_rounds; ++round) {
        bool all_stopped = true;
        {
            const std::lock_guard lock(process_mutex);
            for (const thread_context* const thread : threads) {
                if (thread == self || thread->stopped)
                    continue;
                all_stopped = false;
                // Not more often than it may take to be heard: every request waits in a queue.
                if (thread->number && round % 4 == 0)
                    raw_system_call(SYS_tgkill, process, static_cast<std::uint64_t>(thread->number.load()),
                                    stop_signal);
            }
        }
        if (all_stopped)
            return;
        nanosleep(&stop_pause, nullptr);
    }
}

void add_thread(thread_context* context) {
    const std::lock_guard lock(process_mutex);
    threads.push_back(context);
}

// Returns true if there is no other thread left.
bool remove_thread(thread_context* context) {
    const std::lock_guard lock(process_mutex);
    std::erase(threads, context);
    return threads.empty();
}

// What a new thread needs to start with. It lies on the stack of the thread that creates it, which waits
// until the new one has taken it over.
struct thread_start {
    thread_context* context;
    thread_request request;
    std::atomic<std::uint32_t> number;
};

// Whatever a new thread does not share, it has a copy of.
void stop_sharing(std::uint64_t flags) {
    constexpr std::uint64_t shareable = CLONE_FS | CLONE_FILES | CLONE_SYSVSEM;
    if (const std::uint64_t unshared = shareable & ~flags)
        raw_system_call(SYS_unshare, unshared);
}

void* thread_main(void* argument) {
    auto* const start = static_cast<thread_start*>(argument);
    thread_context* const context = start->context;
    const thread_request request = start->request;
    const auto number = static_cast<std::uint32_t>(raw_system_call(SYS_gettid));
    context->number.store(static_cast<int>(number));
    if (request.flags & CLONE_PARENT_SETTID)
        store_if_wanted(request.parent_tid, number);
    if (request.flags & CLONE_CHILD_SETTID)
        store_if_wanted(request.child_tid, number);
    stop_sharing(request.flags);
    start->number.store(number);
    wake_futex(&start->number, 1); // harmless if the creating thread has gone on
    run_thread(context);
    return nullptr;
}

thread_context* create_context_for(const thread_context* parent, const thread_request& request) {
    thread_context* const context = create_thread_context();
    if (!context)
        return nullptr;
    copy_application_state(context, parent);
    context->x[0] = 0;
    context->signals.mask = parent->signals.mask;
    context->vector_length_inherited = parent->vector_length_inherited;
    if (request.stack)
        context->sp = request.stack;
    if (request.flags & CLONE_SETTLS)
        context->app_tpidr = request.thread_pointer;
    if (request.flags & CLONE_CHILD_CLEARTID)
        context->clear_child_tid = request.child_tid;
    if (!create_code_cache(context, main_cache_place, further_cache_bytes)) {
        destroy_thread_context(context);
        return nullptr;
    }
    return context;
}

// What the kernel does for a thread at its end, when the application must find nothing of it in use any more.
void tell_application(std::uint64_t robust_list, std::uint64_t clear_child_tid, std::uint32_t number) {
    if (robust_list) {
        raw_system_call(SYS_set_robust_list, 0, robust_list_head_bytes);
        release_robust_futexes(robust_list, number);
    }
    // A look at it first: memory that has been unmapped is no error.
    if (clear_child_tid && !is_error(raw_system_call(SYS_futex, clear_child_tid, FUTEX_WAKE, 0))) {
        store_if_wanted(clear_child_tid, 0);
        wake_futex(futex_at(clear_child_tid), 1);
    }
}

} // namespace

bool stop_if_process_ends(thread_context* context, std::uint64_t pc) {
    if (!process_ends)
        return false;
    const code_cache& cache = *context->cache;
    if (context->in_system_call.load(std::memory_order_relaxed) ||
        (pc >= reinterpret_cast<std::uint64_t>(cache.start) &&
         pc < reinterpret_cast<std::uint64_t>(cache.limit)))
        stop_for_good(context);
    return true;
}

void run_thread(thread_context* context) {
    const auto number = static_cast<std::uint32_t>(raw_system_call(SYS_gettid));
    context->number.store(static_cast<int>(number));
    {
        const std::lock_guard lock(process_mutex);
        if (std::find(threads.begin(), threads.end(), context) == threads.end())
            threads.push_back(context);
    }
    set_current_drcontext(context);
    set_signal_stack(context->signal_stack, signal_stack_bytes);
    raise_thread_init(context);
    start_thread_signals(context);
    run_application(context);
    free_thread(context);
}

void free_thread(thread_context* context) {
    block_all_signals();
    const std::uint64_t robust_list = context->robust_list, clear_child_tid = context->clear_child_tid;
    const auto number = static_cast<std::uint32_t>(context->number.load());
    set_signal_stack(nullptr, 0);
    set_current_drcontext(nullptr);
    destroy_thread_context(context);
    release_instruction_pool();
    tell_application(robust_list, clear_child_tid, number);
}

std::uint64_t start_thread(thread_context* parent, const thread_request& request) {
    if (parent->borrowed)
        die_with_message(status_unsupported,
                         "threads of a process that shares memory with its parent (vfork) "
                         "are not supported");
    thread_start start{create_context_for(parent, request), request, 0};
    if (!start.context)
        return -static_cast<std::uint64_t>(ENOMEM);
    add_thread(start.context);
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED);
    pthread_attr_setstacksize(&attributes, host_stack_bytes);
    pthread_t thread;
    block_all_signals(); // the new thread has them so until it has its context
    const int failure = pthread_create(&thread, &attributes, thread_main, &start);
    set_application_mask(parent, parent->signals.mask);
    pthread_attr_destroy(&attributes);
    if (failure) {
        remove_thread(start.context);
        destroy_thread_context(start.context);
        return -static_cast<std::uint64_t>(failure);
    }
    std::uint32_t number;
    while ((number = start.number.load()) == 0)
        raw_system_call(SYS_futex, reinterpret_cast<std::uint64_t>(&start.number), FUTEX_WAIT, 0);
    return number;
}

void end_thread(thread_context* context, int status) {
    if (context->borrowed)
        exit_process(status);
    raise_thread_exit(context);
    if (remove_thread(context)) {
        redirect_report();
        raise_process_exit();
        exit_process(status);
    }
    context->ended = true;
}

void end_process(thread_context* context, int status) {
    if (context->borrowed)
        exit_process(status);
    if (process_ends.exchange(true))
        stop_for_good(context);
    stop_other_threads(context);
    for (thread_context* const thread : threads)
        if (thread != context && thread->stopped)
            raise_thread_exit(thread);
    raise_thread_exit(context);
    redirect_report();
    raise_process_exit();
    exit_process(status);
}

void forget_other_threads(thread_context* context) {
    for (thread_context* const thread : threads)
        if (thread != context)
            abandon_thread_context(thread);
    threads.assign(1, context);
    process_ends = false; // that of the parent may be under way
    context->robust_list = 0;
    context->number.store(static_cast<int>(raw_system_call(SYS_gettid)));
}

const std::vector<thread_context*>& application_threads() { return threads; }
