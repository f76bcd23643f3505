#include "drmgr.h"

#include "drreg.h"
#include "framework/aarch64/encode.h"
#include "framework/ir/callbacks.h"
#include "framework/ir/instruction.h"
#include "framework/ir/operand.h"
#include "framework/runtime/thread_context.h"

#include <cassert>

client_callbacks registered_callbacks;

namespace {

int drmgr_uses = 0;
int drreg_uses = 0;
bool tls_field_taken[client_tls_fields];

bool is_tls_field(int index) { return index >= 0 && index < client_tls_fields && tls_field_taken[index]; }

thread_context* context_of(void* drcontext) { return static_cast<thread_context*>(drcontext); }

} // namespace

extern "C" {

bool drmgr_init(void) {
    ++drmgr_uses;
    return true;
}

void drmgr_exit(void) {
    assert(drmgr_uses > 0);
    if (--drmgr_uses > 0)
        return;
    registered_callbacks = {};
    for (bool& taken : tls_field_taken)
        taken = false;
}

bool drmgr_register_thread_init_event(void (*func)(void*)) {
    return drmgr_uses > 0 && registered_callbacks.thread_init.add(func);
}

bool drmgr_register_thread_exit_event(void (*func)(void*)) {
    return drmgr_uses > 0 && registered_callbacks.thread_exit.add(func);
}

bool drmgr_register_exit_event(void (*func)(void)) {
    return drmgr_uses > 0 && registered_callbacks.process_exit.add(func);
}

bool drmgr_register_bb_app2app_event(drmgr_xform_cb_t func, drmgr_priority_t* priority) {
    return drmgr_uses > 0 && priority == nullptr && registered_callbacks.block.add(func);
}

bool drmgr_unregister_bb_app2app_event(drmgr_xform_cb_t func) {
    return registered_callbacks.block.remove(func);
}

int drmgr_register_tls_field(void) {
    for (int index = 0; index < client_tls_fields; ++index) {
        if (!tls_field_taken[index]) {
            tls_field_taken[index] = true;
            return index;
        }
    }
    return -1;
}

bool drmgr_unregister_tls_field(int idx) {
    if (!is_tls_field(idx))
        return false;
    tls_field_taken[idx] = false;
    return true;
}

void* drmgr_get_tls_field(void* drcontext, int idx) {
    return drcontext != nullptr && is_tls_field(idx) ? context_of(drcontext)->tls_field[idx] : nullptr;
}

bool drmgr_set_tls_field(void* drcontext, int idx, void* value) {
    if (drcontext == nullptr || !is_tls_field(idx))
        return false;
    context_of(drcontext)->tls_field[idx] = value;
    return true;
}

bool drmgr_insert_read_tls_field(void*, int idx, instrlist_t* ilist, instr_t* where, reg_id_t reg) {
    if (!is_tls_field(idx))
        return false;
    assert(!reg_is_stolen(reg));
    const std::size_t offset =
        offsetof(thread_context, tls_field) + static_cast<std::size_t>(idx) * sizeof(void*);
    insert_meta_word(
        ilist, where,
        a64::ldr_x(numbered_x_register(reg), a64::stolen_register, static_cast<std::int64_t>(offset)));
    return true;
}

drreg_status_t drreg_init(drreg_options_t* ops) {
    if (ops == nullptr || ops->struct_size != sizeof(drreg_options_t))
        return DRREG_ERROR_INVALID_PARAMETER;
    if (ops->num_spill_slots > 0)
        return DRREG_ERROR_OUT_OF_SLOTS;
    if (!drmgr_init())
        return DRREG_ERROR;
    ++drreg_uses;
    return DRREG_SUCCESS;
}

drreg_status_t drreg_exit(void) {
    if (drreg_uses == 0)
        return DRREG_ERROR;
    --drreg_uses;
    drmgr_exit();
    return DRREG_SUCCESS;
}

} // extern "C"
