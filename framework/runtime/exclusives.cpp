#include "framework/runtime/exclusives.h"

#include <utility>

#include "framework/aarch64/general_registers.h"
#include "framework/runtime/block_exits.h"

namespace {

using namespace a64;

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
        sum.of_stolen |= use_of_stolen_register(instruction, uses);
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

// A branch to a later word of the stretch, or to its end.
struct inner_branch {
    word* place;
    unsigned target; // index of the word
};

} // namespace

bool is_load_exclusive(word instruction) {
    return (instruction & 0x3FE00000) == 0x08400000 || (instruction & 0xBFE00000) == 0x88600000; // LDXR, LDXP
}

exclusive_region find_exclusive_region(const word* code, std::size_t count) {
    constexpr exclusive_region nothing{0, none_borrowed};
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
        borrowed_registers borrowed = none_borrowed;
        borrowed.writes_stolen = (sum.of_stolen & writes) != 0;
        if (sum.of_stolen != no_use && (borrowed.stolen = borrow_register(sum.named)) == zero_register)
            return nothing;
        if (sum.thread_pointer && (borrowed.thread_pointer = borrow_register(sum.named)) == zero_register)
            return nothing;
        return sum.of_stolen || sum.thread_pointer || sum.own_address ? exclusive_region{n + 1, borrowed}
                                                                      : nothing;
    }
    return nothing;
}

void emit_exclusive_region(code_cache& cache, const exclusive_region& region, const word* code,
                           std::uint64_t pc) {
    emitter& out = cache.out;
    const borrowed_registers& borrowed = region.borrowed;
    begin_fragment(cache.map, out.cursor, pc, in_place(borrowed));
    const std::vector<word> at_end = code_of_return(borrowed);
    std::vector<inner_branch> inner;
    const auto complete_branches_to = [&](unsigned target) {
        for (const inner_branch& branch : inner)
            if (branch.target == target)
                *branch.place = with_offset(*branch.place, out.offset_from(branch.place));
    };
    const word* start = out.cursor;
    emit_borrowing(out, borrowed);
    for (unsigned n = 0; n < region.words; ++n) {
        complete_branches_to(n);
        const kind k = classify(code[n]);
        out.effect = nullptr;
        if (!is_conditional(k) && k != kind::branch) {
            emit_with_borrowed(out, borrowed, code[n], k, pc + 4 * n);
        } else {
            const word branch =
                k == kind::branch_condition || k == kind::branch ? code[n] : rename_lowest(code[n], borrowed);
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
