#include <array>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <linux/prctl.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "framework/loader/program_image.h"
#include "framework/runtime/raw_system_call.h"

namespace {

// Of /proc/self/stat, by the numbers in proc(5), from the first one behind the process's state.
constexpr unsigned first_field = 4, start_code = 26, end_code = 27, start_data = 45, end_data = 46,
                   start_break = 47, fields_end = 48;
using status_fields = std::array<std::uint64_t, fields_end>;

// False if they cannot be read.
bool read_status(status_fields& fields) {
    const int descriptor = open("/proc/self/stat", O_RDONLY | O_CLOEXEC);
    if (descriptor < 0)
        return false;
    char text[1024];
    const ssize_t length = read(descriptor, text, sizeof text - 1);
    close(descriptor);
    if (length <= 0)
        return false;
    text[length] = '\0';
    const char* behind_name = std::strrchr(text, ')'); // ") S 1 2 3"
    if (!behind_name)
        return false;
    char* rest = const_cast<char*>(behind_name) + std::strlen(") S");
    for (unsigned n = first_field; n < fields_end; ++n)
        fields[n] = std::strtoull(rest, &rest, 10);
    return true;
}

} // namespace

void describe_process(const stack_layout& stack) {
    status_fields fields{};
    if (!read_status(fields))
        return;
    // The code, the data and the break are still those of the engine.
    prctl_mm_map map{};
    map.start_code = fields[start_code];
    map.end_code = fields[end_code];
    map.start_data = fields[start_data];
    map.end_data = fields[end_data];
    map.start_brk = fields[start_break];
    map.brk = raw_system_call(SYS_brk, 0);
    map.start_stack = stack.sp;
    map.arg_start = stack.arguments;
    map.arg_end = map.env_start = stack.environment;
    map.env_end = stack.environment_end;
    map.auxv = reinterpret_cast<__u64*>(stack.auxiliary);
    map.auxv_size = static_cast<__u32>(stack.auxiliary_bytes);
    map.exe_fd = static_cast<__u32>(-1);
    prctl(PR_SET_MM, PR_SET_MM_MAP, reinterpret_cast<unsigned long>(&map), sizeof map, 0);
}
