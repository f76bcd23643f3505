// The loops of the floating-point handlers: one operation for each active element of a row, and none that
// could raise anything for an inactive one.
//
// Element i of a result depends on element i of the operands alone, and these are loaded before it is stored.
// So the destination may be any of the operands, or the governing predicate.
#pragma once

#include "sve/fp/fp_formats.h"
#include "sve/fp/host_fp.h"
#include "sve/handlers/elements.h"

#include <tuple>

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

// compute_lanes in two steps: compute(load(i)) is chunk i, and both chunks of a pair are loaded before either
// is computed. The compiler does not itself move loads over operations of host_fp, and they would not pair.
template <class Element, class Load, class Compute>
[[gnu::always_inline]] inline aarch64_decode_rc compute_loaded_lanes(std::uint8_t* destination, Load load,
                                                                     Compute compute) {
#pragma GCC unroll 4
    for (int i = 0; i < chunks_per_row; i += 2) {
        const auto even = load(i);
        const auto odd = load(i + 1);
        const chunk<Element> even_result = std::apply(compute, even);
        const chunk<Element> odd_result = std::apply(compute, odd);
        store_chunk<Element>(destination, i, even_result);
        store_chunk<Element>(destination, i + 1, odd_result);
    }
    return aarch64_emulated;
}

// compute_elements for an operation of host_fp: on chunks where it takes them.
template <class Element, class Operation, class... Rows>
[[gnu::always_inline]] inline aarch64_decode_rc compute_fp(std::uint8_t* destination, Operation operation,
                                                           const Rows*... sources) {
    if constexpr (host_fp::takes_vectors)
        return compute_loaded_lanes<Element>(
            destination, [&](int i) { return std::tuple(load_chunk<Element>(sources, i)...); }, operation);
    else
        return compute_elements<Element>(destination, operation, sources...);
}

// What inactive elements are computed on, so that they raise nothing: 0 or, in divisions, 1.
enum class idle_operands { zero, one };

template <class Element, idle_operands idle>
inline chunk<Element> keep_active(chunk<Element> active, chunk<Element> operands) {
    if constexpr (idle == idle_operands::zero)
        return operands & active;
    else
        return blend<Element>(active, operands, broadcast(FPFormat<Element>::power_of_two(0)));
}

// compute_active_elements for an operation of host_fp: on chunks where it takes them.
template <class Element, idle_operands idle = idle_operands::zero, class Operation, class... Rows>
[[gnu::always_inline]] inline aarch64_decode_rc compute_active_fp(std::uint8_t* destination,
                                                                  const std::uint8_t* pg, Operation operation,
                                                                  const Rows*... sources) {
    if constexpr (host_fp::takes_vectors) {
        return compute_loaded_lanes<Element>(
            destination,
            [&](int i) {
                return std::tuple(active_lanes<Element>(pg, i), load_chunk<Element>(destination, i),
                                  load_chunk<Element>(sources, i)...);
            },
            [operation](chunk<Element> active, chunk<Element> old, auto... operands) {
                return blend<Element>(active, operation(keep_active<Element, idle>(active, operands)...),
                                      old);
            });
    } else {
        return compute_active_elements<Element>(destination, pg, operation, sources...);
    }
}

// destination[i], as a whole element, = whether element i is active and compare(sources[i]...) holds;
// `compare` is a comparison of host_fp.
template <class Element, class Compare, class... Rows>
[[gnu::always_inline]] inline aarch64_decode_rc compare_active_fp(std::uint8_t* destination,
                                                                  const std::uint8_t* pg, Compare compare,
                                                                  const Rows*... sources) {
    if constexpr (host_fp::takes_vectors) {
        return compute_loaded_lanes<Element>(
            destination,
            [&](int i) {
                return std::tuple(active_lanes<Element>(pg, i), load_chunk<Element>(sources, i)...);
            },
            [compare](chunk<Element> active, auto... operands) {
                return compare(keep_active<Element, idle_operands::zero>(active, operands)...) & active & 1;
            });
    } else {
        return compute_or_else<Element>(
            destination, pg, [compare](auto... elements) { return Element{compare(elements...)}; },
            [destination](int i) { store_element<Element>(destination, i, 0); }, sources...);
    }
}

// zd[i] = operation(host_fp, sources[i]...), every element. The element size is `zd.kind`.
template <auto operation, class... Sources>
aarch64_decode_rc map_fp(cpu_state* state, aarch64_z_reg zd, Sources... sources) {
    return dispatch_fp_elements(zd.kind, [&](auto zero) {
        return compute_fp<decltype(zero)>(
            vector_row(state, zd.reg),
            [fp = host_fp(state)](auto... operands) { return operation(fp, operands...); },
            vector_row(state, sources.reg)...);
    });
}

// zd[i] = operation(host_fp, zn[i]) where pg is active, the old zd[i] elsewhere.
template <auto operation>
aarch64_decode_rc merge_fp(cpu_state* state, aarch64_z_reg zd, aarch64_p_reg pg, aarch64_z_reg zn) {
    return dispatch_fp_elements(zd.kind, [&](auto zero) {
        return compute_active_fp<decltype(zero)>(
            vector_row(state, zd.reg), predicate_row(state, pg.reg),
            [fp = host_fp(state)](auto a) { return operation(fp, a); }, vector_row(state, zn.reg));
    });
}
