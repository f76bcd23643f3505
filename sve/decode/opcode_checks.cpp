// Checks of the opcode table that hold at compile time: the number of rows of each map and each route, and
// that no word matches two rows, so that the order in which the maps are searched has no effect.
#include "sve/decode/opcode_rows.h"

namespace {

struct checked_row {
    decode_map_id map;
    int key;
    opcode_route route;
};

#define HANDLER(map, key, stub, function, ...) {decode_map_id::map_##map, key, opcode_route::handler},
#define LIBRARY(map, key, stub, ...) {decode_map_id::map_##map, key, opcode_route::library},
#define PREFETCH(map, key, stub) {decode_map_id::map_##map, key, opcode_route::prefetch},
#define FP_HANDLER HANDLER
#define MISSING_HANDLER HANDLER
#define MISSING_LIBRARY LIBRARY
constexpr checked_row all_rows[] = {
#include "sve/decode/opcodes.def"
};
#undef HANDLER
#undef FP_HANDLER
#undef LIBRARY
#undef PREFETCH
#undef MISSING_HANDLER
#undef MISSING_LIBRARY

constexpr int row_count = sizeof all_rows / sizeof all_rows[0];

constexpr int count_route(opcode_route route) {
    int count = 0;
    for (const checked_row& row : all_rows)
        count += row.route == route;
    return count;
}

constexpr bool maps_have_their_rows() {
    int counts[decode_map_count] = {};
    for (const checked_row& row : all_rows)
        ++counts[static_cast<int>(row.map)];
    for (int i = 0; i < decode_map_count; ++i)
        if (counts[i] != map_descriptions[i].rows)
            return false;
    return true;
}

// Two rows overlap when they agree on all bits that both fix; rows of one map with the same key do.
constexpr bool rows_are_disjoint() {
    std::uint32_t mask[row_count] = {};
    std::uint32_t value[row_count] = {};
    for (int i = 0; i < row_count; ++i) {
        mask[i] = map_mask(describe(all_rows[i].map));
        value[i] = map_value(describe(all_rows[i].map), all_rows[i].key);
        for (int j = 0; j < i; ++j)
            if (((value[i] ^ value[j]) & mask[i] & mask[j]) == 0)
                return false;
    }
    return true;
}

constexpr bool keys_are_whole() {
    for (const checked_row& row : all_rows)
        if (map_key(describe(row.map), map_value(describe(row.map), row.key)) != row.key)
            return false;
    return true;
}

constexpr bool rows_lie_in_sve_space() {
    for (const checked_row& row : all_rows)
        if ((map_mask(describe(row.map)) >> 25 & 0xF) != 0xF ||
            !is_in_sve_space(map_value(describe(row.map), row.key)))
            return false;
    return true;
}

static_assert(row_count == 1483);
static_assert(count_route(opcode_route::handler) == 730);
static_assert(count_route(opcode_route::library) == 717);
static_assert(count_route(opcode_route::prefetch) == 36);
static_assert(maps_have_their_rows());
static_assert(keys_are_whole(), "a key has no bits beyond its map's slices");
static_assert(rows_lie_in_sve_space(), "look-ups pass over all other words");
static_assert(rows_are_disjoint());

} // namespace
