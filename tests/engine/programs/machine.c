// The whole state of the machine, memory below the stack pointer included, across everything that makes a
// translator run code of its own: only what the instruction itself changes may change. And transfers of every
// kind, which print what they do.
#include <inttypes.h>
#include <stdio.h>
#include <string.h>
#include <sys/auxv.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "tests/tools/registers.h"

// In machine.S.
void observe_nothing(struct machine*), observe_system_call(struct machine*);
void observe_register_branch(struct machine*), observe_stolen_base(struct machine*);
void observe_direct_branches(struct machine*), observe_call(struct machine*);
extern const char landing[];
struct transfer {
    void (*code)(void);
    int64_t changed;
};
extern const struct transfer register_transfers[], authenticated_transfers[];
unsigned take(unsigned nzcv), compare(uint64_t value);
uint64_t set_bits_tbz(uint64_t value), clear_bits_tbnz(uint64_t value);
int far_branches(int way), much_code(void);

static unsigned failed;

static void expect(const char* what, uint64_t index, uint64_t is, uint64_t should) {
    if (is == should)
        return;
    ++failed;
    printf("FAILED: %s, %" PRIx64 ": %" PRIx64 ", should be %" PRIx64 "\n", what, index, is, should);
}

static void expect_equal(const char* what, const struct machine* is, const struct machine* should) {
    for (unsigned n = 0; n < sizeof *is / 8; ++n)
        expect(what, n, ((const uint64_t*)is)[n], ((const uint64_t*)should)[n]);
}

static struct machine machine_of_round(unsigned round) {
    static uint64_t data[2];
    struct machine result = {0};
    for (unsigned n = 0; n < 31; ++n)
        result.x[n] = 0x0101010101010101 * (n + 1);
    result.x[8] = SYS_getppid;
    result.x[12] = (uint64_t)landing;
    result.x[28] = (uint64_t)data;
    result.nzcv = (uint64_t)round % 16 << 28;
    result.fpcr = round % 4 << 22 | (round & 4 ? 1 << 24 : 0); // rounding mode, flush to zero
    result.fpsr = round * 5 & 0x1F;
    memset(result.q, 0xA5 + (int)round, sizeof result.q);
    memset(result.q[31], 0xB6 + (int)round, 16);
    memset(result.q[0], 0, 16);
    return result;
}

static void check(const char* what, void (*observe)(struct machine*)) {
    for (unsigned round = 0; round < 16; ++round) {
        struct machine before = machine_of_round(round), after = before;
        observe(&after);
        if (observe == observe_system_call)
            before.x[0] = (uint64_t)getppid();
        expect_equal(what, &after, &before);
    }
}

// Runs each function three times: the first meets its transfers untranslated, the others linked.
static void check_transfers(const char* what, const struct transfer* table) {
    unsigned count = 0;
    for (; table[count].code; ++count)
        for (unsigned round = 0; round < 3; ++round) {
            struct machine before = machine_of_round(count + round);
            before.x[16] = (uint64_t)table[count].code;
            struct machine after = before;
            observe_call(&after);
            for (unsigned n = 16; n <= 18; ++n)
                after.x[n] = before.x[n];
            after.x[30] = before.x[30];
            if (table[count].changed >= 0)
                after.x[table[count].changed] = before.x[table[count].changed];
            expect_equal(what, &after, &before);
        }
    printf("%s: %u functions\n", what, count);
}

int main(void) {
    check("nothing", observe_nothing);
    check("system call", observe_system_call);
    check("register branch", observe_register_branch);
    check("stolen base", observe_stolen_base);
    check("direct branches", observe_direct_branches);
    check_transfers("register transfers", register_transfers);
    if (getauxval(AT_HWCAP) >> 30 & 1)
        check_transfers("authenticated transfers", authenticated_transfers);

    for (unsigned nzcv = 0; nzcv < 16; ++nzcv)
        printf("conditions %x\n", take(nzcv));
    const uint64_t values[] = {0, 1, 0x100000000, 0x8000000080000000, 0x123456789abcdef0, UINT64_MAX};
    for (unsigned n = 0; n < sizeof values / sizeof values[0]; ++n)
        printf("bits %" PRIx64 " %" PRIx64 ", compared %x\n", set_bits_tbz(values[n]),
               clear_bits_tbnz(values[n]), compare(values[n]));
    printf("far branch %d, much code %d\n", far_branches(5), much_code());
    for (int n = 0; n < 8; ++n)
        printf("far branch %d\n", far_branches(n % 4));
    printf("%u failed\n", failed);
    return failed != 0;
}
