// Straight-line code that is written at random, in which X28 stands more often than any other register: what
// it leaves in the registers and in memory is printed as one number, however many signals of a timer find it
// anywhere.
#include <signal.h>
#include <stdlib.h>
#include <sys/time.h>

#include "tests/tools/registers.h"
#include "tools.h"

void observe_call(struct machine*); // in machine.S

static uint64_t state;
static unsigned pick(unsigned below) {
    state = state * 6364136223846793005u + 1442695040888963407u;
    return (unsigned)(state >> 33) % below;
}

static uint64_t memory[64];

// X1 and X2 hold addresses in the memory. X16 is the code's own, X18 and X29 to SP are not touched.
static unsigned others; // the number of registers beside X28 that the code is written with
static unsigned any(void) {
    const unsigned number = pick(3) == 0 ? 28 : 3 + pick(others);
    return number == 16 || number == 18 ? 28 : number;
}

static uint32_t random_instruction(void) {
    const uint32_t size = pick(2) << 31, d = any(), n = any() << 5, m = any() << 16, a = any() << 10;
    const uint32_t amount = pick(32) << 10, base = (1 + pick(2)) << 5;
    switch (pick(17)) {
    case 0:
        return 0x0B000000 | size | pick(4) << 29 | m | amount | n | d; // ADD, ADDS, SUB, SUBS
    case 1:
        return 0x0A000000 | size | pick(4) << 29 | pick(4) << 22 | m | amount | n | d; // AND, ORR, EOR, ANDS
    case 2:
        return 0x2A0003E0 | size | m | d; // MOV
    case 3:
        return 0x52800000 | size | pick(65536) << 5 | d; // MOV of a constant
    case 4:
        return 0x72800000 | size | pick(2) << 21 | pick(65536) << 5 | d; // MOVK
    case 5:
        return 0x1B000000 | size | pick(2) << 15 | m | a | n | d; // MADD, MSUB
    case 6:
        return 0x1A800000 | size | pick(2) << 30 | pick(2) << 10 | pick(16) << 12 | m | n |
               d; // CSEL and its kin
    case 7:
        return 0x11000000 | size | pick(4) << 29 | pick(4096) << 10 | n |
               d; // ADD of a constant and its kin; SP
    case 8:
        return 0x3A400000 | size | pick(2) << 30 | pick(16) << 12 | pick(16) | m | n; // CCMN, CCMP
    case 9:
        return 0x93C00000 | m | pick(64) << 10 | n | d; // EXTR
    case 10:
        return 0x5AC00000 | size | (pick(2) << 2 | pick(2)) << 10 | n | d; // RBIT, REV16, CLZ, CLS
    case 11:
        return 0xF9000000 | pick(2) << 22 | pick(16) << 10 | base | d; // LDR, STR
    case 12:
        return 0xA9000000 | pick(2) << 22 | pick(8) << 15 | a | base |
               (d == a >> 10 ? 27 - d / 28 : d); // LDP, STP
    case 13:
        return 0x39000000 | pick(3) << 22 | pick(64) << 10 | base | d; // STRB, LDRB, LDRSB
    case 14:
        return 0x9E660000 | pick(2) << 16 | n | d; // FMOV between X and D, either way
    case 15:
        return 0x1AC00800 | size | pick(2) << 10 | m | n | d; // UDIV, SDIV
    default:
        return 0xD53B4200 | d; // MRS of NZCV
    }
}

static void write_code(uint32_t* code, unsigned count) {
    for (unsigned n = 0; n < count; ++n)
        code[n] = random_instruction();
    code[count] = 0xD65F03C0; // RET
    publish(code, 4 * (count + 1));
}

static uint64_t hash(uint64_t sum, const void* data, size_t bytes) {
    for (const uint8_t *byte = data, *end = byte + bytes; byte < end; ++byte)
        sum = (sum ^ *byte) * 0x100000001B3;
    return sum;
}

static uint64_t run(const uint32_t* code, uint64_t seed) {
    struct machine machine;
    memset(&machine, 0, sizeof machine);
    for (unsigned n = 0; n < 30; ++n)
        machine.x[n] = seed += 0x9E3779B97F4A7C15 * (n + 1);
    for (unsigned n = 0; n < sizeof memory / sizeof *memory; ++n)
        memory[n] = seed *= 0x5851F42D4C957F2D;
    machine.x[1] = (uint64_t)&memory[8];
    machine.x[2] = (uint64_t)&memory[32];
    machine.x[16] = (uint64_t)code;
    observe_call(&machine);
    machine.x[16] = machine.x[1] = machine.x[2] = machine.x[30] = machine.changed_below_sp = 0;
    return hash(hash(0, &machine, sizeof machine), memory, sizeof memory);
}

static void on_tick(int number) {}

// random_code FUNCTIONS ROUNDS: each round runs every function once.
int main(int count, char** arguments) {
    if (count != 3)
        return 2;
    enum { most_words = 220 };
    const unsigned functions = (unsigned)atoi(arguments[1]), rounds = (unsigned)atoi(arguments[2]);
    uint32_t* const code =
        mmap(NULL, 4 * most_words * functions, writable | PROT_EXEC, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    for (unsigned function = 0; function < functions; ++function) {
        state = function + 1;
        others = function % 2 ? 24 : 6;
        write_code(code + most_words * function, 20 + pick(most_words - 21));
    }
    struct sigaction action = {.sa_handler = on_tick};
    sigaction(SIGALRM, &action, NULL);
    setitimer(ITIMER_REAL, &(struct itimerval){{0, 1000}, {0, 1000}}, NULL);
    uint64_t sum = 0;
    for (unsigned round = 0; round < rounds; ++round)
        for (unsigned function = 0; function < functions; ++function)
            sum = hash(sum + run(code + most_words * function, round), "", 1);
    printf("%016llx\n", (unsigned long long)sum);
    return 0;
}
