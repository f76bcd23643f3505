#include "framework/runtime/block_builder.h"

#include <csignal>
#include <cstring>

#include "framework/aarch64/general_registers.h"
#include "framework/ir/instruction.h"
#include "framework/runtime/block_exits.h"
#include "framework/runtime/client_events.h"
#include "framework/runtime/exclusives.h"
#include "framework/runtime/executable_ranges.h"
#include "framework/runtime/interruptible.h"
#include "framework/runtime/mangle.h"
#include "framework/runtime/signals.h"
#include "framework/runtime/stolen_stretches.h"
#include "framework/runtime/translated_code.h"

namespace {

// An instruction that the client replaces grows a hundredfold; conditional branches at the end still have to
// reach their stubs, and literal loads their literals.
constexpr unsigned block_instructions_limit = 128;

// From so many instructions on, a look at how often a block names X28 pays at its first translation: long
// blocks are few, and more often in loops than others.
constexpr unsigned long_block = 48;

struct block_source {
    unsigned count;
    bool exclusives; // it ends with a stretch between exclusives that is translated as a whole
    read_instruction instructions[block_instructions_limit + exclusive_region_limit];
};

std::uint64_t executable_end(code_cache& cache, std::uint64_t pc) {
    const std::uint64_t version = executable_ranges_version.load();
    if (version != cache.ranges_version || pc < cache.range_start || pc >= cache.range_end) {
        const executable_range range = executable_range_at(pc);
        cache.ranges_version = version;
        cache.range_start = range.start;
        cache.range_end = range.end;
    }
    return cache.range_end;
}

// Notes the pages of the range as translated. False if this thread has noted all of them before: from then on
// it is asked to drop blocks when they change, which empties its own list of pages.
bool note_pages(code_cache& cache, std::uint64_t start, std::uint64_t end) {
    bool any_new = false;
    for (std::uint64_t page = start / source_page_bytes; page <= (end - 1) / source_page_bytes; ++page) {
        std::uint64_t& noted = cache.noted_pages[page % noted_pages_kept];
        if (noted == page && page)
            continue;
        note_translated_page(page);
        noted = page;
        any_new = true;
    }
    return any_new;
}

bool same_page(std::uint64_t a, std::uint64_t b) { return a / source_page_bytes == b / source_page_bytes; }

// Reads application instructions from `pc` to the end of the block; returns the address behind.
std::uint64_t read_block(block_source& source, std::uint64_t pc, std::uint64_t limit) {
    source.count = 0;
    source.exclusives = false;
    const auto read = [&] {
        a64::word word;
        std::memcpy(&word, reinterpret_cast<const void*>(pc), sizeof word);
        pc += 4;
        const a64::kind kind = a64::classify(word);
        return source.instructions[source.count++] = {word, kind};
    };
    while (source.count < block_instructions_limit && pc + 4 <= limit) {
        const auto [word, kind] = read();
        if (a64::ends_block(kind))
            break;
        // Up to the store-exclusive the rest follows, branches or not.
        if (is_load_exclusive(word)) {
            const auto* const code = reinterpret_cast<const a64::word*>(pc - 4);
            const unsigned words = find_exclusive_region(code, (limit - pc) / 4 + 1).words;
            source.exclusives = words != 0;
            for (unsigned n = 1; n < words; ++n)
                read();
            if (words)
                break;
        }
    }
    return pc;
}

void make_list(_instrlist_t* list, const block_source& source, std::uint64_t pc) {
    _instr_t* last = nullptr;
    for (unsigned n = 0; n < source.count; ++n, pc += 4) {
        auto* const raw = reinterpret_cast<std::uint8_t*>(pc);
        auto* const instruction =
            new _instr_t{last, nullptr, raw, raw, nullptr, source.instructions[n].word, true, false};
        (last ? last->next : list->first) = instruction;
        last = instruction;
    }
    list->last = last;
}

// True if the list is still what was read, and each of its instructions stands for itself.
bool is_unchanged(const _instrlist_t* list, const block_source& source, std::uint64_t pc) {
    if (source.exclusives)
        return false;
    const _instr_t* instruction = list->first;
    for (unsigned n = 0; n < source.count; ++n, pc += 4, instruction = instruction->next)
        if (!instruction || instruction->raw != reinterpret_cast<std::uint8_t*>(pc) || !instruction->is_app)
            return false;
    return !instruction;
}

bool is_copied(a64::word instruction) {
    return a64::classify(instruction) == a64::kind::plain &&
           !a64::may_name(instruction, a64::stolen_register);
}

// A bound of the words that so many instructions as they were read, or those of the list, become.
std::size_t words_needed(unsigned instructions) {
    return 2 * transfer_words_limit + instructions * std::size_t{mangled_words_limit};
}
std::size_t words_needed(const _instrlist_t* list) {
    std::size_t words = 2 * transfer_words_limit;
    for (const _instr_t* instruction = list->first; instruction; instruction = instruction->next)
        words += instruction->is_app && !is_copied(instruction->word) ? mangled_words_limit : 1;
    return words;
}

// Emits an application instruction; returns true if the block ends with it.
bool emit_application(code_cache& cache, a64::word instruction, a64::kind kind, std::uint64_t pc) {
    switch (kind) {
    case a64::kind::invalidate_code:
        emit_application_instruction(cache.out, instruction, kind, pc);
        emit_dispatcher_exit(cache, exit_kind::invalidate_code, pc + 4, a64::rd(instruction));
        return true;
    case a64::kind::trap:
    case a64::kind::unknown_branch:
        emit_application_instruction(cache.out, instruction, kind, pc);
        return false;
    default:
        if (!a64::ends_block(kind)) {
            emit_application_instruction(cache.out, instruction, kind, pc);
            return false;
        }
        emit_transfer(cache, instruction, kind, pc);
        return true;
    }
}

// Emits the stretch from the load-exclusive to its store, if it has to be emitted as a whole.
bool emit_exclusives(code_cache& cache, const _instr_t* load) {
    a64::word code[exclusive_region_limit];
    std::size_t count = 0;
    for (const _instr_t* next = load; next && next->raw && count < exclusive_region_limit; next = next->next)
        code[count++] = next->word;
    const exclusive_region region = find_exclusive_region(code, count);
    if (region.words)
        emit_exclusive_region(cache, region, code, reinterpret_cast<std::uint64_t>(load->raw));
    return region.words != 0;
}

// The application instruction that an instruction is, or that it is inserted in place of or ahead of.
const std::uint8_t* application_instruction(const _instr_t* instruction) {
    return instruction->raw ? instruction->raw : instruction->replaced;
}

// Emits what the list has from `instruction` on for one application instruction, and moves on behind it;
// returns true if the block ends with it.
bool emit_one(code_cache& cache, const _instr_t*& instruction) {
    const std::uint8_t* const one = application_instruction(instruction);
    const auto pc = reinterpret_cast<std::uint64_t>(one);
    const a64::word* const code = cache.out.cursor;
    bool ends = false, indivisible = false;
    cache.out.effect = nullptr;
    cache.out.indivisible = false;
    for (; instruction && application_instruction(instruction) == one && !ends;
         instruction = instruction->next) {
        indivisible |= !instruction->raw;
        if (instruction->is_label)
            continue;
        if (instruction->is_app)
            ends = emit_application(cache, instruction->word, a64::classify(instruction->word), pc);
        else
            cache.out.put(instruction->word);
    }
    *add_instructions(cache.map, 1) =
        extent_of(code, cache.out.cursor, cache.out.effect, indivisible || cache.out.indivisible);
    return ends;
}

// Emits the code of the list from the cache's cursor on.
void emit_list(code_cache& cache, const _instrlist_t* list, std::uint64_t end) {
    const _instr_t* instruction = list->first;
    while (instruction) {
        if (instruction->raw && is_load_exclusive(instruction->word) && emit_exclusives(cache, instruction))
            return;
        if (emit_one(cache, instruction))
            return;
    }
    emit_direct_exit(cache, end);
}

// Emits the block as it was read, and keeps its instructions for copies.
void emit_source(code_cache& cache, const block_source& source, block& built, std::uint64_t start,
                 std::uint64_t end) {
    built.copyable = true;
    built.first_instruction = static_cast<std::uint32_t>(cache.instructions.size());
    built.instructions = static_cast<std::uint16_t>(source.count);
    cache.instructions.insert(cache.instructions.end(), source.instructions,
                              source.instructions + source.count);
    (source.count >= long_block ? emit_frequent_instructions : emit_instructions)(cache, source.instructions,
                                                                                  source.count, start);
    const a64::kind last = source.instructions[source.count - 1].kind;
    if (!a64::ends_block(last) || last == a64::kind::trap || last == a64::kind::unknown_branch)
        emit_direct_exit(cache, end);
}

} // namespace

