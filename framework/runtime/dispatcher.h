// The loop that runs a thread of the application.
#pragma once

#include "framework/runtime/thread_context.h"

// Runs the application from the context's state on the context's engine stack until its thread has ended.
void run_application(thread_context* context);

// The same on the caller's own stack.
void run_application_here(thread_context* context);
