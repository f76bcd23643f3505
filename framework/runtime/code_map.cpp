#include "framework/runtime/code_map.h"

#include <algorithm>

void begin_fragment(code_map& map, const a64::word* start, std::uint64_t pc, registers_in_place in_place) {
    const auto first = static_cast<std::uint32_t>(map.extents.size());
    // A block that is only a branch may have been built over.
    assert(map.fragments.empty() || map.fragments.back().start <= start);
    map.fragments.push_back({start, pc, first, 0, in_place});
}

std::optional<code_place> find_place(const code_map& map, const a64::word* where) {
    const auto above = std::upper_bound(
        map.fragments.begin(), map.fragments.end(), where,
        [](const a64::word* address, const code_map::fragment& other) { return address < other.start; });
    if (above == map.fragments.begin())
        return std::nullopt;
    const code_map::fragment& fragment = above[-1];
    const a64::word* start = fragment.start;
    for (std::uint32_t n = 0; n < fragment.extents; ++n) {
        const code_map::extent extent = map.extents[fragment.first_extent + n];
        const a64::word* const end = start + extent.words();
        const std::uint64_t pc = fragment.pc + 4 * n;
        if (where < end)
            return code_place{start,
                              end,
                              start + extent.effect(),
                              extent.indivisible(),
                              pc,
                              pc + 4,
                              n > 0 ? fragment.in_place : none_in_place};
        start = end;
    }
    return std::nullopt;
}

void clear_code_map(code_map& map) {
    map.fragments.clear();
    map.extents.clear();
}
