// Child processes of the application: with memory of their own, as fork makes them, or with the parent's
// until they execute another program or end, as vfork and posix_spawn make them.
#pragma once

#include "framework/runtime/threads.h"

// Makes the child that a clone without CLONE_THREAD asks for, and leaves its number or the error in X0, in
// the child 0. What cannot be had ends the process with a line that says so.
void make_child_process(thread_context* context, const thread_request& request);
