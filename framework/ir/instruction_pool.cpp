#include "framework/ir/instruction.h"

#include <cassert>
#include <new>
#include <utility>

namespace {

struct free_instruction {
    free_instruction* next;
};
thread_local free_instruction* free_list = nullptr;

} // namespace

void* _instr_t::operator new(std::size_t size) {
    assert(size == sizeof(_instr_t));
    if (!free_list)
        return ::operator new(size);
    return std::exchange(free_list, free_list->next);
}

void _instr_t::operator delete(void* memory) { free_list = new (memory) free_instruction{free_list}; }

void release_instruction_pool() {
    while (free_list)
        ::operator delete(std::exchange(free_list, free_list->next));
}
