#include "sve/client/statistics.h"

#include <cstdio>
#include <cstring>
#include <mutex>
#include <pthread.h>

std::atomic<std::uint64_t> sve_instr_count = 0;
std::uint64_t aarch64_instr_count = 0;

// The lowest priority number that programs may use: made first, and destroyed last.
[[gnu::init_priority(101)]] std::map<unsigned int*, std::pair<unsigned int, std::atomic<unsigned long>>>
    icounts;
inline_mutex icounts_mutex;

namespace {

using count_row = decltype(icounts)::value_type;

// The row that was last found for an address, by the low bits of its word number. Rows don't move, and only
// update_sve_stats makes any: all are still there while the map has as many as when the last one was made.
constexpr std::size_t recent_row_count = 4096;
count_row* recent_rows[recent_row_count];
std::size_t rows_made = 0;

count_row*& recent_row(const unsigned int* pc) {
    return recent_rows[reinterpret_cast<std::uintptr_t>(pc) / sizeof *pc % recent_row_count];
}

[[gnu::noinline]] count_row* find_or_make_row(unsigned int* pc, unsigned int word) {
    if (icounts.size() != rows_made)
        std::memset(recent_rows, 0, sizeof recent_rows);
    const auto [row, is_new] = icounts.try_emplace(pc);
    if (is_new)
        row->second.first = word;
    rows_made = icounts.size();
    recent_row(pc) = &*row;
    return &*row;
}

void lock_counts() { icounts_mutex.lock(); }
void unlock_counts() { icounts_mutex.unlock(); }
[[gnu::constructor]] void keep_counts_through_forks() {
    pthread_atfork(lock_counts, unlock_counts, unlock_counts);
}

} // namespace

void update_sve_stats(unsigned int* pc, unsigned int word) {
    const std::lock_guard lock(icounts_mutex);
    sve_instr_count.fetch_add(1, std::memory_order_relaxed);
    count_row* row = recent_row(pc);
    if (icounts.size() != rows_made || row == nullptr || row->first != pc) [[unlikely]]
        row = find_or_make_row(pc, word);
    row->second.second.fetch_add(1, std::memory_order_relaxed);
}

void dump_sve_stats() {
    for (const auto& [address, row] : icounts)
        std::fprintf(stderr, "%p: 0x%08x %ld\n", static_cast<void*>(address), row.first,
                     static_cast<long>(row.second.load()));
}
