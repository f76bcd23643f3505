#include "sve/library/shifts.h"

#include "sve/library/chunk_loops.h"

namespace {

template <class Element> using unsigned_chunk = chunk<std::make_unsigned_t<Element>>;

// Elements shifted by counts of any size. Host vectors shift by less than the width only.
constexpr auto left = []<class Element>(Element, auto value, auto counts) {
    return (value << (counts & (width_of<Element> - 1))) &
           (unsigned_chunk<Element>)(counts < width_of<Element>);
};
constexpr auto right = []<class Element>(Element, auto value, auto counts) {
    if constexpr (std::is_signed_v<Element>) {
        const auto last = broadcast<std::make_unsigned_t<Element>>(width_of<Element> - 1);
        const auto within = (unsigned_chunk<Element>)(counts < last);
        return (chunk<Element>)value >> (chunk<Element>)((within & counts) | (~within & last));
    } else {
        return (value >> (counts & (width_of<Element> - 1))) & (chunk<Element>)(counts < width_of<Element>);
    }
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

VecV VecU8ShrVIM(const VecV& zdn, const PredV& pg, unsigned int shift, CpuContext* context) {
    return shift_right<std::uint8_t>(zdn, pg, shift, context);
}
VecV VecU16ShrVIM(const VecV& zdn, const PredV& pg, unsigned int shift, CpuContext* context) {
    return shift_right<std::uint16_t>(zdn, pg, shift, context);
}
VecV VecU32ShrVIM(const VecV& zdn, const PredV& pg, unsigned int shift, CpuContext* context) {
    return shift_right<std::uint32_t>(zdn, pg, shift, context);
}
VecV VecU64ShrVIM(const VecV& zdn, const PredV& pg, unsigned int shift, CpuContext* context) {
    return shift_right<std::uint64_t>(zdn, pg, shift, context);
}

VecV VecU8ShrVIX(const VecV& zn, unsigned int shift, CpuContext* context) {
    return shift_right<std::uint8_t>(zn, shift, context);
}
VecV VecU16ShrVIX(const VecV& zn, unsigned int shift, CpuContext* context) {
    return shift_right<std::uint16_t>(zn, shift, context);
}
VecV VecU32ShrVIX(const VecV& zn, unsigned int shift, CpuContext* context) {
    return shift_right<std::uint32_t>(zn, shift, context);
}
VecV VecU64ShrVIX(const VecV& zn, unsigned int shift, CpuContext* context) {
    return shift_right<std::uint64_t>(zn, shift, context);
}

VecV VecS8ShrDVIM(const VecV& zdn, const PredV& pg, unsigned int shift, CpuContext* context) {
    return divide_by_power<std::int8_t>(zdn, pg, shift, context);
}
VecV VecS16ShrDVIM(const VecV& zdn, const PredV& pg, unsigned int shift, CpuContext* context) {
    return divide_by_power<std::int16_t>(zdn, pg, shift, context);
}
VecV VecS32ShrDVIM(const VecV& zdn, const PredV& pg, unsigned int shift, CpuContext* context) {
    return divide_by_power<std::int32_t>(zdn, pg, shift, context);
}
VecV VecS64ShrDVIM(const VecV& zdn, const PredV& pg, unsigned int shift, CpuContext* context) {
    return divide_by_power<std::int64_t>(zdn, pg, shift, context);
}

VecV VecU8ShlRVVM(const VecV& zdn, const PredV& pg, const VecV& zm, CpuContext* context) {
    return reversed_shift<std::uint8_t, left>(zdn, pg, zm, context);
}
VecV VecU16ShlRVVM(const VecV& zdn, const PredV& pg, const VecV& zm, CpuContext* context) {
    return reversed_shift<std::uint16_t, left>(zdn, pg, zm, context);
}
VecV VecU32ShlRVVM(const VecV& zdn, const PredV& pg, const VecV& zm, CpuContext* context) {
    return reversed_shift<std::uint32_t, left>(zdn, pg, zm, context);
}
VecV VecU64ShlRVVM(const VecV& zdn, const PredV& pg, const VecV& zm, CpuContext* context) {
    return reversed_shift<std::uint64_t, left>(zdn, pg, zm, context);
}

VecV VecU8ShrRVVM(const VecV& zdn, const PredV& pg, const VecV& zm, CpuContext* context) {
    return reversed_shift<std::uint8_t, right>(zdn, pg, zm, context);
}
VecV VecU16ShrRVVM(const VecV& zdn, const PredV& pg, const VecV& zm, CpuContext* context) {
    return reversed_shift<std::uint16_t, right>(zdn, pg, zm, context);
}
VecV VecU32ShrRVVM(const VecV& zdn, const PredV& pg, const VecV& zm, CpuContext* context) {
    return reversed_shift<std::uint32_t, right>(zdn, pg, zm, context);
}
VecV VecU64ShrRVVM(const VecV& zdn, const PredV& pg, const VecV& zm, CpuContext* context) {
    return reversed_shift<std::uint64_t, right>(zdn, pg, zm, context);
}
VecV VecS8ShrRVVM(const VecV& zdn, const PredV& pg, const VecV& zm, CpuContext* context) {
    return reversed_shift<std::int8_t, right>(zdn, pg, zm, context);
}
VecV VecS16ShrRVVM(const VecV& zdn, const PredV& pg, const VecV& zm, CpuContext* context) {
    return reversed_shift<std::int16_t, right>(zdn, pg, zm, context);
}
VecV VecS32ShrRVVM(const VecV& zdn, const PredV& pg, const VecV& zm, CpuContext* context) {
    return reversed_shift<std::int32_t, right>(zdn, pg, zm, context);
}
VecV VecS64ShrRVVM(const VecV& zdn, const PredV& pg, const VecV& zm, CpuContext* context) {
    return reversed_shift<std::int64_t, right>(zdn, pg, zm, context);
}

VecV VecU8ShlVWM(const VecV& zdn, const PredV& pg, const VecV& zm, CpuContext* context) {
    return wide_shift<std::uint8_t, left>(zdn, pg, zm, context);
}
VecV VecU16ShlVWM(const VecV& zdn, const PredV& pg, const VecV& zm, CpuContext* context) {
    return wide_shift<std::uint16_t, left>(zdn, pg, zm, context);
}
VecV VecU32ShlVWM(const VecV& zdn, const PredV& pg, const VecV& zm, CpuContext* context) {
    return wide_shift<std::uint32_t, left>(zdn, pg, zm, context);
}

VecV VecU8ShrVWM(const VecV& zdn, const PredV& pg, const VecV& zm, CpuContext* context) {
    return wide_shift<std::uint8_t, right>(zdn, pg, zm, context);
}
VecV VecU16ShrVWM(const VecV& zdn, const PredV& pg, const VecV& zm, CpuContext* context) {
    return wide_shift<std::uint16_t, right>(zdn, pg, zm, context);
}
VecV VecU32ShrVWM(const VecV& zdn, const PredV& pg, const VecV& zm, CpuContext* context) {
    return wide_shift<std::uint32_t, right>(zdn, pg, zm, context);
}
VecV VecS8ShrVWM(const VecV& zdn, const PredV& pg, const VecV& zm, CpuContext* context) {
    return wide_shift<std::int8_t, right>(zdn, pg, zm, context);
}
VecV VecS16ShrVWM(const VecV& zdn, const PredV& pg, const VecV& zm, CpuContext* context) {
    return wide_shift<std::int16_t, right>(zdn, pg, zm, context);
}
VecV VecS32ShrVWM(const VecV& zdn, const PredV& pg, const VecV& zm, CpuContext* context) {
    return wide_shift<std::int32_t, right>(zdn, pg, zm, context);
}

VecV VecU8ShlVWX(const VecV& zn, const VecV& zm, CpuContext* context) {
    return wide_shift<std::uint8_t, left>(zn, zm, context);
}
VecV VecU16ShlVWX(const VecV& zn, const VecV& zm, CpuContext* context) {
    return wide_shift<std::uint16_t, left>(zn, zm, context);
}
VecV VecU32ShlVWX(const VecV& zn, const VecV& zm, CpuContext* context) {
    return wide_shift<std::uint32_t, left>(zn, zm, context);
}

VecV VecU8ShrVWX(const VecV& zn, const VecV& zm, CpuContext* context) {
    return wide_shift<std::uint8_t, right>(zn, zm, context);
}
VecV VecU16ShrVWX(const VecV& zn, const VecV& zm, CpuContext* context) {
    return wide_shift<std::uint16_t, right>(zn, zm, context);
}
VecV VecU32ShrVWX(const VecV& zn, const VecV& zm, CpuContext* context) {
    return wide_shift<std::uint32_t, right>(zn, zm, context);
}
VecV VecS8ShrVWX(const VecV& zn, const VecV& zm, CpuContext* context) {
    return wide_shift<std::int8_t, right>(zn, zm, context);
}
VecV VecS16ShrVWX(const VecV& zn, const VecV& zm, CpuContext* context) {
    return wide_shift<std::int16_t, right>(zn, zm, context);
}
VecV VecS32ShrVWX(const VecV& zn, const VecV& zm, CpuContext* context) {
    return wide_shift<std::int32_t, right>(zn, zm, context);
}
