// The instruction list that the client sees: a doubly linked list of A64 words, labels apart, each with its
// application address and its status. Only one form exists, the encoded word; nothing is decoded into
// operands.
#pragma once

#include <cstddef>
#include <cstdint>
#include <new>
#include <utility>

struct _instr_t {
    _instr_t* previous;
    _instr_t* next;
    std::uint8_t* translation; // application address, null if none
    std::uint8_t* raw;         // where the bytes stand in the application's memory, null if built by hand
    std::uint8_t* replaced;    // if built by hand: raw of the instruction that it was inserted before
    std::uint32_t word;        // the encoding; unused for a label
    bool is_app;               // application status, as against meta
    bool is_label;

    // Each block makes and destroys as many as it has instructions: they come from a free list of the thread.
    static void* operator new(std::size_t size);
    static void operator delete(void* memory);
};

struct free_instruction {
    free_instruction* next;
};
inline constinit thread_local free_instruction* free_instructions = nullptr;

// Puts more memory into the free list.
void refill_instruction_pool();

// Frees what the calling thread keeps for instructions; none may be left.
void release_instruction_pool();

inline void* _instr_t::operator new(std::size_t) {
    if (!free_instructions)
        refill_instruction_pool();
    return std::exchange(free_instructions, free_instructions->next);
}
inline void _instr_t::operator delete(void* memory) {
    free_instructions = new (memory) free_instruction{free_instructions};
}

struct _instrlist_t {
    _instr_t* first;
    _instr_t* last;
};

// An application-status instruction made from the word at `pc`, which is both its translation and its raw
// bytes.
_instr_t* instruction_from_application(std::uint8_t* pc);

// An application-status instruction built by hand, with no translation.
_instr_t* instruction_from_word(std::uint32_t word);

// A meta instruction made from the word and inserted before `where`, or appended if that is null.
void insert_meta_word(_instrlist_t* list, _instr_t* where, std::uint32_t word);

// Destroys all instructions of the list.
void clear_instruction_list(_instrlist_t* list);

// An empty list, and its destruction with all instructions still in it.
_instrlist_t* create_instruction_list();
void destroy_instruction_list(_instrlist_t* list);
