#include "framework/runtime/block_builder.h"

#include <csignal>
#include <utility>

#include "framework/ir/instruction.h"
#include "framework/runtime/block_exits.h"
#include "framework/runtime/client_events.h"
#include "framework/runtime/exclusives.h"
#include "framework/runtime/executable_ranges.h"
#include "framework/runtime/interruptible.h"
#include "framework/runtime/mangle.h"
#include "framework/runtime/signals.h"
#include "framework/runtime/translated_pages.h"

namespace {

// An instruction that the client replaces grows a hundredfold; conditional branches at the end still have to
// reach their stubs, and literal loads their literals.
constexpr unsigned block_instructions_limit = 128;

// Reads application instructions from `pc` to the end of the block into the list; returns the address behind.
std::uint64_t read_block(_instrlist_t* list, std::uint64_t pc) {
    const std::uint64_t limit = executable_until(pc);
    for (unsigned count = 0; count < block_instructions_limit && pc + 4 <= limit; ++count) {
        _instr_t* const instruction = instruction_from_application(reinterpret_cast<std::uint8_t*>(pc));
        instrlist_append(list, instruction);
        // Up to the store-exclusive the rest follows, branches or not.
        if (is_load_exclusive(instruction->word)) {
            const auto* const code = reinterpret_cast<const a64::word*>(pc);
            const std::size_t words = find_exclusive_region(code, (limit - pc) / 4).words;
            for (std::size_t n = 1; n < words; ++n, pc += 4)
                instrlist_append(list, instruction_from_application(reinterpret_cast<std::uint8_t*>(pc + 4)));
            if (words)
                return pc + 4;
        }
        pc += 4;
        if (a64::ends_block(a64::classify(instruction->word)))
            break;
    }
    return pc;
}

// A bound of the words that the list becomes.
std::size_t words_needed(const _instrlist_t* list) {
    std::size_t words = 2 * transfer_words_limit;
    for (const _instr_t* instruction = list->first; instruction; instruction = instruction->next)
        words += instruction->is_app ? mangled_words_limit : 1;
    return words;
}

// Emits an application instruction; returns true if the block ends with it.
bool emit_application(code_cache& cache, a64::word instruction, std::uint64_t pc) {
    const a64::kind kind = a64::classify(instruction);
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
    for (; instruction && application_instruction(instruction) == one && !ends;
         instruction = instruction->next) {
        indivisible |= !instruction->raw;
        if (instruction->is_label)
            continue;
        if (instruction->is_app)
            ends = emit_application(cache, instruction->word, pc);
        else
            cache.out.put(instruction->word);
    }
    add_instruction(cache.map, code, cache.out.cursor, cache.out.effect, indivisible);
    return ends;
}

// Emits the code of the list from the cache's cursor on.
void emit_code(code_cache& cache, const _instrlist_t* list, std::uint64_t start, std::uint64_t end) {
    begin_fragment(cache.map, cache.out.cursor, start);
    const _instr_t* instruction = list->first;
    while (instruction) {
        if (instruction->raw && is_load_exclusive(instruction->word) && emit_exclusives(cache, instruction))
            return;
        if (emit_one(cache, instruction))
            return;
    }
    emit_direct_exit(cache, end);
}

} // namespace

const block* build_block(thread_context* context, exit_record* from) {
    code_cache& cache = *context->cache;
    const std::uint64_t pc = context->pc;
    if (pc % 4 != 0) {
        raise_fault(context, SIGBUS, BUS_ADRALN, pc);
        return nullptr;
    }
    if (executable_until(pc) < pc + 4) {
        std::uint8_t byte;
        raise_fault(context, SIGSEGV, read_application(byte, pc) ? SEGV_ACCERR : SEGV_MAPERR, pc);
        return nullptr;
    }

    _instrlist_t* list = create_instruction_list();
    // The pages are noted before they are read, so that no change of theirs by another thread is missed.
    note_translated_pages(pc, pc + 4);
    std::uint64_t end = read_block(list, pc);
    if (note_translated_pages(pc, end)) {
        destroy_instruction_list(std::exchange(list, create_instruction_list()));
        end = read_block(list, pc);
    }
    raise_block_event(context, reinterpret_cast<void*>(pc), list, false, false);

    const unsigned generation = cache.generation;
    reserve_words(cache, words_needed(list));
    const bool may_link = from && generation == cache.generation; // a flush has freed the record
    block built{};
    const bool in_place = may_link && continue_in_place(cache, *from);
    if (!in_place) {
        built.landing = cache.out.cursor;
        emit_landing(cache.out);
    }
    built.entry = cache.out.cursor;
    emit_code(cache, list, pc, end);
    destroy_instruction_list(list);
    built.landing = place_cold_code(cache, built);
    // The word ahead belongs to the branch that may have been changed.
    __builtin___clear_cache(reinterpret_cast<char*>(built.entry - 1),
                            reinterpret_cast<char*>(cache.out.cursor));
    if (may_link && !in_place)
        link_exit(*from, built);
    return &cache.blocks.emplace(pc, built).first->second;
}
