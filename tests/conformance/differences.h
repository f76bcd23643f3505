// Where we differ from a processor on purpose. An opcode listed here is run and compared like any other; only
// what the processor gave is first rewritten into what we define.
#pragma once

#include "tests/conformance/comparison.h"

#include <span>

namespace conformance {

struct deliberate_difference {
    const char* pattern; // stub names, with * for any characters
    const char* reason;
    // Changes the processor's registers after `word` into those that we define, from the state before it.
    void (*expect)(std::uint32_t word, const cpu_state& before, processor_registers& processor);
};

std::span<const deliberate_difference> deliberate_differences();

// Whether a name fits a pattern: a part of it, or with * all of it.
bool matches(const char* pattern, const char* name);

// Rewrites by every entry that fits the row.
void expect_deliberate_differences(const opcode_row& row, std::uint32_t word, const cpu_state& before,
                                   processor_registers& processor);

} // namespace conformance
