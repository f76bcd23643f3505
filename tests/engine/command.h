// Runs commands for tests and tells what came of them.
#pragma once

#include <string>
#include <vector>

struct outcome {
    int status; // exit status, or 128 plus the number of the signal
    std::string output;
    std::string errors;
};

// Runs the words as one command with an empty standard input. Under cross-compilation the words of the
// emulator come first: the environment variable ENGINE_TEST_EMULATOR, or else what the build was configured
// with.
outcome run_on_target(const std::vector<std::string>& words);

// Runs a program of the test suite directly, and under ostrel.
outcome run_directly(const std::string& program, const std::vector<std::string>& arguments);
outcome run_translated(const std::string& program, const std::vector<std::string>& arguments);

// Runs the program under ostrel with options, and with what ostrel needs to execute itself on the target.
outcome run_followed(const std::vector<std::string>& options, const std::string& path,
                     const std::vector<std::string>& arguments);

// The path of a program of the test suite.
std::string program_path(const std::string& name);

// How often the part stands in the text.
unsigned occurrences(const std::string& text, const std::string& part);

// The text without the client's own lines: its report, and its remark on a fault that it passes on.
std::string without_client_lines(const std::string& errors);
