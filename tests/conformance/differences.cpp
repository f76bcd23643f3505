#include "tests/conformance/differences.h"

#include <cstring>

namespace conformance {

namespace {

using predicate_row = std::uint8_t[vector_bytes];

// The operands of the predicate operations below.
struct predicate_operands {
    std::uint32_t pd;
    const predicate_row& pdm;
    const predicate_row& pg;
    const predicate_row& pn;
    const predicate_row& pm;
    bool flags;
};
predicate_operands cut_operands(std::uint32_t word, const cpu_state& before) {
    return {word & 15,
            before.p[word & 15],
            before.p[word >> 10 & 15],
            before.p[word >> 5 & 15],
            before.p[word >> 16 & 15],
            (word >> 22 & 1) != 0};
}

// Other than zero, though the predicate bit in it is clear: no instruction makes such a byte, but a restored
// or uninitialised predicate may hold it.
bool is_stray(std::uint8_t byte) { return byte != 0 && (byte & 1) == 0; }

int last_active(const predicate_row& pg) {
    int last = vector_bytes - 1;
    while (last >= 0 && !(pg[last] & 1))
        --last;
    return last;
}

void set_flags(processor_registers& processor, bool n, bool z, bool c) {
    processor.nzcv = std::uint64_t{n} << 31 | std::uint64_t{z} << 30 | std::uint64_t{c} << 29;
}

// Each source byte other than zero is true.
void expect_nor(std::uint32_t word, const cpu_state& before, processor_registers& processor) {
    const predicate_operands of = cut_operands(word, before);
    auto& result = processor.p[of.pd];
    for (int i = 0; i < vector_bytes; ++i) {
        if (is_stray(of.pn[i]) || is_stray(of.pm[i]))
            result[i / 64] &= ~(std::uint64_t{1} << (i % 64));
    }
}

void expect_break_next(std::uint32_t word, const cpu_state& before, processor_registers& processor) {
    const predicate_operands of = cut_operands(word, before);
    const int last = last_active(of.pg);
    if (last < 0 || !is_stray(of.pn[last]))
        return;
    gather_predicate(of.pdm, processor.p[of.pd]); // kept
    const auto& kept = processor.p[of.pd];
    if (of.flags)
        set_flags(processor, kept[0] & 1, (kept[0] | kept[1]) == 0, !(kept[1] >> 63));
}

void expect_break_before_pair(std::uint32_t word, const cpu_state& before, processor_registers& processor) {
    const predicate_operands of = cut_operands(word, before);
    const int last = last_active(of.pg);
    if (last < 0 || !is_stray(of.pn[last]))
        return;
    predicate_row result = {};
    bool broken = false;
    int first = -1;
    bool any = false;
    for (int i = 0; i < vector_bytes; ++i) {
        if (!(of.pg[i] & 1))
            continue;
        if (first < 0)
            first = i;
        broken = broken || (of.pm[i] & 1);
        result[i] = !broken;
        any = any || !broken;
    }
    gather_predicate(result, processor.p[of.pd]);
    if (of.flags)
        set_flags(processor, result[first], !any, !result[last]);
}

// The elements from the fault on; their bits of FFR are clear, as they all were true before.
void expect_zeros_after_fault(std::uint32_t word, const cpu_state&, processor_registers& processor) {
    const int element_bytes = word >> 30 & 1 ? 8 : 4;
    std::uint8_t* const row = processor.z[word & 31];
    for (int i = 0; i < vector_bytes; i += element_bytes) {
        if (!(processor.ffr[i / 64] >> (i % 64) & 1))
            std::memset(row + i, 0, static_cast<std::size_t>(element_bytes));
    }
}

// Where we differ on purpose: stub names, with * for any characters, and what changes the processor's
// registers after the word into those that we define, from the state before it.
constexpr struct {
    const char* pattern;
    void (*expect)(std::uint32_t word, const cpu_state& before, processor_registers& processor);
} differences[] = {
    // Take a source byte other than zero as true, even if bit 0 is clear; the last two at the last active
    // position only.
    {"VecPNorPPZ", expect_nor},
    {"VecPBreakNext*PZ", expect_break_next},
    {"VecPBreakPrevB*PZ", expect_break_before_pair},
    // Give 0 for the elements from a fault on, which the architecture leaves open.
    {"Vec*32LoadFF*", expect_zeros_after_fault},
    {"Vec*64LoadFF*", expect_zeros_after_fault},
};

bool fits(const char* pattern, const char* name) {
    if (*pattern == '\0')
        return *name == '\0';
    if (*pattern == '*')
        return fits(pattern + 1, name) || (*name != '\0' && fits(pattern, name + 1));
    return *pattern == *name && fits(pattern + 1, name + 1);
}

} // namespace

bool matches(const char* pattern, const char* name) {
    return std::strchr(pattern, '*') ? fits(pattern, name) : std::strstr(name, pattern) != nullptr;
}

void expect_deliberate_differences(const opcode_row& row, std::uint32_t word, const cpu_state& before,
                                   processor_registers& processor) {
    for (const auto& difference : differences) {
        if (fits(difference.pattern, row.name))
            difference.expect(word, before, processor);
    }
}

} // namespace conformance
