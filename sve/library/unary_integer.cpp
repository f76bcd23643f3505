#include "sve/library/unary_integer.h"

#include "sve/library/bit_count_chunks.h"
#include "sve/library/chunk_loops.h"

template <class Element>
static VecV absolute(const VecV& zd, const PredV& pg, const VecV& zn, const CpuContext* context) {
    using Bits = chunk<std::make_unsigned_t<Element>>;
    return merge_chunks<Element>(zd, pg, zn, context, [](auto a) {
        const auto negative = (Bits)(a < 0);
        return ((Bits)a ^ negative) - negative;
    });
}

template <class Element>
static VecV complement(const VecV& zd, const PredV& pg, const VecV& zn, const CpuContext* context) {
    return merge_chunks<Element>(zd, pg, zn, context, [](auto a) { return ~a; });
}

template <class Element>
static VecV logical_not(const VecV& zd, const PredV& pg, const VecV& zn, const CpuContext* context) {
    return merge_chunks<Element>(zd, pg, zn, context, [](auto a) { return (a == 0) & 1; });
}

// `count` is bit_counts, leading_sign_bits or leading_zeros.
template <class Element, auto count>
static VecV count_bits(const VecV& zd, const PredV& pg, const VecV& zn, const CpuContext* context) {
    return merge_chunks<Element>(zd, pg, zn, context, [](auto a) { return count(a, Element()); });
}

// Each group of so many units in reverse order.
template <int group, class Vector, int... i>
static Vector reverse_units(Vector units, std::integer_sequence<int, i...>) {
    return __builtin_shufflevector(units, units, (i ^ (group - 1))...);
}
template <class Element, int unit>
static VecV reverse(const VecV& zd, const PredV& pg, const VecV& zn, const CpuContext* context) {
    return merge_chunks<Element>(zd, pg, zn, context, [](auto a) {
        using Unit = std::conditional_t<unit == 1, std::uint8_t, std::uint16_t>;
        return reverse_units<sizeof(Element) / unit>((chunk<Unit>)a, chunk_indices<Unit>());
    });
}

template <class Element>
static VecV extend_byte(const VecV& zd, const PredV& pg, const VecV& zn, const CpuContext* context) {
    return merge_chunks<Element>(zd, pg, zn, context, [](auto a) { return a & 0xFF; });
}

VecV VecS8AbsVM(const VecV& zd, const PredV& pg, const VecV& zn, CpuContext* context) {
    return absolute<std::int8_t>(zd, pg, zn, context);
}
VecV VecS16AbsVM(const VecV& zd, const PredV& pg, const VecV& zn, CpuContext* context) {
    return absolute<std::int16_t>(zd, pg, zn, context);
}
VecV VecS32AbsVM(const VecV& zd, const PredV& pg, const VecV& zn, CpuContext* context) {
    return absolute<std::int32_t>(zd, pg, zn, context);
}
VecV VecS64AbsVM(const VecV& zd, const PredV& pg, const VecV& zn, CpuContext* context) {
    return absolute<std::int64_t>(zd, pg, zn, context);
}

VecV VecU8InvVM(const VecV& zd, const PredV& pg, const VecV& zn, CpuContext* context) {
    return complement<std::uint8_t>(zd, pg, zn, context);
}
VecV VecU16InvVM(const VecV& zd, const PredV& pg, const VecV& zn, CpuContext* context) {
    return complement<std::uint16_t>(zd, pg, zn, context);
}
VecV VecU32InvVM(const VecV& zd, const PredV& pg, const VecV& zn, CpuContext* context) {
    return complement<std::uint32_t>(zd, pg, zn, context);
}
VecV VecU64InvVM(const VecV& zd, const PredV& pg, const VecV& zn, CpuContext* context) {
    return complement<std::uint64_t>(zd, pg, zn, context);
}

VecV VecU8NotVM(const VecV& zd, const PredV& pg, const VecV& zn, CpuContext* context) {
    return logical_not<std::uint8_t>(zd, pg, zn, context);
}
VecV VecU16NotVM(const VecV& zd, const PredV& pg, const VecV& zn, CpuContext* context) {
    return logical_not<std::uint16_t>(zd, pg, zn, context);
}
VecV VecU32NotVM(const VecV& zd, const PredV& pg, const VecV& zn, CpuContext* context) {
    return logical_not<std::uint32_t>(zd, pg, zn, context);
}
VecV VecU64NotVM(const VecV& zd, const PredV& pg, const VecV& zn, CpuContext* context) {
    return logical_not<std::uint64_t>(zd, pg, zn, context);
}

