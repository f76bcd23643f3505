#include "sve/library/fp_conversions.h"

#include "sve/fp/fp_convert.h"
#include "sve/library/primitive_definitions.h"

#include <type_traits>

// Calls kernel(low bits of zn's container, fpscr) for each active container; its result, zero- or
// sign-extended by its type, is the container's new value. The control bits `cleared` don't reach the kernel.
template <class Container, class From, class Kernel>
static VecV convert_containers(const VecV& zd, const PredV& pg, const VecV& zn, CpuContext* context,
                               Kernel kernel, std::uint32_t cleared = 0) {
    return fp_merge_each<Container>(
        zd, pg, context,
        [&](int i, FPSCR& fpscr) { return kernel(static_cast<From>(get_element<Container>(zn, i)), fpscr); },
        cleared);
}

// Between formats. Neither the alternative half format nor the flushing of halves applies.
template <class From, class To>
static VecV convert(const VecV& zd, const PredV& pg, const VecV& zn, CpuContext* context) {
    using Container = std::conditional_t<(sizeof(From) > sizeof(To)), From, To>;
    return convert_containers<Container, From>(
        zd, pg, zn, context,
        [](From value, FPSCR& fpscr) { return FPConvert<From, To>(value, fpscr.rounding(), fpscr); },
        FPSCR::AHP | FPSCR::FZ16);
}

// To an integer of To's width and signedness, towards zero.
template <class From, class To>
static VecV to_integer(const VecV& zd, const PredV& pg, const VecV& zn, CpuContext* context) {
    using Magnitude = std::make_unsigned_t<To>;
    using Container = std::conditional_t<(sizeof(From) > sizeof(To)), From, Magnitude>;
    return convert_containers<Container, From>(zd, pg, zn, context, [](From value, FPSCR& fpscr) {
        return static_cast<To>(
            fplibFPToFixed<From, Magnitude>(value, 0, std::is_unsigned_v<To>, FPRounding_ZERO, fpscr));
    });
}

// From an integer of From's width and signedness.
template <class From, class To>
static VecV from_integer(const VecV& zd, const PredV& pg, const VecV& zn, CpuContext* context) {
    using Container = std::conditional_t<(sizeof(From) > sizeof(To)), std::make_unsigned_t<From>, To>;
    return convert_containers<Container, From>(zd, pg, zn, context, [](From value, FPSCR& fpscr) {
        return fplibFixedToFP<To>(static_cast<std::uint64_t>(value), 0, std::is_unsigned_v<From>,
                                  fpscr.rounding(), fpscr);
    });
}

MERGING_PRIMITIVE(VecH32TruncFVM, convert<single_bits, half_bits>)
MERGING_PRIMITIVE(VecH64TruncDVM, convert<double_bits, half_bits>)
MERGING_PRIMITIVE(VecF64TruncDVM, convert<double_bits, single_bits>)
MERGING_PRIMITIVE(VecF32ExtndHVM, convert<half_bits, single_bits>)
MERGING_PRIMITIVE(VecD64ExtndHVM, convert<half_bits, double_bits>)
MERGING_PRIMITIVE(VecD64ExtndFVM, convert<single_bits, double_bits>)

MERGING_PRIMITIVE(VecS16_2FromHVM, to_integer<half_bits, std::int16_t>)
MERGING_PRIMITIVE(VecU16_2FromHVM, to_integer<half_bits, std::uint16_t>)
MERGING_PRIMITIVE(VecS32_4FromHVM, to_integer<half_bits, std::int32_t>)
MERGING_PRIMITIVE(VecU32_4FromHVM, to_integer<half_bits, std::uint32_t>)
MERGING_PRIMITIVE(VecS64_8FromHVM, to_integer<half_bits, std::int64_t>)
MERGING_PRIMITIVE(VecU64_8FromHVM, to_integer<half_bits, std::uint64_t>)
MERGING_PRIMITIVE(VecS32_4FromFVM, to_integer<single_bits, std::int32_t>)
MERGING_PRIMITIVE(VecU32_4FromFVM, to_integer<single_bits, std::uint32_t>)
MERGING_PRIMITIVE(VecS64_8FromFVM, to_integer<single_bits, std::int64_t>)
MERGING_PRIMITIVE(VecU64_8FromFVM, to_integer<single_bits, std::uint64_t>)
MERGING_PRIMITIVE(VecS64_4FromDVM, to_integer<double_bits, std::int32_t>)
MERGING_PRIMITIVE(VecU64_4FromDVM, to_integer<double_bits, std::uint32_t>)
MERGING_PRIMITIVE(VecS64_8FromDVM, to_integer<double_bits, std::int64_t>)
MERGING_PRIMITIVE(VecU64_8FromDVM, to_integer<double_bits, std::uint64_t>)

MERGING_PRIMITIVE(VecF16FromS2VM, from_integer<std::int16_t, half_bits>)
MERGING_PRIMITIVE(VecF16FromU2VM, from_integer<std::uint16_t, half_bits>)
MERGING_PRIMITIVE(VecF16FromS4VM, from_integer<std::int32_t, half_bits>)
MERGING_PRIMITIVE(VecF16FromU4VM, from_integer<std::uint32_t, half_bits>)
MERGING_PRIMITIVE(VecF16FromS8VM, from_integer<std::int64_t, half_bits>)
MERGING_PRIMITIVE(VecF16FromU8VM, from_integer<std::uint64_t, half_bits>)
MERGING_PRIMITIVE(VecF64FromU8VM, from_integer<std::uint64_t, single_bits>)
