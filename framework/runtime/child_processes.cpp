#include "framework/runtime/child_processes.h"

#include <cerrno>
#include <csignal>
#include <sched.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "framework/runtime/dispatcher.h"
#include "framework/runtime/exec_calls.h"
#include "framework/runtime/process_end.h"
#include "framework/runtime/process_lock.h"
#include "framework/runtime/raw_system_call.h"
#include "framework/runtime/signals.h"

extern "C" std::uint64_t clone_process(std::uint64_t flags, std::uint64_t stack_top, std::uint64_t parent_tid,
                                       std::uint64_t child_tid, void (*function)(void*), void* argument);

namespace {

constexpr std::uint64_t error(int number) { return -static_cast<std::uint64_t>(number); }

// Stack and thread pointer are the application's matter, not that of the engine's code that is here.
void start_child(thread_context* context, const thread_request& request) {
    if (request.stack)
        context->sp = request.stack;
    if (request.flags & CLONE_SETTLS)
        context->app_tpidr = request.thread_pointer;
    context->x[0] = 0;
}

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

void make_child_with_own_memory(thread_context* context, const thread_request& request) {
    const std::scoped_lock locks(mappings_mutex, process_mutex);
    block_all_signals(); // so that none arrives in the child as if in the parent
    const std::uint64_t result = fork_process(request);
    if (result == 0) {
        forget_signals_of_parent(context);
        context->clear_child_tid = request.flags & CLONE_CHILD_CLEARTID ? request.child_tid : 0;
        context->borrowed = false;
        forget_other_threads(context);
        start_child(context, request);
    } else {
        set_application_mask(context, context->signals.mask);
        context->x[0] = result;
    }
}

// What a child that shares the memory changes in the context that it borrows from the parent's thread. The
// rest it shares as the threads of a process do.
class lent_context {
public:
    explicit lent_context(thread_context* lent)
        : context(lent), signals(lent), robust_list(lent->robust_list),
          clear_child_tid(lent->clear_child_tid), engine_stack_top(lent->engine_stack_top),
          borrowed(lent->borrowed), vector_length_inherited(lent->vector_length_inherited) {
        copy_application_state(&registers, lent);
    }
    ~lent_context() {
        copy_application_state(context, &registers);
        context->robust_list = robust_list;
        context->clear_child_tid = clear_child_tid;
        context->engine_stack_top = engine_stack_top;
        context->borrowed = borrowed;
        context->vector_length_inherited = vector_length_inherited;
        // The child may have ended anywhere.
        context->in_system_call.store(false);
        context->in_cache.store(false);
        context->client_return = 0;
        restore_patched_word(context);
        release_exec_command();
    }
    lent_context(const lent_context&) = delete;
    lent_context& operator=(const lent_context&) = delete;

private:
    thread_context* context;
    lent_signals signals;
    thread_context registers{};
    std::uint64_t robust_list, clear_child_tid, engine_stack_top;
    bool borrowed, vector_length_inherited;
};

// A stack for the engine's code in the child: the parent's holds the frames that the parent comes back to.
class child_stack {
public:
    child_stack()
        : start(mmap(nullptr, bytes, PROT_READ | PROT_WRITE,
                     MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE | MAP_STACK, -1, 0)) {
        if (exists())
            mprotect(start, guard_bytes, PROT_NONE);
    }
    ~child_stack() {
        if (exists())
            munmap(start, bytes);
    }
    child_stack(const child_stack&) = delete;
    child_stack& operator=(const child_stack&) = delete;
    bool exists() const { return start != MAP_FAILED; }
    std::uint64_t top() const { return reinterpret_cast<std::uint64_t>(start) + bytes; }

private:
    static constexpr std::size_t bytes = std::size_t{512} << 10;
    static constexpr std::size_t guard_bytes = 65536; // a multiple of any page size
    void* start;
};

void unlock_shared_state() {
    mappings_mutex.unlock();
    process_mutex.unlock();
}

// What the child finds on the parent's stack.
struct child_start {
    thread_context* context;
    const thread_request& request;
    std::uint64_t stack_top;
    bool unlocked;
};

void run_child(void* argument) {
    auto* const start = static_cast<child_start*>(argument);
    thread_context* const context = start->context;
    start->unlocked = true;
    unlock_shared_state();
    start_child(context, start->request);
    context->robust_list = context->clear_child_tid = 0; // the kernel's matter, if anybody's
    context->engine_stack_top = start->stack_top;
    context->borrowed = true;
    set_application_mask(context, context->signals.mask);
    run_application_here(context);
    // Only a child that this one has forked, with memory of its own, outlives its first thread.
    free_thread(context);
    for (;;)
        raw_system_call(SYS_exit, 0);
}

// While the parent's thread waits in the kernel, the child is what runs on it: on its context, in its code
// cache, with its thread-local variables. It takes the locks over, which keep the others out for so long:
// where the kernel gives the child a copy of the memory after all, as user-mode emulation does, the copy has
// no lock that nobody would open.
void make_child_with_shared_memory(thread_context* context, const thread_request& request) {
    const child_stack stack;
    if (!stack.exists()) {
        context->x[0] = error(ENOMEM);
        return;
    }
    std::uint64_t result;
    block_all_signals(); // between a change of process and that of the context
    {
        const lent_context lent(context);
        child_start start{context, request, stack.top(), false};
        std::lock(mappings_mutex, process_mutex);
        result = clone_process(request.flags & ~std::uint64_t{CLONE_SETTLS}, stack.top(), request.parent_tid,
                               request.child_tid, run_child, &start);
        if (!start.unlocked)
            unlock_shared_state();
    }
    set_application_mask(context, context->signals.mask);
    context->x[0] = result;
}

} // namespace

void make_child_process(thread_context* context, const thread_request& request) {
    const bool shares_memory = request.flags & CLONE_VM;
    if (shares_memory && !(request.flags & CLONE_VFORK))
        die_with_message(status_unsupported, "processes that share memory and run at the same time (clone "
                                             "with CLONE_VM alone) are not supported");
    (shares_memory ? make_child_with_shared_memory : make_child_with_own_memory)(context, request);
}
