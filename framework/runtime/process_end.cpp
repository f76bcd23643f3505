#include "framework/runtime/process_end.h"

#include <csignal>
#include <string>
#include <sys/syscall.h>
#include <unistd.h>

#include "framework/runtime/raw_system_call.h"

namespace {

const char* program_name = nullptr;

} // namespace

void set_program_name(const char* name) { program_name = name; }

void die_with_message(int status, const char* reason, const char* detail) {
    std::string line = "ostrel: ";
    if (program_name)
        line.append(program_name).append(": ");
    line.append(reason);
    if (detail)
        line.append(detail);
    line.push_back('\n');
    // One write, so that lines of several processes do not mix.
    if (write(STDERR_FILENO, line.data(), line.size()) < 0)
        exit_process(status);
    exit_process(status);
}

void exit_process(int status) {
    for (;;)
        raw_system_call(SYS_exit_group, static_cast<std::uint64_t>(status));
}

void die_of_signal(int signal) {
    // The C library does not let go of the signals between threads.
    constexpr std::uint64_t default_action[4] = {};
    raw_system_call(SYS_rt_sigaction, static_cast<std::uint64_t>(signal),
                    reinterpret_cast<std::uint64_t>(default_action), 0, sizeof(std::uint64_t));
    const std::uint64_t set = std::uint64_t{1} << (signal - 1);
    raw_system_call(SYS_rt_sigprocmask, SIG_UNBLOCK, reinterpret_cast<std::uint64_t>(&set), 0, sizeof set);
    // The C library's own idea of the thread's number is stale in a child made by the program.
    raw_system_call(SYS_tgkill, raw_system_call(SYS_getpid), raw_system_call(SYS_gettid), signal);
    exit_process(128 + signal);
}
