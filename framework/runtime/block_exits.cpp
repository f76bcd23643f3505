#include "framework/runtime/block_exits.h"

#include <utility>

namespace {

using namespace a64;

constexpr unsigned context_register = stolen_register;
constexpr unsigned first = hand_over_register;
constexpr unsigned second = hand_over_register_2;
constexpr unsigned third = 13; // borrowed where the target stands in a hand-over register
constexpr std::int64_t third_slot = scratch_slot(2);
constexpr std::int64_t app_x28_offset = offsetof(thread_context, app_x28);

void save_hand_over(emitter& out) { out.put(stp_x(first, second, context_register, hand_over_slot)); }

// Emits a transfer whose target is a linkable exit.
exit_record* emit_linkable(code_cache& cache, word transfer, std::uint64_t target) {
    exit_record* const exit = new_exit(cache, exit_kind::direct, target);
    exit->branch = cache.out.cursor;
    cache.out.put(transfer);
    cache.unplaced_stubs.push_back(exit);
    return exit;
}

// Jumps to the gate with the hand-over registers saved. In a block it is the effect of the instruction.
void emit_leave(emitter& out, const exit_record* record) {
    if (record)
        out.load_constant(first, reinterpret_cast<std::uint64_t>(record));
    else
        out.put(movz(first, 0, 0));
    out.put(ldr_x(second, context_register, offsetof(thread_context, exit_entry)));
    out.put_effect(br(second));
}

// CBZ or TBZ of X28 tests it with the application's value in place.
void emit_conditional(code_cache& cache, word instruction, kind k, std::uint64_t pc) {
    emitter& out = cache.out;
    const std::uint64_t target = named_address(instruction, k, pc);
    if (k == kind::branch_condition || rd(instruction) != stolen_register) {
        out.effect = out.cursor;
        exit_record* const taken = emit_linkable(cache, instruction, target);
        taken->untaken = emit_linkable(cache, b(0), pc + 4);
        return;
    }
    out.put(ldr_x(context_register, context_register, app_x28_offset));
    cache.unplaced_restores.push_back({out.cursor, target});
    out.put_effect(instruction);
    out.restore_context();
    emit_linkable(cache, b(0), pc + 4);
}

struct link {
    bool wanted;
    std::uint64_t return_address;
};

// The look-up of an application address in a register, with the hand-over registers saved. It changes no
// flags. The landing restores the hand-over registers.
void emit_look_up(code_cache& cache, unsigned target, link link_to) {
    emitter& out = cache.out;
    const bool borrows = target == first || target == second;
    const unsigned value = target == second ? first : second;
    const unsigned key = borrows ? third : first;
    if (borrows)
        out.put(str_x(third, context_register, third_slot));
    out.put(and_ones(value, target, 2, lookup_index_bits));
    out.put(sub_shifted(value, context_register, value, 2));
    out.put(ldp_x(key, value, value, -static_cast<std::int64_t>(sizeof(lookup_entry))));
    out.put(sub_register(key, key, target));
    cache.unplaced_misses.push_back({out.cursor, target, borrows, link_to.wanted, link_to.return_address});
    out.put(cbnz_x(key, 0));
    if (borrows)
        out.put(ldr_x(third, context_register, third_slot));
    if (link_to.wanted) {
        out.effect = out.cursor;
        out.load_constant(link_register, link_to.return_address);
        out.put(br(value));
    } else {
        out.put_effect(br(value));
    }
}

void emit_register_branch(code_cache& cache, word instruction, link link_to) {
    unsigned target = rn(instruction);
    save_hand_over(cache.out);
    if (target == stolen_register) {
        target = first;
        cache.out.put(ldr_x(target, context_register, app_x28_offset));
    }
    emit_look_up(cache, target, link_to);
}

// The pointer is authenticated in a copy, since these instructions leave their target register as it is.
void emit_authenticated(code_cache& cache, word instruction, kind k, link link_to) {
    emitter& out = cache.out;
    const bool is_return = k == kind::authenticated_return;
    const unsigned target = is_return ? link_register : rn(instruction);
    const bool zero_modifier = !is_return && !(instruction & 0x01000000);
    const auto key = static_cast<pointer_key>((instruction >> 10) & 1);
    unsigned modifier = is_return ? stack_pointer : rd(instruction);

    save_hand_over(out);
    if (!zero_modifier && modifier == first) {
        out.put(move_x(second, first));
        modifier = second;
    } else if (!zero_modifier && modifier == stolen_register) {
        out.put(ldr_x(second, context_register, app_x28_offset));
        modifier = second;
    }
    if (target == stolen_register)
        out.put(ldr_x(first, context_register, app_x28_offset));
    else if (target == second) // may hold the modifier by now
        out.put(ldr_x(first, context_register, scratch_slot(1)));
    else if (target != first)
        out.put(move_x(first, target));
    out.put(zero_modifier ? authenticate_zero(key, first) : authenticate(key, first, modifier));
    emit_look_up(cache, first, link_to);
}

// The most words of each, literals included.
constexpr std::size_t literal_words = 2;
constexpr std::size_t landing_words = 2;
constexpr std::size_t stub_words = 4 + literal_words;
constexpr std::size_t miss_words = 6 + literal_words;
constexpr std::size_t return_miss_words = 6 + literal_words;
constexpr std::size_t restore_words = 2 + literal_words + stub_words;

std::size_t side_exit_words(const side_exit& exit) { return exit.code.size() + 1 + stub_words; }

// The exit's stub is still to be placed afterwards.
void place_side_exit(code_cache& cache, const side_exit& exit) {
    emitter& out = cache.out;
    *exit.branch = with_offset(*exit.branch, out.offset_from(exit.branch));
    for (const word instruction : exit.code)
        out.put(instruction);
    emit_linkable(cache, b(0), exit.target);
}

void place_exit_stub(emitter& out, exit_record& exit) {
    exit.stub = out.cursor;
    *exit.branch = with_offset(*exit.branch, out.offset_from(exit.branch));
    save_hand_over(out);
    emit_leave(out, &exit);
}

void place_miss(emitter& out, const look_up_miss& miss) {
    *miss.branch = with_offset(*miss.branch, out.offset_from(miss.branch));
    out.put(str_x(miss.target_register, context_register, offsetof(thread_context, pc)));
    if (miss.borrowed)
        out.put(ldr_x(third, context_register, third_slot));
    if (miss.links)
        out.load_constant(link_register, miss.return_address);
    emit_leave(out, nullptr);
}

void place_restore(code_cache& cache, const restoring_exit& exit) {
    emitter& out = cache.out;
    *exit.branch = with_offset(*exit.branch, out.offset_from(exit.branch));
    out.restore_context();
    emit_linkable(cache, b(0), exit.target);
}

void place_return_miss(code_cache& cache, word* branch) {
    emitter& out = cache.out;
    *branch = with_offset(*branch, out.offset_from(branch));
    out.restore_context();
    save_hand_over(out);
    out.put(str_x(link_register, context_register, offsetof(thread_context, pc)));
    emit_leave(out, nullptr);
}

} // namespace

