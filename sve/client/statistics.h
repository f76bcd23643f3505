// Counts of instructions, for the process as a whole.
#pragma once

#include "sve/client/inline_mutex.h"

#include <atomic>
#include <cstdint>
#include <map>
#include <utility>

// SVE instructions emulated with success, each execution counted.
extern std::atomic<std::uint64_t> sve_instr_count;

// Other instructions, each counted once for every block that was built with it, however often the block runs.
// Changed without protection: an update lost between two threads is accepted.
extern std::uint64_t aarch64_instr_count;

// For each address at which an SVE instruction was emulated, the word of its first execution and the count of
// its executions. Made before anything else that static initialisation makes, since emulation counts into it.
// Whoever holds the mutex may read and erase rows; only update_sve_stats makes them.
extern std::map<unsigned int*, std::pair<unsigned int, std::atomic<unsigned long>>> icounts;

// Guards icounts. A fork waits for it, so that a child never starts with it held by a thread that is not
// there.
extern inline_mutex icounts_mutex;

// Counts one execution of `word` at `pc`, in the total and in the row of `pc`.
void update_sve_stats(unsigned int* pc, unsigned int word);

// Writes each row of icounts to standard error, in ascending order of address. Takes no lock: other threads
// must have stopped.
void dump_sve_stats();
