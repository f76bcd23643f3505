#include "framework/runtime/robust_list.h"

#include <atomic>
#include <linux/futex.h>
#include <sys/syscall.h>

#include "framework/runtime/interruptible.h"
#include "framework/runtime/raw_system_call.h"

namespace {

constexpr unsigned entries_limit = 2048; // the kernel's: the list may be a ring

// Bit 0 of a pointer to an entry marks a futex with priority inheritance.
constexpr std::uint64_t inheriting = 1;

void release(std::uint64_t entry, std::int64_t offset, std::uint32_t owner, bool pending) {
    const std::uint64_t address = (entry & ~inheriting) + static_cast<std::uint64_t>(offset);
    std::uint32_t value;
    if (address % sizeof value != 0 || !read_application(value, address))
        return;
    const auto wake = [&] { raw_system_call(SYS_futex, address, FUTEX_WAKE, 1); };
    if (pending && !(entry & inheriting) && value == 0) // being unlocked: the waiter may not have been woken
        return wake();
    std::atomic_ref futex(*reinterpret_cast<std::uint32_t*>(address));
    do {
        if ((value & FUTEX_TID_MASK) != owner)
            return;
    } while (!futex.compare_exchange_weak(value, (value & FUTEX_WAITERS) | FUTEX_OWNER_DIED));
    if (!(entry & inheriting) && value & FUTEX_WAITERS)
        wake();
}

} // namespace

void release_robust_futexes(std::uint64_t head_address, std::uint32_t owner) {
    struct list_head {
        std::uint64_t first;
        std::int64_t futex_offset;
        std::uint64_t pending;
    };
    list_head head;
    if (!read_application(head, head_address))
        return;
    std::uint64_t entry = head.first;
    for (unsigned n = 0; n < entries_limit && (entry & ~inheriting) != head_address; ++n) {
        // Read first: once it is released, the mutex may be gone.
        std::uint64_t next;
        const bool goes_on = read_application(next, entry & ~inheriting);
        if (entry != head.pending)
            release(entry, head.futex_offset, owner, false);
        if (!goes_on)
            return;
        entry = next;
    }
    if (head.pending)
        release(head.pending, head.futex_offset, owner, true);
}
