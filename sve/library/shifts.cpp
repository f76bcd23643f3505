#include "sve/library/shifts.h"

// `shift` is ShiftLeftInt or ShiftRightInt in all of these: the bits of the element shifted by a count of any
// size.
template <auto shift, class Element> static std::uint64_t shifted(Element value, std::uint64_t count) {
    return bits(shift(widen(value), Int(count, 64, true)));
}

template <class Element>
static VecV shift_right(const VecV& zdn, const PredV& pg, unsigned int count, const CpuContext* context) {
    return merge_unary<Element>(zdn, pg, zdn, context,
                                [=](Element value) { return shifted<ShiftRightInt>(value, count); });
}
template <class Element>
static VecV shift_right(const VecV& zn, unsigned int count, const CpuContext* context) {
    return map_elements<Element>(zn, context,
                                 [=](Element value) { return shifted<ShiftRightInt>(value, count); });
}

// Adding 2 to the shift, less 1, to negative elements makes the shift round towards zero.
template <class Element>
static VecV divide_by_power(const VecV& zdn, const PredV& pg, unsigned int count, const CpuContext* context) {
    const wide_integer rounding = SubInt(ShiftLeftInt(1, count), 1);
    return merge_unary<Element>(zdn, pg, zdn, context, [=](Element value) {
        const wide_integer dividend = AddInt(widen(value), value < 0 ? rounding : 0);
        return bits(ShiftRightInt(dividend, count));
    });
}

template <class Element, auto shift>
static VecV reversed_shift(const VecV& zdn, const PredV& pg, const VecV& zm, const CpuContext* context) {
    using Count = std::make_unsigned_t<Element>;
    return merge_binary<Element>(zdn, pg, zm, context, [](Element count, Element value) {
        return shifted<shift>(value, static_cast<Count>(count));
    });
}

// The 64-bit lane that holds element i.
template <class Element> static std::uint64_t wide_count(const VecV& counts, int i) {
    return get_element<std::uint64_t>(counts, i / static_cast<int>(8 / sizeof(Element)));
}

template <class Element, auto shift>
static VecV wide_shift(const VecV& zdn, const PredV& pg, const VecV& zm, const CpuContext* context) {
    return merge_each_element<Element>(zdn, pg, context, [&](int i) {
        return shifted<shift>(get_element<Element>(zdn, i), wide_count<Element>(zm, i));
    });
}
template <class Element, auto shift>
static VecV wide_shift(const VecV& zn, const VecV& zm, const CpuContext* context) {
    return for_each_element<Element>(context, [&](int i) {
        return shifted<shift>(get_element<Element>(zn, i), wide_count<Element>(zm, i));
    });
}

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
    return reversed_shift<std::uint8_t, ShiftLeftInt>(zdn, pg, zm, context);
}
VecV VecU16ShlRVVM(const VecV& zdn, const PredV& pg, const VecV& zm, CpuContext* context) {
    return reversed_shift<std::uint16_t, ShiftLeftInt>(zdn, pg, zm, context);
}
VecV VecU32ShlRVVM(const VecV& zdn, const PredV& pg, const VecV& zm, CpuContext* context) {
    return reversed_shift<std::uint32_t, ShiftLeftInt>(zdn, pg, zm, context);
}
VecV VecU64ShlRVVM(const VecV& zdn, const PredV& pg, const VecV& zm, CpuContext* context) {
    return reversed_shift<std::uint64_t, ShiftLeftInt>(zdn, pg, zm, context);
}

VecV VecU8ShrRVVM(const VecV& zdn, const PredV& pg, const VecV& zm, CpuContext* context) {
    return reversed_shift<std::uint8_t, ShiftRightInt>(zdn, pg, zm, context);
}
VecV VecU16ShrRVVM(const VecV& zdn, const PredV& pg, const VecV& zm, CpuContext* context) {
    return reversed_shift<std::uint16_t, ShiftRightInt>(zdn, pg, zm, context);
}
VecV VecU32ShrRVVM(const VecV& zdn, const PredV& pg, const VecV& zm, CpuContext* context) {
    return reversed_shift<std::uint32_t, ShiftRightInt>(zdn, pg, zm, context);
}
VecV VecU64ShrRVVM(const VecV& zdn, const PredV& pg, const VecV& zm, CpuContext* context) {
    return reversed_shift<std::uint64_t, ShiftRightInt>(zdn, pg, zm, context);
}
VecV VecS8ShrRVVM(const VecV& zdn, const PredV& pg, const VecV& zm, CpuContext* context) {
    return reversed_shift<std::int8_t, ShiftRightInt>(zdn, pg, zm, context);
}
VecV VecS16ShrRVVM(const VecV& zdn, const PredV& pg, const VecV& zm, CpuContext* context) {
    return reversed_shift<std::int16_t, ShiftRightInt>(zdn, pg, zm, context);
}
VecV VecS32ShrRVVM(const VecV& zdn, const PredV& pg, const VecV& zm, CpuContext* context) {
    return reversed_shift<std::int32_t, ShiftRightInt>(zdn, pg, zm, context);
}
VecV VecS64ShrRVVM(const VecV& zdn, const PredV& pg, const VecV& zm, CpuContext* context) {
    return reversed_shift<std::int64_t, ShiftRightInt>(zdn, pg, zm, context);
}

