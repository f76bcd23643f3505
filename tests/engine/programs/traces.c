// Calls and returns that are executed often: in loops, recursion, through pointers, left by a jump, to code
// that is rewritten, and interrupted by signals.
#define _GNU_SOURCE
#include <inttypes.h>
#include <setjmp.h>
#include <signal.h>
#include <sys/time.h>
#include <ucontext.h>

#include "tools.h"

uint64_t count_up(uint64_t n), leaf(uint64_t x, uint64_t y), return_elsewhere(uint64_t n);
extern const char count_up_between[], behind_leaf[], behind_inner_leaf[], count_up_end[];

enum { often = 3000 };

static volatile unsigned inside, wrong;

// What the registers hold is decided by the address.
static void check_registers(int number, siginfo_t* information, void* context) {
    const mcontext_t* const machine = &((const ucontext_t*)context)->uc_mcontext;
    const uint64_t pc = machine->pc, start = (uint64_t)count_up_between - 4;
    if (pc >= start && pc < (uint64_t)count_up_end - 20) {
        ++inside;
        wrong += machine->regs[28] - machine->regs[27] != (pc == (uint64_t)count_up_between);
    } else if (pc >= (uint64_t)leaf && pc < (uint64_t)leaf + 8) {
        ++inside;
        wrong += machine->regs[28] != machine->regs[27];
        wrong +=
            machine->regs[30] != (uint64_t)behind_leaf && machine->regs[30] != (uint64_t)behind_inner_leaf;
    }
}

static void be_interrupted(void) {
    struct sigaction action = {0};
    action.sa_sigaction = check_registers;
    action.sa_flags = SA_SIGINFO | SA_RESTART;
    sigaction(SIGALRM, &action, NULL);
    const struct itimerval on = {{0, 500}, {0, 500}}, off = {{0, 0}, {0, 0}};
    setitimer(ITIMER_REAL, &on, NULL);
    unsigned sums_wrong = 0;
    for (unsigned n = 0; n < 10000 && inside < 300; ++n)
        sums_wrong += count_up(20000) != 40000;
    setitimer(ITIMER_REAL, &off, NULL);
    printf("interrupted: enough %d, wrong %u, sums wrong %u\n", inside >= 300, wrong, sums_wrong);
}

static jmp_buf place;

__attribute__((noinline)) static unsigned deep(unsigned depth, unsigned n) {
    if (depth == 0) {
        if (n % 7 == 0)
            longjmp(place, 1);
        return n;
    }
    return deep(depth - 1, n) * 3 + depth;
}

// The handler of a jump comes back without the returns.
static void jump_out(void) {
    volatile unsigned sum = 0, jumps = 0;
    for (volatile unsigned n = 0; n < often; ++n) {
        if (setjmp(place) == 0)
            sum += deep(n % 20, n);
        else
            ++jumps;
    }
    printf("jumps: %u, sum %u\n", jumps, sum);
}

__attribute__((noinline)) static unsigned add(unsigned a, unsigned b) { return a + b; }
__attribute__((noinline)) static unsigned exclusive_or(unsigned a, unsigned b) { return a ^ b; }

static void call_by_pointer(void) {
    static unsigned (*const volatile functions[])(unsigned, unsigned) = {add, exclusive_or};
    unsigned value = 1;
    for (unsigned n = 0; n < often; ++n)
        value = add(value, functions[n % 64 > 40](value, n));
    printf("pointers: %u\n", value);
}

// Code that has been called often gets another value and another length.
static void rewrite(void) {
    uint32_t* const code = map_code(NULL, 0);
    unsigned sum = 0;
    for (unsigned round = 0; round < 4; ++round) {
        for (unsigned n = 0; n < round; ++n)
            code[n] = 0xD503201F; // NOP
        write_function(code + round, round);
        publish(code, 64);
        for (unsigned n = 0; n < often; ++n)
            sum += ((unsigned (*)(void))code)() * (round + 1);
    }
    printf("rewritten: %u\n", sum);
}

int main(void) {
    printf("elsewhere: %" PRIu64 "\n", return_elsewhere(often));
    jump_out();
    call_by_pointer();
    rewrite();
    be_interrupted();
    return 0;
}
