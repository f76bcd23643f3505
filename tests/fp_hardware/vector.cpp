#include "sve/fp/fp_trigonometry.h"

#include "sve/fp/fp_compare.h"
#include "tests/fp_hardware/operations.h"

#include <type_traits>

namespace {

using half = std::uint16_t;
using single = std::uint32_t;
using double_bits = std::uint64_t;

// Of the vector that comes back the first element counts.
template <class Bits> constexpr fp_operation first_element(fp_operation operation) {
    operation.result_mask = static_cast<Bits>(~Bits{0});
    return operation;
}

template <class Bits> Bits exponential_element(Bits a, FPSCR&) { return FPEXPA(a); }
template <class Bits> constexpr fp_operation exponential(const char* name, processor_function processor) {
    return first_element<Bits>(unary<Bits, exponential_element<Bits>>(name, processor));
}

template <class Bits, auto Kernel>
constexpr fp_operation two_operands(const char* name, processor_function processor) {
    return first_element<Bits>(binary<Bits, Kernel>(name, processor));
}

// The scale is the second operand's bits.
template <class Bits, auto Kernel> Bits scaled(Bits a, Bits b, FPSCR& fpscr) {
    return Kernel(a, static_cast<std::make_signed_t<Bits>>(b), fpscr);
}

// 1 for true.
template <class Bits> Bits unordered(Bits a, Bits b, FPSCR& fpscr) {
    return static_cast<Bits>(FPCompareUN(a, b, fpscr));
}

template <class Bits, unsigned long Index> Bits polynomial_step(Bits a, Bits b, FPSCR& fpscr) {
    return FPTRIMADD<Bits>(Index, a, b, fpscr);
}

#define POLYNOMIAL_STEP(index)                                                                               \
    two_operands<half, polynomial_step<half, index>>("ftmad half " #index,                                   \
                                                     FP_VECTOR("ftmad z0.h, z0.h, z1.h, " #index)),          \
        two_operands<single, polynomial_step<single, index>>("ftmad single " #index,                         \
                                                             FP_VECTOR("ftmad z0.s, z0.s, z1.s, " #index)),  \
        two_operands<double_bits, polynomial_step<double_bits, index>>(                                      \
            "ftmad double " #index, FP_VECTOR("ftmad z0.d, z0.d, z1.d, " #index))

} // namespace

std::vector<fp_operation> vector_operations() {
    return {
        exponential<half>("fexpa half", FP_VECTOR("fexpa z0.h, z0.h")),
        exponential<single>("fexpa single", FP_VECTOR("fexpa z0.s, z0.s")),
        exponential<double_bits>("fexpa double", FP_VECTOR("fexpa z0.d, z0.d")),
        two_operands<half, FPTRISMUL<half>>("ftsmul half", FP_VECTOR("ftsmul z0.h, z0.h, z1.h")),
        two_operands<single, FPTRISMUL<single>>("ftsmul single", FP_VECTOR("ftsmul z0.s, z0.s, z1.s")),
        two_operands<double_bits, FPTRISMUL<double_bits>>("ftsmul double",
                                                          FP_VECTOR("ftsmul z0.d, z0.d, z1.d")),
        two_operands<half, scaled<half, FPScale16>>("fscale half",
                                                    FP_VECTOR("fscale z0.h, p0/m, z0.h, z1.h")),
        two_operands<single, scaled<single, FPScale32>>("fscale single",
                                                        FP_VECTOR("fscale z0.s, p0/m, z0.s, z1.s")),
        two_operands<double_bits, scaled<double_bits, FPScale64>>("fscale double",
                                                                  FP_VECTOR("fscale z0.d, p0/m, z0.d, z1.d")),
        two_operands<half, unordered<half>>("fcmuo half",
                                            FP_VECTOR("fcmuo p0.h, p0/z, z0.h, z1.h\n\tmov z0.h, p0/z, 1")),
        two_operands<single, unordered<single>>(
            "fcmuo single", FP_VECTOR("fcmuo p0.s, p0/z, z0.s, z1.s\n\tmov z0.s, p0/z, 1")),
        two_operands<double_bits, unordered<double_bits>>(
            "fcmuo double", FP_VECTOR("fcmuo p0.d, p0/z, z0.d, z1.d\n\tmov z0.d, p0/z, 1")),
        POLYNOMIAL_STEP(0),
        POLYNOMIAL_STEP(1),
        POLYNOMIAL_STEP(2),
        POLYNOMIAL_STEP(3),
        POLYNOMIAL_STEP(4),
        POLYNOMIAL_STEP(5),
        POLYNOMIAL_STEP(6),
        POLYNOMIAL_STEP(7),
    };
}
