#include "sve/fp/fp_trigonometry.h"

#include "sve/fp/fp_arithmetic.h"
#include "sve/fp/fp_multiply_add.h"
#include "sve/fp/fp_tables.h"

namespace {

template <class Bits> constexpr auto exponential_table = fp_make_exponential_table<Bits>();

// The architecture's coefficients: the first eight of the sine's series, the others of the cosine's.
template <class Bits> constexpr Bits coeff[16] = {};
template <>
constexpr std::uint16_t coeff<std::uint16_t>[16] = {
    0x3C00, 0xB155, 0x2030, 0, 0, 0, 0, 0, // sine
    0x3C00, 0xB800, 0x293A, 0, 0, 0, 0, 0, // cosine
};
template <>
constexpr std::uint32_t coeff<std::uint32_t>[16] = {
    0x3F800000, 0xBE2AAAAB, 0x3C088886, 0xB95008B9, 0x36369D6D, 0, 0, 0, // sine
    0x3F800000, 0xBF000000, 0x3D2AAAA6, 0xBAB60705, 0x37CD37CC, 0, 0, 0, // cosine
};
template <>
constexpr std::uint64_t coeff<std::uint64_t>[16] = {
    // sine
    0x3FF0000000000000,
    0xBFC5555555555543,
    0x3F8111111110F30C,
    0xBF2A01A019B92FC6, //
    0x3EC71DE351F3D22B,
    0xBE5AE5E2B60F7B91,
    0x3DE5D8408868552F,
    0,
    // cosine
    0x3FF0000000000000,
    0xBFE0000000000000,
    0x3FA5555555555536,
    0xBF56C16C16C13A0B, //
    0x3EFA01A019B1E8D8,
    0xBE927E4F7282F468,
    0x3E21EE96D2641B13,
    0xBDA8F76380FBB401,
};

} // namespace

template <class Bits> Bits FPEXPA(Bits a) {
    using Format = FPFormat<Bits>;
    constexpr int index_bits = sizeof(Bits) == 2 ? 5 : 6;
    const unsigned index = static_cast<unsigned>(a & ((1 << index_bits) - 1));
    const Bits exponent = static_cast<Bits>((a >> index_bits) & Format::infinite_exponent);
    return static_cast<Bits>((exponent << Format::fraction_bits) | exponential_table<Bits>[index]);
}

template <class Bits> Bits FPTRIMADD(unsigned long index, Bits a, Bits b, FPSCR& fpscr) {
    const unsigned long row = (index & 7) + (fp_sign(b) ? 8 : 0);
    return FPMulAdd<Bits>(coeff<Bits>[row], a, FPAbs(b), fpscr);
}

template <class Bits> Bits FPTRISMUL(Bits a, Bits b, FPSCR& fpscr) {
    const Bits square = FPMul(a, a, fpscr);
    return fp_is_nan(square) ? square : fp_with_sign<Bits>(static_cast<int>(b & 1), FPAbs(square));
}

#define INSTANTIATE(Bits)                                                                                    \
    template Bits FPEXPA(Bits);                                                                              \
    template Bits FPTRIMADD(unsigned long, Bits, Bits, FPSCR&);                                              \
    template Bits FPTRISMUL(Bits, Bits, FPSCR&);
FP_FOR_EACH_FORMAT(INSTANTIATE)
#undef INSTANTIATE
