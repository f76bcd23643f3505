// What a thread's context keeps of its signals.
#pragma once

#include <atomic>
#include <csignal>
#include <cstdint>

// SS_AUTODISARM of the kernel: the stack is forgotten while a handler runs on it.
inline constexpr int disarms_itself = INT32_MIN;

// The application's actions, of a process as a whole; see signals.h.
struct signal_actions;
extern signal_actions process_signal_actions;

struct thread_signals {
    signal_actions* actions = &process_signal_actions;

    // The signal that has arrived and is to be delivered next, 0 if there is none. As long as it is set, the
    // kernel holds back all others but the protected ones.
    std::atomic<std::uint32_t> pending;
    siginfo_t information;
    std::uint64_t running_mask; // what was blocked when it arrived, by a temporary mask or by `mask`

    std::uint64_t mask; // what the application blocks; bit n - 1 stands for signal n
    bool waits_with_mask;
    std::uint64_t wait_mask; // blocked in place of `mask` during the system call under way
    stack_t alternate;       // the application's alternate stack

    // Signals that the kernel may not hold back, since the engine needs them itself: here they wait until the
    // application does not block them. The records are of SIGBUS, SIGSEGV and the stop signal.
    std::atomic<std::uint64_t> held;
    siginfo_t held_information[3];

    // Interruptions that other threads of the engine have sent by the stop signal.
    std::atomic<std::uint32_t> interruptions;

    // A word of the code cache that has been replaced by a jump, so that code of a client is left at its end.
    std::uint32_t* patched;
    std::uint32_t patched_word;
};
