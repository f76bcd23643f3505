// What the files of the client share.
#pragma once

#include "sve/client/framework_port.h"

extern app_pc exe_start; // where the main module starts; null if there is none
extern int tls_idx;      // the TLS field that holds the thread's cpu_state*

// Ends the process through the framework, with a line that names the condition, if it does not hold.
void client_assert(bool condition, const char* text, int line = __builtin_LINE());
