#include "framework/runtime/mangle.h"

#include "framework/aarch64/general_registers.h"
#include "framework/runtime/announced_sve.h"
#include "framework/runtime/gates.h"

namespace {

using namespace a64;

constexpr unsigned sve_field = 32; // lowest bit of the field of ID_AA64PFR0_EL1
constexpr unsigned context_register = stolen_register;
constexpr std::int64_t app_x28_offset = offsetof(thread_context, app_x28);
constexpr std::int64_t thread_pointer_offset = offsetof(thread_context, app_tpidr);

// Slots of registers that are borrowed for one instruction.
constexpr std::int64_t borrowed_slot = scratch_slot(2); // and the one after it, for a pair
constexpr std::int64_t borrowed_slot_3 = scratch_slot(4);

// An X register that no field of the instruction can mean. Four fields leave one of five.
unsigned unnamed_register(word instruction) {
    unsigned candidate = 0;
    while (may_name(instruction, candidate))
        ++candidate;
    return candidate;
}

// ORR of the zero register: a move between registers, X or W; and the load of a zero.
constexpr bool is_move(word instruction) { return (instruction & 0x7FE0FFE0) == 0x2A0003E0; }
constexpr bool is_wide(word instruction) { return instruction & 0x80000000; }
constexpr bool is_move_of_zero(word instruction) { return (instruction & 0x7FFFFFE0) == 0x52800000; }

// LDP of another register and X28 from the stack, at an offset that is a multiple of 16 and not negative.
constexpr bool is_aligned_pair_load(word instruction) {
    return (instruction & 0xFFE0FFE0) == 0xA94073E0 && rd(instruction) != stolen_register &&
           rd(instruction) != zero_register;
}

// A register that the instruction writes, does not read, and may hold X28's value before it, or X28 if there
// is none. An instruction that may fault has to find the register as the application left it.
unsigned reusable_destination(word instruction, const register_uses& uses) {
    const unsigned destination = rd(instruction);
    if (uses.memory || uses.field[0] != writes || destination == 31)
        return stolen_register;
    for (unsigned place = 1; place < register_fields; ++place)
        if (uses.field[place] != no_use && register_at(instruction, place) == destination)
            return stolen_register;
    return destination;
}

// Runs `body`, an instruction with X28 renamed to a borrowed register.
void emit_with_borrowed(emitter& out, word body, unsigned borrowed, use of_x28) {
    out.put(str_x(borrowed, context_register, borrowed_slot));
    if (of_x28 & reads)
        out.put(ldr_x(borrowed, context_register, app_x28_offset));
    out.put_effect(body);
    if (of_x28 & writes)
        out.put(str_x(borrowed, context_register, app_x28_offset));
    out.put(ldr_x(borrowed, context_register, borrowed_slot));
}

// Runs an instruction that reads X28 and does not write it. Meanwhile X28 holds the application's value.
void emit_with_own_value(emitter& out, word instruction) {
    out.put(ldr_x(context_register, context_register, app_x28_offset));
    out.put_effect(instruction);
    out.restore_context();
}

void emit_move(emitter& out, word instruction) {
    const unsigned source = register_at(instruction, 3), destination = rd(instruction);
    const a64::access size = is_wide(instruction) ? a64::access::x : a64::access::w;
    if (source == stolen_register) {
        if (destination != stolen_register)
            out.put(load_store(size, true, destination, context_register, app_x28_offset));
        if (destination != stolen_register || size == a64::access::x)
            return;
    } else {
        out.put(load_store(size, false, source, context_register, app_x28_offset));
    }
    if (size == a64::access::w) {
        out.put(load_store(size, false, zero_register, context_register, app_x28_offset + 4));
        out.indivisible = source != stolen_register;
    }
}

// CASP names pairs of consecutive registers, the first even. X28 stands in one with X29; the pair is run on
// X0 and X1, X2 and X3, and so on, whichever pair the instruction leaves free.
void emit_register_pairs(emitter& out, word instruction) {
    const unsigned compared = register_at(instruction, 3);
    const unsigned stored = register_at(instruction, 0);
    const unsigned base = register_at(instruction, 1);
    unsigned free_pair = 0;
    while (free_pair == compared || free_pair == stored || free_pair == (base & ~1u))
        free_pair += 2;

    // The base may be X28 as well: a third register then holds it.
    unsigned free_base = free_pair + 2;
    while (free_base == compared || free_base == stored)
        free_base += 2;

    const bool base_named = base == stolen_register;
    const bool pair_named = compared == stolen_register || stored == stolen_register;
    const auto renamed = [](word body, unsigned place, unsigned to) {
        const unsigned low = field_low_bit[place];
        return register_at(body, place) == stolen_register ? (body & ~(word{31} << low)) | field(to, low, 5)
                                                           : body;
    };
    word body = renamed(instruction, 0, free_pair);
    body = renamed(body, 1, free_base);
    body = renamed(body, 3, free_pair);

    out.put(stp_x(free_pair, free_pair + 1, context_register, borrowed_slot));
    if (base_named) {
        out.put(str_x(free_base, context_register, borrowed_slot_3));
        out.put(ldr_x(free_base, context_register, app_x28_offset));
    }
    if (pair_named) {
        out.put(ldr_x(free_pair, context_register, app_x28_offset));
        out.put(move_x(free_pair + 1, 29));
    }
    out.put_effect(body);
    if (compared == stolen_register) {
        out.put(str_x(free_pair, context_register, app_x28_offset));
        out.put(move_x(29, free_pair + 1));
    }
    if (base_named)
        out.put(ldr_x(free_base, context_register, borrowed_slot_3));
    out.put(ldp_x(free_pair, free_pair + 1, context_register, borrowed_slot));
}

void emit_plain(emitter& out, word instruction) {
    if (!may_name(instruction, stolen_register)) {
        out.put(instruction);
        return;
    }
    const register_uses uses = general_registers(instruction);
    const use of_x28 = use_of_stolen_register(instruction, uses);
    if (of_x28 == no_use) {
        out.put(instruction);
        return;
    }
    if (uses.register_pairs) {
        emit_register_pairs(out, instruction);
        return;
    }
    if (is_move(instruction)) {
        emit_move(out, instruction);
        return;
    }
    if (is_move_of_zero(instruction)) {
        out.put(str_x(zero_register, context_register, app_x28_offset));
        return;
    }
    if (is_aligned_pair_load(instruction)) {
        // The stack is aligned too, so all of it is on one page, and both loads fault or none.
        const unsigned other = rd(instruction);
        const std::int64_t offset = 8 * ((instruction >> 15) & 0x3F);
        out.put(ldr_x(other, stack_pointer, offset + 8));
        out.put(str_x(other, context_register, app_x28_offset));
        out.put_effect(ldr_x(other, stack_pointer, offset));
        return;
    }
    const unsigned destination = reusable_destination(instruction, uses);
    if (destination != stolen_register) {
        out.put(ldr_x(destination, context_register, app_x28_offset));
        out.put_effect(rename_register(instruction, uses, stolen_register, destination));
        return;
    }
    if (!(of_x28 & writes)) {
        emit_with_own_value(out, instruction);
        return;
    }
    const unsigned borrowed = unnamed_register(instruction);
    emit_with_borrowed(out, rename_register(instruction, uses, stolen_register, borrowed), borrowed, of_x28);
}

// Emits `make(register)`, code that writes a register, for a destination that may be X28.
template <typename Make> void emit_to_destination(emitter& out, unsigned destination, Make make) {
    if (destination != stolen_register) {
        make(destination);
        return;
    }
    constexpr unsigned borrowed = 0;
    out.put(str_x(borrowed, context_register, borrowed_slot));
    make(borrowed);
    out.put_effect(str_x(borrowed, context_register, app_x28_offset));
    out.put(ldr_x(borrowed, context_register, borrowed_slot));
}

void emit_page_address(emitter& out, unsigned rd, std::uint64_t page) {
    const auto here = reinterpret_cast<std::int64_t>(out.cursor);
    const std::int64_t pages = (static_cast<std::int64_t>(page) >> 12) - (here >> 12);
    if (adrp_reaches(pages))
        out.put(adrp(rd, pages));
    else
        out.load_constant(rd, page);
}

// A literal load reads the application's memory, whose content may change: it becomes a load through an
// address.
void emit_literal_load(emitter& out, word instruction, std::uint64_t address) {
    struct form {
        word literal; // bits 31:30 and 26 of the literal form
        word base;    // the same load with unsigned offset 0
    };
    constexpr word selector = 0xC4000000;
    constexpr form forms[] = {
        {0x00000000, 0xB9400000}, // LDR W
        {0x40000000, 0xF9400000}, // LDR X
        {0x80000000, 0xB9800000}, // LDRSW
        {0xC0000000, 0xF9800000}, // PRFM
        {0x04000000, 0xBD400000}, // LDR S
        {0x44000000, 0xFD400000}, // LDR D
        {0x84000000, 0x3DC00000}, // LDR Q
    };
    for (const form& f : forms) {
        if ((instruction & selector) != f.literal)
            continue;
        const bool to_general = f.literal == 0 || f.literal == 0x40000000 || f.literal == 0x80000000;
        if (to_general && rd(instruction) != zero_register) {
            emit_to_destination(out, rd(instruction), [&](unsigned destination) {
                out.load_constant(destination, address);
                out.put_effect(f.base | field(destination, 5, 5) | destination);
            });
        } else {
            constexpr unsigned borrowed = 0;
            out.put(str_x(borrowed, context_register, borrowed_slot));
            out.load_constant(borrowed, address);
            out.put_effect(f.base | field(borrowed, 5, 5) | rd(instruction));
            out.put(ldr_x(borrowed, context_register, borrowed_slot));
        }
        return;
    }
    out.put(undefined); // unallocated, and a copy would be the same
}

} // namespace

