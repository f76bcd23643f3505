// The bridge between the register file and the library: turns the state into the values that a primitive
// takes, calls it, and turns the results back. One variadic template serves all library opcodes; operand
// descriptors make the arguments, a result descriptor writes the result back.
#pragma once

#include "sve/decode/library_values.h"
#include "sve/decode/operands.h"
#include "sve/decode/placeholder.h"

#include <cstring>
#include <type_traits>

// 128 predicate bytes as 128 bits: bit k is bit 0 of byte k. Bits 128 to 255 are 0.
PredV pack_predicate(const std::uint8_t* row);

// 128 bits as 128 predicate bytes of 0 or 1; the bits above are dropped.
void unpack_predicate(std::uint8_t* row, const PredV& predicate);

// The processor status that a primitive sees: flags, FPSR, FPCR with fpcr_extra or-ed in, FFR, and a vector
// length of 16 units of 64 bits.
void read_context(const cpu_state* state, CpuContext* context);

// Writes status back: flags zero-extended, FPSR, FPCR as the context holds it, and FFR with each byte 0 or 1.
// `old_ffr` is what the state has, which saves unpacking what has not changed.
void write_context(cpu_state* state, const CpuContext* context, const PredV& old_ffr);

namespace operands {

template <int high, int low> struct VectorValue {
    static VecV cut(const cpu_state* state, unsigned int word) {
        VecV value;
        std::memcpy(value.bytes, state->z[bits<high, low>(word)], vector_bytes);
        return value;
    }
};

template <int high, int low> struct PredicateValue {
    static PredV cut(const cpu_state* state, unsigned int word) {
        return pack_predicate(state->p[bits<high, low>(word)]);
    }
};

// A general register whose number 31 reads as zero.
template <int high, int low> struct RegisterValue {
    static std::uint64_t cut(const cpu_state* state, unsigned int word) {
        return read_register(state, R<high, low, doubleword_elements>::cut(state, word));
    }
};

// The low 32 bits of a general register, where the instruction names a W register.
template <int high, int low> struct WordRegisterValue {
    static std::uint32_t cut(const cpu_state* state, unsigned int word) {
        return static_cast<std::uint32_t>(RegisterValue<high, low>::cut(state, word));
    }
};

// A base register whose number 31 is the stack pointer.
struct BaseValue {
    static std::uint64_t cut(const cpu_state* state, unsigned int word) { return state->x[bits<9, 5>(word)]; }
};

// The low element of a vector register.
template <int high, int low, class Element> struct ScalarValue {
    static Element cut(const cpu_state* state, unsigned int word) {
        Element value;
        std::memcpy(&value, state->z[bits<high, low>(word)], sizeof value);
        return value;
    }
};

// Raw unsigned bits of a pattern or of a multiplier less one.
struct PatternValue {
    static unsigned long cut(const cpu_state*, unsigned int word) { return bits<9, 5>(word); }
};
struct MultiplierValue {
    static unsigned long cut(const cpu_state*, unsigned int word) { return bits<19, 16>(word); }
};

// A shifted unsigned immediate; on byte elements a set shift bit leaves nothing of it.
template <int size> struct ShiftedUnsigned8Value {
    static unsigned int cut(const cpu_state* state, unsigned int word) {
        const unsigned int value = ShiftedUnsigned8::cut(state, word);
        return size == byte_elements ? value & 0xFF : value;
    }
};

struct ImmediateFlagValue {
    static int cut(const cpu_state* state, unsigned int word) { return ImmediateFlag::cut(state, word).i1; }
};

// The expanded floating-point immediate in the element's format.
template <int size> struct FpImmediateValue {
    static auto cut(const cpu_state* state, unsigned int word) {
        const aarch64_sve_fp_dup_imm value = FpImmediate::cut(state, word);
        if constexpr (size == halfword_elements)
            return value.half;
        else if constexpr (size == word_elements)
            return value.single_precision;
        else
            return value.double_precision;
    }
};

// The register and the element index of a by-element form: the index takes the bits that the register number
// leaves free, and for halfwords bit 22 above them.
template <int size> struct IndexedVectorValue {
    static VecV cut(const cpu_state* state, unsigned int word) {
        if constexpr (size == doubleword_elements)
            return VectorValue<19, 16>::cut(state, word);
        else
            return VectorValue<18, 16>::cut(state, word);
    }
};
template <int size> struct ElementIndex {
    static int cut(const cpu_state*, unsigned int word) {
        if constexpr (size == halfword_elements)
            return static_cast<int>(bits<22, 22>(word) << 2 | bits<20, 19>(word));
        else if constexpr (size == word_elements)
            return static_cast<int>(bits<20, 19>(word));
        else
            return static_cast<int>(bits<20, 20>(word));
    }
};

// The same for pairs of elements: complex numbers.
template <int size> struct IndexedPairVectorValue {
    static VecV cut(const cpu_state* state, unsigned int word) {
        if constexpr (size == halfword_elements)
            return VectorValue<18, 16>::cut(state, word);
        else
            return VectorValue<19, 16>::cut(state, word);
    }
};
template <int size> struct PairIndex {
    static int cut(const cpu_state*, unsigned int word) {
        if constexpr (size == halfword_elements)
            return static_cast<int>(bits<20, 19>(word));
        else
            return static_cast<int>(bits<20, 20>(word));
    }
};

} // namespace operands

namespace results {

// The first 128 bytes go to the Z row at bits 4:0.
struct Vector {
    static void store(cpu_state* state, unsigned int word, const VecV& value) {
        std::memcpy(state->z[operands::bits<4, 0>(word)], value.bytes, vector_bytes);
    }
};

// To the P row at bits 3:0.
struct Predicate {
    static void store(cpu_state* state, unsigned int word, const PredV& value) {
        unpack_predicate(state->p[operands::bits<3, 0>(word)], value);
    }
};

// To the general register at bits 4:0, extended to 64 bits by the signedness of the primitive's result type.
struct Register {
    template <class Value> static void store(cpu_state* state, unsigned int word, Value value) {
        static_assert(std::is_integral_v<Value>);
        using R = operands::R<4, 0, doubleword_elements>;
        write_register(state, R::cut(state, word), static_cast<std::uint64_t>(value));
    }
};

// To the low 8 bytes of the Z row at bits 4:0, zero-extended, and the rest of the row cleared.
struct Scalar {
    template <class Value> static void store(cpu_state* state, unsigned int word, Value value) {
        static_assert(std::is_unsigned_v<Value>);
        std::uint8_t* row = state->z[operands::bits<4, 0>(word)];
        const std::uint64_t low = value;
        std::memset(row, 0, vector_bytes);
        std::memcpy(row, &low, sizeof low);
    }
};

// Flags or memory only.
struct None {};

} // namespace results

template <class Result, class... Operands> struct library_layout {
    // Calls the primitive with the operands cut from the word and the context last.
    template <class Primitive>
    static aarch64_decode_rc call(Primitive primitive, cpu_state* state, unsigned int word) {
        if constexpr (std::is_same_v<Primitive, placeholder>) {
            return primitive(state, Operands::cut(state, word)...);
        } else {
            CpuContext context;
            read_context(state, &context);
            const PredV old_ffr = context.ffr;
            if constexpr (std::is_same_v<Result, results::None>)
                primitive(Operands::cut(state, word)..., &context);
            else
                Result::store(state, word, primitive(Operands::cut(state, word)..., &context));
            write_context(state, &context, old_ffr);
            return aarch64_emulated;
        }
    }
};
