#include "sve/library/predicate_generation.h"

#include "sve/decode/integer_types.h"
#include "sve/library/predicate_flags.h"
#include "sve/library/predicate_patterns.h"
#include "sve/library/predicate_words.h"

#include <algorithm>
#include <limits>
#include <type_traits>

namespace {

template <class Element, class Register>
PredV while_less_or_equal(Register counter, Register limit, CpuContext* context) {
    using Unsigned = std::make_unsigned_t<Register>;
    const int count = element_count<Element>(context);
    int leading = count;
    if (counter > limit) {
        leading = 0;
    } else if (limit != std::numeric_limits<Register>::max()) {
        const auto steps =
            static_cast<Unsigned>(static_cast<Unsigned>(limit) - static_cast<Unsigned>(counter));
        if (steps < static_cast<Unsigned>(count))
            leading = static_cast<int>(steps) + 1;
    }
    const PredV result = leading_elements<Element>(std::min(leading, count));
    PredSetNZCV(leading_elements<std::uint8_t>(predicate_length(context)), result, width_of<Element>,
                context);
    return result;
}

template <class Element> PredV true_by_pattern(unsigned long pattern, CpuContext* context) {
    const int count = element_count<Element>(context);
    const PredV result = leading_elements<Element>(std::min(VecTrueILength(pattern, count), count));
    PredSetNZCV(result, result, width_of<Element>, context);
    return result;
}

enum class break_point { excluded, included };

// The bits of pg up to the first one where `condition` is set too.
template <break_point point>
PredV break_at_first(const PredV& pg, const PredV& condition, CpuContext* context) {
    bool broken = false;
    return predicate_of_words(predicate_length(context), [&](int w) -> std::uint64_t {
        if (broken)
            return 0;
        const std::uint64_t hits = pg.words[w] & condition.words[w];
        if (hits == 0)
            return pg.words[w];
        broken = true;
        const std::uint64_t below = (hits - 1) & ~hits;
        return pg.words[w] & (point == break_point::included ? below << 1 | 1 : below);
    });
}

PredV break_after_previous(const PredV& pg, const PredV& pn, const PredV& pm, CpuContext* context) {
    const int last = FindLastActive(pg, 8, context);
    if (last < 0 || !is_active<std::uint8_t>(pn, last))
        return {};
    return break_at_first<break_point::included>(pg, pm, context);
}

PredV with_flags(const PredV& pg, const PredV& result, CpuContext* context) {
    PredSetNZCV(pg, result, 8, context);
    return result;
}

void terminate_if(bool terminated, CpuContext* context) {
    constexpr int n_bit = 31, c_bit = 29, v_bit = 28;
    const std::uint32_t carry = context->nzcv >> c_bit & 1;
    const std::uint32_t n = terminated ? 1 : 0;
    const std::uint32_t v = terminated ? 0 : carry ^ 1;
    context->nzcv &= ~(std::uint32_t{1} << n_bit | std::uint32_t{1} << v_bit);
    context->nzcv |= n << n_bit | v << v_bit;
}

// The bits of the even elements of a predicate's word.
template <class Element>
constexpr std::uint64_t even_elements = lowest_bits_of_groups(2 * sizeof(Element)) *
                                        ((std::uint64_t{1} << sizeof(Element)) - 1);

enum class parity { even, odd };

template <class Element, parity from> PredV transpose(const PredV& pn, const PredV& pm, CpuContext* context) {
    constexpr std::uint64_t even = even_elements<Element>;
    const int pairs = element_count<Element>(context) / 2;
    return predicate_of_words(pairs * 2 * static_cast<int>(sizeof(Element)), [&](int w) {
        if (from == parity::even)
            return (pn.words[w] & even) | (pm.words[w] & even) << sizeof(Element);
        return (pn.words[w] & ~even) >> sizeof(Element) | (pm.words[w] & ~even);
    });
}

// The bits of the odd elements of a predicate's word, moved together in its low half.
template <class Element> constexpr std::uint64_t odd_half(std::uint64_t word) {
    std::uint64_t packed = (word & ~even_elements<Element>) >> sizeof(Element);
    for (int group = sizeof(Element); group < 32; group *= 2) {
        // Groups of this many bits stand at every second place of their size.
        packed |= packed >> group;
        packed &= group < 16 ? lowest_bits_of_groups(4 * group) * ((std::uint64_t{1} << 2 * group) - 1)
                             : 0xFFFFFFFF;
    }
    return packed;
}

template <class Element> PredV odd_elements(const PredV& pn, const PredV& pm, CpuContext* context) {
    const int bits = element_count<Element>(context) / 2 * static_cast<int>(sizeof(Element));
    PredV result = {};
    int end = 0;
    for (const PredV* source : {&pn, &pm}) {
        for (int from = 0; from < bits; from += 32) {
            const std::uint64_t half =
                odd_half<Element>(source->words[from / 32]) & bits_below(bits - from, 0);
            result.words[end / 64] |= half << (end % 64);
            if (end % 64 > 32)
                result.words[end / 64 + 1] |= half >> (64 - end % 64);
            end += bits - from < 32 ? bits - from : 32;
        }
    }
    return result;
}

} // namespace

