// The handlers that exist by name only. Each is an object that is called like a handler.
#pragma once

#include "sve/decode/placeholder.h"

#define PLACEHOLDER(name) inline constexpr placeholder name{#name};
#include "sve/decode/placeholders.def"
#undef PLACEHOLDER
