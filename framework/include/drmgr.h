// Events and thread-local fields of the client. Registration needs drmgr_init first and happens while one
// thread runs; callbacks run in the order of registration, those of thread and process exit in reverse order.
#pragma once

#include "dr_api.h"

// Not to be used beside this header, which has its own form of the event.
#define dr_register_exit_event DO_NOT_USE_THIS_CALL_drmgr_register_exit_event

typedef dr_emit_flags_t (*drmgr_xform_cb_t)(void* drcontext, void* tag, instrlist_t* bb, bool for_trace,
                                            bool translating);

typedef struct _drmgr_priority_t {
    size_t struct_size;
    const char* name;
    const char* before;
    const char* after;
    int priority;
} drmgr_priority_t;

extern "C" {

// Counted pairs; the last exit drops all registrations.
bool drmgr_init(void);
void drmgr_exit(void);

bool drmgr_register_thread_init_event(void (*func)(void* drcontext));
bool drmgr_register_thread_exit_event(void (*func)(void* drcontext));
bool drmgr_register_exit_event(void (*func)(void));

// A priority record is refused here: one client has nothing to order.
bool drmgr_register_bb_app2app_event(drmgr_xform_cb_t func, drmgr_priority_t* priority);
bool drmgr_unregister_bb_app2app_event(drmgr_xform_cb_t func);

// 64 fields a thread, null at first; registration gives -1 when none is left. Without a context, reading
// gives null and writing false.
int drmgr_register_tls_field(void);
bool drmgr_unregister_tls_field(int idx);
void* drmgr_get_tls_field(void* drcontext, int idx);
bool drmgr_set_tls_field(void* drcontext, int idx, void* value);

// Inserts meta code that loads the running thread's field into an X register other than the stolen one. False
// if there is no such field.
bool drmgr_insert_read_tls_field(void* drcontext, int idx, instrlist_t* ilist, instr_t* where, reg_id_t reg);

} // extern "C"