unsigned mangled_words(word instruction) {
    word code[mangled_words_limit];
    emitter out{};
    out.cursor = code;
    emit_plain(out, instruction);
    return static_cast<unsigned>(out.cursor - code);
}

void emit_application_instruction(emitter& out, word instruction, kind k, std::uint64_t pc) {
    switch (k) {
    case kind::adr:
        emit_to_destination(out, rd(instruction),
                            [&](unsigned rd) { out.load_constant(rd, named_address(instruction, k, pc)); });
        return;
    case kind::adrp:
        emit_to_destination(out, rd(instruction), [&](unsigned rd) {
            emit_page_address(out, rd, named_address(instruction, k, pc));
        });
        return;
    case kind::load_literal:
        emit_literal_load(out, instruction, named_address(instruction, k, pc));
        return;
    case kind::read_thread_pointer:
        emit_to_destination(out, rd(instruction), [&](unsigned rd) {
            out.put(ldr_x(rd, context_register, thread_pointer_offset));
        });
        return;
    case kind::write_thread_pointer:
        if (rd(instruction) != stolen_register)
            out.put(str_x(rd(instruction), context_register, thread_pointer_offset));
        else
            emit_with_borrowed(out, str_x(0, context_register, thread_pointer_offset), 0, reads);
        return;
    case kind::read_cache_type:
        // With bit 29, DIC, set, programs need not invalidate the instruction cache after writing code, and
        // the engine would not learn of it.
        emit_to_destination(out, rd(instruction), [&](unsigned destination) {
            out.put((instruction & ~word{31}) | destination);
            if (destination != zero_register) // as a destination of AND it is the stack pointer
                out.put_effect(and_ones(destination, destination, 30, 63));
        });
        return;
    case kind::read_processor_features:
        emit_to_destination(out, rd(instruction), [&](unsigned destination) {
            out.put((instruction & ~word{31}) | destination);
            if (destination == zero_register)
                return;
            out.put(and_ones(destination, destination, sve_field + 4, 60));
            if (sve_is_announced)
                out.put(orr_bit(destination, destination, sve_field));
        });
        return;
    case kind::read_sve_features: // SVE as it was first, or none
        emit_to_destination(out, rd(instruction),
                            [&](unsigned destination) { out.load_constant(destination, 0); });
        return;
    case kind::unknown_branch:
        out.put(undefined); // running it from the cache could leave the cache
        return;
    default:
        emit_plain(out, instruction);
    }
}
