// By itself, so that a thread's context can be made without the code that handles signals.
#include "framework/runtime/signals.h"

signal_actions process_signal_actions; // under the lock of the process
