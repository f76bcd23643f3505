// The options of the launcher: what stands between `ostrel` and the program.
#pragma once

#include <vector>

struct launcher_options {
    std::vector<const char*> client_arguments; // the client's name, then options that are not the launcher's
    const char* argument_zero;                 // of the program, null if it is the program's name
    const char* executed_as;                   // the path that was executed, null if it is the program's
    int closed_descriptor;                     // to be closed once the program is open, or -1
    char** program;                            // the program and its arguments, null-terminated
};

// Reads the command line and applies what it says to the environment and to the settings of the engine. Ends
// the process after --help and --version, and with a line that says why after what is no use.
launcher_options parse_options(char** arguments);
