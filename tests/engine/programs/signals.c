// Signals, each way by its name; prints what the kernel's rules make certain.
#define _GNU_SOURCE
#include <errno.h>
#include <poll.h>
#include <pthread.h>
#include <setjmp.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/select.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <time.h>
#include <ucontext.h>
#include <unistd.h>

#include "tools.h"

static volatile sig_atomic_t count, order[16];
static sigjmp_buf back;

static void on_count(int number) { ++count; }

static void install(int number, void* handler, int flags, uint64_t mask) {
    struct sigaction action = {0};
    action.sa_sigaction = handler;
    action.sa_flags = flags;
    memcpy(&action.sa_mask, &mask, sizeof mask);
    if (sigaction(number, &action, NULL))
        perror("sigaction");
}
#define BIT(number) (1ull << ((number)-1))

static void every_millisecond(int on) {
    const struct itimerval timer = {{0, on ? 1000 : 0}, {0, on ? 1000 : 0}};
    setitimer(ITIMER_REAL, &timer, NULL);
}

// What the handler is told.
static void tell(int number, siginfo_t* information, void* context) {
    const ucontext_t* machine = context;
    const int own = information->si_code <= 0 && number != SIGALRM && information->si_pid == getpid();
    printf("signal %d code %d own %d value %d", number, information->si_code, own,
           number == SIGRTMIN || number == SIGALRM ? information->si_value.sival_int : 0);
    if (number == SIGCHLD)
        printf(" status %d", information->si_status);
    if (number == SIGSEGV)
        printf(" address %p, %d", information->si_code == SEGV_ACCERR ? NULL : information->si_addr,
               (uint64_t)information->si_addr == machine->uc_mcontext.fault_address);
    printf("\n");
    if (information->si_code > 0 && number != SIGCHLD)
        siglongjmp(back, 1);
}

