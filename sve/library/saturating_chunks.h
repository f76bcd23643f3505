// Saturating sums and differences of whole chunks, and of vectors and one number. A step is bounded by the
// room that is left, so that nothing overflows on the way.
#pragma once

#include "sve/library/chunk_loops.h"

#include <limits>
#include <type_traits>

// The smaller of each pair of unsigned elements.
template <class Vector> inline Vector smaller(Vector a, Vector b) {
    const auto less = (Vector)(a < b);
    return (less & a) | (~less & b);
}

// a plus or minus an unsigned step, saturated.
template <class Element> inline auto add_step(chunk<Element> a, chunk<std::make_unsigned_t<Element>> step) {
    using Bits = std::make_unsigned_t<Element>;
    constexpr auto most = static_cast<Bits>(std::numeric_limits<Element>::max());
    return (chunk<Bits>)a + smaller(step, most - (chunk<Bits>)a);
}
template <class Element>
inline auto subtract_step(chunk<Element> a, chunk<std::make_unsigned_t<Element>> step) {
    using Bits = std::make_unsigned_t<Element>;
    constexpr auto least = static_cast<Bits>(std::numeric_limits<Element>::min());
    return (chunk<Bits>)a - smaller(step, (chunk<Bits>)a - least);
}

// `wrapped` where no sign was lost, and otherwise the bound on the side of a: `lost` is negative there.
template <class Element>
inline auto bound_signed(chunk<Element> a, chunk<Element> wrapped, chunk<Element> lost) {
    constexpr Element most = std::numeric_limits<Element>::max();
    return blend<Element>((chunk<Element>)(lost < 0), (a >> (width_of<Element> - 1)) ^ most, wrapped);
}

// a plus or minus b, saturated.
template <class Element> inline auto add_saturated(chunk<Element> a, chunk<Element> b) {
    if constexpr (std::is_unsigned_v<Element>) {
        return add_step<Element>(a, b);
    } else {
        using Bits = chunk<std::make_unsigned_t<Element>>;
        const auto sum = (chunk<Element>)((Bits)a + (Bits)b);
        return bound_signed<Element>(a, sum, (sum ^ a) & (sum ^ b));
    }
}
template <class Element> inline auto subtract_saturated(chunk<Element> a, chunk<Element> b) {
    if constexpr (std::is_unsigned_v<Element>) {
        return subtract_step<Element>(a, b);
    } else {
        using Bits = chunk<std::make_unsigned_t<Element>>;
        const auto difference = (chunk<Element>)((Bits)a - (Bits)b);
        return bound_signed<Element>(a, difference, (difference ^ a) & (a ^ b));
    }
}

// The step in every lane, or the largest that a lane holds, which saturates as well.
template <class Element> inline auto uniform_step(unsigned long step) {
    using Bits = std::make_unsigned_t<Element>;
    constexpr unsigned long most = std::numeric_limits<Bits>::max();
    return broadcast(static_cast<Bits>(step < most ? step : most));
}

// vector[i] plus or minus the step, saturated.
template <class Element>
inline VecV add_to_elements(const VecV& vector, unsigned long step, const CpuContext* context) {
    return map_chunks<Element>(vector, context, [steps = uniform_step<Element>(step)](auto a) {
        return add_step<Element>(a, steps);
    });
}
template <class Element>
inline VecV subtract_from_elements(const VecV& vector, unsigned long step, const CpuContext* context) {
    return map_chunks<Element>(vector, context, [steps = uniform_step<Element>(step)](auto a) {
        return subtract_step<Element>(a, steps);
    });
}
