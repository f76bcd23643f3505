#include "sve/library/shifts.h"

#include "sve/handlers/host_shifts.h"
#include "sve/library/chunk_loops.h"
#include "sve/library/primitive_definitions.h"

namespace {

template <class Element> using unsigned_chunk = chunk<std::make_unsigned_t<Element>>;

// Elements shifted by counts of any size, which are unsigned.
constexpr auto left = []<class Element>(Element, auto value, auto counts) {
    return host_shifts::shift_left<Element>(value, counts);
};
constexpr auto right = []<class Element>(Element, auto value, auto counts) {
    using Bits = std::make_unsigned_t<Element>;
    if constexpr (std::is_signed_v<Element>)
        return host_shifts::shift_right_signed<Bits>((chunk<Bits>)value, counts);
    else
        return host_shifts::shift_right<Bits>(value, counts);
};

template <class Element> auto shift_all(unsigned int count) {
    const auto within = static_cast<Element>(count < width_of<Element> ? -1 : 0);
    return [=, count = count % width_of<Element>](auto value) { return (value >> count) & within; };
}
template <class Element>
VecV shift_right(const VecV& zdn, const PredV& pg, unsigned int count, const CpuContext* context) {
    return merge_chunks<Element>(zdn, pg, zdn, context, shift_all<Element>(count));
}
template <class Element> VecV shift_right(const VecV& zn, unsigned int count, const CpuContext* context) {
    return map_chunks<Element>(zn, context, shift_all<Element>(count));
}

// Adding 2 to the shift, less 1, to negative elements makes the shift round towards zero. A shift by the
// width leaves nothing.
template <class Element>
VecV divide_by_power(const VecV& zdn, const PredV& pg, unsigned int count, const CpuContext* context) {
    const auto within = static_cast<Element>(count < width_of<Element> ? -1 : 0);
    count %= width_of<Element>;
    const auto rounding = static_cast<Element>((std::uint64_t{1} << count) - 1);
    return merge_chunks<Element>(zdn, pg, zdn, context, [=](auto value) {
        return ((value + ((chunk<Element>)(value < 0) & rounding)) >> count) & within;
    });
}

template <class Element, auto shift>
VecV reversed_shift(const VecV& zdn, const PredV& pg, const VecV& zm, const CpuContext* context) {
    return merge_two_chunks<Element>(zdn, pg, zm, context, [](auto counts, auto value) {
        return shift(Element(), value, (unsigned_chunk<Element>)counts);
    });
}

// For each element of a chunk the count in its 64-bit lane, or any count of the width or above if that has no
// place in an element.
template <class Element, int... i>
unsigned_chunk<Element> wide_counts(chunk<std::uint64_t> counts, std::integer_sequence<int, i...>) {
    constexpr int per_lane = 8 / sizeof(Element);
    const auto below = (chunk<std::uint64_t>)(counts < width_of<Element>);
    const auto bounded = (unsigned_chunk<Element>)((below & counts) | (~below & width_of<Element>));
    return __builtin_shufflevector(bounded, bounded, (i / per_lane * per_lane)...);
}
template <class Element, auto shift> auto shift_wide(const VecV& values, const VecV& counts) {
    return [&](int i) {
        return shift(Element(), get_chunk<Element>(values, i),
                     wide_counts<Element>(get_chunk<std::uint64_t>(counts, i), chunk_indices<Element>()));
    };
}
template <class Element, auto shift>
VecV wide_shift(const VecV& zdn, const PredV& pg, const VecV& zm, const CpuContext* context) {
    return merge_each_chunk<Element>(zdn, pg, context, shift_wide<Element, shift>(zdn, zm));
}
template <class Element, auto shift>
VecV wide_shift(const VecV& zn, const VecV& zm, const CpuContext* context) {
    return for_each_chunk<Element>(context, shift_wide<Element, shift>(zn, zm));
}

} // namespace

// A primitive a line. Macros, since only they can make the names.
#define MERGING_SHIFT(name, ...)                                                                             \
    VecV name(const VecV& zdn, const PredV& pg, unsigned int shift, CpuContext* context) {                   \
        return __VA_ARGS__(zdn, pg, shift, context);                                                         \
    }

MERGING_SHIFT(VecU8ShrVIM, shift_right<std::uint8_t>)
MERGING_SHIFT(VecU16ShrVIM, shift_right<std::uint16_t>)
MERGING_SHIFT(VecU32ShrVIM, shift_right<std::uint32_t>)
MERGING_SHIFT(VecU64ShrVIM, shift_right<std::uint64_t>)

