// Runs every case of the table on X28 and on X10 from equal states and compares what the two leave behind:
// all registers, flags and memory. X28 is the register that a translator may keep for itself; X10 serves as a
// witness.
#include <inttypes.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>
#include <sys/auxv.h>

#include "register_cases_features.h"
#include "run_case.h"

struct test_case {
    void (*code)(void);
    uint64_t start;
    uint64_t feature;
    const char* text;
};
extern const struct test_case cases_on_x28[], cases_on_x10[];

extern uint8_t buffer[4096];

static int has_feature(uint64_t feature) {
    const unsigned long hwcap = getauxval(AT_HWCAP), hwcap2 = getauxval(AT_HWCAP2);
    switch (feature) {
    case feature_flagm:
        return hwcap >> 27 & 1;
    case feature_crc32:
        return hwcap >> 7 & 1;
    case feature_paca:
        return hwcap >> 30 & 1;
    case feature_pacg:
        return hwcap >> 31 & 1;
    case feature_mte:
        return hwcap2 >> 18 & 1;
    case feature_lrcpc:
        return hwcap >> 15 & 1;
    case feature_ilrcpc:
        return hwcap >> 26 & 1;
    case feature_lse:
        return hwcap >> 8 & 1;
    case feature_jscvt:
        return hwcap >> 13 & 1;
    default:
        return 1;
    }
}

static void fill(void* memory, size_t size, uint64_t seed) {
    uint8_t* bytes = memory;
    for (size_t n = 0; n < size; ++n) {
        seed = seed * 6364136223846793005u + 1442695040888963407u;
        bytes[n] = (uint8_t)(seed >> 56);
    }
}

struct outcome {
    struct state state;
    uint8_t memory[sizeof buffer];
};

// Runs the case with its register, the first of a pair, holding the start value.
static void run(const struct test_case* test, unsigned first, unsigned witness, struct outcome* outcome) {
    struct state* state = &outcome->state;
    fill(state, sizeof *state, 1);
    fill(buffer, sizeof buffer, 2);
    static const double numbers[2] = {-1234.75, 1e6};
    memcpy(state->q[1], numbers, sizeof numbers);
    state->nzcv = 0x50000000;
    state->x[1] = (uint64_t)(buffer + 2048);
    state->x[2] = 16;
    state->x[witness] = 0x1111111122222222;
    state->x[witness + 1] = 0x3333333344444444;
    state->x[first] = test->start == UINT64_MAX ? (uint64_t)(buffer + 2048 + 64) : test->start;
    state->x[first + 1] = 0x5555555566666666;
    run_case(state, test->code);
    memcpy(outcome->memory, buffer, sizeof buffer);
}

static void exchange(uint64_t* a, uint64_t* b) {
    const uint64_t kept = *a;
    *a = *b;
    *b = kept;
}

static struct outcome subject, witness;

int main(void) {
    unsigned count = 0, skipped = 0, failed = 0;
    for (unsigned n = 0; cases_on_x28[n].code; ++n) {
        if (!has_feature(cases_on_x28[n].feature)) {
            ++skipped;
            continue;
        }
        ++count;
        run(&cases_on_x28[n], 28, 10, &subject);
        run(&cases_on_x10[n], 10, 28, &witness);
        exchange(&subject.state.x[28], &subject.state.x[10]);
        exchange(&subject.state.x[29], &subject.state.x[11]);
        for (unsigned r = 0; r < 30; ++r)
            if (subject.state.x[r] != witness.state.x[r])
                printf("%s: x%u is %" PRIx64 ", should be %" PRIx64 "\n", cases_on_x28[n].text, r,
                       subject.state.x[r], witness.state.x[r]);
        if (memcmp(&subject, &witness, sizeof subject) != 0) {
            printf("FAILED: %s\n", cases_on_x28[n].text);
            ++failed;
        }
    }
    printf("%u cases, %u skipped, %u failed\n", count, skipped, failed);
    return failed != 0;
}
