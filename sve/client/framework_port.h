// The framework as the client sees it. All that the client includes of a framework comes from here; what
// differs between frameworks, and between their versions, stands in one file for each.
#pragma once

#include "dr_api.h"

#include "drmgr.h"
#include "drreg.h"

// The spill slots in which inserted code leaves the application's X26, X27 and X28, and from which it takes
// them back.
inline constexpr dr_spill_slot_t x26_slot = SPILL_SLOT_1;
inline constexpr dr_spill_slot_t x27_slot = SPILL_SLOT_2;
inline constexpr dr_spill_slot_t x28_slot = SPILL_SLOT_3;

// For dr_log. The mask has no name that all versions declare.
inline constexpr uint all_log_categories = 0x00FFFFFF;

// Besides dr_insert_call_kelvo (see framework/include/dr_call_kelvo.h), each file has:
//   register_process_exit_event(event)   registers the callback that runs once, at the end of the process
//   register_framework_events()          registers what only this framework raises; false if it refuses
//   check_framework_options()            ends the process, with one line, if the client can't work with the
//                                        options that the framework was started with
#ifdef OSTREL_DYNAMORIO
#include "sve/client/port_dynamorio.h"
#else
#include "sve/client/port_engine.h"
#endif
