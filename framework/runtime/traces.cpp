#include "framework/runtime/traces.h"

#include <algorithm>
#include <array>

#include "framework/aarch64/general_registers.h"
#include "framework/runtime/block_builder.h"
#include "framework/runtime/block_exits.h"
#include "framework/runtime/exclusives.h"
#include "framework/runtime/mangle.h"
#include "framework/runtime/stolen_stretches.h"

namespace {

constexpr std::uint32_t executions_before_copy = 200;
constexpr unsigned copies_limit = 40; // of one block
constexpr std::size_t trace_blocks_limit = 16;
constexpr std::size_t trace_instructions_limit = 256;

// How a block's last instruction goes on.
enum class ending : std::uint8_t { next, jump, call, known_return, other };

struct block_end {
    ending how;
    std::uint64_t target;
    const call_path* path; // behind it, null if it would be too long
    bool link_intact;      // at the last instruction
};

// A block to be copied.
struct step {
    const block* source;
    std::uint64_t pc;
    const call_path* path;
    block_end end;
};

struct trace_plan {
    std::array<step, trace_blocks_limit> steps;
    std::size_t count;
    std::size_t instructions;
};

bool may_write_link(a64::word instruction) {
    // Hints sign and authenticate it; NOP and BTI do not.
    if ((instruction & 0xFFFFF01F) == 0xD503201F)
        return instruction != a64::nop && (instruction & 0xFFFFFF3F) != 0xD503241F;
    return a64::may_name(instruction, a64::link_register);
}

// What the path is at the last of a block's instructions.
const call_path* path_at_end(const call_path* path, const read_instruction* instructions, unsigned count) {
    const bool changed = path->link_intact &&
                         std::any_of(instructions, instructions + count - 1,
                                     [](const read_instruction& each) { return may_write_link(each.word); });
    return changed ? path->link_changed : path;
}

block_end end_of(code_cache& cache, const block& source, std::uint64_t start, const call_path* start_path) {
    const unsigned last = source.instructions - 1u;
    const read_instruction* const instructions = &cache.instructions[source.first_instruction];
    const auto [word, kind] = instructions[last];
    const std::uint64_t pc = start + 4 * last;
    const call_path* const path = path_at_end(start_path, instructions, source.instructions);
    const bool intact = path->link_intact;
    switch (kind) {
    case a64::kind::branch:
        return {ending::jump, a64::named_address(word, kind, pc), path, intact};
    case a64::kind::branch_link:
        return {ending::call, a64::named_address(word, kind, pc), path_of_call(cache.paths, path, pc + 4),
                intact};
    case a64::kind::branch_register:
        if (word == a64::ret() && path->caller)
            return {ending::known_return, path->return_address, path->caller, intact};
        break;
    default:
        if (!a64::ends_block(kind) || kind == a64::kind::trap || kind == a64::kind::unknown_branch)
            return {ending::next, pc + 4, intact && may_write_link(word) ? path->link_changed : path, intact};
    }
    return {ending::other, 0, path, intact};
}

bool is_planned(const trace_plan& plan, std::uint64_t pc, const call_path* path) {
    return std::any_of(plan.steps.begin(), plan.steps.begin() + plan.count,
                       [=](const step& each) { return each.pc == pc && each.path == path; });
}

trace_plan make_plan(code_cache& cache, std::uint64_t pc, const call_path* path) {
    trace_plan plan{};
    while (plan.count < trace_blocks_limit && path) {
        const block* const source = find_block(cache, pc);
        if (!source || !source->copyable || source->copies == copies_limit ||
            plan.instructions + source->instructions > trace_instructions_limit ||
            is_planned(plan, pc, path) || find_block(cache, pc, path))
            break;
        const block_end end = end_of(cache, *source, pc, path);
        plan.steps[plan.count++] = {source, pc, path, end};
        plan.instructions += source->instructions;
        if (end.how == ending::other)
            break;
        pc = end.target;
        path = end.path;
    }
    return plan;
}

void emit_copy(code_cache& cache, const step& at, bool last) {
    begin_fragment(cache.map, cache.out.cursor, at.pc);
    const block_end& end = at.end;
    const read_instruction* const instructions = &cache.instructions[at.source->first_instruction];
    const unsigned count = at.source->instructions;
    // To count executions between a load-exclusive and its store would be an access of memory.
    const bool counts = std::none_of(instructions, instructions + count, [](const read_instruction& each) {
        return is_load_exclusive(each.word);
    });
    cache.exit_path = counts ? end.path : nullptr;
    if (end.how == ending::other || end.how == ending::next) {
        emit_frequent_instructions(cache, instructions, count, at.pc);
        if (last && end.how == ending::next)
            emit_direct_exit(cache, end.target);
        return;
    }
    emit_frequent_instructions(cache, instructions, count - 1, at.pc);
    const a64::word* const code = cache.out.cursor;
    cache.out.effect = nullptr;
    if (end.how == ending::call)
        cache.out.load_constant(a64::link_register, at.pc + 4 * count);
    else if (end.how == ending::known_return)
        emit_known_return(cache, end.target, end.link_intact);
    if (last)
        emit_direct_exit(cache, end.target);
    *add_instructions(cache.map, 1) = extent_of(code, cache.out.cursor, cache.out.effect);
}

std::size_t words_needed(const trace_plan& plan) {
    return plan.instructions * mangled_words_limit + plan.count * 2 * transfer_words_limit;
}

// Copies what follows from the path's start on. Null if nothing can be copied.
const block* build_trace(code_cache& cache, exit_record& from) {
    const trace_plan plan = make_plan(cache, from.target, from.path);
    if (plan.count == 0)
        return nullptr;
    // A flush would take the blocks to be copied with it.
    if (!has_room(cache, words_needed(plan)))
        return nullptr;
    reserve_words(cache, words_needed(plan));
    const std::size_t free_before = free_words(cache);
    const bool in_place = !from.counter && continue_in_place(cache, from);
    const a64::word* const start = cache.out.cursor;
    std::array<block, trace_blocks_limit> copies{};
    for (std::size_t n = 0; n < plan.count; ++n) {
        copies[n].entry = cache.out.cursor;
        emit_copy(cache, plan.steps[n], n + 1 == plan.count);
    }
    place_cold_code(cache, {copies.data(), plan.count});
    __builtin___clear_cache(reinterpret_cast<char*>(const_cast<a64::word*>(start - 1)),
                            reinterpret_cast<char*>(cache.out.cursor));
    copies[0].words = static_cast<std::uint32_t>(free_before - free_words(cache));
    block* first = nullptr;
    block* previous = nullptr;
    for (std::size_t n = 0; n < plan.count; ++n) {
        const step& at = plan.steps[n];
        block* const source = cache.blocks.find({at.pc, nullptr});
        ++source->copies;
        copies[n].start = source->start;
        copies[n].end = source->end;
        block* const added = add_block(cache, {at.pc, at.path}, copies[n]);
        (previous ? previous->together : first) = added;
        previous = added;
        // Indirect branches find the better block.
        if (at.path == outermost_path(cache.paths) &&
            lookup_entry_of(cache.context, at.pc).application_pc == at.pc)
            enter_in_lookup_table(cache, at.pc, *added);
    }
    if (previous != first)
        previous->together = first;
    if (in_place)
        note_in_place(from, *first);
    else
        link_exit(from, *first);
    return first;
}

} // namespace

const block* follow_path(code_cache& cache, exit_record& exit) {
    if (const block* const copy = find_block(cache, exit.target, exit.path)) {
        link_exit(exit, *copy);
        return copy;
    }
    const bool hot = exit.counter || (exit.in_copy && ends_code(cache, exit));
    if (hot)
        if (const block* const copy = build_trace(cache, exit))
            return copy;
    const block* const target = find_block(cache, exit.target);
    if (!target)
        return nullptr;
    if (hot)
        link_exit(exit, *target);
    else
        link_counting(cache, exit, *target, executions_before_copy);
    return target;
}
