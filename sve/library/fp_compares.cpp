#include "sve/library/fp_compares.h"

#include "sve/fp/fp_arithmetic.h"
#include "sve/fp/fp_compare.h"

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

PredV VecF16CmpEQVVZ(const PredV& pg, const VecV& zn, const VecV& zm, CpuContext* context) {
    return compare<half_bits, FPCompareEQ<half_bits>>(pg, zn, zm, context);
}
PredV VecF16CmpGEVVZ(const PredV& pg, const VecV& zn, const VecV& zm, CpuContext* context) {
    return compare<half_bits, FPCompareGE<half_bits>>(pg, zn, zm, context);
}
PredV VecF16CmpGTVVZ(const PredV& pg, const VecV& zn, const VecV& zm, CpuContext* context) {
    return compare<half_bits, FPCompareGT<half_bits>>(pg, zn, zm, context);
}
PredV VecF16CmpNEVVZ(const PredV& pg, const VecV& zn, const VecV& zm, CpuContext* context) {
    return compare<half_bits, unequal<half_bits>>(pg, zn, zm, context);
}
PredV VecF16CmpUNVVZ(const PredV& pg, const VecV& zn, const VecV& zm, CpuContext* context) {
    return compare<half_bits, FPCompareUN<half_bits>>(pg, zn, zm, context);
}

PredV VecF16CmpEQV0Z(const PredV& pg, const VecV& zn, CpuContext* context) {
    return compare_with_zero<half_bits, FPCompareEQ<half_bits>>(pg, zn, context);
}
PredV VecF16CmpGEV0Z(const PredV& pg, const VecV& zn, CpuContext* context) {
    return compare_with_zero<half_bits, FPCompareGE<half_bits>>(pg, zn, context);
}
PredV VecF16CmpGTV0Z(const PredV& pg, const VecV& zn, CpuContext* context) {
    return compare_with_zero<half_bits, FPCompareGT<half_bits>>(pg, zn, context);
}
PredV VecF16CmpLEV0Z(const PredV& pg, const VecV& zn, CpuContext* context) {
    return compare_with_zero<half_bits, less_or_equal<half_bits>>(pg, zn, context);
}
PredV VecF16CmpLTV0Z(const PredV& pg, const VecV& zn, CpuContext* context) {
    return compare_with_zero<half_bits, less<half_bits>>(pg, zn, context);
}

PredV VecF16CmpNEV0Z(const PredV& pg, const VecV& zn, CpuContext* context) {
    return compare_with_zero<half_bits, unequal<half_bits>>(pg, zn, context);
}
PredV VecF32CmpNEV0Z(const PredV& pg, const VecV& zn, CpuContext* context) {
    return compare_with_zero<single_bits, unequal<single_bits>>(pg, zn, context);
}
PredV VecD64CmpNEV0Z(const PredV& pg, const VecV& zn, CpuContext* context) {
    return compare_with_zero<double_bits, unequal<double_bits>>(pg, zn, context);
}

PredV VecF16AcGEVVZ(const PredV& pg, const VecV& zn, const VecV& zm, CpuContext* context) {
    return compare<half_bits, absolute_greater_or_equal<half_bits>>(pg, zn, zm, context);
}
PredV VecF32AcGEVVZ(const PredV& pg, const VecV& zn, const VecV& zm, CpuContext* context) {
    return compare<single_bits, absolute_greater_or_equal<single_bits>>(pg, zn, zm, context);
}
PredV VecD64AcGEVVZ(const PredV& pg, const VecV& zn, const VecV& zm, CpuContext* context) {
    return compare<double_bits, absolute_greater_or_equal<double_bits>>(pg, zn, zm, context);
}

PredV VecF16AcGTVVZ(const PredV& pg, const VecV& zn, const VecV& zm, CpuContext* context) {
    return compare<half_bits, absolute_greater<half_bits>>(pg, zn, zm, context);
}
PredV VecF32AcGTVVZ(const PredV& pg, const VecV& zn, const VecV& zm, CpuContext* context) {
    return compare<single_bits, absolute_greater<single_bits>>(pg, zn, zm, context);
}
PredV VecD64AcGTVVZ(const PredV& pg, const VecV& zn, const VecV& zm, CpuContext* context) {
    return compare<double_bits, absolute_greater<double_bits>>(pg, zn, zm, context);
}
