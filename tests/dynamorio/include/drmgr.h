// The published interface of the multi-instrumentation manager.
#pragma once

#ifndef DYNAMORIO_API
#error "dr_api.h is to be included first"
#endif

#ifdef __cplusplus
extern "C" {
#endif

typedef dr_emit_flags_t (*drmgr_xform_cb_t)(void* drcontext, void* tag, instrlist_t* bb, bool for_trace,
                                            bool translating);

typedef struct _drmgr_priority_t {
    size_t struct_size;
    const char* name;
    const char* before;
    const char* after;
    int priority;
} drmgr_priority_t;

bool drmgr_init(void);
void drmgr_exit(void);
bool drmgr_register_thread_init_event(void (*func)(void* drcontext));
bool drmgr_register_thread_exit_event(void (*func)(void* drcontext));
bool drmgr_register_bb_app2app_event(drmgr_xform_cb_t func, drmgr_priority_t* priority);
bool drmgr_unregister_bb_app2app_event(drmgr_xform_cb_t func);
bool drmgr_register_restore_state_ex_event(bool (*func)(void* drcontext, bool restore_memory,
                                                        dr_restore_state_info_t* info));
int drmgr_register_tls_field(void);
bool drmgr_unregister_tls_field(int idx);
void* drmgr_get_tls_field(void* drcontext, int idx);
bool drmgr_set_tls_field(void* drcontext, int idx, void* value);
bool drmgr_insert_read_tls_field(void* drcontext, int idx, instrlist_t* ilist, instr_t* where, reg_id_t reg);

#if PUBLISHED_VERSION > 1103
bool drmgr_register_exit_event(void (*func)(void));
#define dr_register_exit_event DO_NOT_USE_exit_event_USE_drmgr_events_instead
#endif

#ifdef __cplusplus
}
#endif
