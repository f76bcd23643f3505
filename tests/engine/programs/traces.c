// Calls and returns that are executed often: some return elsewhere, and all are interrupted by signals.
#define _GNU_SOURCE
#include <inttypes.h>
#include <signal.h>
#include <sys/time.h>
#include <ucontext.h>

#include "tools.h"

uint64_t count_up(uint64_t n), leaf(uint64_t x, uint64_t y), return_elsewhere(uint64_t n);
extern const char count_up_between[], behind_leaf[], behind_inner_leaf[], count_up_end[];

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

int main(void) {
    printf("elsewhere: %" PRIu64 "\n", return_elsewhere(3000));
    be_interrupted();
    return 0;
}
