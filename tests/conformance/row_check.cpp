#include "tests/conformance/row_check.h"

#include "sve/decode/decoder.h"
#include "tests/conformance/comparison.h"
#include "tests/conformance/differences.h"
#include "tests/conformance/native_execution.h"
#include "tests/conformance/random_states.h"

#include <cstdio>
#include <cstring>
#include <unistd.h>

namespace conformance {

namespace {

// Runs the stub as inserted code does: the processor's FPCR and FPSR are those of the program under
// emulation. Returns the processor's FPCR afterwards.
[[gnu::noinline]] std::uint64_t call_stub(opcode_stub stub, cpu_state& state, std::uint32_t word,
                                          aarch64_decode_rc& result) {
    std::uint64_t own_fpcr, own_fpsr, fpcr_after;
    const std::uint64_t fpcr = state.fpcr;
    const std::uint64_t fpsr = state.fpsr;
    asm volatile("mrs %0, fpcr\n\tmrs %1, fpsr" : "=r"(own_fpcr), "=r"(own_fpsr));
    asm volatile("msr fpcr, %0\n\tmsr fpsr, %1" ::"r"(fpcr), "r"(fpsr) : "memory");
    result = stub(&state, word);
    asm volatile("mrs %0, fpcr\n\tmsr fpcr, %1\n\tmsr fpsr, %2"
                 : "=&r"(fpcr_after)
                 : "r"(own_fpcr), "r"(own_fpsr)
                 : "memory");
    return fpcr_after;
}

// Makes unequal what differs by the row's name.
std::uint64_t hash(const char* name) {
    std::uint64_t value = 0xCBF29CE484222325;
    for (; *name != '\0'; ++name)
        value = (value ^ static_cast<unsigned char>(*name)) * 0x100000001B3;
    return value;
}

std::uint32_t word_of_case(const opcode_row& row, std::uint64_t case_seed) {
    random_source random(case_seed >> 8);
    return random_word(row, random);
}

constexpr unsigned seconds_for_a_word = 60;

} // namespace

row_checker::row_checker(const arena& memory, const std::string& planted)
    : memory_(memory), planted_(planted), memory_before_(memory.size()), memory_after_(memory.size()) {}

void row_checker::fill_memory(std::uint64_t seed) {
    random_source random(seed);
    for (std::size_t i = 0; i < memory_before_.size(); i += 8) {
        const std::uint64_t value = random.next();
        std::memcpy(memory_before_.data() + i, &value, 8);
    }
}

bool row_checker::spoil(cpu_state& state, std::uint64_t case_seed) {
    const struct {
        const char* name;
        void* start;
        std::size_t bytes;
        unsigned bits; // of each byte, those that can be spoilt
    } parts[] = {
        {"x", state.x, 31 * 8, 0xFF},
        {"sp", &state.x[31], 8, 0xFF},
        {"z", state.z, sizeof state.z, 0xFF},
        {"p", state.p, sizeof state.p, 1},
        {"ffr", state.ffr, sizeof state.ffr, 1},
        {"nzcv", reinterpret_cast<std::uint8_t*>(&state.nzcv) + 3, 1, 0xF0},
        {"fpsr", &state.fpsr, 1, 0x1F},
        {"fpcr", reinterpret_cast<std::uint8_t*>(&state.fpcr) + 2, 1, 0xC0},
        {"memory", memory_.bytes(), memory_.size(), 0xFF},
    };
    random_source random(case_seed);
    for (const auto& part : parts) {
        if (planted_ != part.name)
            continue;
        unsigned bit;
        do
            bit = 1u << random.below(8);
        while (!(part.bits & bit));
        static_cast<std::uint8_t*>(part.start)[random.below(part.bytes)] ^= static_cast<std::uint8_t>(bit);
        return true;
    }
    return planted_.empty();
}

std::string row_checker::compare_case(const opcode_row& row, std::uint32_t word, const void* slot,
                                      std::uint64_t case_seed, bool& rejected) {
    const memory_form form = memory_form_of(row.name);
    const bool uses_memory = form.kind != memory_kind::none || planted_ == "memory";
    random_source random(case_seed * 0x2545F4914F6CDD1D + 1);
    cpu_state before = random_state(row, word, random);
    place_operands(form, word, memory_, before, random);
    before.pc = placed_word(slot);

    if (uses_memory) {
        fill_memory(case_seed >> 8);
        std::memcpy(memory_.bytes(), memory_before_.data(), memory_.size());
    }
    static processor_registers processor;
    to_processor(before, processor);
    const execution native = execute_placed(slot, processor);
    rejected = native.result == outcome::rejected;
    if (rejected)
        return {};
    if (native.result == outcome::faulted) {
        char buffer[100];
        std::snprintf(buffer, sizeof buffer, "the processor faults at %#llx, which it should not",
                      static_cast<unsigned long long>(native.fault_address));
        return buffer;
    }
    if (uses_memory) {
        std::memcpy(memory_after_.data(), memory_.bytes(), memory_.size());
        std::memcpy(memory_.bytes(), memory_before_.data(), memory_.size());
    }
    expect_deliberate_differences(row, word, before, processor);

    static cpu_state ours;
    ours = before;
    aarch64_decode_rc result = aarch64_not_emulated;
    std::uint64_t fpcr_after = 0;
    if (const int signal = sigsetjmp(fault_return, 0)) {
        char buffer[100];
        std::snprintf(buffer, sizeof buffer, "our code ends with signal %d at %#llx, the processor does not",
                      signal, static_cast<unsigned long long>(unexpected_fault_address));
        return buffer;
    }
    expect_fault = true;
    fpcr_after = call_stub(row.stub, ours, word, result);
    expect_fault = false;

    if (result != aarch64_emulated)
        return "our stub returns " + std::to_string(result);
    if (fpcr_after != before.fpcr)
        return "our stub leaves the processor with another FPCR";
    spoil(ours, case_seed);
    std::string difference = first_difference({row, word, before, processor, ours});
    if (difference.empty() && uses_memory)
        difference = first_memory_difference(memory_after_.data(), memory_.bytes(), memory_before_.data(),
                                             memory_.size());
    return difference;
}

bool row_checker::check_case(const opcode_row& row, std::uint32_t word, const void* slot,
                             std::uint64_t case_seed, row_result& result, difference_report& first) {
    bool rejected = false;
    std::string difference = compare_case(row, word, slot, case_seed, rejected);
    if (rejected)
        return false;
    if (is_sve(word) != row.stub)
        difference = "this word of the row is taken for another opcode";
    ++result.states;
    if (!difference.empty() && result.differences++ == 0)
        first = {case_seed, word, std::move(difference)};
    return true;
}

row_result row_checker::check(const opcode_row& row, std::uint64_t seed, std::uint32_t states,
                              difference_report& first) {
    row_result result = {};
    random_source words(seed ^ hash(row.name));
    const std::uint32_t tries = 40 * (states / states_per_word + 1);
    for (std::uint32_t i = 0; i < tries && result.states < states; ++i) {
        const std::uint64_t word_seed = words.next() & ~std::uint64_t{0xFF};
        const std::uint32_t word = word_of_case(row, word_seed);
        const void* const slot = place_word(reference_word(memory_form_of(row.name), word));
        alarm(seconds_for_a_word); // for a stub that does not end
        bool executed = true;
        for (std::uint64_t k = 0; k < states_per_word && executed; ++k)
            executed = check_case(row, word, slot, word_seed | k, result, first);
        ++(executed ? result.words : result.rejected_words);
    }
    return result;
}

row_result row_checker::check_one(const opcode_row& row, std::uint64_t case_seed, difference_report& first) {
    row_result result = {};
    const std::uint32_t word = word_of_case(row, case_seed);
    const void* const slot = place_word(reference_word(memory_form_of(row.name), word));
    const bool executed = check_case(row, word, slot, case_seed, result, first);
    ++(executed ? result.words : result.rejected_words);
    return result;
}

} // namespace conformance
