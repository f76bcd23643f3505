// The 44 decode maps by number, and how each cuts its key from a word.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

enum class decode_map_id : int {
#define DECODE_MAP(slices, is_sve_order, execute_order, rows) map_##slices,
#include "sve/decode/maps.def"
#undef DECODE_MAP
};

#define DECODE_MAP(slices, is_sve_order, execute_order, rows) +1
inline constexpr int decode_map_count = 0
#include "sve/decode/maps.def"
    ;
#undef DECODE_MAP

// A run of word bits, high down to low, both included.
struct bit_slice {
    int high;
    int low;
};

struct map_description {
    std::string_view name; // the slices, "31_21__15_10"
    int is_sve_order;      // place in the look-up order of is_sve, from 1
    int execute_order;     // place in the look-up order of execute_sve_instruction, from 1
    int rows;
    std::array<bit_slice, 4> slices;
    int slice_count;
};

// Reads the slices out of a map's name: numbers separated by underscores, taken in pairs.
constexpr map_description describe_map(std::string_view name, int is_sve_order, int execute_order, int rows) {
    map_description result = {name, is_sve_order, execute_order, rows, {}, 0};
    int numbers[8] = {};
    int count = 0;
    for (std::size_t i = 0; i < name.size(); ++i) {
        if (name[i] == '_')
            continue;
        numbers[count] = numbers[count] * 10 + (name[i] - '0');
        if (i + 1 == name.size() || name[i + 1] == '_')
            ++count;
    }
    for (int i = 0; i + 1 < count; i += 2)
        result.slices[static_cast<std::size_t>(result.slice_count++)] = {numbers[i], numbers[i + 1]};
    return result;
}

// Indexed by decode_map_id, in the order in which the maps are built.
inline constexpr map_description map_descriptions[decode_map_count] = {
#define DECODE_MAP(slices, is_sve_order, execute_order, rows)                                                \
    describe_map(#slices, is_sve_order, execute_order, rows),
#include "sve/decode/maps.def"
#undef DECODE_MAP
};

constexpr const map_description& describe(decode_map_id map) {
    return map_descriptions[static_cast<int>(map)];
}

// The map's key of a word: its slices concatenated, the first in the most significant place.
constexpr int map_key(const map_description& map, std::uint32_t word) {
    std::uint32_t key = 0;
    for (int i = 0; i < map.slice_count; ++i) {
        const bit_slice slice = map.slices[static_cast<std::size_t>(i)];
        const int width = slice.high - slice.low + 1;
        const std::uint32_t field = (word >> slice.low) & (0xFFFFFFFFu >> (32 - width));
        key = width == 32 ? field : key << width | field;
    }
    return static_cast<int>(key);
}

// The word bits that the key covers.
constexpr std::uint32_t map_mask(const map_description& map) {
    std::uint32_t mask = 0;
    for (int i = 0; i < map.slice_count; ++i) {
        const bit_slice slice = map.slices[static_cast<std::size_t>(i)];
        mask |= (0xFFFFFFFFu >> (31 - slice.high + slice.low)) << slice.low;
    }
    return mask;
}

// The covered bits of every word with that key.
constexpr std::uint32_t map_value(const map_description& map, int key) {
    std::uint32_t value = 0;
    auto rest = static_cast<std::uint32_t>(key);
    for (int i = map.slice_count - 1; i >= 0; --i) {
        const bit_slice slice = map.slices[static_cast<std::size_t>(i)];
        const int width = slice.high - slice.low + 1;
        value |= (rest & (0xFFFFFFFFu >> (32 - width))) << slice.low;
        rest = width == 32 ? 0 : rest >> width;
    }
    return value;
}

// The group of encodings that the architecture gives to SVE: bits 28 to 25 are 0010. Every row lies in it.
constexpr bool is_in_sve_space(std::uint32_t word) { return (word >> 25 & 0xF) == 2; }