void emit_landing(emitter& out) { out.put(ldp_x(first, second, context_register, hand_over_slot)); }

void emit_direct_exit(code_cache& cache, std::uint64_t target) { emit_linkable(cache, b(0), target); }

void emit_side_exit(code_cache& cache, word transfer, std::uint64_t target, std::vector<word> code) {
    cache.unplaced_side_exits.push_back({cache.out.cursor, target, std::move(code)});
    cache.out.put(transfer);
}

void emit_dispatcher_exit(code_cache& cache, exit_kind kind, std::uint64_t target, unsigned detail) {
    exit_record* const exit = new_exit(cache, kind, target);
    exit->detail = static_cast<std::uint8_t>(detail);
    save_hand_over(cache.out);
    emit_leave(cache.out, exit);
}

void emit_transfer(code_cache& cache, word instruction, kind k, std::uint64_t pc) {
    switch (k) {
    case kind::branch_link:
        cache.out.load_constant(link_register, pc + 4);
        emit_linkable(cache, b(0), named_address(instruction, k, pc))->path =
            path_of_call(cache.paths, outermost_path(cache.paths), pc + 4);
        return;
    case kind::branch:
        emit_direct_exit(cache, named_address(instruction, k, pc));
        return;
    case kind::branch_condition:
    case kind::compare_branch:
    case kind::test_branch:
        emit_conditional(cache, instruction, k, pc);
        return;
    case kind::branch_register:
        emit_register_branch(cache, instruction, {false, 0});
        return;
    case kind::branch_link_register:
        emit_register_branch(cache, instruction, {true, pc + 4});
        return;
    case kind::authenticated_branch:
    case kind::authenticated_return:
        emit_authenticated(cache, instruction, k, {false, 0});
        return;
    case kind::authenticated_branch_link:
        emit_authenticated(cache, instruction, k, {true, pc + 4});
        return;
    case kind::system_call:
        emit_dispatcher_exit(cache, exit_kind::system_call, pc + 4, 0);
        return;
    default:
        assert(false);
    }
}

