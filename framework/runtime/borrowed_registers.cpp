#include "framework/runtime/borrowed_registers.h"

#include "framework/aarch64/general_registers.h"

namespace {

using namespace a64;

constexpr unsigned context_register = stolen_register;

void put_constant(emitter& out, unsigned rd, std::uint64_t value) {
    out.put(movz(rd, value & 0xFFFF, 0));
    for (unsigned half = 1; half < 4; ++half)
        if (const unsigned bits = value >> (16 * half) & 0xFFFF)
            out.put(movk(rd, bits, half));
}

unsigned renamed(unsigned number, const borrowed_registers& borrowed) {
    return number == stolen_register ? borrowed.stolen : number;
}

} // namespace

unsigned borrow_register(std::uint32_t& named) {
    for (unsigned candidate = 0; candidate < 30; ++candidate)
        if (!(named >> candidate & 1)) {
            named |= std::uint32_t{1} << candidate;
            return candidate;
        }
    return zero_register;
}

registers_in_place in_place(const borrowed_registers& borrowed) {
    return {static_cast<std::uint8_t>(borrowed.stolen), static_cast<std::uint8_t>(borrowed.thread_pointer)};
}

void emit_borrowing(emitter& out, const borrowed_registers& borrowed) {
    if (borrowed.stolen != zero_register) {
        out.put(str_x(borrowed.stolen, context_register, stolen_slot));
        out.put(ldr_x(borrowed.stolen, context_register, offsetof(thread_context, app_x28)));
    }
    if (borrowed.thread_pointer != zero_register) {
        out.put(str_x(borrowed.thread_pointer, context_register, thread_pointer_slot));
        out.put(ldr_x(borrowed.thread_pointer, context_register, offsetof(thread_context, app_tpidr)));
    }
}

std::vector<word> code_of_return(const borrowed_registers& borrowed) {
    std::vector<word> code;
    if (borrowed.writes_stolen)
        code.push_back(str_x(borrowed.stolen, context_register, offsetof(thread_context, app_x28)));
    if (borrowed.stolen != zero_register)
        code.push_back(ldr_x(borrowed.stolen, context_register, stolen_slot));
    if (borrowed.thread_pointer != zero_register)
        code.push_back(ldr_x(borrowed.thread_pointer, context_register, thread_pointer_slot));
    return code;
}

void emit_with_borrowed(emitter& out, const borrowed_registers& borrowed, word instruction, kind k,
                        std::uint64_t pc) {
    const unsigned destination = renamed(rd(instruction), borrowed);
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
        out.put_effect(move_x(destination, borrowed.thread_pointer));
        return;
    default:
        out.put_effect(
            rename_register(instruction, general_registers(instruction), stolen_register, borrowed.stolen));
    }
}

word rename_lowest(word instruction, const borrowed_registers& borrowed) {
    return (instruction & ~word{31}) | renamed(rd(instruction), borrowed);
}
