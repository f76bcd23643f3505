// The emulated machine: one thread's registers at a vector length of 1024 bits, and the operand records
// through which opcode stubs name registers to handlers.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>

static_assert(std::endian::native == std::endian::little && sizeof(void*) == 8,
              "the register file is laid out for little-endian 64-bit hosts");

inline constexpr int vector_bytes = 128;

// A predicate row holds one byte for each byte of a vector. Bit 0 of byte k governs vector byte k; an element
// of E bytes at index i is active when bit 0 of byte i * E is set, and its other bytes are not looked at.
struct cpu_state {
    std::uint64_t x[32]; // X0 to X30, then the stack pointer
    std::uint32_t* pc;   // the application instruction under emulation
    std::uint64_t nzcv;  // as MRS gives it: N, Z, C, V in bits 31 to 28
    std::uint32_t fpsr;
    std::uint32_t fpcr;
    std::uint32_t fpcr_extra; // or-ed into the FPCR that the library sees; 0 throughout
    alignas(8) std::uint8_t z[32][vector_bytes];
    std::uint8_t p[16][vector_bytes];
    std::uint8_t ffr[vector_bytes]; // shaped as a seventeenth predicate row
    std::uint64_t instr_word;       // the word, as stored by the stubs that call a handler
};

static_assert(offsetof(cpu_state, z) % 16 == 0, "inserted code stores Q registers with scaled offsets");
static_assert(offsetof(cpu_state, ffr) == offsetof(cpu_state, p) + sizeof(cpu_state::p));

enum aarch64_decode_rc : std::uint32_t {
    aarch64_emulated = 0,
    aarch64_not_emulated = 2,
};

// Element-size codes of vector operands, and kind codes of predicate and general-register operands. An
// operand that is only read or only written has its code in `kind` and no-kind in the others; an operand that
// is both source and destination has no-kind in `kind` and its code in `dest_kind` and `dest_kind2`.
enum element_size_code : int {
    byte_elements,
    halfword_elements,
    word_elements,
    doubleword_elements,
    quadword_elements
};

struct aarch64_z_reg {
    static constexpr int no_kind = 5;

    int reg;
    int kind;
    int dest_kind;
    int dest_kind2;

    static const char* const zname[32];
    static const char* const zname_b[32];
    static const char* const zname_h[32];
    static const char* const zname_s[32];
    static const char* const zname_d[32];
};

struct aarch64_p_reg {
    static constexpr int merging = 4;
    static constexpr int zeroing = 5;
    static constexpr int plain = 6;
    static constexpr int no_kind = 7;

    int reg;
    int kind;
    int dest_kind;
    int dest_kind2;

    static const char* const pname[16];
    static const char* const pname_m[16];
    static const char* const pname_z[16];
    static const char* const pname_b[16];
    static const char* const pname_h[16];
    static const char* const pname_s[16];
    static const char* const pname_d[16];
};

// A general register as data or index: number 31 reads as zero and is not written.
struct aarch64_i_reg {
    static constexpr int no_kind = 4;

    int reg;
    int kind;
    int dest_kind;
    int dest_kind2;

    static const char* const wname[32];
    static const char* const xname[32];
};

// A general register as base or scalar source: number 31 is the stack pointer.
struct aarch64_i_rsp_reg {
    int reg;
    int kind;

    static const char* const wname[32];
    static const char* const xname[32];
};

// The 64-bit mask that a bitmask immediate stands for, already expanded.
struct aarch64_sve_logical64_imm {
    std::uint64_t value;
};

// The i1 bit of a floating-point immediate form: it selects one of two constants that depend on the
// operation.
struct aarch64_sve_fp_arith_imm {
    int i1;
};

// An expanded 8-bit floating-point immediate in the three formats.
struct aarch64_sve_fp_dup_imm {
    std::uint16_t half;
    std::uint32_t single_precision;
    std::uint64_t double_precision;
};

// Reads and writes of general registers, 64 bits, by the register-31 rule of each record.
inline std::uint64_t read_register(const cpu_state* state, aarch64_i_reg r) {
    return r.reg == 31 ? 0 : state->x[r.reg];
}
inline std::uint64_t read_register(const cpu_state* state, aarch64_i_rsp_reg r) { return state->x[r.reg]; }

inline void write_register(cpu_state* state, aarch64_i_reg r, std::uint64_t value) {
    if (r.reg != 31)
        state->x[r.reg] = value;
}
inline void write_register(cpu_state* state, aarch64_i_rsp_reg r, std::uint64_t value) {
    state->x[r.reg] = value;
}
