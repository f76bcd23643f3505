// The loop that runs a thread of the application.
#pragma once

#include "framework/runtime/thread_context.h"

// Runs the application from the context's state on the calling thread's engine stack. Ends with the process.
[[noreturn]] void run_application(thread_context* context);
