// What the benchmarks of opcode stubs execute: an instruction word for each row of the opcode table, and a
// state in which it neither faults nor stops.
#pragma once

#include "sve/decode/opcode_rows.h"

#include <string>

namespace bench {

// A state's predicate registers, all alike: every element is active; all but the last 24 bytes; every second
// doubleword, as whole elements of any size; or elements at random.
inline constexpr const char* predicate_kinds[] = {"all", "tail", "mixed", "random"};

// The row's word with the destination in register 2, the governing predicate in 1, the first source or the
// base in 4 and the second source in 1. Where no word of the row has these, any that the decoder takes for
// the row's.
std::uint32_t word_of(const opcode_row& row);

// Random registers, but for those that make addresses: loads and stores find their memory within one page, at
// an address with only its low 6 bits unset.
void prepare(cpu_state& state, const opcode_row& row, const std::string& predicates);

// Calls `visit` with the name and the rows of every family.
template <class Visit> void for_each_family(Visit visit) {
#define OPCODE_FAMILY(family) visit(#family, family##_rows());
#include "sve/decode/families.def"
#undef OPCODE_FAMILY
}

} // namespace bench
