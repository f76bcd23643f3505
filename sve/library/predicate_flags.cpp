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

// Leaves in the lowest bit of each group whether any bit of the group is set.
std::uint64_t gather_groups(std::uint64_t word, int element_bits) {
    for (int shift = 1; shift < element_bits / 8; shift *= 2)
        word |= word >> shift;
    return word;
}

// What a result says of the active elements.
struct outcome {
    bool any_active = false;
    bool any_true = false;   // by the whole group
    bool first_true = false; // by the lowest bit of the group; false if none is active
    bool last_false = true;  // by the whole group; true if none is active
};

outcome examine(const PredV& governing, const PredV& result, int element_bits, const CpuContext* context) {
    const active_elements active(governing, element_bits, context);
    outcome found;
    for (int w = 0, words = word_count(context); w < words; ++w) {
        const std::uint64_t here = active.word(w);
        const std::uint64_t groups = gather_groups(result.words[w], element_bits);
        const bool is_first = here != 0 && !found.any_active;
        found.first_true |= is_first & ((result.words[w] & here & -here) != 0);
        found.last_false = here != 0 ? !(groups >> (63 - std::countl_zero(here)) & 1) : found.last_false;
        found.any_active |= here != 0;
        found.any_true |= (here & groups) != 0;
    }
    return found;
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
