// Elements as pairs of elements half as wide, extended to the whole width by the signedness of the type.
#pragma once

#include "sve/handlers/elements.h"

#include <type_traits>

template <class Element> inline chunk<Element> lower_halves(chunk<Element> value) {
    constexpr int half = 4 * sizeof(Element);
    using Bits = std::make_unsigned_t<Element>;
    return (chunk<Element>)((chunk<Bits>)value << half) >> half;
}

template <class Element> inline chunk<Element> upper_halves(chunk<Element> value) {
    constexpr int half = 4 * sizeof(Element);
    return value >> half;
}
