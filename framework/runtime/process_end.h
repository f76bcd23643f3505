// Ways in which the process ends other than by the program's own exit.
#pragma once

// Exit statuses of the launcher, as shells and their like use them.
inline constexpr int status_unsupported = 125;
inline constexpr int status_cannot_execute = 126;
inline constexpr int status_not_found = 127;

// The program's name as the user gave it, for messages.
void set_program_name(const char* name);

// Writes "ostrel: PROGRAM: reason" and ends the process with the status. `detail` is appended if not null.
[[noreturn]] void die_with_message(int status, const char* reason, const char* detail = nullptr);

// Ends the process with the status: no handlers, no destructors.
[[noreturn]] void exit_process(int status);

// Ends the process by the signal's default action.
[[noreturn]] void die_of_signal(int signal);
