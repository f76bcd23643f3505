#include "sve/decode/decoder.h"

#include "sve/client/fault_trapping.h"
#include "sve/client/statistics.h"
#include "sve/decode/opcode_rows.h"
#include "sve/library/memory_access.h"

#include <array>
#include <unistd.h>
#include <vector>

// Static initialisation makes icounts first of all, and the rest in the order in which it stands here.
std::uint32_t page_size = static_cast<std::uint32_t>(sysconf(_SC_PAGESIZE));

namespace {

using row_groups = std::array<std::vector<const opcode_row*>, decode_map_count>;

// All rows by map, which takes one pass for all maps.
const row_groups& rows_by_map() {
    static const row_groups groups = [] {
        row_groups result;
        for_each_opcode(
            [&](const opcode_row& row) { result[static_cast<std::size_t>(row.map)].push_back(&row); });
        return result;
    }();
    return groups;
}

// A map of all rows that belong to it.
decode_map build_map(decode_map_id id) {
    decode_map map;
    for (const opcode_row* row : rows_by_map()[static_cast<std::size_t>(id)])
        map.emplace_hint(map.end(), row->key, row->stub);
    return map;
}

} // namespace

#define DECODE_MAP(slices, is_sve_order, execute_order, rows)                                                \
    decode_map decode_map__##slices = build_map(decode_map_id::map_##slices);
#include "sve/decode/maps.def"
#undef DECODE_MAP

namespace {

// The last step of static initialisation.
[[maybe_unused]] const std::uint32_t fault_trapping = SVEInitialize();

// The maps by number.
decode_map* const maps[decode_map_count] = {
#define DECODE_MAP(slices, is_sve_order, execute_order, rows) &decode_map__##slices,
#include "sve/decode/maps.def"
#undef DECODE_MAP
};

using look_up_order = std::array<int, decode_map_count>;

// The numbers of the maps in the order in which a look-up function consults them.
constexpr look_up_order order_by(int map_description::*place) {
    look_up_order order = {};
    for (int i = 0; i < decode_map_count; ++i)
        order[static_cast<std::size_t>(map_descriptions[i].*place - 1)] = i;
    return order;
}
constexpr look_up_order is_sve_order = order_by(&map_description::is_sve_order);
constexpr look_up_order execute_order = order_by(&map_description::execute_order);

opcode_stub look_up(const look_up_order& order, unsigned int word) {
    if (!is_in_sve_space(word)) // most words of a program: spares them the 44 searches
        return nullptr;
    for (const int number : order) {
        const decode_map& map = *maps[number];
        const auto row = map.find(map_key(map_descriptions[number], word));
        if (row != map.end())
            return row->second;
    }
    return nullptr;
}

} // namespace

opcode_stub is_sve(unsigned int word) { return look_up(is_sve_order, word); }

aarch64_decode_rc execute_sve_instruction(cpu_state* state) {
    const unsigned int word = *state->pc;
    const opcode_stub stub = look_up(execute_order, word);
    if (stub == nullptr)
        return aarch64_not_emulated;
    const aarch64_decode_rc result = stub(state, word);
    if (result != aarch64_emulated)
        return result;
    update_sve_stats(state->pc, word);
    ++state->pc;
    return aarch64_emulated;
}

const char* opcode_name(opcode_stub stub) {
    const char* name = nullptr;
    for_each_opcode([&](const opcode_row& row) {
        if (row.stub == stub)
            name = row.name;
    });
    return name;
}
