// How an instruction word is cut. Each operand of a layout is a type with one function,
//     static T cut(const cpu_state*, unsigned int word),
// which makes the argument that a handler or a library primitive takes for it. The types here make the
// records and immediates of handlers; immediates serve the library as well.
#pragma once

#include "sve/decode/bitmask_immediate.h"
#include "sve/decode/cpu_state.h"

#include <bit>
#include <cstdint>

namespace operands {

// Bits high down to low of the word, both included.
template <int high, int low> constexpr unsigned int bits(unsigned int word) {
    return (word >> low) & (0xFFFFFFFFu >> (31 - high + low));
}
template <int high, int low> constexpr int signed_bits(unsigned int word) {
    return static_cast<int>(word << (31 - high)) >> (31 - high + low);
}

inline constexpr int no_size = aarch64_z_reg::no_kind;

// A record of four words, made from two 64-bit ones: the compiler builds the registers that pass it with
// fewer instructions so than from its members.
template <class Record> constexpr Record operand_record(unsigned int reg, int kind, int dest_kind) {
    struct halves {
        std::uint64_t low;
        std::uint64_t high;
    };
    const auto both = [](unsigned int low, int high) {
        return low | static_cast<std::uint64_t>(static_cast<unsigned int>(high)) << 32;
    };
    std::uint64_t high = both(static_cast<unsigned int>(dest_kind), dest_kind);
    if (!std::is_constant_evaluated())
        asm("" : "+r"(high)); // GCC would make it in a vector register and move it
    return std::bit_cast<Record>(halves{both(reg, kind), high});
}

// An operand that is only read or only written, and one that is source and destination at once.
template <class Record> constexpr Record plain_record(unsigned int reg, int kind) {
    return operand_record<Record>(reg, kind, Record::no_kind);
}
template <class Record> constexpr Record destructive_record(unsigned int reg, int kind) {
    return operand_record<Record>(reg, Record::no_kind, kind);
}

template <int high, int low, int kind> struct Z {
    static aarch64_z_reg cut(const cpu_state*, unsigned int word) {
        return plain_record<aarch64_z_reg>(bits<high, low>(word), kind);
    }
};

// Source and destination at once.
template <int kind> struct DestructiveZ {
    static aarch64_z_reg cut(const cpu_state*, unsigned int word) {
        return destructive_record<aarch64_z_reg>(bits<4, 0>(word), kind);
    }
};

// The number of a SIMD&FP destination.
struct V {
    static unsigned int cut(const cpu_state*, unsigned int word) { return bits<4, 0>(word); }
};

template <int high, int low, int kind> struct P {
    static aarch64_p_reg cut(const cpu_state*, unsigned int word) {
        return plain_record<aarch64_p_reg>(bits<high, low>(word), kind);
    }
};

template <int kind> struct DestructiveP {
    static aarch64_p_reg cut(const cpu_state*, unsigned int word) {
        return destructive_record<aarch64_p_reg>(bits<3, 0>(word), kind);
    }
};

template <int high, int low, int kind> struct R {
    static aarch64_i_reg cut(const cpu_state*, unsigned int word) {
        return plain_record<aarch64_i_reg>(bits<high, low>(word), kind);
    }
};

template <int kind> struct DestructiveR {
    static aarch64_i_reg cut(const cpu_state*, unsigned int word) {
        return destructive_record<aarch64_i_reg>(bits<4, 0>(word), kind);
    }
};

// Register 31 is the stack pointer.
template <int high, int low, int kind> struct RSp {
    static aarch64_i_rsp_reg cut(const cpu_state*, unsigned int word) {
        return std::bit_cast<aarch64_i_rsp_reg>(bits<high, low>(word) | std::uint64_t{kind} << 32);
    }
};

template <int high, int low> struct Signed {
    static int cut(const cpu_state*, unsigned int word) { return signed_bits<high, low>(word); }
};
template <int high, int low> struct Unsigned {
    static unsigned int cut(const cpu_state*, unsigned int word) { return bits<high, low>(word); }
};

// The predicate pattern of a count, and its multiplier of 1 to 16.
struct Pattern {
    static int cut(const cpu_state*, unsigned int word) { return static_cast<int>(bits<9, 5>(word)); }
};
struct Multiplier {
    static int cut(const cpu_state*, unsigned int word) { return static_cast<int>(bits<19, 16>(word)) + 1; }
};

// An 8-bit immediate that bit 13 shifts left by 8, for every element size.
struct ShiftedUnsigned8 {
    static unsigned int cut(const cpu_state*, unsigned int word) {
        return bits<12, 5>(word) << (bits<13, 13>(word) * 8);
    }
};
struct ShiftedSigned8 {
    static int cut(const cpu_state*, unsigned int word) {
        return static_cast<int>(static_cast<unsigned int>(signed_bits<12, 5>(word))
                                << (bits<13, 13>(word) * 8));
    }
};

// A left shift of 0 to width - 1 bits; the field grows with the element, bit 22 being the highest of a
// doubleword's.
template <int kind, int low> struct LeftShift {
    static unsigned int cut(const cpu_state*, unsigned int word) {
        if constexpr (kind == doubleword_elements)
            return bits<22, 22>(word) << 5 | bits<low + 4, low>(word);
        else
            return bits<low + 2 + kind, low>(word);
    }
};

// A right shift of 1 to width bits, encoded as the width minus the shift.
template <int kind, int low> struct RightShift {
    static unsigned int cut(const cpu_state* state, unsigned int word) {
        return (8u << kind) - LeftShift<kind, low>::cut(state, word);
    }
};

struct Bitmask {
    static aarch64_sve_logical64_imm cut(const cpu_state*, unsigned int word) {
        return {decode_bitmask_immediate(word)};
    }
};

// The element index of an indexed DUP: bits 23:22 above the bits of 20:16 that the element size leaves free.
template <int kind> struct DupIndex {
    static unsigned int cut(const cpu_state*, unsigned int word) {
        if constexpr (kind == quadword_elements)
            return bits<23, 22>(word);
        else
            return bits<23, 22>(word) << (4 - kind) | bits<20, 17 + kind>(word);
    }
};

// The byte position of EXT.
struct BytePosition {
    static unsigned int cut(const cpu_state*, unsigned int word) {
        return bits<20, 16>(word) << 3 | bits<12, 10>(word);
    }
};

// The vector count of a register fill or spill.
struct Signed9 {
    static int cut(const cpu_state*, unsigned int word) {
        return signed_bits<21, 16>(word) * 8 + static_cast<int>(bits<12, 10>(word));
    }
};

struct ImmediateFlag {
    static aarch64_sve_fp_arith_imm cut(const cpu_state*, unsigned int word) {
        return {static_cast<int>(bits<5, 5>(word))};
    }
};

// An 8-bit floating-point immediate: sign, exponent and fraction expanded as the architecture's FP moves have
// it.
struct FpImmediate {
    static aarch64_sve_fp_dup_imm cut(const cpu_state*, unsigned int word) {
        const unsigned int sign = bits<12, 12>(word);
        const unsigned int high = bits<11, 11>(word);
        const unsigned int exponent = bits<10, 9>(word);
        const unsigned int fraction = bits<8, 5>(word);
        const std::uint32_t single_precision =
            sign << 31 | (high ^ 1) << 30 | (high ? 0x3E000000u : 0u) | exponent << 23 | fraction << 19;
        const auto half = static_cast<std::uint16_t>(sign << 15 | (high ^ 1) << 14 | (high ? 0x3000u : 0u) |
                                                     exponent << 10 | fraction << 6);
        const double wide = std::bit_cast<float>(single_precision); // exact
        return {half, single_precision, std::bit_cast<std::uint64_t>(wide)};
    }
};

} // namespace operands
