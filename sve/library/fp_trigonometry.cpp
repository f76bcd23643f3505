#include "sve/library/fp_trigonometry.h"

#include "sve/fp/fp_arithmetic.h"
#include "sve/fp/fp_trigonometry.h"
#include "sve/library/primitive_definitions.h"

template <class Bits>
static VecV multiply_add_coefficient(const VecV& zdn, const VecV& zm, unsigned index, CpuContext* context) {
    return fp_each_element<Bits>(context, [&](int i, FPSCR& fpscr) {
        return FPTRIMADD(index, get_element<Bits>(zdn, i), get_element<Bits>(zm, i), fpscr);
    });
}

// Which of the value and 1.0 the quadrant takes, and with what sign: a pure operation on bits.
template <class Bits> static Bits select_by_quadrant(Bits value, Bits quadrant) {
    using Format = FPFormat<Bits>;
    const Bits sign = static_cast<Bits>((quadrant & 2) << (Format::width - 2));
    return (quadrant & 1 ? Format::power_of_two(0) : value) ^ sign;
}

template <class Bits> static VecV select(const VecV& zn, const VecV& zm, const CpuContext* context) {
    return map_elements<Bits>(zn, zm, context, select_by_quadrant<Bits>);
}

template <class Bits> static VecV exponential(const VecV& zn, const CpuContext* context) {
    return map_elements<Bits>(zn, context, FPEXPA<Bits>);
}

VecV VecF16TRIMADDVVI(const VecV& zdn, const VecV& zm, unsigned index, CpuContext* context) {
    return multiply_add_coefficient<half_bits>(zdn, zm, index, context);
}
VecV VecF32TRIMADDVVI(const VecV& zdn, const VecV& zm, unsigned index, CpuContext* context) {
    return multiply_add_coefficient<single_bits>(zdn, zm, index, context);
}
VecV VecD64TRIMADDVVI(const VecV& zdn, const VecV& zm, unsigned index, CpuContext* context) {
    return multiply_add_coefficient<double_bits>(zdn, zm, index, context);
}

VECTOR_PRIMITIVE(VecF16TRISMULVV, fp_map<half_bits, FPTRISMUL<half_bits>>)
VECTOR_PRIMITIVE(VecF32TRISMULVV, fp_map<single_bits, FPTRISMUL<single_bits>>)
VECTOR_PRIMITIVE(VecD64TRISMULVV, fp_map<double_bits, FPTRISMUL<double_bits>>)

VECTOR_PRIMITIVE(VecF16TRISSELVV, select<half_bits>)
VECTOR_PRIMITIVE(VecF32TRISSELVV, select<single_bits>)
VECTOR_PRIMITIVE(VecD64TRISSELVV, select<double_bits>)

UNARY_PRIMITIVE(VecF16EXPAV, exponential<half_bits>)
UNARY_PRIMITIVE(VecF32EXPAV, exponential<single_bits>)
UNARY_PRIMITIVE(VecD64EXPAV, exponential<double_bits>)
