// Calls the functions of sve_blocks.S, each with both outcomes of its branches, twice: untranslated and
// linked.
#include <stdint.h>
#include <stdio.h>

#define SIZES(X) X(1) X(40) X(125) X(126) X(127) X(128) X(129) X(400)
#define DECLARE(n) uint64_t blocks_##n(uint64_t x, uint64_t flag);
SIZES(DECLARE)

static const struct {
    unsigned count;
    uint64_t (*function)(uint64_t, uint64_t);
} functions[] = {
#define ROW(n) {n, blocks_##n},
    SIZES(ROW)};

int main(void) {
    enum { vector_bytes = 128 };
    unsigned failed = 0;
    for (unsigned n = 0; n < sizeof functions / sizeof functions[0]; ++n)
        for (unsigned round = 0; round < 8; ++round) {
            const uint64_t flag = round % 4;
            const uint64_t is = functions[n].function(1000 * round, flag);
            const uint64_t should =
                1000 * round + functions[n].count * vector_bytes + (flag & 1) + (flag == 0 ? 2 : 0);
            if (is != should) {
                ++failed;
                printf("FAILED: %u, flag %u: %lu, should be %lu\n", functions[n].count, (unsigned)flag, is,
                       should);
            }
        }
    printf("%u failed\n", failed);
    return failed != 0;
}
