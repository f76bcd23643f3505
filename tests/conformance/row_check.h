// One row of the opcode table against the processor.
#pragma once

#include "sve/decode/opcode_rows.h"
#include "tests/conformance/memory_operands.h"

#include <cstdint>
#include <string>
#include <vector>

namespace conformance {

// A case is a word and a state, both made from one number: its upper 56 bits give the word, all of them the
// state.
inline constexpr std::uint32_t states_per_word = 2;

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
    // If `planted` isn't empty, that part of each of our results is spoilt on purpose, to prove that the
    // comparison notices.
    row_checker(const arena& memory, const std::string& planted);

    // Spoils the part; false if there is no part of that name.
    bool spoil(cpu_state& state, std::uint64_t case_seed);

    // Compares at least `states` states; fewer only if the processor rejects nearly all words.
    // Reports the first difference.
    row_result check(const opcode_row& row, std::uint64_t seed, std::uint32_t states,
                     difference_report& first);

    // The case of one seed alone.
    row_result check_one(const opcode_row& row, std::uint64_t case_seed, difference_report& first);

private:
    // Both executions of one case, counted in `result`. Returns whether the processor executed the word.
    bool check_case(const opcode_row& row, std::uint32_t word, const void* slot, std::uint64_t case_seed,
                    row_result& result, difference_report& first);
    std::string compare_case(const opcode_row& row, std::uint32_t word, const void* slot,
                             std::uint64_t case_seed, bool& rejected);
    void fill_memory(std::uint64_t seed);

    const arena& memory_;
    std::string planted_;
    std::vector<std::uint8_t> memory_before_;
    std::vector<std::uint8_t> memory_after_;
};

} // namespace conformance
