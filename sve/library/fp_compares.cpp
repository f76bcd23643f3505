#include "sve/library/fp_compares.h"

#include "sve/fp/fp_arithmetic.h"
#include "sve/fp/fp_compare.h"
#include "sve/library/primitive_definitions.h"

// A predicate whose element i is compare(i, fpscr) where pg is active and false elsewhere.
template <class Bits, class Compare>
static PredV compare_each(const PredV& pg, CpuContext* context, Compare compare) {
    PredV result = {};
    with_fp_status(any_active<Bits>(pg, context), context, [&](FPSCR& fpscr) {
        for (int w = 0, words = word_count(context); w < words; ++w) {
            std::uint64_t outcomes = 0;
            for_each_active_in<Bits>(pg, w, context, [&](int i, unsigned bit) {
                outcomes |= std::uint64_t{compare(i, fpscr)} << bit;
            });
            result.words[w] = outcomes;
        }
    });
    return result;
}

template <class Bits, auto kernel>
static PredV compare(const PredV& pg, const VecV& zn, const VecV& zm, CpuContext* context) {
    return compare_each<Bits>(pg, context, [&](int i, FPSCR& fpscr) {
        return kernel(get_element<Bits>(zn, i), get_element<Bits>(zm, i), fpscr);
    });
}

template <class Bits, auto kernel>
static PredV compare_with_zero(const PredV& pg, const VecV& zn, CpuContext* context) {
    return compare_each<Bits>(
        pg, context, [&](int i, FPSCR& fpscr) { return kernel(get_element<Bits>(zn, i), Bits{0}, fpscr); });
}

template <class Bits> static bool unequal(Bits a, Bits b, FPSCR& fpscr) { return !FPCompareEQ(a, b, fpscr); }
template <class Bits> static bool less_or_equal(Bits a, Bits b, FPSCR& fpscr) {
    return FPCompareGE(b, a, fpscr);
}
template <class Bits> static bool less(Bits a, Bits b, FPSCR& fpscr) { return FPCompareGT(b, a, fpscr); }
template <class Bits> static bool absolute_greater_or_equal(Bits a, Bits b, FPSCR& fpscr) {
    return FPCompareGE(FPAbs(a), FPAbs(b), fpscr);
}
template <class Bits> static bool absolute_greater(Bits a, Bits b, FPSCR& fpscr) {
    return FPCompareGT(FPAbs(a), FPAbs(b), fpscr);
}

COMPARING_PRIMITIVE(VecF16CmpEQVVZ, compare<half_bits, FPCompareEQ<half_bits>>)
COMPARING_PRIMITIVE(VecF16CmpGEVVZ, compare<half_bits, FPCompareGE<half_bits>>)
COMPARING_PRIMITIVE(VecF16CmpGTVVZ, compare<half_bits, FPCompareGT<half_bits>>)
COMPARING_PRIMITIVE(VecF16CmpNEVVZ, compare<half_bits, unequal<half_bits>>)
COMPARING_PRIMITIVE(VecF16CmpUNVVZ, compare<half_bits, FPCompareUN<half_bits>>)

// A primitive a line. Macros, since only they can make the names.
#define COMPARE_WITH_ZERO(name, bits, kernel)                                                                \
    PredV name(const PredV& pg, const VecV& zn, CpuContext* context) {                                       \
        return compare_with_zero<bits, kernel<bits>>(pg, zn, context);                                       \
    }

COMPARE_WITH_ZERO(VecF16CmpEQV0Z, half_bits, FPCompareEQ)
COMPARE_WITH_ZERO(VecF16CmpGEV0Z, half_bits, FPCompareGE)
COMPARE_WITH_ZERO(VecF16CmpGTV0Z, half_bits, FPCompareGT)
COMPARE_WITH_ZERO(VecF16CmpLEV0Z, half_bits, less_or_equal)
COMPARE_WITH_ZERO(VecF16CmpLTV0Z, half_bits, less)

COMPARE_WITH_ZERO(VecF16CmpNEV0Z, half_bits, unequal)
COMPARE_WITH_ZERO(VecF32CmpNEV0Z, single_bits, unequal)
COMPARE_WITH_ZERO(VecD64CmpNEV0Z, double_bits, unequal)
#undef COMPARE_WITH_ZERO

COMPARING_PRIMITIVE(VecF16AcGEVVZ, compare<half_bits, absolute_greater_or_equal<half_bits>>)
COMPARING_PRIMITIVE(VecF32AcGEVVZ, compare<single_bits, absolute_greater_or_equal<single_bits>>)
COMPARING_PRIMITIVE(VecD64AcGEVVZ, compare<double_bits, absolute_greater_or_equal<double_bits>>)

COMPARING_PRIMITIVE(VecF16AcGTVVZ, compare<half_bits, absolute_greater<half_bits>>)
COMPARING_PRIMITIVE(VecF32AcGTVVZ, compare<single_bits, absolute_greater<single_bits>>)
COMPARING_PRIMITIVE(VecD64AcGTVVZ, compare<double_bits, absolute_greater<double_bits>>)
