#include "sve/library/unary_integer.h"

#include "sve/library/bit_count_chunks.h"
#include "sve/library/chunk_loops.h"
#include "sve/library/primitive_definitions.h"

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
        using Unit = unsigned_integer<unit>;
        return reverse_units<sizeof(Element) / unit>((chunk<Unit>)a, chunk_indices<Unit>());
    });
}

template <class Element>
static VecV extend_byte(const VecV& zd, const PredV& pg, const VecV& zn, const CpuContext* context) {
    return merge_chunks<Element>(zd, pg, zn, context, [](auto a) { return a & 0xFF; });
}

MERGING_PRIMITIVE(VecS8AbsVM, absolute<std::int8_t>)
MERGING_PRIMITIVE(VecS16AbsVM, absolute<std::int16_t>)
MERGING_PRIMITIVE(VecS32AbsVM, absolute<std::int32_t>)
MERGING_PRIMITIVE(VecS64AbsVM, absolute<std::int64_t>)

MERGING_PRIMITIVE(VecU8InvVM, complement<std::uint8_t>)
MERGING_PRIMITIVE(VecU16InvVM, complement<std::uint16_t>)
MERGING_PRIMITIVE(VecU32InvVM, complement<std::uint32_t>)
MERGING_PRIMITIVE(VecU64InvVM, complement<std::uint64_t>)

MERGING_PRIMITIVE(VecU8NotVM, logical_not<std::uint8_t>)
MERGING_PRIMITIVE(VecU16NotVM, logical_not<std::uint16_t>)
MERGING_PRIMITIVE(VecU32NotVM, logical_not<std::uint32_t>)
MERGING_PRIMITIVE(VecU64NotVM, logical_not<std::uint64_t>)

MERGING_PRIMITIVE(VecU8CntVM, count_bits<std::uint8_t, bit_counts>)
MERGING_PRIMITIVE(VecU16CntVM, count_bits<std::uint16_t, bit_counts>)
MERGING_PRIMITIVE(VecU32CntVM, count_bits<std::uint32_t, bit_counts>)
MERGING_PRIMITIVE(VecU64CntVM, count_bits<std::uint64_t, bit_counts>)

MERGING_PRIMITIVE(VecU8ClsVM, count_bits<std::uint8_t, leading_sign_bits>)
MERGING_PRIMITIVE(VecU16ClsVM, count_bits<std::uint16_t, leading_sign_bits>)
MERGING_PRIMITIVE(VecU32ClsVM, count_bits<std::uint32_t, leading_sign_bits>)
MERGING_PRIMITIVE(VecU64ClsVM, count_bits<std::uint64_t, leading_sign_bits>)

MERGING_PRIMITIVE(VecU8ClzVM, count_bits<std::uint8_t, leading_zeros>)
MERGING_PRIMITIVE(VecU16ClzVM, count_bits<std::uint16_t, leading_zeros>)
MERGING_PRIMITIVE(VecU32ClzVM, count_bits<std::uint32_t, leading_zeros>)
MERGING_PRIMITIVE(VecU64ClzVM, count_bits<std::uint64_t, leading_zeros>)

MERGING_PRIMITIVE(VecU16Rev1V, reverse<std::uint16_t, 1>)
MERGING_PRIMITIVE(VecU32Rev1V, reverse<std::uint32_t, 1>)
MERGING_PRIMITIVE(VecU64Rev1V, reverse<std::uint64_t, 1>)

MERGING_PRIMITIVE(VecU32Rev2V, reverse<std::uint32_t, 2>)
MERGING_PRIMITIVE(VecU64Rev2V, reverse<std::uint64_t, 2>)

MERGING_PRIMITIVE(VecU16Extnd12VM, extend_byte<std::uint16_t>)
MERGING_PRIMITIVE(VecU32Extnd14VM, extend_byte<std::uint32_t>)
MERGING_PRIMITIVE(VecU64Extnd18VM, extend_byte<std::uint64_t>)
