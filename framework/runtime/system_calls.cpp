#include "framework/runtime/system_calls.h"

#include <array>

#include "framework/runtime/interruptible.h"
#include "framework/runtime/raw_system_call.h"

namespace {

constexpr unsigned known_numbers = 512;

// Handlers by number; null means the kernel's.
const std::array<system_call_handler, known_numbers>& handlers() {
    static const auto table = [] {
        std::array<system_call_handler, known_numbers> result{};
        for (const system_call_rows rows :
             {memory_calls(), process_calls(), path_calls(), signal_calls(), exec_calls()})
            for (const system_call_row& row : rows)
                result[row.number] = row.handler;
        return result;
    }();
    return table;
}

} // namespace

void call_kernel(thread_context* context) {
    std::uint64_t* const x = context->x;
    x[0] = raw_system_call(x[8], x[0], x[1], x[2], x[3], x[4], x[5]);
}

bool pass_to_kernel(thread_context* context) {
    context->in_system_call.store(true, std::memory_order_relaxed);
    std::atomic_signal_fence(std::memory_order_seq_cst);
    const bool made = interruptible_system_call(context->x, &context->signals.pending);
    std::atomic_signal_fence(std::memory_order_seq_cst);
    context->in_system_call.store(false, std::memory_order_relaxed);
    if (!made)
        context->pc -= 4;
    return made;
}

void handle_system_call(thread_context* context) {
    const std::uint64_t number = static_cast<std::uint32_t>(context->x[8]);
    const system_call_handler handler = number < known_numbers ? handlers()[number] : nullptr;
    if (handler)
        handler(context);
    else
        pass_to_kernel(context);
}
