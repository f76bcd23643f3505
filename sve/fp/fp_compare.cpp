#include "sve/fp/fp_compare.h"

namespace {

enum class ordering { unordered, less, equal, greater };

// Compares after flushing; flushing raises its flag, NaNs raise nothing here.
template <class Bits> inline ordering order_of(Bits a, Bits b, int mode, int* flags) {
    using Format = FPFormat<Bits>;
    a = fp_flush_input(a, mode, flags);
    b = fp_flush_input(b, mode, flags);
    if (fp_is_nan(a) || fp_is_nan(b)) [[unlikely]]
        return ordering::unordered;
    if (a == b || ((a | b) & Format::magnitude_mask) == 0)
        return ordering::equal;
    const bool negative = fp_sign(a) | fp_sign(b);
    // Of two with a sign, or with different signs, the greater bits are less.
    const bool greater = (a > b) != negative;
    return greater ? ordering::greater : ordering::less;
}

template <class Bits> inline bool either_signals(Bits a, Bits b) {
    return fp_is_signalling_nan(a) || fp_is_signalling_nan(b);
}

// What `result_of` makes of the ordering. Quiet NaNs raise IOC if asked for, signalling ones always.
template <class Bits, class ResultOf>
inline auto compare(Bits a, Bits b, bool signal_all_NaNs, FPSCR& fpscr, ResultOf result_of) {
    int flags = 0;
    const ordering order = order_of(a, b, fpscr.mode(), &flags);
    if (order == ordering::unordered && (signal_all_NaNs || either_signals(a, b)))
        flags |= FPFlag_IOC;
    fpscr.raise(flags);
    return result_of(order);
}

// FPMax, or FPMin. Of a and b with one sign the unsigned order of the bits is that of the magnitudes.
template <class Bits, bool Maximum> inline Bits select(Bits a, Bits b, FPSCR& fpscr) {
    const int mode = fpscr.mode();
    int flags = 0;
    a = fp_flush_input(a, mode, &flags);
    b = fp_flush_input(b, mode, &flags);
    Bits result;
    if (fp_is_nan(a) || fp_is_nan(b)) [[unlikely]] {
        result = fp_process_nans(a, b, mode, &flags);
    } else {
        const bool negative = fp_sign(a) | fp_sign(b);
        const bool greater = (a > b) != negative;
        result = greater == Maximum ? a : b;
    }
    fpscr.raise(flags);
    return result;
}

// A quiet NaN is replaced by the number that no other one loses against; two of them stay what they are.
template <class Bits, bool Maximum> inline Bits select_number(Bits a, Bits b, FPSCR& fpscr) {
    const Bits least = fp_with_sign<Bits>(Maximum, FPFormat<Bits>::infinity);
    const bool replace_a = fp_is_quiet_nan(a) && !fp_is_quiet_nan(b);
    const bool replace_b = fp_is_quiet_nan(b) && !fp_is_quiet_nan(a);
    return select<Bits, Maximum>(replace_a ? least : a, replace_b ? least : b, fpscr);
}

} // namespace

template <class Bits> bool FPCompareEQ(Bits a, Bits b, FPSCR& fpscr) {
    return compare(a, b, false, fpscr, [](ordering order) { return order == ordering::equal; });
}

template <class Bits> bool FPCompareGE(Bits a, Bits b, FPSCR& fpscr) {
    return compare(a, b, true, fpscr,
                   [](ordering order) { return order == ordering::equal || order == ordering::greater; });
}

template <class Bits> bool FPCompareGT(Bits a, Bits b, FPSCR& fpscr) {
    return compare(a, b, true, fpscr, [](ordering order) { return order == ordering::greater; });
}

template <class Bits> bool FPCompareUN(Bits a, Bits b, FPSCR& fpscr) {
    return compare(a, b, false, fpscr, [](ordering order) { return order == ordering::unordered; });
}

template <class Bits> int FPCompare(Bits a, Bits b, bool signal_all_NaNs, FPSCR& fpscr) {
    return compare(a, b, signal_all_NaNs, fpscr, [](ordering order) {
        switch (order) {
        case ordering::less:
            return 8;
        case ordering::equal:
            return 6;
        case ordering::greater:
            return 2;
        case ordering::unordered:
            break;
        }
        return 3;
    });
}

template <class Bits> Bits FPMax(Bits a, Bits b, FPSCR& fpscr) { return select<Bits, true>(a, b, fpscr); }
template <class Bits> Bits FPMin(Bits a, Bits b, FPSCR& fpscr) { return select<Bits, false>(a, b, fpscr); }
template <class Bits> Bits FPMaxNum(Bits a, Bits b, FPSCR& fpscr) {
    return select_number<Bits, true>(a, b, fpscr);
}
template <class Bits> Bits FPMinNum(Bits a, Bits b, FPSCR& fpscr) {
    return select_number<Bits, false>(a, b, fpscr);
}

template int FPCompare(std::uint32_t, std::uint32_t, bool, FPSCR&);
template int FPCompare(std::uint64_t, std::uint64_t, bool, FPSCR&);

#define INSTANTIATE(Bits)                                                                                    \
    template bool FPCompareEQ(Bits, Bits, FPSCR&);                                                           \
    template bool FPCompareGE(Bits, Bits, FPSCR&);                                                           \
    template bool FPCompareGT(Bits, Bits, FPSCR&);                                                           \
    template bool FPCompareUN(Bits, Bits, FPSCR&);                                                           \
    template Bits FPMax(Bits, Bits, FPSCR&);                                                                 \
    template Bits FPMin(Bits, Bits, FPSCR&);                                                                 \
    template Bits FPMaxNum(Bits, Bits, FPSCR&);                                                              \
    template Bits FPMinNum(Bits, Bits, FPSCR&);
FP_FOR_EACH_FORMAT(INSTANTIATE)
#undef INSTANTIATE
