// The shapes of floating-point primitives: a kernel carried over the elements of a vector at the context's
// vector length. Elements are the unsigned types that hold their bits. One FPSCR record serves all elements
// of an instruction: kernels read its control bits and only ever set exceptions, so that merging it once
// gives what merging after each element would. Where no element is active, nothing is merged.
#pragma once

#include "sve/fp/fp_element.h"
#include "sve/fp/fp_formats.h"
#include "sve/library/element_loops.h"
#include "sve/library/predicate_words.h"
#include "sve/library/primitive_shapes.h"

#include <bit>

using half_bits = std::uint16_t;
using single_bits = std::uint32_t;
using double_bits = std::uint64_t;

template <class Element> inline bool any_active(const PredV& pg, const CpuContext* context) {
    std::uint64_t bits = 0;
    for (int w = 0, words = word_count(context); w < words; ++w)
        bits |= active_bits<Element>(pg, w, predicate_length(context));
    return bits != 0;
}

// Calls operation(i, bit) for each active element i of a predicate's word, in ascending order. `bit` is the
// place of its predicate bit in the word.
template <class Element, class Operation>
inline void for_each_active_in(const PredV& pg, int word, const CpuContext* context, Operation operation) {
    for (std::uint64_t bits = active_bits<Element>(pg, word, predicate_length(context)); bits != 0;
         bits &= bits - 1) {
        const auto bit = static_cast<unsigned>(std::countr_zero(bits));
        operation(static_cast<int>((64u * static_cast<unsigned>(word) + bit) / sizeof(Element)), bit);
    }
}

// Calls operation(i) for each active element i, in ascending order.
template <class Element, class Operation>
inline void for_each_active(const PredV& pg, const CpuContext* context, Operation operation) {
    for (int w = 0, words = word_count(context); w < words; ++w)
        for_each_active_in<Element>(pg, w, context, [&](int i, unsigned) { operation(i); });
}

// Calls loop(fpscr) for the elements of an instruction and merges its exceptions, if there are any elements.
template <class Loop>
inline void with_fp_status(bool any_elements, CpuContext* context, Loop loop, std::uint32_t cleared = 0) {
    if (!any_elements)
        return;
    with_fpscr(
        context,
        [&](FPSCR& fpscr) {
            loop(fpscr);
            return 0;
        },
        cleared);
}

// result[i] = operation(i, fpscr), for every element.
template <class Element, class Operation>
inline VecV fp_each_element(CpuContext* context, Operation operation) {
    VecV result;
    const int count = element_count<Element>(context);
    with_fp_status(count != 0, context, [&](FPSCR& fpscr) {
        for (int i = 0; i < count; ++i)
            set_element<Element>(result, i, operation(i, fpscr));
    });
    return result;
}

// result[i] = kernel(zn[i], fpscr).
template <class Element, auto kernel> inline VecV fp_map(const VecV& zn, CpuContext* context) {
    return fp_each_element<Element>(
        context, [&](int i, FPSCR& fpscr) { return kernel(get_element<Element>(zn, i), fpscr); });
}

// result[i] = kernel(zn[i], zm[i], fpscr).
template <class Element, auto kernel>
inline VecV fp_map(const VecV& zn, const VecV& zm, CpuContext* context) {
    return fp_each_element<Element>(context, [&](int i, FPSCR& fpscr) {
        return kernel(get_element<Element>(zn, i), get_element<Element>(zm, i), fpscr);
    });
}

// result[i] = operation(i, fpscr) where the predicate is active, old[i] elsewhere. The control bits `cleared`
// don't reach the operation.
template <class Element, class Operation>
inline VecV fp_merge_each(const VecV& old, const PredV& pg, CpuContext* context, Operation operation,
                          std::uint32_t cleared = 0) {
    VecV result = old;
    with_fp_status(
        any_active<Element>(pg, context), context,
        [&](FPSCR& fpscr) {
            for_each_active<Element>(pg, context, [&](int i) {
                set_element<Element>(result, i, static_cast<Element>(operation(i, fpscr)));
            });
        },
        cleared);
    return result;
}

// result[i] = kernel(zn[i], fpscr) where the predicate is active, old[i] elsewhere.
template <class Element, auto kernel>
inline VecV fp_merge_unary(const VecV& old, const PredV& pg, const VecV& zn, CpuContext* context) {
    return fp_merge_each<Element>(
        old, pg, context, [&](int i, FPSCR& fpscr) { return kernel(get_element<Element>(zn, i), fpscr); });
}

// result[i] = kernel(zdn[i], zm[i], fpscr) where the predicate is active, zdn[i] elsewhere.
template <class Element, auto kernel>
inline VecV fp_merge_binary(const VecV& zdn, const PredV& pg, const VecV& zm, CpuContext* context) {
    return fp_merge_each<Element>(zdn, pg, context, [&](int i, FPSCR& fpscr) {
        return kernel(get_element<Element>(zdn, i), get_element<Element>(zm, i), fpscr);
    });
}

// result[i] = kernel(zdn[i], constant, fpscr) where the predicate is active, zdn[i] elsewhere.
template <class Element, auto kernel>
inline VecV fp_merge_with(const VecV& zdn, const PredV& pg, Element constant, CpuContext* context) {
    return fp_merge_each<Element>(zdn, pg, context, [&](int i, FPSCR& fpscr) {
        return kernel(get_element<Element>(zdn, i), constant, fpscr);
    });
}
