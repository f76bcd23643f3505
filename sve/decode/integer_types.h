// Integer types and their sizes.
#pragma once

#include <cstdint>
#include <type_traits>

// In bits.
template <class Integer> inline constexpr int width_of = 8 * static_cast<int>(sizeof(Integer));

template <int bytes, bool is_signed> struct integer_of_size;
template <> struct integer_of_size<1, false> { using type = std::uint8_t; };
template <> struct integer_of_size<2, false> { using type = std::uint16_t; };
template <> struct integer_of_size<4, false> { using type = std::uint32_t; };
template <> struct integer_of_size<8, false> { using type = std::uint64_t; };
template <> struct integer_of_size<1, true> { using type = std::int8_t; };
template <> struct integer_of_size<2, true> { using type = std::int16_t; };
template <> struct integer_of_size<4, true> { using type = std::int32_t; };
template <> struct integer_of_size<8, true> { using type = std::int64_t; };

template <int bytes> using unsigned_integer = typename integer_of_size<bytes, false>::type;

// The types twice and half as wide, of the same signedness.
template <class Integer>
using twice_as_wide = typename integer_of_size<2 * sizeof(Integer), std::is_signed_v<Integer>>::type;
template <class Integer>
using half_as_wide = typename integer_of_size<sizeof(Integer) / 2, std::is_signed_v<Integer>>::type;
