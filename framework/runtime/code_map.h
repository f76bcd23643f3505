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
// X28 itself may serve as a scratch register before the effect, since its value, the context's address, is a
// constant of the thread; it is loaded from a literal at the end.
//
// Code that is not in the map, stubs and landings, soon comes to the dispatcher or jumps to code that is.
#pragma once

#include <optional>
#include <vector>

#include "framework/aarch64/encode.h"

// Registers that hold what the context otherwise holds for the application, over more than one instruction;
// their own values stand in the slots of `borrowed_registers.h`. The zero register if there is none.
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
    // The number of words, the place of the effect among them, and whether the code is indivisible.
    struct extent {
        std::uint16_t bits;

        unsigned words() const { return bits & 0x7FF; }
        unsigned effect() const { return bits >> 11 & 0xF; }
        bool indivisible() const { return bits >> 15; }
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

// Adds that many instructions, for which the extents are to be stored where the result points.
inline code_map::extent* add_instructions(code_map& map, unsigned count) {
    map.extents.resize(map.extents.size() + count);
    map.fragments.back().extents += count;
    return &map.extents.back() + 1 - count;
}

// What the map keeps of an instruction whose code is [start, end). An effect of null is its first word.
inline code_map::extent extent_of(const a64::word* start, const a64::word* end, const a64::word* effect,
                                  bool indivisible = false) {
    const auto words = end - start, effect_at = effect ? effect - start : 0;
    assert(words < 2048 && effect_at < 16);
    return {static_cast<std::uint16_t>(words | effect_at << 11 | (indivisible ? 1 << 15 : 0))};
}

// The instruction that the word belongs to; none if it is not in the map.
std::optional<code_place> find_place(const code_map& map, const a64::word* where);

void clear_code_map(code_map& map);