#define SHIFT(name, ...)                                                                                     \
    VecV name(const VecV& zn, unsigned int shift, CpuContext* context) {                                     \
        return __VA_ARGS__(zn, shift, context);                                                              \
    }

SHIFT(VecU8ShrVIX, shift_right<std::uint8_t>)
SHIFT(VecU16ShrVIX, shift_right<std::uint16_t>)
SHIFT(VecU32ShrVIX, shift_right<std::uint32_t>)
SHIFT(VecU64ShrVIX, shift_right<std::uint64_t>)
#undef SHIFT

MERGING_SHIFT(VecS8ShrDVIM, divide_by_power<std::int8_t>)
MERGING_SHIFT(VecS16ShrDVIM, divide_by_power<std::int16_t>)
MERGING_SHIFT(VecS32ShrDVIM, divide_by_power<std::int32_t>)
MERGING_SHIFT(VecS64ShrDVIM, divide_by_power<std::int64_t>)
#undef MERGING_SHIFT

MERGING_PRIMITIVE(VecU8ShlRVVM, reversed_shift<std::uint8_t, left>)
MERGING_PRIMITIVE(VecU16ShlRVVM, reversed_shift<std::uint16_t, left>)
MERGING_PRIMITIVE(VecU32ShlRVVM, reversed_shift<std::uint32_t, left>)
MERGING_PRIMITIVE(VecU64ShlRVVM, reversed_shift<std::uint64_t, left>)

MERGING_PRIMITIVE(VecU8ShrRVVM, reversed_shift<std::uint8_t, right>)
MERGING_PRIMITIVE(VecU16ShrRVVM, reversed_shift<std::uint16_t, right>)
MERGING_PRIMITIVE(VecU32ShrRVVM, reversed_shift<std::uint32_t, right>)
MERGING_PRIMITIVE(VecU64ShrRVVM, reversed_shift<std::uint64_t, right>)
MERGING_PRIMITIVE(VecS8ShrRVVM, reversed_shift<std::int8_t, right>)
MERGING_PRIMITIVE(VecS16ShrRVVM, reversed_shift<std::int16_t, right>)
MERGING_PRIMITIVE(VecS32ShrRVVM, reversed_shift<std::int32_t, right>)
MERGING_PRIMITIVE(VecS64ShrRVVM, reversed_shift<std::int64_t, right>)

MERGING_PRIMITIVE(VecU8ShlVWM, wide_shift<std::uint8_t, left>)
MERGING_PRIMITIVE(VecU16ShlVWM, wide_shift<std::uint16_t, left>)
MERGING_PRIMITIVE(VecU32ShlVWM, wide_shift<std::uint32_t, left>)

MERGING_PRIMITIVE(VecU8ShrVWM, wide_shift<std::uint8_t, right>)
MERGING_PRIMITIVE(VecU16ShrVWM, wide_shift<std::uint16_t, right>)
MERGING_PRIMITIVE(VecU32ShrVWM, wide_shift<std::uint32_t, right>)
MERGING_PRIMITIVE(VecS8ShrVWM, wide_shift<std::int8_t, right>)
MERGING_PRIMITIVE(VecS16ShrVWM, wide_shift<std::int16_t, right>)
MERGING_PRIMITIVE(VecS32ShrVWM, wide_shift<std::int32_t, right>)

VECTOR_PRIMITIVE(VecU8ShlVWX, wide_shift<std::uint8_t, left>)
VECTOR_PRIMITIVE(VecU16ShlVWX, wide_shift<std::uint16_t, left>)
VECTOR_PRIMITIVE(VecU32ShlVWX, wide_shift<std::uint32_t, left>)

VECTOR_PRIMITIVE(VecU8ShrVWX, wide_shift<std::uint8_t, right>)
VECTOR_PRIMITIVE(VecU16ShrVWX, wide_shift<std::uint16_t, right>)
VECTOR_PRIMITIVE(VecU32ShrVWX, wide_shift<std::uint32_t, right>)
VECTOR_PRIMITIVE(VecS8ShrVWX, wide_shift<std::int8_t, right>)
VECTOR_PRIMITIVE(VecS16ShrVWX, wide_shift<std::int16_t, right>)
VECTOR_PRIMITIVE(VecS32ShrVWX, wide_shift<std::int32_t, right>)
