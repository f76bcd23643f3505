// path_cost sve|nop 1|1000 REPETITIONS: executes as many SVE instructions, each at an address of its own, in
// a loop; or as many instructions that do nothing, so that the loop can be taken off. See path_cost.sh.
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

// "add z0.b, z1.b, z2.b", for an assembler that need not know it. The alignment keeps both loops of a count
// in the same number of blocks.
#define LOOP(count, word)                                                                                    \
    __asm__ volatile(".balign 64\n"                                                                          \
                     "1: .rept " #count "\n"                                                                 \
                     ".inst " #word "\n"                                                                     \
                     ".endr\n"                                                                               \
                     "subs %0, %0, #1\n"                                                                     \
                     "b.ne 1b\n"                                                                             \
                     : "+r"(repetitions)                                                                     \
                     :                                                                                       \
                     : "cc", "v0", "v1", "v2")

int main(int argc, char** argv) {
    if (argc != 4) {
        fputs("usage: path_cost sve|nop 1|1000 REPETITIONS\n", stderr);
        return 2;
    }
    const int sve = strcmp(argv[1], "sve") == 0;
    const int many = strcmp(argv[2], "1000") == 0;
    unsigned long repetitions = strtoul(argv[3], NULL, 10);
    if (sve && many)
        LOOP(1000, 0x04220020);
    else if (sve)
        LOOP(1, 0x04220020);
    else if (many)
        LOOP(1000, 0xD503201F);
    else
        LOOP(1, 0xD503201F);
    return 0;
}
