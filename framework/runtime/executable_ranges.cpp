#include "framework/runtime/executable_ranges.h"

#include <algorithm>
#include <iterator>
#include <map>

#include "framework/runtime/process_lock.h"

namespace {

// Disjoint ranges that do not touch, start to end.
std::map<std::uint64_t, std::uint64_t> ranges;

} // namespace

void add_executable_range(std::uint64_t start, std::uint64_t end) {
    if (start >= end)
        return;
    const std::lock_guard lock(process_mutex);
    ++executable_ranges_version;
    auto next = ranges.upper_bound(start);
    if (next != ranges.begin() && std::prev(next)->second >= start)
        --next;
    while (next != ranges.end() && next->first <= end) {
        start = std::min(start, next->first);
        end = std::max(end, next->second);
        next = ranges.erase(next);
    }
    ranges.emplace_hint(next, start, end);
}

void remove_executable_range(std::uint64_t start, std::uint64_t end) {
    if (start >= end)
        return;
    const std::lock_guard lock(process_mutex);
    ++executable_ranges_version;
    auto next = ranges.upper_bound(start);
    if (next != ranges.begin() && std::prev(next)->second > start)
        --next;
    while (next != ranges.end() && next->first < end) {
        const auto [old_start, old_end] = *next;
        next = ranges.erase(next);
        if (old_start < start)
            ranges.emplace(old_start, start);
        if (old_end > end)
            ranges.emplace(end, old_end);
    }
}

executable_range executable_range_at(std::uint64_t address) {
    const std::lock_guard lock(process_mutex);
    const auto next = ranges.upper_bound(address);
    if (next == ranges.begin() || std::prev(next)->second <= address)
        return {0, 0};
    return {std::prev(next)->first, std::prev(next)->second};
}

std::uint64_t executable_until(std::uint64_t address) { return executable_range_at(address).end; }
