#include "sve/library/dot_products.h"

#include "sve/library/chunk_loops.h"

namespace {

// The type of the products that are summed into an accumulator element, twice as wide as their factors.
template <class Element> struct product;
template <> struct product<std::int32_t> { using type = std::int16_t; };
template <> struct product<std::int64_t> { using type = std::int32_t; };
template <> struct product<std::uint32_t> { using type = std::uint16_t; };
template <> struct product<std::uint64_t> { using type = std::uint32_t; };

// The lower and the upper half of each element, extended to its width by the signedness of its type.
template <class Element> chunk<Element> lower_halves(chunk<Element> value) {
    constexpr int half = 4 * sizeof(Element);
    using Bits = chunk<std::make_unsigned_t<Element>>;
    return (chunk<Element>)((Bits)value << half) >> half;
}
template <class Element> chunk<Element> upper_halves(chunk<Element> value) {
    return value >> static_cast<int>(4 * sizeof(Element));
}

// Groups of four factors, each with its sum in the element of the accumulator; a product has no overflow.
template <class Element> chunk<Element> accumulate(chunk<Element> sums, chunk<Element> n, chunk<Element> m) {
    using Product = typename product<Element>::type;
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

VecV VecS32DotVVVX(const VecV& zda, const VecV& zn, const VecV& zm, CpuContext* context) {
    return dot_product<std::int32_t>(zda, zn, zm, context);
}
VecV VecS64DotVVVX(const VecV& zda, const VecV& zn, const VecV& zm, CpuContext* context) {
    return dot_product<std::int64_t>(zda, zn, zm, context);
}
VecV VecU32DotVVVX(const VecV& zda, const VecV& zn, const VecV& zm, CpuContext* context) {
    return dot_product<std::uint32_t>(zda, zn, zm, context);
}
VecV VecU64DotVVVX(const VecV& zda, const VecV& zn, const VecV& zm, CpuContext* context) {
    return dot_product<std::uint64_t>(zda, zn, zm, context);
}

VecV VecS32DotVVVIX(const VecV& zda, const VecV& zn, const VecV& zm, int index, CpuContext* context) {
    return indexed_dot_product<std::int32_t>(zda, zn, zm, index, context);
}
VecV VecS64DotVVVIX(const VecV& zda, const VecV& zn, const VecV& zm, int index, CpuContext* context) {
    return indexed_dot_product<std::int64_t>(zda, zn, zm, index, context);
}
VecV VecU32DotVVVIX(const VecV& zda, const VecV& zn, const VecV& zm, int index, CpuContext* context) {
    return indexed_dot_product<std::uint32_t>(zda, zn, zm, index, context);
}
VecV VecU64DotVVVIX(const VecV& zda, const VecV& zn, const VecV& zm, int index, CpuContext* context) {
    return indexed_dot_product<std::uint64_t>(zda, zn, zm, index, context);
}
