#include "sve/library/dot_products.h"

// The type of the factors that are summed into an accumulator element.
template <class Element> struct factor;
template <> struct factor<std::int32_t> { using type = std::int8_t; };
template <> struct factor<std::int64_t> { using type = std::int16_t; };
template <> struct factor<std::uint32_t> { using type = std::uint8_t; };
template <> struct factor<std::uint64_t> { using type = std::uint16_t; };

// zda[i] plus the products of group i of zn with the group of zm that `group_of(i)` names.
template <class Element, class GroupOf>
static VecV accumulate(const VecV& zda, const VecV& zn, const VecV& zm, const CpuContext* context,
                       GroupOf group_of) {
    using Narrow = typename factor<Element>::type;
    return for_each_element<Element>(context, [&](int i) {
        const int group = group_of(i);
        wide_integer sum = widen(get_element<Element>(zda, i));
        for (int j = 0; j < 4; ++j) {
            const wide_integer a = widen(get_element<Narrow>(zn, 4 * i + j));
            const wide_integer b = widen(get_element<Narrow>(zm, 4 * group + j));
            sum = AddInt(sum, multiply_wide(a, b));
        }
        return bits(sum);
    });
}

template <class Element>
static VecV dot_product(const VecV& zda, const VecV& zn, const VecV& zm, const CpuContext* context) {
    return accumulate<Element>(zda, zn, zm, context, [](int i) { return i; });
}

template <class Element>
static VecV indexed_dot_product(const VecV& zda, const VecV& zn, const VecV& zm, int index,
                                const CpuContext* context) {
    constexpr int segment_elements = 16 / static_cast<int>(sizeof(Element));
    return accumulate<Element>(zda, zn, zm, context,
                               [=](int i) { return i / segment_elements * segment_elements + index; });
}

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
