// The framework as the client sees it, and the one place for what differs between frameworks and their
// versions.
#pragma once

#include "dr_api.h"

#include "drmgr.h"
#include "drreg.h"

#include "dr_call_kelvo.h"

// Newer versions have the event in drmgr, and hide the older name behind a macro there.
inline void register_process_exit_event(void (*event)()) {
#ifdef dr_register_exit_event
    drmgr_register_exit_event(event);
#else
    dr_register_exit_event(event);
#endif
}
