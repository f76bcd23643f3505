// The registers of SVE across signal handlers, which use them as well. Prints how many checks have failed.
#include <asm/sigcontext.h>
#include <signal.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>
#include <sys/time.h>
#include <ucontext.h>
#include <unistd.h>

enum { vector = 128, predicate = 16 };
struct state {
    uint8_t z[32][vector], p[16][predicate], ffr[predicate];
};

static volatile int ticks;
static unsigned failed;

// In sve_signal_cases.S.
void spin(const struct state* from, struct state* to, volatile int* count, int limit);
void fault(const struct state* from, struct state* to);
void clobber(void);

static void on_tick(int number) {
    clobber();
    ++ticks;
}

// The kernel's record of the registers in a handler's frame.
static struct state* record_of(ucontext_t* context) {
    uint8_t* record = context->uc_mcontext.__reserved;
    for (;;) {
        struct _aarch64_ctx head;
        memcpy(&head, record, sizeof head);
        if (head.magic == EXTRA_MAGIC) {
            struct extra_context extra;
            memcpy(&extra, record, sizeof extra);
            record = (uint8_t*)extra.datap;
        } else if (head.magic == 0x53564501) {
            uint16_t length;
            memcpy(&length, record + sizeof head, sizeof length);
            return length == vector ? (struct state*)(record + 16) : NULL;
        } else if (head.magic == 0) {
            return NULL;
        } else {
            record += head.size;
        }
    }
}

static struct state seen;
static void on_fault(int number, siginfo_t* information, void* context) {
    struct state* const saved = record_of(context);
    if (!saved) {
        printf("no record\n");
        _exit(1);
    }
    seen = *saved;
    saved->z[7][100] ^= 0xFF;
    saved->p[3][5] ^= 0x10;
    saved->ffr[2] = 0;
    ((ucontext_t*)context)->uc_mcontext.pc += 4;
    clobber();
}

static void check(const struct state* found, const struct state* expected, const char* what) {
    if (memcmp(found, expected, sizeof *found) == 0)
        return;
    printf("%s differs\n", what);
    ++failed;
}

int main(void) {
    static struct state before, after;
    uint8_t* const bytes = (uint8_t*)&before;
    for (unsigned n = 0; n < sizeof before; ++n)
        bytes[n] = (uint8_t)(n * 37 + n / 251);
    memset(before.ffr, 0, predicate);
    memset(before.ffr, 0xFF, 11); // as a first-fault load may leave it

    struct sigaction action = {0};
    action.sa_handler = on_tick;
    sigaction(SIGALRM, &action, NULL);
    const struct itimerval timer = {{0, 3000}, {0, 3000}}, none = {0};
    setitimer(ITIMER_REAL, &timer, NULL);
    spin(&before, &after, &ticks, 60);
    setitimer(ITIMER_REAL, &none, NULL);
    check(&after, &before, "state after ticks");

    action.sa_sigaction = on_fault;
    action.sa_flags = SA_SIGINFO;
    sigaction(SIGSEGV, &action, NULL);
    fault(&before, &after);
    check(&seen, &before, "record");
    before.z[7][100] ^= 0xFF;
    before.p[3][5] ^= 0x10;
    before.ffr[2] = 0;
    check(&after, &before, "state after the handler's changes");
    printf("%u failed\n", failed);
    return 0;
}
