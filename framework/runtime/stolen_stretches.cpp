#include "framework/runtime/stolen_stretches.h"

#include "framework/aarch64/general_registers.h"
#include "framework/runtime/block_builder.h"
#include "framework/runtime/borrowed_registers.h"
#include "framework/runtime/mangle.h"

namespace {

using namespace a64;

constexpr unsigned stretch_limit = 64;

struct stretch {
    unsigned words; // 0 if nothing is gained
    borrowed_registers borrowed;
};

// Of other instructions, it is not known what their fields mean.
bool is_known(const register_uses& uses) { return uses.memory || uses.field[0] || uses.field[1]; }

bool is_simd_data_processing(word instruction) { return (instruction >> 25 & 7) == 7; }

// Instructions that may name registers beside those in their fields do not stand in a stretch, and no access
// of ours is to come between exclusives.
bool may_stand_in_stretch(word instruction, const register_uses& uses) {
    const bool exclusive = (instruction & 0x3F800000) == 0x08000000;
    const bool system = instruction >> 24 == 0xD5;
    const bool of_64_bytes = (instruction & 0xFFE08C00) == 0xF8208000 && (instruction & 0x7000) != 0 &&
                             (instruction & 0x7000) != 0x4000; // LD64B and its kin; the others are SWP, LDAPR
    return (is_known(uses) || is_simd_data_processing(instruction)) && !exclusive && !system && !of_64_bytes;
}

// The registers that an instruction may mean, by bit.
std::uint32_t registers_named(word instruction, const register_uses& uses) {
    std::uint32_t named = 0;
    for (unsigned place = 0; place < register_fields; ++place)
        if (!is_known(uses) || uses.field[place] != no_use)
            named |= std::uint32_t{1} << register_at(instruction, place);
    return named;
}

// The stretch that starts with the first instruction and ends with the last one that names X28 and leaves
// another register free.
stretch find_stretch(const read_instruction* instructions, unsigned count) {
    stretch found{0, none_borrowed};
    std::uint32_t named = std::uint32_t{1} << stolen_register;
    unsigned saved = 0;
    bool writes_stolen = false;
    for (unsigned n = 0; n < count && n < stretch_limit && instructions[n].kind == kind::plain; ++n) {
        const word instruction = instructions[n].word;
        const register_uses uses = general_registers(instruction);
        if (!may_stand_in_stretch(instruction, uses))
            break;
        named |= registers_named(instruction, uses);
        std::uint32_t named_then = named;
        const unsigned borrowed = borrow_register(named_then);
        if (borrowed == zero_register)
            break;
        const use of_stolen = use_of_stolen_register(instruction, uses);
        if (of_stolen == no_use)
            continue;
        saved += mangled_words(instruction) - 1;
        writes_stolen |= (of_stolen & writes) != 0;
        if (saved > 2u + writes_stolen)
            found = {n + 1, {borrowed, zero_register, writes_stolen}};
    }
    return found;
}

void emit_stretch(code_cache& cache, const stretch& found, const read_instruction* instructions,
                  std::uint64_t pc) {
    emitter& out = cache.out;
    begin_fragment(cache.map, out.cursor, pc, in_place(found.borrowed));
    code_map::extent* extent = add_instructions(cache.map, found.words);
    const word* start = out.cursor;
    emit_borrowing(out, found.borrowed);
    for (unsigned n = 0; n < found.words; ++n) {
        emit_with_borrowed(out, found.borrowed, instructions[n].word, kind::plain, pc + 4 * n);
        if (n + 1 == found.words)
            for (const word instruction : code_of_return(found.borrowed))
                out.put(instruction);
        *extent++ = extent_of(start, out.cursor, out.effect);
        start = out.cursor;
    }
}

} // namespace

void emit_frequent_instructions(code_cache& cache, const read_instruction* instructions, unsigned count,
                                std::uint64_t pc) {
    unsigned emitted = 0;
    for (unsigned n = 0; n < count;) {
        const stretch found = may_name(instructions[n].word, stolen_register)
                                  ? find_stretch(instructions + n, count - n)
                                  : stretch{0, none_borrowed};
        if (found.words == 0) {
            ++n;
            continue;
        }
        emit_instructions(cache, instructions + emitted, n - emitted, pc + 4 * emitted);
        emit_stretch(cache, found, instructions + n, pc + 4 * n);
        n += found.words;
        emitted = n;
        begin_fragment(cache.map, cache.out.cursor, pc + 4 * n);
    }
    emit_instructions(cache, instructions + emitted, count - emitted, pc + 4 * emitted);
}
