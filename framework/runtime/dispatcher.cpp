#include "framework/runtime/dispatcher.h"

#include "framework/runtime/block_builder.h"
#include "framework/runtime/code_cache.h"
#include "framework/runtime/system_calls.h"
#include "framework/runtime/translated_pages.h"

namespace {

// With tagged addresses, bits 63:56 of a branch target in the lower half of the address space are ignored.
std::uint64_t branch_target(std::uint64_t address) {
    return address & (std::uint64_t{1} << 55) ? address : address & ~(std::uint64_t{0xFF} << 56);
}

void invalidate_code_line(thread_context* context, std::uint64_t address) {
    code_changed(context, address & ~(translated_page_bytes - 1),
                 (address | (translated_page_bytes - 1)) + 1);
}

// Drops the blocks if another thread has changed code.
bool flush_if_requested(thread_context* context) {
    if (!context->flush_requested.load() || !context->flush_requested.exchange(false))
        return false;
    flush_code_cache(*context->cache);
    return true;
}

// Does what the exit asks for and sets the context's `pc` to where the application goes on. Returns the exit
// if it is to be linked to the block there.
exit_record* leave(thread_context* context, exit_record* exit) {
    context->pc = exit->target;
    switch (exit->kind) {
    case exit_kind::direct:
        return exit;
    case exit_kind::system_call:
        handle_system_call(context); // may flush the cache and the record with it
        return nullptr;
    case exit_kind::invalidate_code:
        invalidate_code_line(context, read_register(context, exit->detail));
        return nullptr;
    }
    return nullptr;
}

void run_blocks(void* argument) {
    auto* const context = static_cast<thread_context*>(argument);
    code_cache& cache = *context->cache;
    const block* next = build_block(context, nullptr);
    for (;;) {
        exit_record* exit = cache.gate.enter_cache(context, next->landing);
        const bool indirect = !exit;
        if (indirect)
            context->pc = branch_target(context->pc);
        else
            exit = leave(context, exit);
        if (context->ended)
            return;
        if (flush_if_requested(context))
            exit = nullptr;
        next = find_block(cache, context->pc);
        if (!next)
            next = build_block(context, exit);
        else if (exit)
            link_exit(*exit, *next);
        if (indirect)
            enter_in_lookup_table(cache, context->pc, *next);
        // Once more, since the entry may have been made after it should have been cleared.
        if (flush_if_requested(context))
            next = build_block(context, nullptr);
    }
}

} // namespace

void run_application(thread_context* context) {
    context->cache->gate.call_on_stack(context, context->engine_stack_top, run_blocks);
}
