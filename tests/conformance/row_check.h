// One row of the opcode table against the processor.
#pragma once

#include "sve/decode/opcode_rows.h"
#include "tests/conformance/memory_operands.h"

#include <cstdint>
#include <string>
#include <vector>

namespace conformance {

// A part of our result that is spoilt on purpose, to prove that the comparison notices.
enum class fault_part { none, x, sp, z, p, ffr, nzcv, fpsr, fpcr, memory };

// The part of that name; none if there is no such part.
fault_part fault_part_of(const std::string& name);

// A case is a word and a state, both made from one number: its upper 56 bits give the word, all of them the
// state.
inline constexpr int states_per_word = 2;

struct row_result {
    std::uint32_t states;         // compared
    std::uint32_t differences;    // of them, different
    std::uint32_t words;          // executed
    std::uint32_t rejected_words; // reserved: the processor does not execute them
};

struct difference_report {
    std::uint64_t seed;
    std::uint32_t word;
    std::string text;
};

class row_checker {
public:
    // With `processor_only`, no case calls our code, and only faults of the processor are differences.
    row_checker(const arena& memory, fault_part planted, bool processor_only);

    // Compares at least `states` states; fewer only if the processor rejects nearly all words.
    // `current_seed` always holds the case at work. Reports the first difference.
    row_result check(const opcode_row& row, std::uint64_t seed, std::uint32_t states,
                     volatile std::uint64_t& current_seed, difference_report& first);

    // The case of one seed alone.
    row_result check_one(const opcode_row& row, std::uint64_t case_seed, difference_report& first);

private:
    // Both executions of one case, counted in `result`. Returns whether the processor executed the word.
    bool check_case(const opcode_row& row, std::uint32_t word, const void* slot, std::uint64_t case_seed,
                    row_result& result, difference_report& first);
    std::string compare_case(const opcode_row& row, std::uint32_t word, const void* slot,
                             std::uint64_t case_seed, bool& rejected);
    void spoil(cpu_state& state, std::uint64_t case_seed);
    void fill_memory(std::uint64_t seed);

    const arena& memory_;
    fault_part planted_;
    bool processor_only_;
    std::vector<std::uint8_t> memory_before_;
    std::vector<std::uint8_t> memory_after_;
};

} // namespace conformance
