// Encoders of the A64 instruction words that the engine emits itself. Register arguments are numbers 0 to 31;
// offsets are in bytes. An operand that does not fit its field is a mistake of ours and fails an assertion.
#pragma once

#include <cassert>
#include <cstdint>

namespace a64 {

using word = std::uint32_t;

inline constexpr unsigned zero_register = 31;
inline constexpr unsigned stack_pointer = 31;
inline constexpr unsigned stolen_register = 28; // points at the thread's context while application code runs

// A value placed at bit `low`, after a check that it fits `width` bits.
constexpr word field(std::uint64_t value, unsigned low, unsigned width) {
    assert(value < (std::uint64_t{1} << width));
    return static_cast<word>(value) << low;
}

// A signed byte offset of a multiple of 4, as `width` bits of words at bit `low`.
constexpr bool offset_fits(std::int64_t offset, unsigned width) {
    const std::int64_t limit = std::int64_t{1} << (width + 1);
    return offset % 4 == 0 && offset >= -limit && offset < limit;
}
constexpr word word_offset(std::int64_t offset, unsigned low, unsigned width) {
    assert(offset_fits(offset, width));
    return (static_cast<word>(offset / 4) & ((word{1} << width) - 1)) << low;
}

// STR and LDR with unsigned scaled offset; the access is 1 << size_log2 bytes, 4 meaning a Q register.
enum class access : unsigned { w = 2, x = 3, q = 4 };

constexpr word load_store_base(access size, bool load) {
    switch (size) {
    case access::w:
        return load ? 0xB9400000u : 0xB9000000u;
    case access::x:
        return load ? 0xF9400000u : 0xF9000000u;
    case access::q:
        return load ? 0x3DC00000u : 0x3D800000u;
    }
    return 0;
}
constexpr bool unsigned_offset_fits(access size, std::int64_t offset) {
    const unsigned scale = static_cast<unsigned>(size);
    return offset >= 0 && (offset & ((1 << scale) - 1)) == 0 && (offset >> scale) < 4096;
}
constexpr word load_store(access size, bool load, unsigned rt, unsigned rn, std::int64_t offset) {
    assert(unsigned_offset_fits(size, offset));
    return load_store_base(size, load) |
           field(static_cast<std::uint64_t>(offset) >> static_cast<unsigned>(size), 10, 12) |
           field(rn, 5, 5) | field(rt, 0, 5);
}
constexpr word str_x(unsigned rt, unsigned rn, std::int64_t offset) {
    return load_store(access::x, false, rt, rn, offset);
}
constexpr word ldr_x(unsigned rt, unsigned rn, std::int64_t offset) {
    return load_store(access::x, true, rt, rn, offset);
}

// STP and LDP of X registers with signed offset, -512 to 504 by 8.
constexpr word pair_x(bool load, unsigned rt1, unsigned rt2, unsigned rn, std::int64_t offset) {
    assert(offset % 8 == 0 && offset >= -512 && offset <= 504);
    return (load ? 0xA9400000u : 0xA9000000u) | ((static_cast<word>(offset / 8) & 0x7F) << 15) |
           field(rt2, 10, 5) | field(rn, 5, 5) | field(rt1, 0, 5);
}
constexpr word stp_x(unsigned rt1, unsigned rt2, unsigned rn, std::int64_t offset) {
    return pair_x(false, rt1, rt2, rn, offset);
}
constexpr word ldp_x(unsigned rt1, unsigned rt2, unsigned rn, std::int64_t offset) {
    return pair_x(true, rt1, rt2, rn, offset);
}

// STP and LDP of Q registers with signed offset, -1024 to 1008 by 16.
constexpr word pair_q(bool load, unsigned rt1, unsigned rt2, unsigned rn, std::int64_t offset) {
    assert(offset % 16 == 0 && offset >= -1024 && offset <= 1008);
    return (load ? 0xAD400000u : 0xAD000000u) | ((static_cast<word>(offset / 16) & 0x7F) << 15) |
           field(rt2, 10, 5) | field(rn, 5, 5) | field(rt1, 0, 5);
}

// LDR of an X register from a literal within 1 MiB; the offset is from the instruction itself.
constexpr word ldr_literal_x(unsigned rt, std::int64_t offset) {
    return 0x58000000u | word_offset(offset, 5, 19) | field(rt, 0, 5);
}

// ADRP; `pages` counts 4 KiB pages from the instruction's own.
constexpr bool adrp_reaches(std::int64_t pages) {
    return pages >= -(std::int64_t{1} << 20) && pages < (std::int64_t{1} << 20);
}
constexpr word adrp(unsigned rd, std::int64_t pages) {
    assert(adrp_reaches(pages));
    return 0x90000000u | field(pages & 3, 29, 2) | field((pages >> 2) & 0x7FFFF, 5, 19) | field(rd, 0, 5);
}

// AND with a mask of `count` ones from bit `low` upwards, wrapping round at bit 63.
constexpr word and_ones(unsigned rd, unsigned rn, unsigned low, unsigned count) {
    assert(count >= 1 && count <= 63 && low < 64);
    return 0x92400000u | field((64 - low) % 64, 16, 6) | field(count - 1, 10, 6) | field(rn, 5, 5) |
           field(rd, 0, 5);
}

// ORR with one bit.
constexpr word orr_bit(unsigned rd, unsigned rn, unsigned bit) {
    assert(bit < 64);
    return 0xB2400000u | field((64 - bit) % 64, 16, 6) | field(rn, 5, 5) | field(rd, 0, 5);
}

// SUB of two registers, the second shifted left in the second form.
constexpr word sub_register(unsigned rd, unsigned rn, unsigned rm) {
    return 0xCB000000u | field(rm, 16, 5) | field(rn, 5, 5) | field(rd, 0, 5);
}
constexpr word sub_shifted(unsigned rd, unsigned rn, unsigned rm, unsigned shift) {
    return 0xCB000000u | field(rm, 16, 5) | field(shift, 10, 6) | field(rn, 5, 5) | field(rd, 0, 5);
}

// ADD and SUB with a 12-bit immediate; register 31 is the stack pointer.
constexpr word add_immediate(unsigned rd, unsigned rn, unsigned immediate) {
    return 0x91000000u | field(immediate, 10, 12) | field(rn, 5, 5) | field(rd, 0, 5);
}
constexpr word sub_immediate(unsigned rd, unsigned rn, unsigned immediate) {
    return 0xD1000000u | field(immediate, 10, 12) | field(rn, 5, 5) | field(rd, 0, 5);
}
constexpr word sub_immediate_w(unsigned rd, unsigned rn, unsigned immediate) {
    return 0x51000000u | field(immediate, 10, 12) | field(rn, 5, 5) | field(rd, 0, 5);
}

// ORR of two registers, shift 0; with rn 31 it is a move. `wide` selects X over W registers.
constexpr word orr_register(bool wide, unsigned rd, unsigned rn, unsigned rm) {
    return (wide ? 0xAA000000u : 0x2A000000u) | field(rm, 16, 5) | field(rn, 5, 5) | field(rd, 0, 5);
}
constexpr word move_x(unsigned rd, unsigned rm) { return orr_register(true, rd, zero_register, rm); }

// MOVZ and MOVK of 16 bits at bit 16 * half of an X register.
constexpr word movz(unsigned rd, unsigned value, unsigned half) {
    return 0xD2800000u | field(half, 21, 2) | field(value, 5, 16) | field(rd, 0, 5);
}
constexpr word movk(unsigned rd, unsigned value, unsigned half) {
    return 0xF2800000u | field(half, 21, 2) | field(value, 5, 16) | field(rd, 0, 5);
}

// MRS and MSR of a system register given as its 16 bits op0:op1:CRn:CRm:op2 (bits 20:5 of the word, with
// op0's high bit, always 1, included).
inline constexpr unsigned sysreg_nzcv = 0xDA10;
inline constexpr unsigned sysreg_fpcr = 0xDA20;
inline constexpr unsigned sysreg_fpsr = 0xDA21;
inline constexpr unsigned sysreg_tpidr_el0 = 0xDE82;

constexpr word mrs(unsigned rt, unsigned system_register) {
    return 0xD5200000u | field(system_register & 0xFFFF, 5, 16) | field(rt, 0, 5);
}
constexpr word msr(unsigned system_register, unsigned rt) {
    return 0xD5000000u | field(system_register & 0xFFFF, 5, 16) | field(rt, 0, 5);
}

// Branches; offsets are from the branch itself.
constexpr word b(std::int64_t offset) { return 0x14000000u | word_offset(offset, 0, 26); }
constexpr word br(unsigned rn) { return 0xD61F0000u | field(rn, 5, 5); }
constexpr word blr(unsigned rn) { return 0xD63F0000u | field(rn, 5, 5); }
inline constexpr unsigned link_register = 30;
constexpr word ret() { return 0xD65F0000u | field(link_register, 5, 5); }
constexpr word cbz_w(unsigned rt, std::int64_t offset) {
    return 0x34000000u | word_offset(offset, 5, 19) | field(rt, 0, 5);
}
constexpr word cbnz_x(unsigned rt, std::int64_t offset) {
    return 0xB5000000u | word_offset(offset, 5, 19) | field(rt, 0, 5);
}

// Authentication of the pointer in `rd`. The modifier is a register, 31 meaning the stack pointer, or zero.
enum class pointer_key : unsigned { a = 0, b = 1 };
constexpr word authenticate(pointer_key key, unsigned rd, unsigned modifier) {
    return 0xDAC11000u | field(static_cast<unsigned>(key), 10, 1) | field(modifier, 5, 5) | field(rd, 0, 5);
}
constexpr word authenticate_zero(pointer_key key, unsigned rd) {
    return 0xDAC133E0u | field(static_cast<unsigned>(key), 10, 1) | field(rd, 0, 5);
}

inline constexpr word nop = 0xD503201Fu;
inline constexpr word undefined = 0x00000000u; // UDF #0, undefined on every processor for ever
constexpr word brk(unsigned immediate) { return 0xD4200000u | field(immediate, 5, 16); }

} // namespace a64
