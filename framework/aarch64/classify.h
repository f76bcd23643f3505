// What the translator has to know about an A64 word: whether it transfers control, depends on its own
// address, or touches something that the engine keeps elsewhere. Everything else runs from any place as it
// stands.
#pragma once

#include "framework/aarch64/encode.h"

namespace a64 {

enum class kind : std::uint8_t {
    plain, // runs from any address
    // Depends on its own address.
    adr,
    adrp,
    load_literal,
    // Reads or writes what the engine virtualises.
    read_thread_pointer,
    write_thread_pointer,
    read_cache_type,
    read_processor_features,
    read_sve_features,
    // Transfers with the target in the word. All but the first two are conditional.
    branch,
    branch_link,
    branch_condition,
    compare_branch,
    test_branch,
    // Transfers with the target in a register.
    branch_register,
    branch_link_register,
    authenticated_branch,      // BRAA and its kin
    authenticated_branch_link, // BLRAA and its kin
    authenticated_return,      // RETAA, RETAB
    // Leaves the processor's straight line otherwise.
    system_call,
    invalidate_code, // IC IVAU
    trap,            // BRK, HLT, UDF: what follows need not be code
    unknown_branch,  // unallocated in the group of the branches
};

kind classify(word instruction);

constexpr bool is_conditional(kind k) {
    return k == kind::branch_condition || k == kind::compare_branch || k == kind::test_branch;
}

// True if a block of application code ends with an instruction of this kind.
constexpr bool ends_block(kind k) { return k >= kind::branch; }

// The address that a direct transfer, an ADR, ADRP or literal load at `pc` names.
std::uint64_t named_address(word instruction, kind k, std::uint64_t pc);

// The same direct transfer with another offset from itself, if its field can hold that.
bool transfer_reaches(word instruction, std::int64_t offset);
word with_offset(word instruction, std::int64_t offset);

// The conditional transfer with the opposite condition; B.cond with AL or NV has none.
constexpr bool is_invertible(word instruction) { return (instruction & 0xFF00000E) != 0x5400000E; }
constexpr word inverted(word instruction) {
    return instruction ^ ((instruction & 0xFF000000) == 0x54000000 ? 1 : 0x01000000);
}

// Fields.
constexpr unsigned rd(word instruction) { return instruction & 31; }
constexpr unsigned rn(word instruction) { return (instruction >> 5) & 31; }

} // namespace a64
