// The processor as oracle: executes single instruction words with all registers given, and tells what they
// are afterwards.
#pragma once

#include "sve/decode/cpu_state.h"

#include <csetjmp>
#include <cstdint>
#include <string>

namespace conformance {

// The registers as the processor has them, with vectors of 1024 bits: a predicate is 16 bytes.
struct processor_registers {
    std::uint64_t x[31];
    std::uint64_t sp;
    std::uint64_t nzcv;
    std::uint64_t fpsr;
    std::uint64_t fpcr;
    std::uint64_t unused;
    std::uint64_t host[28]; // the tool's own stack, thread pointer and FP control, during an execution
    std::uint8_t z[32][vector_bytes];
    std::uint64_t p[16][2];
    std::uint64_t ffr[2];
};

// The same values, with predicates as bits.
void to_processor(const cpu_state& state, processor_registers& registers);

// A row of predicate bytes from 128 bits, and back; bits 7 to 1 of the bytes are 0 and not looked at.
void spread_predicate(const std::uint64_t (&bits)[2], std::uint8_t* row);
void gather_predicate(const std::uint8_t* row, std::uint64_t (&bits)[2]);

// Makes the vector length 1024 bits. Returns what is wrong with the processor, or an empty text.
std::string prepare_processor();

enum class outcome {
    executed,
    rejected, // SIGILL: the word is reserved
    faulted,  // SIGSEGV or SIGBUS
};

struct execution {
    outcome result;
    std::uint64_t fault_address;
};

// Writes the word to executable memory and returns its place, which stays valid for many further words.
const void* place_word(std::uint32_t word);

// Executes a placed word with `registers`, which then hold the values afterwards. A word that is rejected
// leaves them as they were.
execution execute_placed(const void* slot, processor_registers& registers);

// The address of the word itself in its slot.
std::uint32_t* placed_word(const void* slot);

// Catches a fault in code of ours, or its end by an assertion or the alarm: use as if
// (sigsetjmp(fault_return, 0) == 0) { expect_fault = true; ...; expect_fault = false; }. The jump clears
// expect_fault; unexpected_fault_address tells the address.
extern sigjmp_buf fault_return;
extern volatile bool expect_fault;
extern volatile std::uint64_t unexpected_fault_address;

} // namespace conformance
