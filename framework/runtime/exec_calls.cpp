#include "framework/runtime/exec_calls.h"
void release_exec_command() {}
