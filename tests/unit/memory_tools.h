// Tools for tests of loads and stores: memory that ends at unreadable pages, faults as results, and a
// definition, byte by byte, of what a sequence of element transfers does.
#pragma once

#include "tests/unit/state_tools.h"

#include <csetjmp>
#include <csignal>
#include <sys/mman.h>
#include <unistd.h>
#include <vector>

// Pages of memory between two that nothing can be read from or written to, if need be below 4 GB. Its end is
// an odd multiple of the page size, so that it is the end of no larger page.
class fenced_memory {
public:
    explicit fenced_memory(std::size_t pages, bool is_low = false)
        : pages_(pages), page_(static_cast<std::size_t>(sysconf(_SC_PAGESIZE))),
          reserved_(static_cast<std::uint8_t*>(mmap(is_low ? reinterpret_cast<void*>(0x50000000) : nullptr,
                                                    (pages + 3) * page_, PROT_NONE,
                                                    MAP_PRIVATE | MAP_ANONYMOUS, -1, 0))),
          begin_(reserved_ + page_) {
        if (reinterpret_cast<std::uintptr_t>(end()) / page_ % 2 == 0)
            begin_ += page_;
        mprotect(begin(), size(), PROT_READ | PROT_WRITE);
    }
    ~fenced_memory() { munmap(reserved_, (pages_ + 3) * page_); }
    fenced_memory(const fenced_memory&) = delete;

    std::uint8_t* begin() const { return begin_; }
    std::uint8_t* middle() const { return begin() + page_; }
    std::uint8_t* end() const { return begin() + size(); }
    std::size_t size() const { return pages_ * page_; }
    std::uint64_t address() const { return reinterpret_cast<std::uint64_t>(begin_); }
    std::vector<std::uint8_t> contents() const { return {begin(), end()}; }

    void fill(unsigned seed) const {
        std::mt19937 generator(seed);
        std::generate(begin(), end(), [&] { return static_cast<std::uint8_t>(generator()); });
    }

private:
    std::size_t pages_;
    std::size_t page_;
    std::uint8_t* reserved_;
    std::uint8_t* begin_;
};

inline sigjmp_buf after_fault;

// Runs the action and tells whether a memory fault ended it.
template <class Action> [[gnu::noinline]] bool faults(Action action) {
    struct sigaction on_fault = {};
    struct sigaction old_segv, old_bus;
    on_fault.sa_handler = [](int) { siglongjmp(after_fault, 1); };
    sigaction(SIGSEGV, &on_fault, &old_segv);
    sigaction(SIGBUS, &on_fault, &old_bus);
    const bool faulted = sigsetjmp(after_fault, 1) != 0;
    if (!faulted)
        action();
    sigaction(SIGSEGV, &old_segv, nullptr);
    sigaction(SIGBUS, &old_bus, nullptr);
    return faulted;
}

struct transfer_kind {
    int element_bytes;
    int memory_bytes;
    bool sign_extends;
    bool is_store;

    int element_count() const { return vector_bytes / element_bytes; }
};

// One element, to or from one place in memory.
struct transfer {
    int reg;
    int index;
    std::uint64_t address;
};

// Performs the transfers in their order, those of inactive elements without memory and, if they load, with 0.
// Stops at the first of which a byte is outside of the accessible memory, and returns its address, or 0 if
// there is none.
inline std::uint64_t perform(const transfer_kind& kind, const std::vector<transfer>& transfers, int pg,
                             cpu_state& state, std::uint64_t memory_start,
                             std::vector<std::uint8_t>& memory) {
    for (const transfer& one : transfers) {
        std::uint8_t* const element_bytes = state.z[one.reg] + one.index * kind.element_bytes;
        const bool active = state.p[pg][one.index * kind.element_bytes] & 1;
        const std::uint64_t offset = one.address - memory_start;
        const auto size = static_cast<std::uint64_t>(kind.memory_bytes);
        if (active && (offset >= memory.size() || offset + size > memory.size()))
            return one.address;
        const auto place = memory.begin() + static_cast<std::ptrdiff_t>(active ? offset : 0);
        if (kind.is_store) {
            if (active)
                std::copy_n(element_bytes, kind.memory_bytes, place);
            continue;
        }
        std::fill_n(element_bytes, kind.element_bytes, std::uint8_t{0});
        if (active) {
            std::copy_n(place, kind.memory_bytes, element_bytes);
            if (kind.sign_extends && element_bytes[kind.memory_bytes - 1] >= 0x80)
                std::fill_n(element_bytes + kind.memory_bytes, kind.element_bytes - kind.memory_bytes,
                            std::uint8_t{0xFF});
        }
    }
    return 0;
}

// Whether a fault stops a load at its element, or the registers keep what they held.
enum class on_fault { stop, keep };

// Runs the action, which is to perform the transfers on the state and the memory, and compares both, and
// whether it faults, with what they do by definition.
template <class Action>
void expect_transfers(const transfer_kind& kind, const std::vector<transfer>& transfers, int pg,
                      cpu_state& state, const fenced_memory& memory, on_fault rule, Action action) {
    const cpu_state before = state;
    cpu_state expected = state;
    std::vector<std::uint8_t> expected_memory = memory.contents();
    const std::uint64_t faulting = perform(kind, transfers, pg, expected, memory.address(), expected_memory);
    if (faulting != 0 && rule == on_fault::keep)
        expected = before;

    EXPECT_EQ(faults([&] { EXPECT_EQ(action(&state), aarch64_emulated); }), faulting != 0);
    EXPECT_TRUE(same_state(state, expected));
    // What part of an element that straddles the end of a page a processor writes is its own affair.
    for (int k = 0; faulting != 0 && kind.is_store && k < kind.memory_bytes; ++k) {
        const std::uint64_t offset = faulting + static_cast<std::uint64_t>(k) - memory.address();
        if (offset < memory.size())
            expected_memory[offset] = memory.begin()[offset];
    }
    EXPECT_TRUE(memory.contents() == expected_memory);
}
