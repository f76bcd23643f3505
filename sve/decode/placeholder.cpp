#include "sve/decode/placeholder.h"

#include <cstdio>

void report_unimplemented(const cpu_state* state, const char* name) {
    std::fprintf(stderr, "Unimplemented instruction: [  %tx:\t %08x\t %s  ]\n",
                 reinterpret_cast<std::ptrdiff_t>(state->pc), static_cast<unsigned int>(state->instr_word),
                 name);
}
