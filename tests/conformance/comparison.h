// Our result against the processor's.
#pragma once

#include "sve/decode/opcode_rows.h"
#include "tests/conformance/native_execution.h"

#include <cstdint>
#include <string>

namespace conformance {

// One instruction carried out twice.
struct carried_out {
    const opcode_row& row;
    std::uint32_t word;
    const cpu_state& before;
    const processor_registers& processor; // what is to be expected after it
    const cpu_state& ours;                // what there is
};

// The first difference in words, or an empty text. Of a predicate byte only bit 0 is compared; all else is
// compared whole: X, SP, NZCV, FPSR, FPCR, Z, P, FFR, and what no instruction changes in cpu_state.
std::string first_difference(const carried_out& done);

// The first difference of two blocks of memory that stand for the same addresses.
std::string first_memory_difference(const std::uint8_t* processor, const std::uint8_t* ours,
                                    const std::uint8_t* before, std::size_t size);

} // namespace conformance
