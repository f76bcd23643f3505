// A call from inserted code into the client that is tied to an application address. It goes beyond the
// published interface, so a build over another framework brings its own equivalent.
#pragma once

#include "dr_api.h"

extern "C" {

// Inserts before `where` a call of `callee` with `num_args` operands, at most eight, each an immediate or an
// X register that no earlier argument's register, X10 or X11 is. The callee runs on a stack of the engine's,
// may change every register but X28, and the thread's context tells `pc` as the application address of
// whatever happens during the call. Nothing is saved: the code around it holds the application's registers
// elsewhere. All inserted code is meta.
void dr_insert_call_kelvo(void* drcontext, instrlist_t* ilist, instr_t* where, app_pc pc, void* callee,
                          uint num_args, ...);

} // extern "C"
