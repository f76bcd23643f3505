// The instructions that are compared with the kernels.
#pragma once

#include "sve/fp/fp_control.h"
#include "tests/fp_hardware/processor.h"

#include <cstdint>
#include <vector>

enum class operand_kind : std::uint8_t { half, single, double_precision, integer };

struct fp_operation {
    const char* name;
    operand_kind kind;
    int operands;
    processor_function processor;
    std::uint64_t (*kernel)(std::uint64_t a, std::uint64_t b, std::uint64_t c, FPSCR& fpscr);
    // The bits of the result register that the instruction defines.
    std::uint64_t result_mask;
    // Control bits that the instruction doesn't look at while the kernel does.
    std::uint32_t not_for_kernel = 0;
};

// Instructions of the base architecture, and, where the processor has them, of SVE.
std::vector<fp_operation> arithmetic_operations();
std::vector<fp_operation> estimate_operations();
std::vector<fp_operation> comparison_operations();
std::vector<fp_operation> conversion_operations();
std::vector<fp_operation> vector_operations();

template <class Bits>
inline constexpr operand_kind kind_of = sizeof(Bits) == 2   ? operand_kind::half
                                        : sizeof(Bits) == 4 ? operand_kind::single
                                                            : operand_kind::double_precision;

// Rows made from a kernel of one, two or three operands of a format.
template <class Bits, auto Kernel>
constexpr fp_operation unary(const char* name, processor_function processor) {
    return {name,
            kind_of<Bits>,
            1,
            processor,
            [](std::uint64_t a, std::uint64_t, std::uint64_t, FPSCR& fpscr) {
                return std::uint64_t(Kernel(static_cast<Bits>(a), fpscr));
            },
            ~std::uint64_t{0}};
}
template <class Bits, auto Kernel>
constexpr fp_operation binary(const char* name, processor_function processor) {
    return {name,
            kind_of<Bits>,
            2,
            processor,
            [](std::uint64_t a, std::uint64_t b, std::uint64_t, FPSCR& fpscr) {
                return std::uint64_t(Kernel(static_cast<Bits>(a), static_cast<Bits>(b), fpscr));
            },
            ~std::uint64_t{0}};
}
template <class Bits, auto Kernel>
constexpr fp_operation ternary(const char* name, processor_function processor) {
    return {name,
            kind_of<Bits>,
            3,
            processor,
            [](std::uint64_t a, std::uint64_t b, std::uint64_t c, FPSCR& fpscr) {
                return std::uint64_t(
                    Kernel(static_cast<Bits>(a), static_cast<Bits>(b), static_cast<Bits>(c), fpscr));
            },
            ~std::uint64_t{0}};
}
