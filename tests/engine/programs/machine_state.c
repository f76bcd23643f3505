// The whole state of the machine, memory below the stack pointer included, across everything that makes a
// translator run code of its own: only what the instruction itself changes may change.
#include <inttypes.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>
#include <sys/syscall.h>
#include <unistd.h>

struct machine {
    uint64_t x[31];
    uint64_t nzcv, fpcr, fpsr;
    uint8_t q[32][16];
    uint64_t changed_below_sp;
};

void observe_nothing(struct machine*), observe_system_call(struct machine*);
void observe_register_branch(struct machine*), observe_borrowed_register_branch(struct machine*);
void observe_stolen_base(struct machine*), observe_direct_branches(struct machine*);
extern const char landing_1[], landing_2[];

static uint64_t data[2];
static unsigned failed;

static void check(const char* what, void (*observe)(struct machine*), unsigned round) {
    struct machine before, after;
    for (unsigned n = 0; n < 31; ++n)
        before.x[n] = 0x0101010101010101 * (n + 1);
    before.x[8] = SYS_getppid;
    before.x[12] = (uint64_t)landing_1;
    before.x[14] = (uint64_t)landing_2;
    before.x[28] = (uint64_t)data;
    before.nzcv = (uint64_t)round % 16 << 28;
    before.fpcr = round % 4 << 22 | (round & 4 ? 1 << 24 : 0); // rounding mode, flush to zero
    before.fpsr = round * 5 & 0x1F;
    memset(before.q, 0xA5 + round, sizeof before.q);
    memset(before.q[31], 0xB6 + round, 16);
    if (observe == observe_stolen_base)
        memset(before.q[0], 0, 16);
    before.changed_below_sp = 0;
    after = before;
    observe(&after);
    if (observe == observe_system_call) {
        if (after.x[0] != (uint64_t)getppid())
            printf("FAILED: %s: result %" PRIu64 "\n", what, after.x[0]), ++failed;
        after.x[0] = before.x[0];
    }
    if (memcmp(&before, &after, sizeof before) == 0)
        return;
    ++failed;
    const uint64_t *should = (uint64_t*)&before, *is = (uint64_t*)&after;
    for (unsigned n = 0; n < sizeof before / 8; ++n)
        if (is[n] != should[n])
            printf("FAILED: %s: word %u is %" PRIx64 ", should be %" PRIx64 "\n", what, n, is[n], should[n]);
}

int main(void) {
    for (unsigned round = 0; round < 16; ++round) {
        check("nothing", observe_nothing, round);
        check("system call", observe_system_call, round);
        check("register branch", observe_register_branch, round);
        check("borrowed register branch", observe_borrowed_register_branch, round);
        check("stolen base", observe_stolen_base, round);
        check("direct branches", observe_direct_branches, round);
    }
    printf("%u failed\n", failed);
    return failed != 0;
}
