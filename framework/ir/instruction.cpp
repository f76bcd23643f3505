#include "framework/ir/instruction.h"

#include "dr_api.h"

#include <cassert>
#include <cstring>

instr_t* instruction_from_application(std::uint8_t* pc) {
    instr_t* instruction = new instr_t{};
    instruction->translation = pc;
    instruction->raw = pc;
    std::memcpy(&instruction->word, pc, sizeof instruction->word);
    instruction->is_app = true;
    return instruction;
}

instr_t* instruction_from_word(std::uint32_t word) {
    instr_t* instruction = new instr_t{};
    instruction->word = word;
    instruction->is_app = true;
    return instruction;
}

instrlist_t* create_instruction_list() { return new instrlist_t{}; }

void clear_instruction_list(instrlist_t* list) {
    for (instr_t* instruction = list->first; instruction != nullptr;) {
        instr_t* next = instruction->next;
        delete instruction;
        instruction = next;
    }
    *list = {};
}

void destroy_instruction_list(instrlist_t* list) {
    clear_instruction_list(list);
    delete list;
}

void insert_meta_word(instrlist_t* list, instr_t* where, std::uint32_t word) {
    instrlist_meta_preinsert(list, where, instruction_from_word(word));
}

static instr_t* first_app_from(instr_t* instruction) {
    while (instruction != nullptr && !instruction->is_app)
        instruction = instruction->next;
    return instruction;
}

extern "C" {

instr_t* instrlist_first(instrlist_t* ilist) { return ilist->first; }
instr_t* instrlist_last(instrlist_t* ilist) { return ilist->last; }
instr_t* instrlist_first_app(instrlist_t* ilist) { return first_app_from(ilist->first); }

void instrlist_append(instrlist_t* ilist, instr_t* instr) { instrlist_preinsert(ilist, nullptr, instr); }

void instrlist_preinsert(instrlist_t* ilist, instr_t* where, instr_t* instr) {
    assert(instr->previous == nullptr && instr->next == nullptr && ilist->first != instr);
    instr_t* before = where != nullptr ? where->previous : ilist->last;
    if (where != nullptr)
        instr->replaced = where->raw != nullptr ? where->raw : where->replaced;
    instr->previous = before;
    instr->next = where;
    (before != nullptr ? before->next : ilist->first) = instr;
    (where != nullptr ? where->previous : ilist->last) = instr;
}

void instrlist_meta_preinsert(instrlist_t* ilist, instr_t* where, instr_t* instr) {
    instr_set_meta(instr);
    instrlist_preinsert(ilist, where, instr);
}

void instrlist_remove(instrlist_t* ilist, instr_t* instr) {
    (instr->previous != nullptr ? instr->previous->next : ilist->first) = instr->next;
    (instr->next != nullptr ? instr->next->previous : ilist->last) = instr->previous;
    instr->previous = nullptr;
    instr->next = nullptr;
}

instr_t* instr_get_next(instr_t* instr) { return instr->next; }
instr_t* instr_get_prev(instr_t* instr) { return instr->previous; }
instr_t* instr_get_next_app(instr_t* instr) { return first_app_from(instr->next); }

bool instr_is_app(instr_t* instr) { return instr->is_app; }
bool instr_is_meta(instr_t* instr) { return !instr->is_app; }
void instr_set_app(instr_t* instr) { instr->is_app = true; }
void instr_set_meta(instr_t* instr) { instr->is_app = false; }

byte* instr_get_raw_bits(instr_t* instr) { return instr->raw; }
app_pc instr_get_app_pc(instr_t* instr) { return instr->translation; }

instr_t* instr_set_translation(instr_t* instr, app_pc addr) {
    instr->translation = addr;
    return instr;
}

void instr_destroy(void*, instr_t* instr) {
    assert(instr->previous == nullptr && instr->next == nullptr);
    delete instr;
}

} // extern "C"
