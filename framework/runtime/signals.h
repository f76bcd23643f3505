// Signals of the application. The engine has the kernel's handlers; what arrives is delivered to the
// application's handlers when its state is complete: at once if the interrupted code allows, and otherwise as
// soon as it does.
#pragma once

#include "framework/runtime/signal_frame.h"

// The engine interrupts threads by this signal, to end the process or to have them leave their blocks. Like
// the next one it belongs to the C library, which uses them between its own threads.
inline constexpr unsigned stop_signal = 32;

// Takes the handlers of the signals that the engine needs. Those of the client for memory faults are called
// for faults that are not the application's own, or that it has no handler for.
void start_signals();

// Sets up the calling thread, whose context is current, to receive signals. All are blocked before.
void start_thread_signals(thread_context* context);

// Blocks all signals of the calling thread, for times when it has no context.
void block_all_signals();

// Blocks exactly these signals, as the application asks for it.
void set_application_mask(thread_context* context, std::uint64_t mask);

// Makes the context enter the handler of the pending signal, or does what takes the place of a handler.
// Afterwards no signal is pending. False if none was.
bool deliver_signals(thread_context* context);

// Makes a fault of the application at its `pc` the pending signal, or ends the process by it.
void raise_fault(thread_context* context, int signal, int code, std::uint64_t address);

// Makes another thread come to its dispatcher soon. It must not end meanwhile.
void interrupt_thread(thread_context* thread);

// Takes back what the code cache has been changed by so that a client's code is left at its end.
void restore_patched_word(thread_context* context);

// In a child made by fork: no signal is pending.
void forget_signals_of_parent(thread_context* context);

// The application's actions of a process: those of the kernel as far as the engine has not been asked for
// another one.
struct signal_action_entry {
    signal_action action;
    bool known; // otherwise it is what the kernel has
};
struct signal_actions {
    signal_action_entry entry[65]; // by number
};

// What the child that borrows a thread's context must find new, and the parent as it was. While it exists,
// the context has a copy of the actions and no signal that has arrived. All signals are blocked when it is
// made and when it ends.
class lent_signals {
public:
    explicit lent_signals(thread_context* lent);
    ~lent_signals();
    lent_signals(const lent_signals&) = delete;
    lent_signals& operator=(const lent_signals&) = delete;

private:
    thread_context* context;
    signal_actions childs_actions;
    signal_actions* actions;
    siginfo_t information;
    siginfo_t held_information[3];
    std::uint64_t running_mask, mask, held;
    std::uint32_t pending;
    stack_t alternate;
};

// While it exists, the kernel has all that a program that is executed finds as the application has left it,
// also of the signals that the engine lives on.
class executing_signals {
public:
    explicit executing_signals(thread_context* executing);
    ~executing_signals();
    executing_signals(const executing_signals&) = delete;
    executing_signals& operator=(const executing_signals&) = delete;

private:
    thread_context* context;
};

// The action for a signal from 1 to 64 in the context's process, and its change. The lock of the process must
// be held.
signal_action application_action(thread_context* context, unsigned signal);
void set_application_action(thread_context* context, unsigned signal, const signal_action& action);
