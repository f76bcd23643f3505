#include "framework/runtime/exclusives.h"

#include <utility>

#include "framework/aarch64/classify.h"
#include "framework/aarch64/general_registers.h"
#include "framework/runtime/block_exits.h"

namespace {

using namespace a64;

constexpr unsigned context_register = stolen_register;

bool is_store_exclusive(word instruction) {
    return (instruction & 0x3FE00000) == 0x08000000 || (instruction & 0xBFE00000) == 0x88200000; // STXR, STXP
}

// False for SVE and SME, which are not executed as they stand.
bool is_base_or_simd(word instruction) { return (instruction >> 25 & 15) >= 4; }

// What the stretch asks for.
struct needs {
    std::uint32_t named; // registers that may not be borrowed, by bit
    use of_stolen;
    bool thread_pointer;
    bool own_address;
};

// Adds the needs of an instruction within the stretch; false if it cannot be there. `joined` says that an
// earlier branch goes to what follows it.
bool add_needs(needs& sum, word instruction, bool joined) {
    for (unsigned place = 0; place < register_fields; ++place)
        sum.named |= std::uint32_t{1} << register_at(instruction, place);
    switch (const kind k = classify(instruction)) {
    case kind::plain: {
        const register_uses uses = general_registers(instruction);
        for (unsigned place = 0; place < register_fields; ++place)
            if (register_at(instruction, place) == stolen_register)
                sum.of_stolen |= uses.field[place];
        return is_base_or_simd(instruction) && !uses.register_pairs;
    }
    case kind::load_literal:
        sum.own_address = true;
        if ((instruction & 0x04000000) || instruction >> 30 == 3 || rd(instruction) == zero_register)
            return false; // its address would need one more register
        [[fallthrough]];
    case kind::adr:
    case kind::adrp:
    case kind::read_thread_pointer:
        if (rd(instruction) == stolen_register)
            sum.of_stolen |= writes;
        (k == kind::read_thread_pointer ? sum.thread_pointer : sum.own_address) = true;
        return true;
    case kind::compare_branch:
    case kind::test_branch:
        if (rd(instruction) == stolen_register)
            sum.of_stolen |= reads;
        return true;
    case kind::branch_condition:
        return true;
    case kind::branch:
        return joined;
    default:
        return false;
    }
}

// Takes a register that is not in the set and puts it there. The zero register if there is none.
unsigned borrow(std::uint32_t& named) {
    for (unsigned candidate = 0; candidate < 30; ++candidate)
        if (!(named >> candidate & 1)) {
            named |= std::uint32_t{1} << candidate;
            return candidate;
        }
    return zero_register;
}

void put_constant(emitter& out, unsigned rd, std::uint64_t value) {
    out.put(movz(rd, value & 0xFFFF, 0));
    for (unsigned half = 1; half < 4; ++half)
        if (const unsigned bits = value >> (16 * half) & 0xFFFF)
            out.put(movk(rd, bits, half));
}

unsigned renamed(unsigned number, const exclusive_region& region) {
    return number == stolen_register ? region.stolen : number;
}
word with_rd(word instruction, const exclusive_region& region) {
    return (instruction & ~word{31}) | renamed(rd(instruction), region);
}

void emit_borrowing(emitter& out, const exclusive_region& region) {
    if (region.stolen != zero_register) {
        out.put(str_x(region.stolen, context_register, stolen_slot));
        out.put(ldr_x(region.stolen, context_register, offsetof(thread_context, app_x28)));
    }
    if (region.thread_pointer != zero_register) {
        out.put(str_x(region.thread_pointer, context_register, thread_pointer_slot));
        out.put(ldr_x(region.thread_pointer, context_register, offsetof(thread_context, app_tpidr)));
    }
}

// Emits an instruction that is no branch.
void emit_with_borrowed(emitter& out, const exclusive_region& region, word instruction, kind k,
                        std::uint64_t pc) {
    const unsigned destination = renamed(rd(instruction), region);
    switch (k) {
    case kind::adr:
    case kind::adrp:
        put_constant(out, destination, named_address(instruction, k, pc));
        out.effect = out.cursor - 1;
        return;
    case kind::load_literal: {
        constexpr word loads[] = {0xB9400000, 0xF9400000, 0xB9800000}; // LDR W, LDR X, LDRSW
        put_constant(out, destination, named_address(instruction, k, pc));
        out.put_effect(loads[instruction >> 30] | field(destination, 5, 5) | destination);
        return;
    }
    case kind::read_thread_pointer:
        out.put_effect(move_x(destination, region.thread_pointer));
        return;
    default:
        out.put_effect(
            rename_register(instruction, general_registers(instruction), stolen_register, region.stolen));
    }
}

// A branch to a later word of the stretch, or to its end.
struct inner_branch {
    word* place;
    unsigned target; // index of the word
};

// What gives the borrowed registers back.
std::vector<word> code_at_end(const exclusive_region& region) {
    std::vector<word> code;
    if (region.writes_stolen)
        code.push_back(str_x(region.stolen, context_register, offsetof(thread_context, app_x28)));
    if (region.stolen != zero_register)
        code.push_back(ldr_x(region.stolen, context_register, stolen_slot));
    if (region.thread_pointer != zero_register)
        code.push_back(ldr_x(region.thread_pointer, context_register, thread_pointer_slot));
    return code;
}

} // namespace

