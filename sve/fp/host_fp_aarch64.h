// The operations of host_fp.h as instructions of an AArch64 processor.
//
// To a compiler floating-point arithmetic is a pure function of its operands: it may fold, fuse, merge, hoist
// and vectorise it, and compute it where it isn't needed. Here each operation counts for the exceptions that
// it raises, and runs under a rounding mode that the compiler knows nothing of. So each is a volatile
// assembler statement. The compiler executes these as often as the program says and under the same
// conditions, in the program's order among each other, the reading of FPSR included, and doesn't know what
// they compute. Elements are unsigned integers, so that it has no arithmetic of its own to add.
#pragma once

#include "sve/decode/cpu_state.h"

#include <type_traits>

// A member function that executes the instruction: its operands as words and as doublewords, the function's
// parameters, and the inputs of the assembler statement.
#define PROCESSOR_FP(instruction, word_operands, doubleword_operands, parameters, ...)                       \
    template <class Bits> [[gnu::always_inline]] Bits instruction parameters const {                         \
        static_assert(std::is_same_v<Bits, std::uint32_t> || std::is_same_v<Bits, std::uint64_t>);           \
        Bits result;                                                                                         \
        if constexpr (sizeof(Bits) == 4)                                                                     \
            asm volatile(#instruction " " word_operands : "=w"(result) : __VA_ARGS__);                       \
        else                                                                                                 \
            asm volatile(#instruction " " doubleword_operands : "=w"(result) : __VA_ARGS__);                 \
        return result;                                                                                       \
    }

// The same of vectors of either.
#define PROCESSOR_FP_VECTOR(name, word_text, doubleword_text, parameters, ...)                               \
    template <class Vector>                                                                                  \
        requires(sizeof(Vector) == 16)                                                                       \
    [[gnu::always_inline]] Vector name parameters const {                                                    \
        Vector result;                                                                                       \
        if constexpr (sizeof(result[0]) == 4)                                                                \
            asm volatile(word_text : "=w"(result) : __VA_ARGS__);                                            \
        else                                                                                                 \
            asm volatile(doubleword_text : "=w"(result) : __VA_ARGS__);                                      \
        return result;                                                                                       \
    }
#define PROCESSOR_FP_1(instruction)                                                                          \
    PROCESSOR_FP(instruction, "%s0, %s1", "%d0, %d1", (Bits a), "w"(a))                                      \
    PROCESSOR_FP_VECTOR(instruction, #instruction " %0.4s, %1.4s", #instruction " %0.2d, %1.2d", (Vector a), \
                        "w"(a))
#define PROCESSOR_FP_2(instruction)                                                                          \
    PROCESSOR_FP(instruction, "%s0, %s1, %s2", "%d0, %d1, %d2", (Bits a, Bits b), "w"(a), "w"(b))            \
    PROCESSOR_FP_VECTOR(instruction, #instruction " %0.4s, %1.4s, %2.4s",                                    \
                        #instruction " %0.2d, %1.2d, %2.2d", (Vector a, Vector b), "w"(a), "w"(b))

// A member function that executes the comparison and tests the condition.
#define PROCESSOR_FP_COMPARE(name, instruction, condition)                                                   \
    template <class Bits> [[gnu::always_inline]] bool name(Bits a, Bits b) const {                           \
        unsigned int holds;                                                                                  \
        if constexpr (sizeof(Bits) == 4)                                                                     \
            asm volatile(instruction " %s1, %s2\n\tcset %w0, " condition                                     \
                         : "=r"(holds)                                                                       \
                         : "w"(a), "w"(b)                                                                    \
                         : "cc");                                                                            \
        else                                                                                                 \
            asm volatile(instruction " %d1, %d2\n\tcset %w0, " condition                                     \
                         : "=r"(holds)                                                                       \
                         : "w"(a), "w"(b)                                                                    \
                         : "cc");                                                                            \
        return holds != 0;                                                                                   \
    }

class processor_fp {
public:
    explicit processor_fp(cpu_state*) {}

    // Whether the operations take vectors of 16 bytes as well.
    static constexpr bool takes_vectors = true;

    PROCESSOR_FP_2(fadd)
    PROCESSOR_FP_2(fsub)
    PROCESSOR_FP_2(fmul)
    PROCESSOR_FP_2(fdiv)
    PROCESSOR_FP_2(fmax)
    PROCESSOR_FP_2(fmaxnm)
    PROCESSOR_FP_2(fminnm)
    PROCESSOR_FP_2(frecps)
    PROCESSOR_FP_1(fsqrt)
    PROCESSOR_FP_1(frinta)
    PROCESSOR_FP_1(frecpe)
    PROCESSOR_FP(fnmadd, "%s0, %s1, %s2, %s3", "%d0, %d1, %d2, %d3", (Bits addend, Bits a, Bits b), "w"(a),
                 "w"(b), "w"(addend))
    // fneg is not one of the operations that raise anything.
    template <class Vector>
        requires(sizeof(Vector) == 16)
    [[gnu::always_inline]] Vector fnmadd(Vector addend, Vector a, Vector b) const {
        if constexpr (sizeof(addend[0]) == 4)
            asm volatile("fneg %0.4s, %0.4s\n\tfmls %0.4s, %1.4s, %2.4s" : "+&w"(addend) : "w"(a), "w"(b));
        else
            asm volatile("fneg %0.2d, %0.2d\n\tfmls %0.2d, %1.2d, %2.2d" : "+&w"(addend) : "w"(a), "w"(b));
        return addend;
    }
    PROCESSOR_FP(scvtf, "%s0, %x1", "%d0, %x1", (std::int64_t value), "r"(value))
    PROCESSOR_FP(ucvtf, "%s0, %x1", "%d0, %x1", (std::uint64_t value), "r"(value))

    // False for unordered operands, but for the last.
    PROCESSOR_FP_COMPARE(fcmeq, "fcmp", "eq")
    PROCESSOR_FP_COMPARE(fcmge, "fcmpe", "ge")
    PROCESSOR_FP_COMPARE(fcmgt, "fcmpe", "gt")
    PROCESSOR_FP_COMPARE(fcmuo, "fcmp", "vs")

    // All bits of an element set where it holds.
    PROCESSOR_FP_VECTOR(fcmeq, "fcmeq %0.4s, %1.4s, %2.4s", "fcmeq %0.2d, %1.2d, %2.2d", (Vector a, Vector b),
                        "w"(a), "w"(b))
    PROCESSOR_FP_VECTOR(fcmge, "fcmge %0.4s, %1.4s, %2.4s", "fcmge %0.2d, %1.2d, %2.2d", (Vector a, Vector b),
                        "w"(a), "w"(b))
    PROCESSOR_FP_VECTOR(fcmgt, "fcmgt %0.4s, %1.4s, %2.4s", "fcmgt %0.2d, %1.2d, %2.2d", (Vector a, Vector b),
                        "w"(a), "w"(b))
    template <class Vector>
        requires(sizeof(Vector) == 16)
    [[gnu::always_inline]] Vector fcmuo(Vector a, Vector b) const {
        return ~(fcmeq(a, a) & fcmeq(b, b)); // only a NaN is unequal to itself
    }

    static void read_status(cpu_state* state) {
        std::uint64_t fpsr;
        asm volatile("mrs %0, fpsr" : "=r"(fpsr));
        state->fpsr = static_cast<std::uint32_t>(fpsr);
    }
};

#undef PROCESSOR_FP
#undef PROCESSOR_FP_1
#undef PROCESSOR_FP_2
#undef PROCESSOR_FP_COMPARE
#undef PROCESSOR_FP_VECTOR