static void information(char** unused) {
    const int numbers[] = {SIGUSR1, SIGRTMIN, SIGALRM, SIGCHLD, SIGSEGV};
    for (unsigned n = 0; n < sizeof numbers / sizeof numbers[0]; ++n)
        install(numbers[n], tell, SA_SIGINFO | SA_RESTART, 0);
    kill(getpid(), SIGUSR1);
    raise(SIGUSR1);
    sigqueue(getpid(), SIGRTMIN, (union sigval){.sival_int = 77});
    timer_t timer;
    struct sigevent event = {
        .sigev_notify = SIGEV_SIGNAL, .sigev_signo = SIGALRM, .sigev_value.sival_int = 5};
    timer_create(CLOCK_MONOTONIC, &event, &timer);
    const struct itimerspec soon = {{0, 0}, {0, 1000000}};
    sigset_t set, old;
    sigemptyset(&set);
    sigaddset(&set, SIGALRM);
    sigprocmask(SIG_BLOCK, &set, &old);
    timer_settime(timer, 0, &soon, NULL);
    sigsuspend(&old);
    sigprocmask(SIG_SETMASK, &old, NULL);
    const pid_t child = fork();
    if (child == 0)
        _exit(42);
    int status;
    while (waitpid(child, &status, 0) != child) {
    }
    char* const page = mmap(NULL, 65536, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    volatile char* const nowhere = (char*)0x12345;
    if (!sigsetjmp(back, 1))
        *nowhere = 1;
    if (!sigsetjmp(back, 1))
        ((void (*)(void))0x123450)();
    if (!sigsetjmp(back, 1))
        *page = 1;
    munmap(page, 65536);
}

// A fault finds every register as the program has it, and changes to them take effect.
uint64_t fault_with_registers(void* address, uint64_t* results); // in signal_cases.S
extern const char faulting_instruction[], behind_faulting_instruction[], undefined_instruction[],
    trapping_instruction[];
static int wrong;
static void check_registers(int number, siginfo_t* information, void* context) {
    mcontext_t* machine = &((ucontext_t*)context)->uc_mcontext;
    const struct fpsimd_context* vector = (void*)machine->__reserved;
    const char* const place = number == SIGSEGV  ? faulting_instruction
                              : number == SIGILL ? undefined_instruction
                                                 : trapping_instruction;
    wrong += machine->pc != (uint64_t)place;
    wrong += number != SIGSEGV && information->si_addr != place;
    for (uint64_t n = 2; n < 30; ++n)
        wrong += machine->regs[n] != n * 0x0101010101010101;
    wrong += (machine->pstate & 0xF0000000) != 0x90000000;
    wrong += vector->head.magic != FPSIMD_MAGIC || (uint64_t)vector->vregs[9] != 0x0909;
    machine->regs[28] += 1;
    machine->regs[14] += 2;
    machine->regs[15] += 3;
    machine->pstate = 0x60000000;
    ((struct fpsimd_context*)vector)->vregs[9] += 1;
    machine->pc += 4;
}
static void registers(char** unused) {
    install(SIGSEGV, check_registers, SA_SIGINFO, 0);
    install(SIGILL, check_registers, SA_SIGINFO, 0);
    install(SIGTRAP, check_registers, SA_SIGINFO, 0);
    uint64_t results[5] = {0};
    fault_with_registers((void*)0x10, results);
    printf("%d wrong; +%d +%d +%d, flags %#llx, vector %#llx\n", wrong,
           (int)(results[0] - 28 * 0x0101010101010101), (int)(results[1] - 14 * 0x0101010101010101),
           (int)(results[2] - 15 * 0x0101010101010101), (unsigned long long)results[3],
           (unsigned long long)results[4]);
}

// Every place in code that uses all registers, while a timer ticks: see signal_cases.S.
uint64_t busy_round(uint64_t seed, uint64_t rounds);
static void interrupted(char** unused) {
    const uint64_t expected = busy_round(1234, 20000);
    install(SIGALRM, on_count, 0, 0);
    every_millisecond(1);
    unsigned different = 0;
    while (count < 300)
        different += busy_round(1234, 20000) != expected;
    every_millisecond(0);
    printf("different %u\n", different);
}

// Masks and order.
static void on_nested(int number) {
    static int depth;
    order[count++] = number;
    ++depth;
    if (number == SIGUSR1 && count < 8) {
        raise(SIGUSR2); // blocked by the action's mask
        if (count < 2)
            raise(SIGUSR1); // blocked by itself
        raise(SIGHUP);
        order[count++] = -depth;
    }
    --depth;
}
static void masks(char** unused) {
    install(SIGUSR1, on_nested, 0, BIT(SIGUSR2));
    install(SIGUSR2, on_nested, SA_NODEFER, 0);
    install(SIGHUP, on_nested, 0, 0);
    sigset_t set, old;
    sigemptyset(&set);
    sigaddset(&set, SIGUSR1);
    sigprocmask(SIG_BLOCK, &set, NULL);
    raise(SIGUSR1);
    sigset_t pending;
    sigpending(&pending);
    printf("pending %d, arrived %d\n", sigismember(&pending, SIGUSR1), count);
    sigprocmask(SIG_UNBLOCK, &set, &old);
    printf("blocked before %d;", sigismember(&old, SIGUSR1));
    for (int n = 0; n < count; ++n)
        printf(" %d", order[n]);
    printf("\n");
    install(SIGUSR1, on_nested, SA_RESETHAND, 0);
    raise(SIGUSR1);
    struct sigaction now;
    sigaction(SIGUSR1, NULL, &now);
    printf("reset %d\n", now.sa_handler == SIG_DFL);
    printf("%ld %ld %ld %ld\n", syscall(SYS_rt_sigaction, 9, &now, NULL, 8),
           syscall(SYS_rt_sigaction, 70, NULL, NULL, 8), syscall(SYS_rt_sigprocmask, 77, &set, NULL, 8),
           syscall(SYS_rt_sigprocmask, SIG_BLOCK, (void*)8, NULL, 8));
}

// The alternate stack.
static char stack_memory[65536];
static void on_stack(int number, siginfo_t* information, void* context) {
    char here;
    stack_t now;
    sigaltstack(NULL, &now);
    printf("on it %d, flags %d, in frame %d\n",
           &here > stack_memory && &here < stack_memory + sizeof stack_memory, now.ss_flags,
           ((ucontext_t*)context)->uc_stack.ss_flags);
    if (number == SIGSEGV)
        siglongjmp(back, 1);
}
static int endless(volatile char* above) {
    volatile char here[4096];
    here[0] = above[0];
    return endless(here) + here[0];
}
static void stacks(char** unused) {
    const stack_t stack = {stack_memory, 0, sizeof stack_memory};
    const stack_t small = {stack_memory, 0, 100};
    install(SIGUSR1, on_stack, SA_SIGINFO | SA_ONSTACK, 0);
    install(SIGUSR2, on_stack, SA_SIGINFO, 0);
    install(SIGSEGV, on_stack, SA_SIGINFO | SA_ONSTACK, 0);
    raise(SIGUSR1);
    printf("small %d\n", sigaltstack(&small, NULL) ? errno : 0);
    sigaltstack(&stack, NULL);
    raise(SIGUSR1);
    raise(SIGUSR2);
    for (int n = 0; n < 2; ++n)
        if (!sigsetjmp(back, 1))
            endless("");
}

// System calls that a signal interrupts, with and without SA_RESTART.
static void* send_later(void* argument) {
    usleep(150000); // by then the other thread waits
    kill(getpid(), SIGUSR1);
    return NULL;
}
static void waits(char** unused) {
    int ends[2];
    pipe(ends);
    const sigset_t none = {0};
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGUSR1);
    for (int restart = 0; restart < 2; ++restart)
        for (int way = 0; way < 7; ++way) {
            install(SIGUSR1, on_count, restart ? SA_RESTART : 0, 0);
            count = 0;
            pthread_t sender;
            sigprocmask(SIG_BLOCK, &set, NULL);
            pthread_create(&sender, NULL, send_later, NULL); // itself blocks the signal
            if (way < 4)
                sigprocmask(SIG_UNBLOCK, &set, NULL);
            char byte;
            struct pollfd poll_end = {ends[0], POLLIN, 0};
            const struct timespec seconds = {10, 0}; // more than ever pass
            fd_set ready;
            FD_ZERO(&ready);
            FD_SET(ends[0], &ready);
            errno = 0;
            const int result = way == 0   ? restart ? poll(&poll_end, 1, 10000) : (int)read(ends[0], &byte, 1)
                                 : way == 1 ? nanosleep(&seconds, NULL)
                               : way == 2 ? pause()
                               : way == 3 ? select(ends[0] + 1, &ready, NULL, NULL, NULL)
                               : way == 4 ? sigsuspend(&none)
                               : way == 5 ? ppoll(&poll_end, 1, &seconds, &none)
                                          : sigtimedwait(&set, NULL, &seconds) == SIGUSR1;
            const int error = errno;
            pthread_join(sender, NULL);
            sigprocmask(SIG_UNBLOCK, &set, NULL);
            printf("%d %d: %d %d, handled %d\n", restart, way, result, error, count);
        }
    install(SIGUSR1, on_count, SA_RESTART, 0);
    count = 0;
    if (fork() == 0) {
        usleep(20000);
        kill(getppid(), SIGUSR1);
        usleep(20000);
        write(ends[1], "x", 1);
        _exit(0);
    }
    char byte = 0;
    const ssize_t got = read(ends[0], &byte, 1);
    printf("read %d %c, handled %d\n", (int)got, byte, count);
    wait(NULL);
}

