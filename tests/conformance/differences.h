// Where we differ from a processor on purpose. An opcode listed here is run and compared like any other; only
// what the processor gave is first rewritten into what we define.
#pragma once

#include "tests/conformance/comparison.h"

namespace conformance {

// Whether a name fits a pattern: a part of it, or with * all of it.
bool matches(const char* pattern, const char* name);

// Changes the processor's registers after the word into those that we define, where we differ on purpose.
void expect_deliberate_differences(const opcode_row& row, std::uint32_t word, const cpu_state& before,
                                   processor_registers& processor);

} // namespace conformance
