// Every kind of transfer, checked against what the architecture says it does.
#include <inttypes.h>
#include <stdio.h>
#include <string.h>
#include <sys/auxv.h>

#include "run_case.h"

struct transfer {
    void (*code)(void);
    int64_t changed;
};
extern const struct transfer register_transfers[], authenticated_transfers[];

unsigned take(unsigned nzcv), take_selected(unsigned nzcv);
uint64_t set_bits_tbz(uint64_t value), clear_bits_tbnz(uint64_t value);
unsigned compare(uint64_t value);
int far_branches(int way), much_code(void);

static unsigned failed;

static void expect(const char* what, uint64_t index, uint64_t is, uint64_t should) {
    if (is == should)
        return;
    ++failed;
    printf("FAILED: %s, %" PRIx64 ": %" PRIx64 ", should be %" PRIx64 "\n", what, index, is, should);
}

// Runs each function three times: the first meets its transfers untranslated, the others linked.
static void check_transfers(const char* what, const struct transfer* table) {
    unsigned count = 0;
    for (; table[count].code; ++count) {
        for (unsigned round = 0; round < 3; ++round) {
            struct state before, after;
            for (unsigned n = 0; n < 31; ++n)
                before.x[n] = 0x0101010101010101 * (n + 1);
            before.nzcv = (uint64_t)(count + round) % 16 << 28;
            memset(before.q, 0x5A, sizeof before.q);
            after = before;
            run_case(&after, table[count].code);
            if (table[count].changed >= 0)
                after.x[table[count].changed] = before.x[table[count].changed];
            for (unsigned n = 0; n < 31; ++n)
                expect(what, count * 1000 + n, after.x[n], before.x[n]);
            expect(what, count, after.nzcv, before.nzcv);
        }
    }
    printf("%s: %u functions\n", what, count);
}

int main(void) {
    check_transfers("register transfers", register_transfers);
    if (getauxval(AT_HWCAP) >> 30 & 1)
        check_transfers("authenticated transfers", authenticated_transfers);

    for (unsigned nzcv = 0; nzcv < 16; ++nzcv)
        expect("conditions", nzcv, take(nzcv), take_selected(nzcv));

    const uint64_t values[] = {0, 1, 0x100000000, 0x8000000080000000, 0x123456789abcdef0, UINT64_MAX};
    for (unsigned n = 0; n < sizeof values / sizeof values[0]; ++n) {
        const uint64_t value = values[n];
        expect("TBZ", n, set_bits_tbz(value), value);
        expect("TBNZ", n, clear_bits_tbnz(value), ~value);
        const unsigned wide = value == 0, narrow = (uint32_t)value == 0;
        expect("CBZ, CBNZ", n, compare(value), wide | narrow << 1 | !wide << 2 | !narrow << 3);
    }

    expect("far branch", 5, far_branches(5), 40);
    expect("much code", 0, much_code(), 12000);
    for (unsigned round = 0; round < 2; ++round) {
        expect("far branch", 0, far_branches(0), 10);
        expect("far branch", 1, far_branches(1), 20);
        expect("far branch", 3, far_branches(3), 30);
        expect("far branch", 5, far_branches(5), 40);
    }
    printf("%u failed\n", failed);
    return failed != 0;
}