// A primitive a line. Macros, since only they can make the names.
#define WHILE_LESS_OR_EQUAL(name, element, number)                                                           \
    PredV name(number counter, number limit, CpuContext* context) {                                          \
        return while_less_or_equal<element>(counter, limit, context);                                        \
    }

WHILE_LESS_OR_EQUAL(VecS8While4LESS, std::int8_t, std::int32_t)
WHILE_LESS_OR_EQUAL(VecS16While4LESS, std::int16_t, std::int32_t)
WHILE_LESS_OR_EQUAL(VecS32While4LESS, std::int32_t, std::int32_t)
WHILE_LESS_OR_EQUAL(VecS64While4LESS, std::int64_t, std::int32_t)
WHILE_LESS_OR_EQUAL(VecS8While8LESS, std::int8_t, std::int64_t)
WHILE_LESS_OR_EQUAL(VecS16While8LESS, std::int16_t, std::int64_t)
WHILE_LESS_OR_EQUAL(VecS32While8LESS, std::int32_t, std::int64_t)
WHILE_LESS_OR_EQUAL(VecS64While8LESS, std::int64_t, std::int64_t)
#undef WHILE_LESS_OR_EQUAL

PredV VecP8TrueFlgI(unsigned long pattern, CpuContext* context) {
    return true_by_pattern<std::uint8_t>(pattern, context);
}
PredV VecP16TrueFlgI(unsigned long pattern, CpuContext* context) {
    return true_by_pattern<std::uint16_t>(pattern, context);
}
PredV VecP32TrueFlgI(unsigned long pattern, CpuContext* context) {
    return true_by_pattern<std::uint32_t>(pattern, context);
}
PredV VecP64TrueFlgI(unsigned long pattern, CpuContext* context) {
    return true_by_pattern<std::uint64_t>(pattern, context);
}

PredV VecPSetFirstActiveP(const PredV& pdn, const PredV& pg, CpuContext* context) {
    PredV result = predicate_of_words(predicate_length(context), [&](int w) { return pdn.words[w]; });
    const int first = FindFirstActive(pg, 8, context);
    if (first >= 0)
        set_predicate_element<std::uint8_t>(result, first, true);
    return with_flags(pg, result, context);
}

PredV VecPBreakAFlgPZ(const PredV& pg, const PredV& pn, CpuContext* context) {
    return with_flags(pg, break_at_first<break_point::included>(pg, pn, context), context);
}
PredV VecPBreakBFlgPZ(const PredV& pg, const PredV& pn, CpuContext* context) {
    return with_flags(pg, break_at_first<break_point::excluded>(pg, pn, context), context);
}

PredV VecPBreakPrevAPZ(const PredV& pg, const PredV& pn, const PredV& pm, CpuContext* context) {
    return break_after_previous(pg, pn, pm, context);
}
PredV VecPBreakPrevAFlgPZ(const PredV& pg, const PredV& pn, const PredV& pm, CpuContext* context) {
    return with_flags(pg, break_after_previous(pg, pn, pm, context), context);
}

void VecU32CTermEQ(std::uint32_t n, std::uint32_t m, CpuContext* context) { terminate_if(n == m, context); }
void VecU32CTermNE(std::uint32_t n, std::uint32_t m, CpuContext* context) { terminate_if(n != m, context); }
void VecU64CTermEQ(std::uint64_t n, std::uint64_t m, CpuContext* context) { terminate_if(n == m, context); }
void VecU64CTermNE(std::uint64_t n, std::uint64_t m, CpuContext* context) { terminate_if(n != m, context); }

#define PREDICATE_PERMUTE(name, ...)                                                                         \
    PredV name(const PredV& pn, const PredV& pm, CpuContext* context) { return __VA_ARGS__(pn, pm, context); }

PREDICATE_PERMUTE(VecP8Trn1PP, transpose<std::uint8_t, parity::even>)
PREDICATE_PERMUTE(VecP16Trn1PP, transpose<std::uint16_t, parity::even>)
PREDICATE_PERMUTE(VecP32Trn1PP, transpose<std::uint32_t, parity::even>)
PREDICATE_PERMUTE(VecP64Trn1PP, transpose<std::uint64_t, parity::even>)

PREDICATE_PERMUTE(VecP8Trn2PP, transpose<std::uint8_t, parity::odd>)
PREDICATE_PERMUTE(VecP16Trn2PP, transpose<std::uint16_t, parity::odd>)
PREDICATE_PERMUTE(VecP32Trn2PP, transpose<std::uint32_t, parity::odd>)
PREDICATE_PERMUTE(VecP64Trn2PP, transpose<std::uint64_t, parity::odd>)

PREDICATE_PERMUTE(VecP8Uzp2PP, odd_elements<std::uint8_t>)
PREDICATE_PERMUTE(VecP16Uzp2PP, odd_elements<std::uint16_t>)
PREDICATE_PERMUTE(VecP32Uzp2PP, odd_elements<std::uint32_t>)
PREDICATE_PERMUTE(VecP64Uzp2PP, odd_elements<std::uint64_t>)
#undef PREDICATE_PERMUTE
