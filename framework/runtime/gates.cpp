#include "framework/runtime/gates.h"

#include <bit>

namespace {

using namespace a64;

constexpr std::int64_t x_offset(unsigned n) { return offsetof(thread_context, x) + 8 * n; }
constexpr std::int64_t sp_offset = offsetof(thread_context, sp);
constexpr std::int64_t q_offset = offsetof(thread_context, q);
constexpr unsigned context_register = stolen_register;

// Registers that a C++ caller expects unchanged: X19 to X30, D8 to D15.
constexpr int frame_bytes = 12 * 8 + 8 * 8;

constexpr word stp_d(unsigned rt1, unsigned rt2, unsigned rn, std::int64_t offset) {
    return 0x6D000000u | field((offset / 8) & 0x7F, 15, 7) | field(rt2, 10, 5) | field(rn, 5, 5) | rt1;
}
constexpr word ldp_d(unsigned rt1, unsigned rt2, unsigned rn, std::int64_t offset) {
    return stp_d(rt1, rt2, rn, offset) | 0x00400000u;
}

void save_callee_registers(emitter& out) {
    out.put(sub_immediate(stack_pointer, stack_pointer, frame_bytes));
    for (unsigned n = 0; n < 12; n += 2)
        out.put(stp_x(19 + n, 20 + n, stack_pointer, 8 * n));
    for (unsigned n = 0; n < 8; n += 2)
        out.put(stp_d(8 + n, 9 + n, stack_pointer, 96 + 8 * n));
}

void restore_callee_registers(emitter& out) {
    for (unsigned n = 0; n < 12; n += 2)
        out.put(ldp_x(19 + n, 20 + n, stack_pointer, 8 * n));
    for (unsigned n = 0; n < 8; n += 2)
        out.put(ldp_d(8 + n, 9 + n, stack_pointer, 96 + 8 * n));
    out.put(add_immediate(stack_pointer, stack_pointer, frame_bytes));
}

// All X registers but the two that an exit or landing hands over, and X28.
void move_general_registers(emitter& out, bool load) {
    constexpr unsigned pairs[][2] = {{0, 1},   {2, 3},   {4, 5},   {6, 7},   {8, 9},   {10, 11}, {12, 13},
                                     {16, 17}, {18, 19}, {20, 21}, {22, 23}, {24, 25}, {26, 27}, {29, 30}};
    for (const auto& pair : pairs)
        out.put(pair_x(load, pair[0], pair[1], context_register, x_offset(pair[0])));
}

void move_vector_registers(emitter& out, bool load, unsigned base) {
    out.put(add_immediate(base, context_register, q_offset));
    for (unsigned n = 0; n < 32; n += 2)
        out.put(pair_q(load, n, n + 1, base, 16 * n));
}

struct status_register {
    unsigned number;
    std::int64_t offset;
};
constexpr status_register status_registers[] = {{sysreg_nzcv, offsetof(thread_context, nzcv)},
                                                {sysreg_fpcr, offsetof(thread_context, fpcr)},
                                                {sysreg_fpsr, offsetof(thread_context, fpsr)}};

template <typename Function> Function code_at(const word* place) { return std::bit_cast<Function>(place); }

void emit_enter(emitter& out) {
    save_callee_registers(out);
    out.put(move_x(context_register, 0));
    out.put(add_immediate(2, stack_pointer, 0));
    out.put(str_x(2, context_register, offsetof(thread_context, engine_sp)));
    out.put(ldp_x(2, 3, context_register, x_offset(hand_over_register)));
    out.put(stp_x(2, 3, context_register, hand_over_slot));
    move_vector_registers(out, true, 2);
    for (const status_register& status : status_registers) {
        out.put(ldr_x(2, context_register, status.offset));
        out.put(msr(status.number, 2));
    }
    out.put(ldr_x(2, context_register, sp_offset));
    out.put(add_immediate(stack_pointer, 2, 0));
    move_general_registers(out, true);
    out.put(ldr_x(hand_over_register, context_register, offsetof(thread_context, enter_target)));
    out.put(br(hand_over_register));
}

// Goes on in the exit.
void emit_interrupted(emitter& out, gates& result, const exit_record* interruption) {
    result.interrupted_entry = reinterpret_cast<std::uint64_t>(out.cursor);
    out.put(stp_x(hand_over_register, hand_over_register_2, context_register, hand_over_slot));
    result.refusing_landing = reinterpret_cast<std::uint64_t>(out.cursor);
    out.load_constant(hand_over_register, reinterpret_cast<std::uint64_t>(interruption));
}

void emit_exit(emitter& out) {
    move_general_registers(out, false);
    out.put(add_immediate(2, stack_pointer, 0));
    out.put(str_x(2, context_register, sp_offset));
    for (const status_register& status : status_registers) {
        out.put(mrs(2, status.number));
        out.put(str_x(2, context_register, status.offset));
    }
    move_vector_registers(out, false, 2);
    out.put(ldp_x(2, 3, context_register, hand_over_slot));
    out.put(stp_x(2, 3, context_register, x_offset(hand_over_register)));
    out.put(msr(sysreg_fpcr, zero_register)); // C++ code expects round to nearest and no traps
    out.put(ldr_x(2, context_register, offsetof(thread_context, engine_sp)));
    out.put(add_immediate(stack_pointer, 2, 0));
    out.put(move_x(0, hand_over_register));
    restore_callee_registers(out);
    out.put(ret());
}

void emit_client_call(emitter& out, gates& result) {
    constexpr unsigned callee = 11;
    constexpr std::int64_t return_offset = offsetof(thread_context, client_return);
    result.client_call_entry = reinterpret_cast<std::uint64_t>(out.cursor);
    out.put(str_x(link_register, context_register, return_offset));
    out.put(add_immediate(9, stack_pointer, 0));
    out.put(str_x(9, context_register, sp_offset));
    out.put(ldr_x(9, context_register, offsetof(thread_context, engine_sp)));
    out.put(add_immediate(stack_pointer, 9, 0));
    out.put(blr(callee));
    out.put(ldr_x(link_register, context_register, return_offset));
    result.client_call_returning = reinterpret_cast<std::uint64_t>(out.cursor);
    out.put(ldr_x(9, context_register, sp_offset));
    out.put(add_immediate(stack_pointer, 9, 0));
    out.put(str_x(zero_register, context_register, return_offset));
    out.put(ret());
    result.client_call_end = reinterpret_cast<std::uint64_t>(out.cursor);
}

void emit_call_on_stack(emitter& out) {
    out.put(sub_immediate(stack_pointer, stack_pointer, 16));
    out.put(stp_x(19, link_register, stack_pointer, 0));
    out.put(add_immediate(19, stack_pointer, 0));
    out.put(add_immediate(stack_pointer, 1, 0));
    out.put(blr(2));
    out.put(add_immediate(stack_pointer, 19, 0));
    out.put(ldp_x(19, link_register, stack_pointer, 0));
    out.put(add_immediate(stack_pointer, stack_pointer, 16));
    out.put(ret());
}

} // namespace

gates emit_gates(emitter& out, const exit_record* interruption) {
    gates result{};
    result.enter_cache = code_at<decltype(result.enter_cache)>(out.cursor);
    emit_enter(out);
    result.enter_end = code_at<std::uint64_t>(out.cursor);
    emit_interrupted(out, result, interruption);
    result.exit_entry = code_at<std::uint64_t>(out.cursor);
    emit_exit(out);
    emit_client_call(out, result);
    result.call_on_stack = code_at<decltype(result.call_on_stack)>(out.cursor);
    emit_call_on_stack(out);
    out.place_literals();
    return result;
}
