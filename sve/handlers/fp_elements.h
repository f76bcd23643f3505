// The loops of the floating-point handlers: one scalar operation for each active element of a row, none for
// an inactive one.
//
// Element i of a result depends on element i of the operands alone, and these are loaded before it is stored.
// So the destination may be any of the operands, or the governing predicate.
#pragma once

#include "sve/fp/host_fp.h"
#include "sve/handlers/elements.h"

// Calls `body` with a value of the type that holds an element's bits: doublewords or, for any other code,
// words.
template <class Body>
[[gnu::always_inline]] inline aarch64_decode_rc dispatch_fp_elements(int size_code, Body body) {
    if (size_code == doubleword_elements)
        return body(std::uint64_t{});
    return body(std::uint32_t{});
}

// destination[i] = operation(sources[i]...), for every element. Four results are stored at once, in pairs of
// registers.
template <class Element, class Operation, class... Rows>
[[gnu::always_inline]] inline aarch64_decode_rc
compute_elements(std::uint8_t* destination, Operation operation, const Rows*... sources) {
    constexpr int together = 4;
#pragma GCC unroll 8
    for (int first = 0; first < elements_per_row<Element>; first += together) {
        Element results[together];
#pragma GCC unroll 4
        for (int k = 0; k < together; ++k)
            results[k] = operation(load_element<Element>(sources, first + k)...);
#pragma GCC unroll 4
        for (int k = 0; k < together; ++k)
            store_element(destination, first + k, results[k]);
    }
    return aarch64_emulated;
}

// The same for active elements. Inactive ones are left to inactive(i).
template <class Element, class Operation, class Inactive, class... Rows>
[[gnu::always_inline]] inline aarch64_decode_rc compute_or_else(std::uint8_t* destination,
                                                                const std::uint8_t* pg, Operation operation,
                                                                Inactive inactive, const Rows*... sources) {
    if (all_active<Element>(pg)) // in most turns of most loops
        return compute_elements<Element>(destination, operation, sources...);
#pragma GCC unroll 4
    for (int i = 0; i < elements_per_row<Element>; ++i) {
        if (load_element<Element>(pg, i) & 1)
            store_element<Element>(destination, i, operation(load_element<Element>(sources, i)...));
        else
            inactive(i);
    }
    return aarch64_emulated;
}

// The same for active elements; the others keep the destination's.
template <class Element, class Operation, class... Rows>
[[gnu::always_inline]] inline aarch64_decode_rc
compute_active_elements(std::uint8_t* destination, const std::uint8_t* pg, Operation operation,
                        const Rows*... sources) {
    return compute_or_else<Element>(
        destination, pg, operation, [](int) {}, sources...);
}

// destination[i], as a whole element, = whether element i is active and compare(sources[i]...) holds.
template <class Element, class Compare, class... Rows>
[[gnu::always_inline]] inline aarch64_decode_rc
compare_active_elements(std::uint8_t* destination, const std::uint8_t* pg, Compare compare,
                        const Rows*... sources) {
    return compute_or_else<Element>(
        destination, pg, [compare](auto... elements) { return Element{compare(elements...)}; },
        [destination](int i) { store_element<Element>(destination, i, 0); }, sources...);
}
