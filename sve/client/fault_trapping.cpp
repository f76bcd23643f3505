#include "sve/client/fault_trapping.h"

#include "sve/client/host_fault.h"

#include <cerrno>
#include <string_view>
#include <sys/uio.h>
#include <unistd.h>

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

    const struct sigaction skip_load = action_of([](int, siginfo_t*, void* context) {
        access_violation = true;
        step_over_load(static_cast<ucontext_t*>(context));
    });
    access_violation_addr = address;
    access_violation = false;
    struct sigaction previous;
    sigaction(SIGSEGV, &skip_load, &previous);
    load_and_drop(reinterpret_cast<std::uint64_t>(address));
    sigaction(SIGSEGV, &previous, nullptr);
    return !access_violation;
}
