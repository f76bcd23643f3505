// The shapes of vector primitives: an operation on elements, carried over all elements of a vector at the
// context's vector length. Bytes of a result above the vector length carry no meaning.
#pragma once

#include "sve/decode/integer_types.h"
#include "sve/decode/library_values.h"
#include "sve/library/wide_integers.h"

#include <type_traits>

// The element as a number, by the signedness of its type.
template <class Element> inline wide_integer widen(Element value) {
    return Int(static_cast<std::uint64_t>(value), width_of<Element>, std::is_unsigned_v<Element>);
}

// result[i] = operation(i), for every element.
template <class Element, class Operation>
inline VecV for_each_element(const CpuContext* context, Operation operation) {
    VecV result;
    const int count = element_count<Element>(context);
    for (int i = 0; i < count; ++i)
        set_element(result, i, static_cast<Element>(operation(i)));
    return result;
}

// result[i] = operation(zn[i]).
template <class Element, class Operation>
inline VecV map_elements(const VecV& zn, const CpuContext* context, Operation operation) {
    return for_each_element<Element>(context, [&](int i) { return operation(get_element<Element>(zn, i)); });
}

// result[i] = operation(zn[i], zm[i]).
template <class Element, class Operation>
inline VecV map_elements(const VecV& zn, const VecV& zm, const CpuContext* context, Operation operation) {
    return for_each_element<Element>(
        context, [&](int i) { return operation(get_element<Element>(zn, i), get_element<Element>(zm, i)); });
}

// result[i] = operation(zdn[i], zm[i]) where the predicate is active, zdn[i] elsewhere.
template <class Element, class Operation>
inline VecV merge_binary(const VecV& zdn, const PredV& pg, const VecV& zm, const CpuContext* context,
                         Operation operation) {
    return for_each_element<Element>(context, [&](int i) {
        const auto old = get_element<Element>(zdn, i);
        return is_active<Element>(pg, i) ? static_cast<Element>(operation(old, get_element<Element>(zm, i)))
                                         : old;
    });
}
