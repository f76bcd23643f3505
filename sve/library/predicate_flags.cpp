#include "sve/library/predicate_flags.h"

#include "sve/library/predicate_words.h"

#include <bit>

namespace {

constexpr std::uint32_t flag_n = std::uint32_t{1} << 31;
constexpr std::uint32_t flag_z = std::uint32_t{1} << 30;
constexpr std::uint32_t flag_c = std::uint32_t{1} << 29;
constexpr std::uint32_t flag_v = std::uint32_t{1} << 28;

void write_flag(CpuContext* context, std::uint32_t flag, bool value) {
    context->nzcv = (context->nzcv & ~flag) | (value ? flag : 0);
}

// The active elements of a predicate, as the lowest bits of their groups.
class active_elements {
public:
    active_elements(const PredV& predicate, int element_bits, const CpuContext* context)
        : predicate(predicate), length(predicate_length(context)), lowest_bits(0) {
        if (element_bits == 8 || element_bits == 16 || element_bits == 32 || element_bits == 64)
            lowest_bits = lowest_bits_of_groups(element_bits / 8);
    }

    std::uint64_t word(int w) const { return predicate.words[w] & lowest_bits & bits_below(length, w); }

    // The predicate bit of the first or last of them, or -1 if there are none.
    int first_bit() const {
        for (int w = 0; w < words_per_predicate; ++w)
            if (const std::uint64_t active = word(w))
                return 64 * w + std::countr_zero(active);
        return -1;
    }
    int last_bit() const {
        for (int w = words_per_predicate - 1; w >= 0; --w)
            if (const std::uint64_t active = word(w))
                return 64 * w + 63 - std::countl_zero(active);
        return -1;
    }

private:
    const PredV& predicate;
    int length;
    std::uint64_t lowest_bits;
};

// What a result says of the active elements.
struct outcome {
    bool any_active = false;
    bool any_true = false;   // by the whole group
    bool first_true = false; // by the lowest bit of the group; false if none is active
    bool last_false = true;  // by the whole group; true if none is active
};

// All bits of the groups of so many bits whose lowest bit is set, when no others are.
std::uint64_t whole_groups(std::uint64_t lowest, int group) { return (lowest << group) - lowest; }

outcome examine(const PredV& governing, const PredV& result, int element_bits, const CpuContext* context) {
    const active_elements active(governing, element_bits, context);
    const int group = element_bits / 8;
    std::uint64_t any_active = 0, any_true = 0;
    // The words with the first and the last active element, and those of the result beside them.
    std::uint64_t first = 0, first_result = 0, last = 0, last_result = 0;
    for (int w = 0, words = word_count(context); w < words; ++w) {
        const std::uint64_t here = active.word(w);
        const std::uint64_t found = result.words[w];
        first_result = any_active == 0 ? found : first_result;
        first = any_active == 0 ? here : first;
        last_result = here != 0 ? found : last_result;
        last = here != 0 ? here : last;
        any_active |= here;
        any_true |= found & whole_groups(here, group);
    }
    if (any_active == 0)
        return {};
    const std::uint64_t last_bit = std::uint64_t{1} << (63 - std::countl_zero(last));
    return {true, any_true != 0, (first_result & first & -first) != 0,
            (last_result & whole_groups(last_bit, group)) == 0};
}

} // namespace

void PredSetNZC(const PredV& governing, const PredV& result, int element_bits, CpuContext* context) {
    // Without a true element the first is not true and the last is false, so that N = 0 and C = 1 need no
    // case of their own.
    const outcome found = examine(governing, result, element_bits, context);
    write_flag(context, flag_n, found.first_true);
    write_flag(context, flag_z, !found.any_true);
    write_flag(context, flag_c, found.last_false);
}

void PredSetNZCV(const PredV& governing, const PredV& result, int element_bits, CpuContext* context) {
    PredSetNZC(governing, result, element_bits, context);
    write_flag(context, flag_v, false);
}

void PredSetNCV(const PredV& governing, const PredV& result, int element_bits, CpuContext* context) {
    const outcome found = examine(governing, result, element_bits, context);
    write_flag(context, flag_n, found.first_true);
    write_flag(context, flag_c, found.last_false);
    write_flag(context, flag_v, false);
}

void PredSetNC(const PredV& governing, const PredV& result, int element_bits, CpuContext* context) {
    const outcome found = examine(governing, result, element_bits, context);
    if (!found.any_active)
        return;
    write_flag(context, flag_n, found.first_true);
    write_flag(context, flag_c, found.last_false);
}

int FindFirstActive(const PredV& predicate, int element_bits, CpuContext* context) {
    const int bit = active_elements(predicate, element_bits, context).first_bit();
    return bit < 0 ? -1 : bit / (element_bits / 8);
}

int FindLastActive(const PredV& predicate, int element_bits, CpuContext* context) {
    const int bit = active_elements(predicate, element_bits, context).last_bit();
    return bit < 0 ? -1 : bit / (element_bits / 8);
}

void VecPTestPZ(const PredV& pg, const PredV& pn, CpuContext* context) { PredSetNZCV(pg, pn, 8, context); }
