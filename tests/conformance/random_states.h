// Random instruction words and register states that reach the edges: special values of each element size,
// shift counts around the width, floating-point specials, predicates of every shape, aliased registers.
#pragma once

#include "sve/decode/cpu_state.h"
#include "sve/decode/opcode_rows.h"

#include <cstdint>

namespace conformance {

// A reproducible sequence; the same seed gives the same one on every machine.
class random_source {
public:
    explicit random_source(std::uint64_t seed) : state_(seed) {}

    std::uint64_t next() {
        state_ += 0x9E3779B97F4A7C15;
        std::uint64_t z = state_;
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EB;
        return z ^ (z >> 31);
    }
    // 0 to limit - 1.
    std::uint64_t below(std::uint64_t limit) { return next() % limit; }
    // low to high, both included.
    std::int64_t between(std::int64_t low, std::int64_t high) {
        const std::uint64_t values = static_cast<std::uint64_t>(high) - static_cast<std::uint64_t>(low) + 1;
        return static_cast<std::int64_t>(static_cast<std::uint64_t>(low) + (values ? below(values) : next()));
    }
    bool one_in(unsigned count) { return below(count) == 0; }

private:
    std::uint64_t state_;
};

// A word of the row. Register fields are made equal to each other and to 31 more often than chance would.
std::uint32_t random_word(const opcode_row& row, random_source& random);

// A whole machine state; the registers that the word names get special values of the row's element size, and
// of others. Bits 7 to 1 of predicate bytes hold anything. FFR is what loads can leave: true bits, then false
// ones.
cpu_state random_state(const opcode_row& row, std::uint32_t word, random_source& random);

} // namespace conformance
