// System calls that may name /proc/self/exe: there the program has to find itself, not the engine.
#include "framework/runtime/path_calls.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <sys/syscall.h>

#include "framework/loader/module.h"
#include "framework/runtime/raw_system_call.h"
#include "framework/runtime/system_calls.h"

namespace {

// `path` must be readable: the caller has had the kernel accept it.
bool names_own_executable(const char* path) {
    if (std::strcmp(path, "/proc/self/exe") == 0 || std::strcmp(path, "/proc/thread-self/exe") == 0)
        return true;
    return path == "/proc/" + std::to_string(raw_system_call(SYS_getpid)) + "/exe";
}

std::uint64_t program_path() { return reinterpret_cast<std::uint64_t>(main_module()->full_path.c_str()); }

void handle_readlinkat(thread_context* context) {
    if (static_cast<std::int32_t>(context->x[3]) <= 0 || !asks_for_own_executable(context->x[1]))
        return static_cast<void>(pass_to_kernel(context));
    // The kernel's answer shows that the buffer can be written, as far as the right one will be.
    const std::string_view own = main_module()->full_path;
    const std::uint64_t buffer = context->x[2], size = context->x[3];
    const std::uint64_t length = std::min<std::uint64_t>(size, own.size());
    context->x[0] = raw_system_call(SYS_readlinkat, context->x[0], context->x[1], buffer, length);
    if (is_error(context->x[0]))
        return;
    std::memcpy(reinterpret_cast<void*>(buffer), own.data(), length);
    context->x[0] = length;
}

void handle_openat(thread_context* context) {
    const auto* const path = reinterpret_cast<const char*>(context->x[1]);
    if (!pass_to_kernel(context) || is_error(context->x[0]) || !names_own_executable(path))
        return;
    raw_system_call(SYS_close, context->x[0]);
    context->x[0] = raw_system_call(SYS_openat, AT_FDCWD, program_path(), context->x[2], context->x[3]);
}

constexpr system_call_row rows[] = {
    {SYS_readlinkat, handle_readlinkat},
    {SYS_openat, handle_openat},
};

} // namespace

// A probe that has no effect finds out whether the path can be read at all.
bool is_readable_path(std::uint64_t path) {
    const std::uint64_t result = raw_system_call(SYS_faccessat, AT_FDCWD, path, 0);
    return result != static_cast<std::uint64_t>(-EFAULT) &&
           result != static_cast<std::uint64_t>(-ENAMETOOLONG);
}

bool asks_for_own_executable(std::uint64_t path) {
    return is_readable_path(path) && names_own_executable(reinterpret_cast<const char*>(path));
}

system_call_rows path_calls() { return rows; }
