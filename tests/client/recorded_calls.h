// The client's calls of the framework, in order, with the means to let one fail; and of recognition.
#pragma once

#include "sve/decode/decoder.h"

#include <string>
#include <vector>

inline std::vector<std::string> recorded_calls;

// The call of this name is not made but gives false, null, or an error.
inline std::string failing_call;

// If not null, the stub that is found for every SVE instruction.
inline opcode_stub stub_in_place = nullptr;
