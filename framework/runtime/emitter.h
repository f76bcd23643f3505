// A cursor that writes A64 words into the code cache, with literals gathered behind the code.
#pragma once

#include <vector>

#include "framework/aarch64/encode.h"

struct emitter {
    a64::word* cursor;

    struct literal_use {
        a64::word* load;
        std::uint64_t value;
    };
    std::vector<literal_use> literals;

    // The word of the instruction being emitted that the application sees the effect of; null for its first.
    a64::word* effect;
    bool indivisible; // the instruction's code has to run to its end, since its effect is more than one word

    std::uint64_t context; // what X28 holds: its code may use X28 for another purpose and load it anew

    void put(a64::word word) { *cursor++ = word; }

    // Emits the word that has the effect of an application instruction.
    void put_effect(a64::word word) {
        effect = cursor;
        put(word);
    }

    // LDR of `rt` from a literal of that value.
    void load_constant(unsigned rt, std::uint64_t value) {
        literals.push_back({cursor, value});
        put(a64::ldr_literal_x(rt, 0));
    }

    // Gives X28 its value back.
    void restore_context() { load_constant(a64::stolen_register, context); }

    // Writes the literals and completes the loads.
    void place_literals() {
        if (literals.empty())
            return;
        if (reinterpret_cast<std::uintptr_t>(cursor) % 8 != 0)
            put(a64::undefined);
        for (const literal_use& use : literals) {
            *use.load |= a64::word_offset(offset_from(use.load), 5, 19);
            put(static_cast<a64::word>(use.value));
            put(static_cast<a64::word>(use.value >> 32));
        }
        literals.clear();
    }

    // The byte offset of the cursor from an earlier word.
    std::int64_t offset_from(const a64::word* place) const { return (cursor - place) * 4; }
};
