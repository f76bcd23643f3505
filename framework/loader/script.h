// Scripts: files that name the program that is to run them in their first line, as "#! /bin/sh".
#pragma once

#include <string_view>

#include "framework/loader/elf_file.h"

// What a script's first line says. There is at most one argument, with all blanks that are inside it.
struct script_line {
    std::string interpreter;
    std::string argument; // empty if there is none
};

// The line at the start of a file, read by the kernel's rules from its first bytes, of which no more count
// than `script_line_bytes`. Nothing if the file is no script or names no interpreter.
std::optional<script_line> parse_script_line(std::string_view start);
inline constexpr std::size_t script_line_bytes = 256;

// What is run when a path is to be executed: the program at the end of a chain of scripts.
struct executable {
    std::string path;
    std::vector<std::string> arguments; // which stand in place of argv[0]; empty if the path is no script
};

// Follows the path's script lines. Nothing, with the error set, if a file cannot be opened or executed, or if
// there are more scripts in the chain than the kernel would follow.
std::optional<executable> find_executable(const char* path, load_error& error);
