// How many elements of a row the named predicate patterns select.
#pragma once

#include "sve/decode/cpu_state.h"
#include "sve/library/predicate_patterns.h"

#include <array>

constexpr auto make_pattern_lengths() {
    std::array<std::array<std::uint8_t, 32>, 4> lengths{};
    for (unsigned code = 0; code < lengths.size(); ++code)
        for (unsigned pattern = 0; pattern < lengths[code].size(); ++pattern)
            lengths[code][pattern] =
                static_cast<std::uint8_t>(predicate_pattern_length(pattern, vector_bytes >> code));
    return lengths;
}

// By element-size code, which is the logarithm of an element's bytes, and by the 5-bit pattern.
inline constexpr auto pattern_lengths = make_pattern_lengths();
