// The short pieces of emitted code through which control passes between the engine's C++ code and the code
// cache.
#pragma once

#include "framework/runtime/emitter.h"
#include "framework/runtime/thread_context.h"

struct exit_record; // framework/runtime/code_cache.h

// Exits from the cache and landings of indirect branches hand a value over in these two registers; the
// application's values stand in scratch slots 0 and 1 meanwhile. Compilers seldom branch through them, so
// that the short look-up fits nearly every branch.
inline constexpr unsigned hand_over_register = 14;
inline constexpr unsigned hand_over_register_2 = 15;

// Byte offsets of fields in the context.
constexpr std::int64_t scratch_slot(unsigned n) { return offsetof(thread_context, scratch) + 8 * n; }
inline constexpr std::int64_t hand_over_slot = scratch_slot(0);

struct gates {
    // Loads the application's state from the context and runs the cache from the context's `enter_target`, a
    // landing. Comes back at the next exit with the state saved, and returns the exit's record, null for an
    // indirect branch, whose target is then the context's `pc`.
    exit_record* (*enter_cache)(thread_context* context);
    std::uint64_t enter_end; // behind its last word, which jumps to the target

    // A landing that leaves at once, by the record for interruptions; and the same for where the
    // application's registers are in place.
    std::uint64_t refusing_landing;
    std::uint64_t interrupted_entry;

    // Calls function(argument) on another stack.
    void (*call_on_stack)(void* argument, std::uint64_t stack_top, void (*function)(void*));

    // Entered by branch from an exit: hand-over registers saved, the record in the first.
    std::uint64_t exit_entry;

    // Called by BLR X10 from code of the client: callee in X11, its arguments in X0 to X7. Runs it on the
    // engine's stack. FPCR stays the application's; every register but X28 and SP may change.
    std::uint64_t client_call_entry;
    std::uint64_t client_call_returning; // from here to its end X30 is the return address again
    std::uint64_t client_call_end;
};

// Emits the gates. `interruption` is the record for interruptions.
gates emit_gates(emitter& out, const exit_record* interruption);
