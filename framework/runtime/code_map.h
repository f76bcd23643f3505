// Which application instruction a word of the code cache carries out, and how the application's state is
// recovered there.
//
// At the first word of an application instruction's code, all registers hold the application's values, but
// for X28, which the context has. The code of one instruction is straight-line, but for branches to stubs,
// and keeps to this order: registers that it borrows are first stored in scratch slots by STR or STP
// [X28, #slot]; then comes its effect, one word that does what the application sees; then at most loads,
// stores and moves that put things back, and jumps. So up to the effect the state is recovered by taking the
// borrowed registers from their slots, and behind it by carrying out the few words that are left. A register
// that the instruction overwrites without reading it may be changed before the effect.
//
// Code that is not in the map, stubs and landings, soon comes to the dispatcher or jumps to code that is.
#pragma once

#include <optional>
#include <vector>

#include "framework/aarch64/encode.h"

// Registers that hold what the context otherwise holds for the application, over more than one instruction;
// their own values stand in the slots of `exclusives.h`. The zero register if there is none.
struct registers_in_place {
    std::uint8_t stolen;
    std::uint8_t thread_pointer;
};
inline constexpr registers_in_place none_in_place{a64::zero_register, a64::zero_register};

struct code_place {
    const a64::word* start; // of the instruction's code
    const a64::word* end;   // where the code of the next one starts, or a branch to it
    const a64::word* effect;
    bool indivisible; // code of a client, which runs to its end
    std::uint64_t pc;
    std::uint64_t next_pc;       // of the instruction behind it; for a transfer meaningless
    registers_in_place in_place; // up to the effect
};

struct code_map {
    struct extent {
        std::uint16_t words : 11;
        std::uint16_t effect : 4; // from the first word
        std::uint16_t indivisible : 1;
    };
    // Code of consecutive application instructions.
    struct fragment {
        const a64::word* start;
        std::uint64_t pc;
        std::uint32_t first_extent;
        std::uint32_t extents;
        registers_in_place in_place; // from the second instruction on
    };
    std::vector<fragment> fragments; // by start
    std::vector<extent> extents;
};

// Starts a fragment behind all others, which the instructions that are added from now on belong to.
void begin_fragment(code_map& map, const a64::word* start, std::uint64_t pc,
                    registers_in_place in_place = none_in_place);

// Adds the next instruction, whose code is [start, end). An effect of null is its first word.
void add_instruction(code_map& map, const a64::word* start, const a64::word* end, const a64::word* effect,
                     bool indivisible = false);

// The instruction that the word belongs to; none if it is not in the map.
std::optional<code_place> find_place(const code_map& map, const a64::word* where);

void clear_code_map(code_map& map);
