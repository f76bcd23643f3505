// Programs that the application executes in its place.
#pragma once

#include <string>
#include <vector>

// How a program that is executed comes to run in the same way as this one: the command whose words stand in
// front of it, or none if it is left to the kernel. Set before the application runs.
struct follow_settings {
    std::vector<std::string> command;
    std::size_t launcher_words; // of these, what stands in front of the engine's own path
};
inline follow_settings following;

// Options of the launcher that only such a command has.
inline constexpr char argument_zero_option[] = "--argument-zero";
inline constexpr char executed_path_option[] = "--executed-as";
inline constexpr char close_descriptor_option[] = "--close-descriptor";
inline constexpr char inherited_report_option[] = "--inherited-report";

// Frees what the thread's last execve was made of. After a success nobody is left to do so but the parent
// whose memory a child has shared.
void release_exec_command();
