#include "framework/ir/instruction.h"

#include <cassert>
#include <memory>
#include <new>
#include <vector>

namespace {

// As many as a large block has, at least.
constexpr std::size_t chunk_instructions = 256;

struct alignas(_instr_t) instruction_memory {
    std::uint8_t bytes[sizeof(_instr_t)];
};
thread_local std::vector<std::unique_ptr<instruction_memory[]>> chunks;

} // namespace

void refill_instruction_pool() {
    instruction_memory* const chunk =
        chunks.emplace_back(std::make_unique<instruction_memory[]>(chunk_instructions)).get();
    for (std::size_t n = chunk_instructions; n-- > 0;)
        free_instructions = new (&chunk[n]) free_instruction{free_instructions};
}

void release_instruction_pool() {
    free_instructions = nullptr;
    chunks.clear();
}
