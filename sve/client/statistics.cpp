#include "sve/client/statistics.h"

#include <cstdio>

std::atomic<std::uint64_t> sve_instr_count = 0;
std::uint64_t aarch64_instr_count = 0;

// The lowest priority number that programs may use: made first, and destroyed last.
[[gnu::init_priority(101)]] std::map<unsigned int*, std::pair<unsigned int, std::atomic<unsigned long>>>
    icounts;
std::mutex icounts_mutex;

void update_sve_stats(unsigned int* pc, unsigned int word) {
    const std::lock_guard lock(icounts_mutex);
    ++sve_instr_count;
    const auto [row, is_new] = icounts.try_emplace(pc);
    auto& [first_word, count] = row->second;
    if (is_new)
        first_word = word;
    ++count;
}

void dump_sve_stats() {
    for (const auto& [address, row] : icounts)
        std::fprintf(stderr, "%p: 0x%08x %ld\n", static_cast<void*>(address), row.first,
                     static_cast<long>(row.second.load()));
}
