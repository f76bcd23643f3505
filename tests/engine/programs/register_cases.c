// Runs every case of the table on X28 and on X10 from equal states and compares what the two leave behind:
// all registers, flags and memory. X28 is the register that a translator may keep for itself; X10 serves as a
// witness.
#include <inttypes.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>
#include <sys/auxv.h>

#include "register_cases_features.h"
#include "tests/tools/registers.h"

struct test_case {
    void (*code)(void);
    uint64_t start;
    uint64_t feature;
    const char* text;
};
extern const struct test_case cases_on_x28[], cases_on_x10[];

extern uint8_t buffer[4096];

// In machine.S.
void observe_call(struct machine*);

static int has_feature(uint64_t feature) {
    static const int bits[] = {-1, 27, 7, 30, 31, 18, 15, 26, 8, 13}; // of AT_HWCAP, or AT_HWCAP2 for tags
    return feature == feature_base ||
           getauxval(feature == feature_mte ? AT_HWCAP2 : AT_HWCAP) >> bits[feature] & 1;
}

static void fill(void* memory, size_t size, uint64_t seed) {
    uint8_t* bytes = memory;
    for (size_t n = 0; n < size; ++n) {
        seed = seed * 6364136223846793005u + 1442695040888963407u;
        bytes[n] = (uint8_t)(seed >> 56);
    }
}

struct outcome {
    struct machine machine;
    uint8_t memory[sizeof buffer];
};

// Runs the case with its register, the first of a pair, holding the start value.
static void run(const struct test_case* test, unsigned first, unsigned witness, struct outcome* outcome) {
    struct machine* machine = &outcome->machine;
    fill(machine, sizeof *machine, 1);
    fill(buffer, sizeof buffer, 2);
    static const double numbers[2] = {-1234.75, 1e6};
    memcpy(machine->q[1], numbers, sizeof numbers);
    machine->nzcv = 0x50000000;
    machine->fpsr = machine->fpcr = 0;
    machine->x[1] = (uint64_t)(buffer + 2048);
    machine->x[2] = 16;
    machine->x[witness] = 0x1111111122222222;
    machine->x[witness + 1] = 0x3333333344444444;
    machine->x[first] = test->start == UINT64_MAX ? (uint64_t)(buffer + 2048 + 64) : test->start;
    machine->x[first + 1] = 0x5555555566666666;
    machine->x[16] = (uint64_t)test->code;
    observe_call(machine);
    machine->x[16] = 0;
    memcpy(outcome->memory, buffer, sizeof buffer);
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
        uint64_t* const x = subject.machine.x;
        const uint64_t found[2] = {x[28], x[29]};
        memcpy(x + 28, x + 10, sizeof found);
        memcpy(x + 10, found, sizeof found);
        for (unsigned r = 0; r < 30; ++r)
            if (x[r] != witness.machine.x[r])
                printf("%s: x%u is %" PRIx64 ", should be %" PRIx64 "\n", cases_on_x28[n].text, r, x[r],
                       witness.machine.x[r]);
        if (memcmp(&subject, &witness, sizeof subject) != 0) {
            printf("FAILED: %s\n", cases_on_x28[n].text);
            ++failed;
        }
    }
    printf("%u cases, %u skipped, %u failed\n", count, skipped, failed);
    return failed != 0;
}