void emit_instructions(code_cache& cache, const read_instruction* instructions, unsigned count,
                       std::uint64_t pc) {
    emitter& out = cache.out;
    code_map::extent* extent = add_instructions(cache.map, count);
    for (unsigned n = 0; n < count; ++n, pc += 4) {
        const auto [word, kind] = instructions[n];
        const a64::word* const code = out.cursor;
        if (kind == a64::kind::plain && !a64::may_name(word, a64::stolen_register)) {
            out.put(word);
            *extent++ = {1};
            continue;
        }
        out.effect = nullptr;
        out.indivisible = false;
        emit_application(cache, word, kind, pc);
        *extent++ = extent_of(code, out.cursor, out.effect, out.indivisible);
    }
}

const block* build_block(thread_context* context, exit_record* from) {
    code_cache& cache = *context->cache;
    const std::uint64_t pc = context->pc;
    if (pc % 4 != 0) {
        raise_fault(context, SIGBUS, BUS_ADRALN, pc);
        return nullptr;
    }
    const std::uint64_t limit = executable_end(cache, pc);
    if (limit < pc + 4) {
        std::uint8_t byte;
        raise_fault(context, SIGSEGV, read_application(byte, pc) ? SEGV_ACCERR : SEGV_MAPERR, pc);
        return nullptr;
    }

    block_source source;
    // The pages are noted before they are read, so that no change of theirs by another thread is missed.
    note_pages(cache, pc, pc + 4);
    std::uint64_t end = read_block(source, pc, limit);
    if (!same_page(pc, end - 1) && note_pages(cache, pc, end))
        end = read_block(source, pc, limit);
    _instrlist_t list{};
    make_list(&list, source, pc);
    raise_block_event(context, reinterpret_cast<void*>(pc), &list, false, false);
    const bool unchanged = is_unchanged(&list, source, pc);

    const unsigned generation = cache.generation;
    reserve_words(cache, unchanged ? words_needed(source.count) : words_needed(&list));
    const bool may_link = from && generation == cache.generation; // a flush has freed the record
    block built{};
    built.start = pc;
    built.end = end;
    const std::size_t free_before = free_words(cache);
    const bool in_place = may_link && continue_in_place(cache, *from);
    if (!in_place) {
        built.landing = cache.out.cursor;
        emit_landing(cache.out);
    }
    built.entry = cache.out.cursor;
    cache.exit_path = nullptr;
    begin_fragment(cache.map, built.entry, pc);
    if (unchanged)
        emit_source(cache, source, built, pc, end);
    else
        emit_list(cache, &list, end);
    clear_instruction_list(&list);
    place_cold_code(cache, {&built, 1});
    // The word ahead belongs to the branch that may have been changed.
    __builtin___clear_cache(reinterpret_cast<char*>(built.entry - 1),
                            reinterpret_cast<char*>(cache.out.cursor));
    built.words = static_cast<std::uint32_t>(free_before - free_words(cache));
    const block* const added = add_block(cache, {pc, nullptr}, built);
    if (in_place)
        note_in_place(*from, *added);
    else if (may_link)
        link_exit(*from, *added);
    return added;
}
