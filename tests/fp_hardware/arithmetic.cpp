#include "sve/fp/fp_arithmetic.h"

#include "sve/fp/fp_compare.h"
#include "sve/fp/fp_divide_sqrt.h"
#include "sve/fp/fp_estimates.h"
#include "sve/fp/fp_multiply_add.h"
#include "tests/fp_hardware/operations.h"

namespace {

using half = std::uint16_t;
using single = std::uint32_t;
using double_bits = std::uint64_t;

// The three formats of an instruction, by the number of its operands.
#define ONE_OPERAND(mnemonic, kernel)                                                                        \
    unary<half, kernel<half>>(mnemonic " half", FP_INSTRUCTION(mnemonic " %h0, %h2")),                       \
        unary<single, kernel<single>>(mnemonic " single", FP_INSTRUCTION(mnemonic " %s0, %s2")),             \
        unary<double_bits, kernel<double_bits>>(mnemonic " double", FP_INSTRUCTION(mnemonic " %d0, %d2"))
#define TWO_OPERANDS(mnemonic, kernel)                                                                       \
    binary<half, kernel<half>>(mnemonic " half", FP_INSTRUCTION(mnemonic " %h0, %h2, %h3")),                 \
        binary<single, kernel<single>>(mnemonic " single", FP_INSTRUCTION(mnemonic " %s0, %s2, %s3")),       \
        binary<double_bits, kernel<double_bits>>(mnemonic " double",                                         \
                                                 FP_INSTRUCTION(mnemonic " %d0, %d2, %d3"))
// The kernel's first operand is the addend, the instruction's last.
#define THREE_OPERANDS(mnemonic, kernel)                                                                     \
    ternary<half, kernel<half>>(mnemonic " half", FP_INSTRUCTION(mnemonic " %h0, %h3, %h4, %h2")),           \
        ternary<single, kernel<single>>(mnemonic " single", FP_INSTRUCTION(mnemonic " %s0, %s3, %s4, %s2")), \
        ternary<double_bits, kernel<double_bits>>(mnemonic " double",                                        \
                                                  FP_INSTRUCTION(mnemonic " %d0, %d3, %d4, %d2"))

template <class Bits> Bits absolute_difference(Bits a, Bits b, FPSCR& fpscr) {
    return FPAbs(FPSub(a, b, fpscr));
}
template <class Bits> Bits multiply_subtract(Bits addend, Bits a, Bits b, FPSCR& fpscr) {
    return FPMulAdd(addend, FPNeg(a), b, fpscr);
}
template <class Bits> Bits negated_multiply_add(Bits addend, Bits a, Bits b, FPSCR& fpscr) {
    return FPMulAdd(FPNeg(addend), FPNeg(a), b, fpscr);
}
template <class Bits> Bits negated_multiply_subtract(Bits addend, Bits a, Bits b, FPSCR& fpscr) {
    return FPMulAdd(FPNeg(addend), a, b, fpscr);
}

// All ones in the element for true.
template <class Bits, auto Kernel> Bits as_mask(Bits a, Bits b, FPSCR& fpscr) {
    return Kernel(a, b, fpscr) ? static_cast<Bits>(~Bits{0}) : Bits{0};
}
template <class Bits> Bits equal_mask(Bits a, Bits b, FPSCR& fpscr) {
    return as_mask<Bits, FPCompareEQ<Bits>>(a, b, fpscr);
}
template <class Bits> Bits greater_equal_mask(Bits a, Bits b, FPSCR& fpscr) {
    return as_mask<Bits, FPCompareGE<Bits>>(a, b, fpscr);
}
template <class Bits> Bits greater_mask(Bits a, Bits b, FPSCR& fpscr) {
    return as_mask<Bits, FPCompareGT<Bits>>(a, b, fpscr);
}
template <class Bits, bool SignalAll> std::uint64_t nzcv(Bits a, Bits b, FPSCR& fpscr) {
    return static_cast<std::uint64_t>(FPCompare(a, b, SignalAll, fpscr)) << 28;
}

} // namespace

std::vector<fp_operation> arithmetic_operations() {
    return {
        TWO_OPERANDS("fadd", FPAdd),
        TWO_OPERANDS("fsub", FPSub),
        TWO_OPERANDS("fmul", FPMul),
        TWO_OPERANDS("fmulx", FPMulX),
        TWO_OPERANDS("fdiv", FPDiv),
        TWO_OPERANDS("fabd", absolute_difference),
        TWO_OPERANDS("fmax", FPMax),
        TWO_OPERANDS("fmin", FPMin),
        TWO_OPERANDS("fmaxnm", FPMaxNum),
        TWO_OPERANDS("fminnm", FPMinNum),
        ONE_OPERAND("fsqrt", FPSqrt),
        THREE_OPERANDS("fmadd", FPMulAdd),
        THREE_OPERANDS("fmsub", multiply_subtract),
        THREE_OPERANDS("fnmadd", negated_multiply_add),
        THREE_OPERANDS("fnmsub", negated_multiply_subtract),
    };
}

std::vector<fp_operation> estimate_operations() {
    std::vector<fp_operation> operations = {
        ONE_OPERAND("frecpe", FPRecipEstimate),
        ONE_OPERAND("frsqrte", FPRSqrtEstimate),
        ONE_OPERAND("frecpx", FPRecpX),
        TWO_OPERANDS("frecps", FPRecipStepFused),
        TWO_OPERANDS("frsqrts", FPRSqrtStepFused),
    };
    constexpr std::uint64_t word = 0xFFFFFFFF;
    operations.push_back({"urecpe", operand_kind::integer, 1, FP_INSTRUCTION("urecpe %0.2s, %2.2s"),
                          [](std::uint64_t a, std::uint64_t, std::uint64_t, FPSCR&) -> std::uint64_t {
                              return UnsignedRecipEstimate(a & word, 32);
                          },
                          word});
    operations.push_back({"ursqrte", operand_kind::integer, 1, FP_INSTRUCTION("ursqrte %0.2s, %2.2s"),
                          [](std::uint64_t a, std::uint64_t, std::uint64_t, FPSCR&) -> std::uint64_t {
                              return UnsignedRSqrtEstimate(a & word, 32);
                          },
                          word});
    return operations;
}

std::vector<fp_operation> comparison_operations() {
    return {
        TWO_OPERANDS("fcmeq", equal_mask),
        TWO_OPERANDS("fcmge", greater_equal_mask),
        TWO_OPERANDS("fcmgt", greater_mask),
        binary<single, nzcv<single, false>>("fcmp single", FP_TO_GENERAL("fcmp %s2, %s3\n\tmrs %0, nzcv")),
        binary<single, nzcv<single, true>>("fcmpe single", FP_TO_GENERAL("fcmpe %s2, %s3\n\tmrs %0, nzcv")),
        binary<double_bits, nzcv<double_bits, false>>("fcmp double",
                                                      FP_TO_GENERAL("fcmp %d2, %d3\n\tmrs %0, nzcv")),
        binary<double_bits, nzcv<double_bits, true>>("fcmpe double",
                                                     FP_TO_GENERAL("fcmpe %d2, %d3\n\tmrs %0, nzcv")),
    };
}
