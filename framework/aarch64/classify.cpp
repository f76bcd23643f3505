#include "framework/aarch64/classify.h"

namespace a64 {

namespace {

struct row {
    word mask;
    word value;
    kind is;
};

// The group of branches, exceptions and system instructions, the frequent ones first.
constexpr row branch_group[] = {
    {0xFF000000, 0x54000000, kind::branch_condition}, // B.cond, BC.cond
    {0x7E000000, 0x34000000, kind::compare_branch},   // CBZ, CBNZ
    {0xFC000000, 0x94000000, kind::branch_link},
    {0xFC000000, 0x14000000, kind::branch},
    {0xFFFFFC1F, 0xD65F0000, kind::branch_register}, // RET
    {0x7E000000, 0x36000000, kind::test_branch},     // TBZ, TBNZ
    {0xFFFFFC1F, 0xD61F0000, kind::branch_register}, // BR
    {0xFFFFFC1F, 0xD63F0000, kind::branch_link_register},
    {0xFFFFFFE0, 0xD53BD040, kind::read_thread_pointer},     // MRS of TPIDR_EL0
    {0xFFFFFFE0, 0xD51BD040, kind::write_thread_pointer},    // MSR of TPIDR_EL0
    {0xFFFFFFE0, 0xD53B0020, kind::read_cache_type},         // MRS of CTR_EL0
    {0xFFFFFFE0, 0xD5380400, kind::read_processor_features}, // MRS of ID_AA64PFR0_EL1
    {0xFFFFFFE0, 0xD5380480, kind::read_sve_features},       // MRS of ID_AA64ZFR0_EL1
    {0xFFFFFFE0, 0xD50B7520, kind::invalidate_code},         // IC IVAU
    {0xFF000000, 0xD5000000, kind::plain},                   // other system instructions, hints and barriers
    {0xFFE0001F, 0xD4000001, kind::system_call},             // SVC
    {0xFFE0001F, 0xD4200000, kind::trap},                    // BRK
    {0xFFE0001F, 0xD4400000, kind::trap},                    // HLT
    {0xFFFFFBFF, 0xD65F0BFF, kind::authenticated_return},
    {0xFFFFF81F, 0xD61F081F, kind::authenticated_branch},      // BRAAZ, BRABZ
    {0xFFFFF81F, 0xD63F081F, kind::authenticated_branch_link}, // BLRAAZ, BLRABZ
    {0xFFFFF800, 0xD71F0800, kind::authenticated_branch},      // BRAA, BRAB
    {0xFFFFF800, 0xD73F0800, kind::authenticated_branch_link}, // BLRAA, BLRAB
};

// The width and place of the signed word offset of a direct transfer or literal load.
struct offset_field {
    unsigned low;
    unsigned width;
};
constexpr offset_field offset_field_of(word instruction) {
    if ((instruction & 0x7C000000) == 0x14000000) // B, BL
        return {0, 26};
    if ((instruction & 0x7E000000) == 0x36000000) // TBZ, TBNZ
        return {5, 14};
    return {5, 19}; // B.cond, CBZ, LDR
}

constexpr std::int64_t sign_extend(std::uint64_t value, unsigned width) {
    return static_cast<std::int64_t>(value << (64 - width)) >> (64 - width);
}

} // namespace

kind classify(word instruction) {
    if ((instruction & 0x1C000000) == 0x14000000) {
        for (const row& candidate : branch_group)
            if ((instruction & candidate.mask) == candidate.value)
                return candidate.is;
        return kind::unknown_branch;
    }
    if ((instruction & 0x1F000000) == 0x10000000)
        return instruction & 0x80000000 ? kind::adrp : kind::adr;
    if ((instruction & 0x3B000000) == 0x18000000)
        return kind::load_literal;
    if ((instruction & 0xFFFF0000) == 0)
        return kind::trap;
    return kind::plain;
}

std::uint64_t named_address(word instruction, kind k, std::uint64_t pc) {
    if (k == kind::adr || k == kind::adrp) {
        const std::uint64_t immediate = ((instruction >> 5) & 0x7FFFF) << 2 | ((instruction >> 29) & 3);
        const std::int64_t offset = sign_extend(immediate, 21);
        return k == kind::adr ? pc + offset : (pc & ~std::uint64_t{0xFFF}) + offset * 4096;
    }
    const offset_field f = offset_field_of(instruction);
    return pc + 4 * sign_extend(instruction >> f.low, f.width);
}

bool transfer_reaches(word instruction, std::int64_t offset) {
    return offset_fits(offset, offset_field_of(instruction).width);
}

word with_offset(word instruction, std::int64_t offset) {
    const offset_field f = offset_field_of(instruction);
    const word hole = ((word{1} << f.width) - 1) << f.low;
    return (instruction & ~hole) | word_offset(offset, f.low, f.width);
}

} // namespace a64