VecV VecU8CntVM(const VecV& zd, const PredV& pg, const VecV& zn, CpuContext* context) {
    return count_bits<std::uint8_t, bit_counts>(zd, pg, zn, context);
}
VecV VecU16CntVM(const VecV& zd, const PredV& pg, const VecV& zn, CpuContext* context) {
    return count_bits<std::uint16_t, bit_counts>(zd, pg, zn, context);
}
VecV VecU32CntVM(const VecV& zd, const PredV& pg, const VecV& zn, CpuContext* context) {
    return count_bits<std::uint32_t, bit_counts>(zd, pg, zn, context);
}
VecV VecU64CntVM(const VecV& zd, const PredV& pg, const VecV& zn, CpuContext* context) {
    return count_bits<std::uint64_t, bit_counts>(zd, pg, zn, context);
}

VecV VecU8ClsVM(const VecV& zd, const PredV& pg, const VecV& zn, CpuContext* context) {
    return count_bits<std::uint8_t, leading_sign_bits>(zd, pg, zn, context);
}
VecV VecU16ClsVM(const VecV& zd, const PredV& pg, const VecV& zn, CpuContext* context) {
    return count_bits<std::uint16_t, leading_sign_bits>(zd, pg, zn, context);
}
VecV VecU32ClsVM(const VecV& zd, const PredV& pg, const VecV& zn, CpuContext* context) {
    return count_bits<std::uint32_t, leading_sign_bits>(zd, pg, zn, context);
}
VecV VecU64ClsVM(const VecV& zd, const PredV& pg, const VecV& zn, CpuContext* context) {
    return count_bits<std::uint64_t, leading_sign_bits>(zd, pg, zn, context);
}

VecV VecU8ClzVM(const VecV& zd, const PredV& pg, const VecV& zn, CpuContext* context) {
    return count_bits<std::uint8_t, leading_zeros>(zd, pg, zn, context);
}
VecV VecU16ClzVM(const VecV& zd, const PredV& pg, const VecV& zn, CpuContext* context) {
    return count_bits<std::uint16_t, leading_zeros>(zd, pg, zn, context);
}
VecV VecU32ClzVM(const VecV& zd, const PredV& pg, const VecV& zn, CpuContext* context) {
    return count_bits<std::uint32_t, leading_zeros>(zd, pg, zn, context);
}
VecV VecU64ClzVM(const VecV& zd, const PredV& pg, const VecV& zn, CpuContext* context) {
    return count_bits<std::uint64_t, leading_zeros>(zd, pg, zn, context);
}

VecV VecU16Rev1V(const VecV& zd, const PredV& pg, const VecV& zn, CpuContext* context) {
    return reverse<std::uint16_t, 1>(zd, pg, zn, context);
}
VecV VecU32Rev1V(const VecV& zd, const PredV& pg, const VecV& zn, CpuContext* context) {
    return reverse<std::uint32_t, 1>(zd, pg, zn, context);
}
VecV VecU64Rev1V(const VecV& zd, const PredV& pg, const VecV& zn, CpuContext* context) {
    return reverse<std::uint64_t, 1>(zd, pg, zn, context);
}

VecV VecU32Rev2V(const VecV& zd, const PredV& pg, const VecV& zn, CpuContext* context) {
    return reverse<std::uint32_t, 2>(zd, pg, zn, context);
}
VecV VecU64Rev2V(const VecV& zd, const PredV& pg, const VecV& zn, CpuContext* context) {
    return reverse<std::uint64_t, 2>(zd, pg, zn, context);
}

VecV VecU16Extnd12VM(const VecV& zd, const PredV& pg, const VecV& zn, CpuContext* context) {
    return extend_byte<std::uint16_t>(zd, pg, zn, context);
}
VecV VecU32Extnd14VM(const VecV& zd, const PredV& pg, const VecV& zn, CpuContext* context) {
    return extend_byte<std::uint32_t>(zd, pg, zn, context);
}
VecV VecU64Extnd18VM(const VecV& zd, const PredV& pg, const VecV& zn, CpuContext* context) {
    return extend_byte<std::uint64_t>(zd, pg, zn, context);
}
