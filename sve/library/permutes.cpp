#include "sve/library/permutes.h"

#include "sve/library/chunk_loops.h"
#include "sve/library/half_elements.h"
#include "sve/library/predicate_flags.h"
#include "sve/library/primitive_definitions.h"

namespace {

template <class Element> VecV transpose_even(const VecV& zn, const VecV& zm, CpuContext* context) {
    if constexpr (sizeof(Element) < 8) {
        // The number of elements is even at every length, so that each stands in a 64-bit lane with its pair.
        constexpr int width = width_of<Element>;
        constexpr std::uint64_t even = ~std::uint64_t{0} / ((std::uint64_t{1} << width) + 1);
        return map_chunks<std::uint64_t>(zn, zm, context,
                                         [](auto n, auto m) { return (n & even) | (m & even) << width; });
    }
    const int pairs = element_count<Element>(context) / 2;
    VecV result = {};
    for (int k = 0; k < pairs; ++k) {
        set_element(result, 2 * k, get_element<Element>(zn, 2 * k));
        set_element(result, 2 * k + 1, get_element<Element>(zm, 2 * k));
    }
    return result;
}

template <class Element> VecV splice(const PredV& pg, const VecV& zdn, const VecV& zm, CpuContext* context) {
    const int last = FindLastActive(pg, width_of<Element>, context);
    const int first = last < 0 ? 0 : FindFirstActive(pg, width_of<Element>, context);
    const std::size_t kept = static_cast<std::size_t>(last + 1 - first) * sizeof(Element);
    const std::size_t filled = static_cast<std::size_t>(vector_length(context)) * 8 - kept;
    VecV result = {};
    std::memcpy(result.bytes, zdn.bytes + static_cast<std::size_t>(first) * sizeof(Element), kept);
    std::memcpy(result.bytes + kept, zm.bytes, filled);
    return result;
}

template <class Element> VecV compress(const PredV& pg, const VecV& zn, CpuContext* context) {
    const int count = element_count<Element>(context);
    VecV result = {};
    for (int i = 0, next = 0; i < count; ++i)
        if (is_active<Element>(pg, i))
            set_element(result, next++, get_element<Element>(zn, i));
    return result;
}

enum class vector_half { low, high };

template <class Element, vector_half half> VecV unpack(const VecV& zn, CpuContext* context) {
    using Narrow = half_as_wide<Element>;
    const int start = half == vector_half::high ? vector_length(context) * 4 : 0;
    return for_each_chunk<Element>(context, [&](int i) {
        chunk<std::uint64_t> narrow = {};
        std::memcpy(&narrow, zn.bytes + start + i * chunk_bytes / 2, chunk_bytes / 2);
        const auto elements = (chunk<Narrow>)narrow;
        // Each beside itself, to be shifted down from the upper half.
        return upper_halves<Element>(
            (chunk<Element>)interleave<0>(elements, elements, chunk_indices<Narrow>()));
    });
}

} // namespace

VECTOR_PRIMITIVE(VecU8Trn1VV, transpose_even<std::uint8_t>)
VECTOR_PRIMITIVE(VecU16Trn1VV, transpose_even<std::uint16_t>)
VECTOR_PRIMITIVE(VecU32Trn1VV, transpose_even<std::uint32_t>)
VECTOR_PRIMITIVE(VecU64Trn1VV, transpose_even<std::uint64_t>)

// A primitive a line. Macros, since only they can make the names.
#define SPLICE(name, element)                                                                                \
    VecV name(const PredV& pg, const VecV& zdn, const VecV& zm, CpuContext* context) {                       \
        return splice<element>(pg, zdn, zm, context);                                                        \
    }

SPLICE(VecU8SpliceVV, std::uint8_t)
SPLICE(VecU16SpliceVV, std::uint16_t)
SPLICE(VecU32SpliceVV, std::uint32_t)
SPLICE(VecU64SpliceVV, std::uint64_t)
#undef SPLICE

VecV VecU32CompressVV(const PredV& pg, const VecV& zn, CpuContext* context) {
    return compress<std::uint32_t>(pg, zn, context);
}
VecV VecU64CompressVV(const PredV& pg, const VecV& zn, CpuContext* context) {
    return compress<std::uint64_t>(pg, zn, context);
}

UNARY_PRIMITIVE(VecS16UnpackLoV, unpack<std::int16_t, vector_half::low>)
UNARY_PRIMITIVE(VecS32UnpackLoV, unpack<std::int32_t, vector_half::low>)
UNARY_PRIMITIVE(VecS16UnpackHiV, unpack<std::int16_t, vector_half::high>)
UNARY_PRIMITIVE(VecS32UnpackHiV, unpack<std::int32_t, vector_half::high>)
