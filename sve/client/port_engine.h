// The project's own engine. Blocks have no limit of size that the client could pass, and a thread is never
// stopped within a replacement.
#pragma once

#include "dr_call_kelvo.h"
#include "sve/client/signal_state.h"

inline void register_process_exit_event(void (*event)()) { drmgr_register_exit_event(event); }
inline bool register_framework_events() {
    register_signal_state();
    return true;
}
inline void check_framework_options() {}
