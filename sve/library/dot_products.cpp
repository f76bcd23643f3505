#include "sve/library/dot_products.h"

#include "sve/library/chunk_loops.h"
#include "sve/library/half_elements.h"

namespace {

// Groups of four factors, each with its sum in the element of the accumulator; a product has no overflow.
template <class Element> chunk<Element> accumulate(chunk<Element> sums, chunk<Element> n, chunk<Element> m) {
    using Product = half_as_wide<Element>; // twice as wide as its factors
    using Bits = chunk<std::make_unsigned_t<Element>>;
    const auto a = (chunk<Product>)n;
    const auto b = (chunk<Product>)m;
    const auto even = (chunk<Element>)(lower_halves<Product>(a) * lower_halves<Product>(b));
    const auto odd = (chunk<Element>)(upper_halves<Product>(a) * upper_halves<Product>(b));
    return (chunk<Element>)((Bits)sums + (Bits)(lower_halves<Element>(even) + upper_halves<Element>(even)) +
                            (Bits)(lower_halves<Element>(odd) + upper_halves<Element>(odd)));
}

template <class Element>
VecV dot_product(const VecV& zda, const VecV& zn, const VecV& zm, const CpuContext* context) {
    return for_each_chunk<Element>(context, [&](int i) {
        return accumulate<Element>(get_chunk<Element>(zda, i), get_chunk<Element>(zn, i),
                                   get_chunk<Element>(zm, i));
    });
}

// The group of zm is the one of that index in each 16 bytes.
template <class Element>
VecV indexed_dot_product(const VecV& zda, const VecV& zn, const VecV& zm, int index,
                         const CpuContext* context) {
    return for_each_chunk<Element>(context, [&](int i) {
        return accumulate<Element>(get_chunk<Element>(zda, i), get_chunk<Element>(zn, i),
                                   broadcast(get_chunk<Element>(zm, i)[index]));
    });
}

} // namespace

// A primitive a line. Macros, since only they can make the names.
#define DOT_PRODUCT(name, element)                                                                           \
    VecV name(const VecV& zda, const VecV& zn, const VecV& zm, CpuContext* context) {                        \
        return dot_product<element>(zda, zn, zm, context);                                                   \
    }

DOT_PRODUCT(VecS32DotVVVX, std::int32_t)
DOT_PRODUCT(VecS64DotVVVX, std::int64_t)
DOT_PRODUCT(VecU32DotVVVX, std::uint32_t)
DOT_PRODUCT(VecU64DotVVVX, std::uint64_t)
#undef DOT_PRODUCT

#define INDEXED_DOT_PRODUCT(name, element)                                                                   \
    VecV name(const VecV& zda, const VecV& zn, const VecV& zm, int index, CpuContext* context) {             \
        return indexed_dot_product<element>(zda, zn, zm, index, context);                                    \
    }

INDEXED_DOT_PRODUCT(VecS32DotVVVIX, std::int32_t)
INDEXED_DOT_PRODUCT(VecS64DotVVVIX, std::int64_t)
INDEXED_DOT_PRODUCT(VecU32DotVVVIX, std::uint32_t)
INDEXED_DOT_PRODUCT(VecU64DotVVVIX, std::uint64_t)
#undef INDEXED_DOT_PRODUCT
