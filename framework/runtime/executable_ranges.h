// The parts of the application's address space that it holds executable. The kernel never sees that right:
// the application's pages are mapped without it, so that a transfer that slipped through translation faults
// at once.
#pragma once

#include <atomic>
#include <cstdint>

void add_executable_range(std::uint64_t start, std::uint64_t end);
void remove_executable_range(std::uint64_t start, std::uint64_t end);

// Changes whenever the ranges do.
inline std::atomic<std::uint64_t> executable_ranges_version{1};

// The end of the executable range that holds the address; 0 if none does.
std::uint64_t executable_until(std::uint64_t address);

// The executable range that holds the address; empty if none does.
struct executable_range {
    std::uint64_t start;
    std::uint64_t end;
};
executable_range executable_range_at(std::uint64_t address);
