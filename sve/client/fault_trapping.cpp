#include "sve/client/fault_trapping.h"

#include "sve/client/host_fault.h"

#include <atomic>
#include <cerrno>
#include <mutex>
#include <pthread.h>
#include <sched.h>
#include <string_view>
#include <sys/uio.h>
#include <unistd.h>

inline_mutex fault_trapping_mutex;
volatile std::uint32_t SVEFaultRegion = 0;
sigjmp_buf sveFaultJB;
CpuContext cpu_ctxt;
CpuContext* ctxt;

namespace {

std::uint32_t SVELibInitialized = 0;

using fault_handler = void (*)(int, siginfo_t*, void*);

// The action that calls the handler, or the default action if that is null.
struct sigaction action_of(fault_handler handler) {
    struct sigaction action = {};
    action.sa_sigaction = handler;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_SIGINFO | SA_RESTART | SA_NODEFER;
    return action;
}

void install_for_faults(fault_handler handler) {
    const struct sigaction action = action_of(handler);
    sigaction(SIGSEGV, &action, nullptr);
    sigaction(SIGBUS, &action, nullptr);
}

iovec span_of(std::string_view text) { return {const_cast<char*>(text.data()), text.size()}; }

// One write, which a signal handler may do, and which does not mix with the lines of other processes.
void report_fault(int signal) {
    const iovec line[] = {span_of("kelvo's SVESigHandler caught signal "),
                          span_of(signal == SIGSEGV ? "SIGSEGV" : "SIGBUS"),
                          span_of(" from the process being emulated, passing it to the default signal "
                                  "handler.\n")};
    while (writev(STDERR_FILENO, line, 3) < 0 && errno == EINTR) {
    }
}

// What the action would have done.
void pass_on(const struct sigaction& action, int signal, siginfo_t* info, void* context) {
    if (action.sa_flags & SA_SIGINFO)
        action.sa_sigaction(signal, info, context);
    else if (action.sa_handler != SIG_DFL && action.sa_handler != SIG_IGN)
        action.sa_handler(signal);
    else
        sigaction(signal, &action, nullptr); // and the instruction faults again
}

void lock_fault_trapping() { fault_trapping_mutex.lock(); }
void unlock_fault_trapping() { fault_trapping_mutex.unlock(); }
[[gnu::constructor]] void keep_fault_trapping_through_forks() {
    pthread_atfork(lock_fault_trapping, unlock_fault_trapping, unlock_fault_trapping);
}

} // namespace

std::uint32_t SVEInitialize() {
    if (SVELibInitialized != 0)
        return SVELibInitialized;
    cpu_ctxt.vl = 2;
    ctxt = &cpu_ctxt;
    install_for_faults(SVESigHandler);
    SVELibInitialized = 1;
    return 1;
}

void SVESigHandler(int signal, siginfo_t* info, void*) {
    if (SVEFaultRegion != 0) {
        SVEFaultRegion = 0;
        siglongjmp(sveFaultJB, 1);
    }
    install_for_faults(nullptr);
    report_fault(signal);
    // Where another process or the application itself has sent the signal, nothing will fault again.
    if (info->si_code <= 0)
        raise(signal);
}

template <> bool addr_is_readable<char>(volatile char* address) {
    static thread_local volatile bool access_violation;
    // For whoever looks at the process in a debugger.
    [[maybe_unused]] static thread_local volatile char* volatile access_violation_addr;
    static volatile std::uint64_t probing_load;
    static struct sigaction previous;
    static std::atomic<bool> previous_is_known;

    // A fault anywhere else is another thread's, whose thread-local variables may be the application's.
    const struct sigaction skip_load = action_of([](int signal, siginfo_t* info, void* machine) {
        auto* const context = static_cast<ucontext_t*>(machine);
        if (interrupted_at(context) != probing_load) {
            while (!previous_is_known.load(std::memory_order_acquire))
                sched_yield();
            pass_on(previous, signal, info, context);
            return;
        }
        access_violation = true;
        step_over_load(context);
    });
    const std::lock_guard lock(fault_trapping_mutex);
    access_violation_addr = address;
    access_violation = false;
    previous_is_known.store(false, std::memory_order_relaxed);
    sigaction(SIGSEGV, &skip_load, &previous);
    previous_is_known.store(true, std::memory_order_release);
    load_and_drop(reinterpret_cast<std::uint64_t>(address), probing_load);
    sigaction(SIGSEGV, &previous, nullptr);
    return !access_violation;
}
