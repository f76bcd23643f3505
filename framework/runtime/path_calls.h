// Paths that the application names in system calls.
#pragma once

#include <cstdint>

// Whether the string can be read and is not longer than any path, and whether it names the link of the
// process to its own executable.
bool is_readable_path(std::uint64_t path);
bool asks_for_own_executable(std::uint64_t path);