// Between processes and threads.
static void processes(char** unused) {
    install(SIGUSR1, on_count, 0, 0);
    sigset_t set, old;
    sigemptyset(&set);
    sigaddset(&set, SIGUSR1);
    sigprocmask(SIG_BLOCK, &set, &old);
    const pid_t child = fork();
    const pid_t other = child ? child : getppid();
    for (int n = 0; n < 200; ++n) {
        if (child)
            kill(other, SIGUSR1);
        while (count <= n)
            sigsuspend(&old);
        if (!child)
            kill(other, SIGUSR1);
    }
    if (!child)
        _exit(count == 200 ? 7 : 8);
    int status;
    waitpid(child, &status, 0);
    printf("%d and status %d\n", count, WEXITSTATUS(status));

    const pid_t stopped = fork();
    if (!stopped)
        for (;;)
            pause();
    kill(stopped, SIGSTOP);
    waitpid(stopped, &status, WUNTRACED);
    printf("stopped %d by %d\n", WIFSTOPPED(status), WSTOPSIG(status));
    kill(stopped, SIGCONT);
    kill(stopped, SIGTERM);
    waitpid(stopped, &status, 0);
    printf("ended by %d\n", WTERMSIG(status));
}

static _Thread_local volatile int own_count;
static volatile int stop;
static int total;
static void on_thread(int number) {
    ++own_count;
    __atomic_add_fetch(&total, 1, __ATOMIC_SEQ_CST);
}
static void* wait_for_signals(void* argument) {
    uint64_t sum = 1;
    while (!stop || own_count < 50)
        sum = sum * 3 + (uint64_t)argument; // linked to itself
    return (void*)(uintptr_t)(own_count == 50 && sum);
}
static void threads(char** unused) {
    enum { number = 8 };
    pthread_t ids[number];
    install(SIGRTMIN + 1, on_thread, 0, 0); // each is delivered
    for (int n = 0; n < number; ++n)
        pthread_create(&ids[n], NULL, wait_for_signals, NULL);
    for (int n = 0; n < 50 * number; ++n)
        while (pthread_kill(ids[n % number], SIGRTMIN + 1) == EAGAIN) {
        }
    stop = 1;
    int right = 0;
    for (int n = 0; n < number; ++n) {
        void* result;
        pthread_join(ids[n], &result);
        right += result != NULL;
    }
    printf("right %d, in all %d\n", right, total);

    // A signal to the process goes to the thread that does not block it.
    sigset_t set;
    sigfillset(&set);
    count = 0;
    install(SIGUSR1, on_count, 0, 0);
    stop = 0;
    pthread_create(&ids[0], NULL, wait_for_signals, NULL);
    pthread_sigmask(SIG_BLOCK, &set, NULL);
    for (int n = 0; n < 20; ++n) {
        kill(getpid(), SIGUSR1);
        while (count <= n) {
        }
    }
    stop = 1;
    for (int n = 0; n < 50; ++n)
        pthread_kill(ids[0], SIGRTMIN + 1);
    pthread_join(ids[0], NULL);
    printf("process %d, users %d\n", count, setuid(getuid()));
}

// A frame that cannot be written or read ends the process, and a handler is not asked.
static void bad_stack(char** unused) {
    install(SIGUSR1, on_count, 0, 0);
    printf("a signal comes\n");
    __asm__ volatile("mov x1, %0\n mov x0, %1\n mov x8, 129\n mov sp, %2\n svc 0\n b ."
                     :
                     : "r"((uint64_t)SIGUSR1), "r"((uint64_t)getpid()), "r"((uint64_t)0x1000)
                     : "x0", "x1", "x8", "memory");
}
static void bad_frame(char** unused) {
    printf("there is no frame\n");
    __asm__ volatile("mov sp, %0\n mov x8, 139\n svc 0" : : "r"((uint64_t)0x1000) : "x8", "memory");
}

int main(int argc, char** arguments) {
    static const struct way ways[] = {{"information", information},
                                      {"registers", registers},
                                      {"interrupted", interrupted},
                                      {"masks", masks},
                                      {"stacks", stacks},
                                      {"waits", waits},
                                      {"processes", processes},
                                      {"threads", threads},
                                      {"bad-stack", bad_stack},
                                      {"bad-frame", bad_frame},
                                      {NULL, NULL}};
    return run_way(ways, arguments);
}
