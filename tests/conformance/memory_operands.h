// Where a load or store of a row reads and writes, and the registers that make it do so.
#pragma once

#include "sve/decode/cpu_state.h"
#include "tests/conformance/random_states.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace conformance {

// Memory that the instructions under test use: readable and writable pages, with unreadable ones on both
// sides. It lies below 4 GB, where 32-bit vector elements reach.
class arena {
public:
    // Ends the program with a message if there is no such memory.
    arena();

    std::uint64_t begin() const { return reinterpret_cast<std::uint64_t>(bytes_); }
    std::uint64_t end() const { return begin() + size_; }
    std::size_t size() const { return size_; }
    std::uint8_t* bytes() const { return bytes_; }

private:
    std::uint8_t* bytes_;
    std::size_t size_;
};

enum class memory_kind {
    none,
    contiguous, // one to four elements of consecutive registers at each step, base and register or immediate
    replicate,  // one element, or a block of 16 bytes
    whole,      // a whole register, without a predicate
    vector,     // an address for each element
};

enum class fault_rule { none, first_fault, non_fault };

enum class offset_extension { none, zero, sign };

// What a row's name says of its memory operand.
struct memory_form {
    memory_kind kind;
    bool store;
    fault_rule faults;
    int element_bytes; // in the register
    int memory_bytes;
    int registers;      // 1 to 4
    int elements;       // steps of a contiguous form
    bool scalar_offset; // base plus scaled register, not immediate
    bool vector_base;   // base vector plus immediate, not base register plus vector
    bool scaled;        // vector offsets are multiplied by memory_bytes
    offset_extension extension;
};

memory_form memory_form_of(std::string_view name);

// Sets base registers, offset vectors and governing predicate so that every active element lies in the arena
// and inactive ones anywhere, often just beyond its ends.
void place_operands(const memory_form& form, std::uint32_t word, const arena& memory, cpu_state& state,
                    random_source& random);

// The word whose result on the processor says what the form has to do. User-mode emulation (QEMU 7.2)
// misreads the predicate of contiguous first-fault and non-fault loads, and stops them at page boundaries;
// within mapped memory they are the plain load of the same operands, which stands in for them.
std::uint32_t reference_word(const memory_form& form, std::uint32_t word);

} // namespace conformance
