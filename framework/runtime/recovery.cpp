#include "framework/runtime/recovery.h"

#include <cstring>

#include "framework/aarch64/classify.h"
#include "framework/runtime/borrowed_registers.h"

namespace {

using namespace a64;

constexpr std::int64_t first_slot = scratch_slot(0);
constexpr std::int64_t end_of_slots = first_slot + static_cast<std::int64_t>(sizeof(thread_context::scratch));

// LDR and STR of an X register, and LDP and STP of two, at an offset from the context register.
struct context_access {
    bool load;
    bool pair;
    unsigned first, second;
    std::int64_t offset;
};

bool decode_context_access(word instruction, context_access& access) {
    if (rn(instruction) != stolen_register)
        return false;
    const auto signed_pair_offset = [](word pair) {
        return (static_cast<std::int64_t>((pair >> 15) & 0x7F) ^ 0x40) - 0x40;
    };
    switch (instruction & 0xFFC00000) {
    case 0xF9000000:
    case 0xF9400000:
        access = {(instruction & 0x00400000) != 0, false, rd(instruction), 0,
                  static_cast<std::int64_t>((instruction >> 10) & 0xFFF) * 8};
        return true;
    case 0xA9000000:
    case 0xA9400000:
        access = {(instruction & 0x00400000) != 0, true, rd(instruction), (instruction >> 10) & 31,
                  signed_pair_offset(instruction) * 8};
        return true;
    default:
        return false;
    }
}

std::uint64_t& context_field(const code_cache& cache, std::int64_t offset) {
    return *reinterpret_cast<std::uint64_t*>(reinterpret_cast<std::uint8_t*>(cache.context) + offset);
}

void carry_out(const code_cache& cache, const context_access& access, std::uint64_t* x) {
    for (unsigned n = 0; n < (access.pair ? 2u : 1u); ++n) {
        const unsigned number = n == 0 ? access.first : access.second;
        std::uint64_t& field = context_field(cache, access.offset + 8 * n);
        if (access.load && number != zero_register)
            x[number] = field;
        else if (!access.load)
            field = number == zero_register ? 0 : x[number];
    }
}

// Takes back the registers that the words before the PC have put into scratch slots.
void undo(const code_cache& cache, const code_place& place, interrupted_machine& machine) {
    const auto* const here = reinterpret_cast<const word*>(machine.pc);
    for (const word* instruction = place.start; instruction < here; ++instruction) {
        context_access access;
        if (!decode_context_access(*instruction, access) || access.load || access.offset < first_slot ||
            access.offset >= end_of_slots)
            continue;
        access.load = true;
        carry_out(cache, access, machine.x);
    }
}

// Takes back what stands in registers in place of the context.
void undo_registers_in_place(const code_cache& cache, const registers_in_place& in_place, std::uint64_t* x) {
    if (in_place.stolen != zero_register) {
        cache.context->app_x28 = x[in_place.stolen];
        x[in_place.stolen] = context_field(cache, stolen_slot);
    }
    if (in_place.thread_pointer != zero_register)
        x[in_place.thread_pointer] = context_field(cache, thread_pointer_slot);
}

// Carries out one of the words that may stand behind an effect, or of a landing or stub. False if the word is
// none of them.
bool step(const code_cache& cache, interrupted_machine& machine) {
    const word instruction = *reinterpret_cast<const word*>(machine.pc);
    context_access access;
    if (classify(instruction) == kind::branch) {
        machine.pc = named_address(instruction, kind::branch, machine.pc);
        return true;
    }
    if ((instruction & 0xFFFFFC1F) == br(0)) {
        machine.pc = machine.x[rn(instruction)];
        return true;
    }
    if (decode_context_access(instruction, access))
        carry_out(cache, access, machine.x);
    else if ((instruction & 0xFF000000) == ldr_literal_x(0, 0))
        std::memcpy(&machine.x[rd(instruction)],
                    reinterpret_cast<const void*>(named_address(instruction, kind::load_literal, machine.pc)),
                    sizeof *machine.x);
    else if ((instruction & 0xFFE0FFE0) == move_x(0, 0))
        machine.x[rd(instruction)] = machine.x[(instruction >> 16) & 31];
    else
        return false;
    machine.pc += 4;
    return true;
}

constexpr word landing = ldp_x(hand_over_register, hand_over_register_2, stolen_register, hand_over_slot);

// The application address of the block with that landing.
std::optional<std::uint64_t> block_of_landing(const code_cache& cache, const word* place) {
    if (*place++ != landing)
        return std::nullopt;
    if (classify(*place) == kind::branch && !find_place(cache.map, place))
        place = reinterpret_cast<const word*>(
            named_address(*place, kind::branch, reinterpret_cast<std::uint64_t>(place)));
    const std::optional<code_place> entry = find_place(cache.map, place);
    return entry && entry->start == place ? std::optional(entry->pc) : std::nullopt;
}

// A stub whose next word can't be carried out here comes to the dispatcher, or jumps to a landing.
recovery run_stub(const code_cache& cache, const word* here) {
    constexpr unsigned longest = 16;
    for (unsigned n = 0; n < longest && classify(here[n]) != kind::branch_register; ++n) {
        if (classify(here[n]) != kind::branch)
            continue;
        const auto place = reinterpret_cast<std::uint64_t>(&here[n]);
        const auto* const target = reinterpret_cast<const word*>(named_address(here[n], kind::branch, place));
        if (const std::optional<std::uint64_t> pc = block_of_landing(cache, target))
            return {recovery::outcome::running, *pc, const_cast<word*>(&here[n]), true};
        break;
    }
    return {recovery::outcome::leaving, 0, nullptr, false};
}

} // namespace

recovery recover_state(const code_cache& cache, interrupted_machine& machine) {
    for (;;) {
        const auto* const here = reinterpret_cast<const word*>(machine.pc);
        if (here < cache.start || here >= cache.limit)
            return {recovery::outcome::leaving, 0, nullptr, false};
        const std::optional<code_place> place = find_place(cache.map, here);
        if (!place) {
            if (!step(cache, machine))
                return run_stub(cache, here);
            continue;
        }
        if (here == place->start || (!place->indivisible && here <= place->effect)) {
            undo(cache, *place, machine);
            undo_registers_in_place(cache, place->in_place, machine.x);
            return {recovery::outcome::complete, place->pc, nullptr, false};
        }
        if (place->indivisible || !step(cache, machine))
            return {recovery::outcome::running, place->next_pc, const_cast<word*>(place->end), false};
    }
}
