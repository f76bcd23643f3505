// Copies of blocks that are executed often, in the order in which they are executed and each for the calls
// that lead to it, so that calls and returns cost no more than the comparison of a return address.
#pragma once

#include "framework/runtime/code_cache.h"

// The exit's target for an exit that has a path, once it is unlinked or has counted down: links it to the
// copy of its target, made if need be, or for the time being or for ever to the block. Returns where
// execution goes on; null if the target has no block yet, in which case nothing is linked.
const block* follow_path(code_cache& cache, exit_record& exit);