void emit_known_return(code_cache& cache, std::uint64_t return_address, bool link_intact) {
    if (link_intact)
        return;
    // X28 serves as the scratch register, since its value is a constant of the thread.
    emitter& out = cache.out;
    out.load_constant(context_register, return_address);
    out.put(sub_register(context_register, context_register, link_register));
    cache.unplaced_return_misses.push_back(out.cursor);
    out.put(cbnz_x(context_register, 0));
    out.effect = out.cursor;
    out.restore_context();
}

void place_cold_code(code_cache& cache, std::span<block> blocks) {
    emitter& out = cache.out;
    std::size_t words =
        blocks.size() * landing_words + cache.unplaced_stubs.size() * stub_words +
        cache.unplaced_misses.size() * miss_words + cache.unplaced_return_misses.size() * return_miss_words +
        cache.unplaced_restores.size() * restore_words + out.literals.size() * literal_words + 1;
    for (const side_exit& exit : cache.unplaced_side_exits)
        words += side_exit_words(exit);
    word* const start = take_cold_words(cache, words);
    word* const code_end = std::exchange(out.cursor, start);
    for (block& each : blocks) {
        if (each.landing)
            continue;
        each.landing = out.cursor;
        emit_landing(out);
        out.put(b((each.entry - out.cursor) * 4));
    }
    for (const side_exit& exit : cache.unplaced_side_exits)
        place_side_exit(cache, exit);
    for (const restoring_exit& exit : cache.unplaced_restores)
        place_restore(cache, exit);
    for (exit_record* exit : cache.unplaced_stubs)
        place_exit_stub(out, *exit);
    for (const look_up_miss& miss : cache.unplaced_misses)
        place_miss(out, miss);
    for (word* const branch : cache.unplaced_return_misses)
        place_return_miss(cache, branch);
    out.place_literals();
    assert(out.cursor <= start + words);
    __builtin___clear_cache(reinterpret_cast<char*>(start), reinterpret_cast<char*>(out.cursor));
    cache.unplaced_stubs.clear();
    cache.unplaced_restores.clear();
    cache.unplaced_misses.clear();
    cache.unplaced_side_exits.clear();
    cache.unplaced_return_misses.clear();
    out.cursor = code_end;
}

void link_counting(code_cache& cache, exit_record& exit, const block& target, std::uint32_t executions) {
    emitter& out = cache.out;
    if (static_cast<std::size_t>(cache.cold - out.cursor) < counter_words ||
        cache.chunk_end - out.cursor > static_cast<std::ptrdiff_t>(chunk_words)) {
        exit.path = nullptr;
        link_exit(exit, target);
        return;
    }
    exit.countdown = executions;
    word* const start = take_cold_words(cache, counter_words);
    exit.counter = start;
    word* const code_end = std::exchange(out.cursor, start);
    save_hand_over(out);
    out.load_constant(first, reinterpret_cast<std::uint64_t>(&exit));
    constexpr std::int64_t countdown = offsetof(exit_record, countdown);
    out.put(load_store(access::w, true, second, first, countdown));
    out.put(sub_immediate_w(second, second, 1));
    out.put(load_store(access::w, false, second, first, countdown));
    out.put(cbz_w(second, 8));
    out.put(b((target.landing - out.cursor) * 4));
    out.put(ldr_x(second, context_register, offsetof(thread_context, exit_entry)));
    out.put(br(second));
    out.place_literals();
    assert(out.cursor <= start + counter_words);
    __builtin___clear_cache(reinterpret_cast<char*>(start), reinterpret_cast<char*>(out.cursor));
    out.cursor = code_end;
    branch_to(exit, start);
    note_link(exit, target);
}
