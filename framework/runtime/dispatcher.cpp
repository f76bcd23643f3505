#include "framework/runtime/dispatcher.h"

#include "framework/runtime/block_builder.h"
#include "framework/runtime/code_cache.h"
#include "framework/runtime/signals.h"
#include "framework/runtime/system_calls.h"
#include "framework/runtime/traces.h"
#include "framework/runtime/translated_code.h"

namespace {

// With tagged addresses, bits 63:56 of a branch target in the lower half of the address space are ignored.
std::uint64_t branch_target(std::uint64_t address) {
    return address & (std::uint64_t{1} << 55) ? address : address & ~(std::uint64_t{0xFF} << 56);
}

// Does what the exit asks for and sets the context's `pc` to where the application goes on. Returns the exit
// if it is to be linked to the block there.
exit_record* leave(thread_context* context, exit_record* exit) {
    if (exit->kind != exit_kind::interrupted)
        context->pc = exit->target;
    switch (exit->kind) {
    case exit_kind::direct:
        return exit;
    case exit_kind::interrupted:
        return nullptr;
    case exit_kind::system_call:
        handle_system_call(context); // may drop the block and the record with it
        return nullptr;
    case exit_kind::invalidate_code:
        code_line_changed(context, read_register(context, exit->detail));
        return nullptr;
    }
    return nullptr;
}

// The block where the application goes on, built if need be and linked to the exit that leads to it. Null if
// the application cannot go on there and a signal says so.
const block* next_block(thread_context* context, exit_record* from) {
    code_cache& cache = *context->cache;
    if (from && from->path) {
        if (const block* const found = follow_path(cache, *from))
            return found;
        const unsigned generation = cache.generation;
        const block* const built = build_block(context, nullptr);
        return built && generation == cache.generation ? follow_path(cache, *from) : built;
    }
    if (!from)
        if (const block* const copy = find_block(cache, context->pc, outermost_path(cache.paths)))
            return copy;
    const block* const found = find_block(cache, context->pc);
    if (!found)
        return build_block(context, from);
    if (from)
        link_exit(*from, *found);
    return found;
}

// Runs the cache until the next exit. False if something has come up that is to be seen to before.
bool enter(thread_context* context, const block& start, exit_record*& exit) {
    context->enter_target = reinterpret_cast<std::uint64_t>(start.landing);
    context->in_cache.store(true);
    // From here on, a signal that arrives changes the target.
    const bool free = !context->code_change_pending.load() && !context->signals.pending.load();
    if (free)
        exit = context->cache->gate.enter_cache(context);
    context->in_cache.store(false);
    return free;
}

void run_on_engine_stack(void* context) { run_application_here(static_cast<thread_context*>(context)); }

} // namespace

void run_application_here(thread_context* context) {
    exit_record* from = nullptr; // the exit by which the cache was left, if it can be linked
    bool indirect = false;       // it was left by an indirect branch
    while (!context->ended) {
        const bool delivered = deliver_signals(context);
        if (drop_changed_code(context) || delivered) {
            from = nullptr;
            indirect = false;
        }
        const block* const next = next_block(context, from);
        from = nullptr;
        if (!next)
            continue;
        // The entry may be made after it should have been cleared: then a change is pending.
        if (indirect)
            enter_in_lookup_table(*context->cache, context->pc, *next);
        indirect = false;
        exit_record* exit;
        if (!enter(context, *next, exit))
            continue;
        restore_patched_word(context);
        indirect = !exit;
        if (indirect)
            context->pc = branch_target(context->pc);
        else
            from = leave(context, exit);
    }
}

void run_application(thread_context* context) {
    context->cache->gate.call_on_stack(context, context->engine_stack_top, run_on_engine_stack);
}