VecV VecU8ShlVWM(const VecV& zdn, const PredV& pg, const VecV& zm, CpuContext* context) {
    return wide_shift<std::uint8_t, ShiftLeftInt>(zdn, pg, zm, context);
}
VecV VecU16ShlVWM(const VecV& zdn, const PredV& pg, const VecV& zm, CpuContext* context) {
    return wide_shift<std::uint16_t, ShiftLeftInt>(zdn, pg, zm, context);
}
VecV VecU32ShlVWM(const VecV& zdn, const PredV& pg, const VecV& zm, CpuContext* context) {
    return wide_shift<std::uint32_t, ShiftLeftInt>(zdn, pg, zm, context);
}

VecV VecU8ShrVWM(const VecV& zdn, const PredV& pg, const VecV& zm, CpuContext* context) {
    return wide_shift<std::uint8_t, ShiftRightInt>(zdn, pg, zm, context);
}
VecV VecU16ShrVWM(const VecV& zdn, const PredV& pg, const VecV& zm, CpuContext* context) {
    return wide_shift<std::uint16_t, ShiftRightInt>(zdn, pg, zm, context);
}
VecV VecU32ShrVWM(const VecV& zdn, const PredV& pg, const VecV& zm, CpuContext* context) {
    return wide_shift<std::uint32_t, ShiftRightInt>(zdn, pg, zm, context);
}
VecV VecS8ShrVWM(const VecV& zdn, const PredV& pg, const VecV& zm, CpuContext* context) {
    return wide_shift<std::int8_t, ShiftRightInt>(zdn, pg, zm, context);
}
VecV VecS16ShrVWM(const VecV& zdn, const PredV& pg, const VecV& zm, CpuContext* context) {
    return wide_shift<std::int16_t, ShiftRightInt>(zdn, pg, zm, context);
}
VecV VecS32ShrVWM(const VecV& zdn, const PredV& pg, const VecV& zm, CpuContext* context) {
    return wide_shift<std::int32_t, ShiftRightInt>(zdn, pg, zm, context);
}

VecV VecU8ShlVWX(const VecV& zn, const VecV& zm, CpuContext* context) {
    return wide_shift<std::uint8_t, ShiftLeftInt>(zn, zm, context);
}
VecV VecU16ShlVWX(const VecV& zn, const VecV& zm, CpuContext* context) {
    return wide_shift<std::uint16_t, ShiftLeftInt>(zn, zm, context);
}
VecV VecU32ShlVWX(const VecV& zn, const VecV& zm, CpuContext* context) {
    return wide_shift<std::uint32_t, ShiftLeftInt>(zn, zm, context);
}

VecV VecU8ShrVWX(const VecV& zn, const VecV& zm, CpuContext* context) {
    return wide_shift<std::uint8_t, ShiftRightInt>(zn, zm, context);
}
VecV VecU16ShrVWX(const VecV& zn, const VecV& zm, CpuContext* context) {
    return wide_shift<std::uint16_t, ShiftRightInt>(zn, zm, context);
}
VecV VecU32ShrVWX(const VecV& zn, const VecV& zm, CpuContext* context) {
    return wide_shift<std::uint32_t, ShiftRightInt>(zn, zm, context);
}
VecV VecS8ShrVWX(const VecV& zn, const VecV& zm, CpuContext* context) {
    return wide_shift<std::int8_t, ShiftRightInt>(zn, zm, context);
}
VecV VecS16ShrVWX(const VecV& zn, const VecV& zm, CpuContext* context) {
    return wide_shift<std::int16_t, ShiftRightInt>(zn, zm, context);
}
VecV VecS32ShrVWX(const VecV& zn, const VecV& zm, CpuContext* context) {
    return wide_shift<std::int32_t, ShiftRightInt>(zn, zm, context);
}
