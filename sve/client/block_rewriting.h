// The block event: each SVE instruction of the main module, or of code in no module, is replaced by a call of
// emulate_instruction with the registers moved to the thread's cpu_state before and back after. Other
// instructions are left and counted. Always returns the default flags.
#pragma once

#include "sve/client/framework_port.h"

dr_emit_flags_t event_instruction_change(void* drcontext, void* tag, instrlist_t* bb, bool for_trace,
                                         bool translating);