bool is_load_exclusive(word instruction) {
    return (instruction & 0x3FE00000) == 0x08400000 || (instruction & 0xBFE00000) == 0x88600000; // LDXR, LDXP
}

exclusive_region find_exclusive_region(const word* code, std::size_t count) {
    constexpr exclusive_region nothing{0, zero_register, zero_register, false};
    // What hints use implicitly is not borrowed either.
    needs sum{1u << 16 | 1u << 17 | 1u << stolen_register, no_use, false, false};
    std::uint64_t targets = 0; // of forward branches, by bit
    for (unsigned n = 0; n < count && n < exclusive_region_limit; ++n) {
        if (!add_needs(sum, code[n], targets >> (n + 1) & 1))
            return nothing;
        const kind k = classify(code[n]);
        if (is_conditional(k) || k == kind::branch) {
            const std::uint64_t target = named_address(code[n], k, 4 * n) / 4;
            if (target > n && target <= exclusive_region_limit)
                targets |= std::uint64_t{1} << target;
        }
        if (!is_store_exclusive(code[n]))
            continue;
        exclusive_region region{n + 1, zero_register, zero_register, (sum.of_stolen & writes) != 0};
        if (sum.of_stolen != no_use && (region.stolen = borrow(sum.named)) == zero_register)
            return nothing;
        if (sum.thread_pointer && (region.thread_pointer = borrow(sum.named)) == zero_register)
            return nothing;
        return sum.of_stolen || sum.thread_pointer || sum.own_address ? region : nothing;
    }
    return nothing;
}

void emit_exclusive_region(code_cache& cache, const exclusive_region& region, const word* code,
                           std::uint64_t pc) {
    emitter& out = cache.out;
    begin_fragment(
        cache.map, out.cursor, pc,
        {static_cast<std::uint8_t>(region.stolen), static_cast<std::uint8_t>(region.thread_pointer)});
    const std::vector<word> at_end = code_at_end(region);
    std::vector<inner_branch> inner;
    const auto complete_branches_to = [&](unsigned target) {
        for (const inner_branch& branch : inner)
            if (branch.target == target)
                *branch.place = with_offset(*branch.place, out.offset_from(branch.place));
    };
    const word* start = out.cursor;
    emit_borrowing(out, region);
    for (unsigned n = 0; n < region.words; ++n) {
        complete_branches_to(n);
        const kind k = classify(code[n]);
        out.effect = nullptr;
        if (!is_conditional(k) && k != kind::branch) {
            emit_with_borrowed(out, region, code[n], k, pc + 4 * n);
        } else {
            const word branch =
                k == kind::branch_condition || k == kind::branch ? code[n] : with_rd(code[n], region);
            const std::uint64_t target = named_address(code[n], k, pc + 4 * n);
            const std::uint64_t index = (target - pc) / 4; // very large for a target before the stretch
            out.effect = out.cursor;
            if (index > n && index <= region.words) {
                inner.push_back({out.cursor, static_cast<unsigned>(index)});
                out.put(branch);
            } else {
                emit_side_exit(cache, branch, target, at_end);
            }
        }
        if (n + 1 == region.words) {
            complete_branches_to(region.words);
            for (const word instruction : at_end)
                out.put(instruction);
        }
        const word* const code_start = std::exchange(start, out.cursor);
        *add_instructions(cache.map, 1) = extent_of(code_start, out.cursor, out.effect);
    }
    emit_direct_exit(cache, pc + 4 * region.words);
}
