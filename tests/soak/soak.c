// soak SECONDS: threads, signals, processes and mappings mixed, for as long as told. Everything that is done
// is counted in two places that have to agree, SVE arithmetic goes on all the time and is compared with sums
// made without it, and the memory that the process has must not grow. Prints what was done; ends with status
// 1 and a line for each disagreement.
#define _GNU_SOURCE
#include <arm_sve.h>
#include <errno.h>
#include <pthread.h>
#include <setjmp.h>
#include <signal.h>
#include <stdatomic.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

enum { workers = 4, short_threads = 6, elements = 200 };

static atomic_int failures, stop;
static atomic_ulong sums, ticks, sent, received, short_lived, forks, mappings, jumps;

// Held by each worker during a round.
static pthread_rwlock_t rounds = PTHREAD_RWLOCK_WRITER_NONRECURSIVE_INITIALIZER_NP;

static void check(int holds, const char* what) {
    if (!holds && atomic_fetch_add(&failures, 1) < 20)
        dprintf(1, "FAILED: %s\n", what);
}

// The weighted sum of the numbers from `start`, with whole vectors and a partial one.
__attribute__((noinline)) static uint64_t sve_sum(const uint32_t* values, uint64_t count) {
    svuint64_t total = svdup_u64(0);
    for (uint64_t i = 0; i < count; i += svcntd()) {
        const svbool_t active = svwhilelt_b64(i, count);
        total = svmla_u64_m(active, total, svld1uw_u64(active, values + i), svindex_u64(i, 1));
    }
    return svaddv_u64(svptrue_b64(), total);
}

// The length of a text, by loads that go on to where memory ends.
__attribute__((noinline)) static uint64_t sve_length(const uint8_t* text) {
    const svbool_t all = svptrue_b8();
    for (uint64_t i = 0;;) {
        svsetffr();
        const svuint8_t bytes = svldff1_u8(all, text + i);
        const svbool_t loaded = svrdffr();
        const svbool_t end = svcmpeq_n_u8(loaded, bytes, 0);
        if (svptest_any(loaded, end))
            return i + svcntp_b8(all, svbrkb_b_z(loaded, end));
        i += svcntp_b8(all, loaded);
    }
}

static void check_sum(uint32_t seed, const char* what) {
    uint32_t values[elements];
    uint64_t expected = 0;
    for (uint64_t i = 0; i < elements; ++i) {
        values[i] = seed = seed * 1664525 + 1013904223;
        expected += values[i] * i;
    }
    check(sve_sum(values, elements) == expected, what);
    atomic_fetch_add(&sums, 1);
}

static void on_tick(int number) {
    const int saved = errno;
    check_sum((uint32_t)number * 77, "sum in a handler");
    atomic_fetch_add(&ticks, 1);
    errno = saved;
}

static void on_message(int number, siginfo_t* information, void* context) {
    (void)number;
    (void)context;
    // Queued signals come with their values, none lost.
    atomic_fetch_add(&received, (unsigned long)information->si_value.sival_int);
}

static __thread sigjmp_buf back;
static __thread volatile uint32_t* missing_page;
static void on_fault(int number, siginfo_t* information, void* context) {
    (void)number;
    (void)context;
    check(information->si_addr == (void*)missing_page, "address of a fault");
    check_sum(5, "sum in a fault's handler");
    siglongjmp(back, 1);
}

static void* short_thread(void* argument) {
    check_sum((uint32_t)(uintptr_t)argument, "sum in a short thread");
    return (void*)((uintptr_t)argument * 3);
}

static void join_threads(uint32_t round) {
    pthread_t threads[short_threads];
    int started = 0;
    while (started < short_threads && pthread_create(&threads[started], NULL, short_thread,
                                                     (void*)(uintptr_t)(round + (uint32_t)started)) == 0)
        ++started;
    check(started == short_threads, "threads are made");
    for (int i = 0; i < started; ++i) {
        void* result;
        check(pthread_join(threads[i], &result) == 0 &&
                  (uintptr_t)result == (uintptr_t)(round + (uint32_t)i) * 3,
              "a thread's result");
        atomic_fetch_add(&short_lived, 1);
    }
}

static void fork_child(uint32_t round) {
    const pid_t child = fork();
    if (child == 0) {
        const int before = atomic_load(&failures);
        check_sum(round, "sum in a child");
        kill(getpid(), 0);
        // Without the report of a process that ends by itself.
        if (round % 2)
            kill(getpid(), SIGKILL);
        _exit(atomic_load(&failures) == before ? 42 : 1);
    }
    int status = 0;
    pid_t waited;
    while ((waited = waitpid(child, &status, 0)) < 0 && errno == EINTR)
        ;
    check(child > 0 && waited == child, "a child is made and ends");
    check(round % 2 ? WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL
                    : WIFEXITED(status) && WEXITSTATUS(status) == 42,
          "a child's status");
    atomic_fetch_add(&forks, 1);
}

// Memory that comes and goes, with code in it that is written anew each time: a function that returns a
// constant.
static void change_mappings(uint32_t round) {
    const size_t page = (size_t)sysconf(_SC_PAGESIZE), bytes = page * 4;
    char* const memory = mmap(NULL, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    check(memory != MAP_FAILED, "memory is mapped");
    uint32_t* const code = (uint32_t*)memory;
    for (uint32_t i = 0; i < 3; ++i) {
        const uint32_t value = (round + i) & 0xFFFF;
        mprotect(memory, page, PROT_READ | PROT_WRITE);
        code[0] = 0x52800000 | value << 5; // mov w0, #value
        code[1] = 0xD65F03C0;              // ret
        __builtin___clear_cache(memory, memory + 8);
        mprotect(memory, page, PROT_READ | PROT_EXEC);
        check(((uint32_t(*)(void))(uintptr_t)code)() == value, "code that was written");
    }
    missing_page = (volatile uint32_t*)(memory + 2 * page);
    mprotect(memory + 2 * page, page, PROT_NONE);
    const uint32_t length = round % 300;
    memset(memory + 2 * page - 1 - length, 'x', length);
    check(sve_length((uint8_t*)memory + 2 * page - 1 - length) == length,
          "length of a text at the end of memory");
    if (sigsetjmp(back, 1) == 0) {
        *missing_page = 1;
        check(0, "a fault is delivered");
    }
    atomic_fetch_add(&jumps, 1);
    check(munmap(memory, bytes) == 0, "memory is unmapped");
    atomic_fetch_add(&mappings, 1);
}

static void send_messages(uint32_t round) {
    for (int value = 1; value <= 3; ++value) {
        union sigval content = {.sival_int = value + (int)(round % 5)};
        // A full queue is no failure: then nothing was sent.
        if (sigqueue(getpid(), SIGRTMIN + 1, content) == 0)
            atomic_fetch_add(&sent, (unsigned long)content.sival_int);
    }
}

static void* worker(void* argument) {
    uint32_t round = (uint32_t)(uintptr_t)argument << 20;
    while (!atomic_load(&stop)) {
        pthread_rwlock_rdlock(&rounds);
        ++round;
        for (uint32_t i = 0; i < 10; ++i)
            check_sum(round + i, "sum in a worker");
        change_mappings(round);
        send_messages(round);
        if (round % 8 == 2)
            join_threads(round);
        if (round % 16 == 1)
            fork_child(round / 16);
        pthread_rwlock_unlock(&rounds);
    }
    return NULL;
}

// Kilobytes of memory that the process can use, between the rounds of the workers. What is resident tells
// less: under user-mode emulation that is the emulator's. Memory that is only reserved, as allocators do for
// later, doesn't count.
static unsigned long mapped_memory(void) {
    pthread_rwlock_wrlock(&rounds);
    unsigned long total = 0, start, end;
    char line[4352];
    FILE* const file = fopen("/proc/self/maps", "r");
    while (file && fgets(line, sizeof line, file))
        if (sscanf(line, "%lx-%lx", &start, &end) == 2 && !strstr(line, " ---"))
            total += end - start;
    if (file)
        fclose(file);
    pthread_rwlock_unlock(&rounds);
    return total / 1024;
}

static void print_state(double seconds) {
    printf(
        "%6.0f s: %lu sums, %lu ticks, %lu short threads, %lu forks, %lu mappings, %lu of %lu sent, %lu KB\n",
        seconds, sums, ticks, short_lived, forks, mappings, received, sent, mapped_memory());
    fflush(stdout);
}

static double now(void) {
    struct timespec time;
    clock_gettime(CLOCK_MONOTONIC, &time);
    return (double)time.tv_sec + (double)time.tv_nsec / 1e9;
}

static void pause_for(double seconds) {
    const double end = now() + seconds;
    while (now() < end)
        usleep(100000);
}

static void handle(int number, void (*handler)(int, siginfo_t*, void*), int flags) {
    struct sigaction action = {.sa_sigaction = handler, .sa_flags = flags};
    sigemptyset(&action.sa_mask);
    sigaction(number, &action, NULL);
}

int main(int count, char** arguments) {
    const double seconds = count > 1 ? atof(arguments[1]) : 60;
    struct sigaction tick = {.sa_handler = on_tick, .sa_flags = SA_RESTART};
    sigemptyset(&tick.sa_mask);
    sigaction(SIGALRM, &tick, NULL);
    handle(SIGRTMIN + 1, on_message, SA_SIGINFO | SA_RESTART);
    handle(SIGSEGV, on_fault, SA_SIGINFO);
    const struct itimerval period = {{0, 20000}, {0, 20000}};
    setitimer(ITIMER_REAL, &period, NULL);

    pthread_t threads[workers];
    for (uintptr_t i = 0; i < workers; ++i)
        check(pthread_create(&threads[i], NULL, worker, (void*)(i + 1)) == 0, "a worker is made");
    // All that is made once is there after a third of the time; from then on memory stays as it is.
    const double start = now();
    unsigned long before = 0;
    for (int part = 1; part <= 12; ++part) {
        pause_for(start + seconds * part / 12 - now());
        print_state(now() - start);
        if (part == 4)
            before = mapped_memory();
    }
    const unsigned long after = mapped_memory();
    atomic_store(&stop, 1);
    for (int i = 0; i < workers; ++i)
        check(pthread_join(threads[i], NULL) == 0, "a worker ends");
    setitimer(ITIMER_REAL, &(struct itimerval){0}, NULL);
    // What is still queued is delivered to this thread.
    for (int i = 0; i < 100 && atomic_load(&received) != atomic_load(&sent); ++i)
        usleep(20000);

    print_state(now() - start);
    check(received == sent, "signals that were queued are handled once each");
    check(ticks > 0 && forks > 0 && short_lived > 0, "all kinds of work were done");
    check(jumps == mappings, "each fault comes back");
    check(before > 0 && after < before + 4096, "memory does not grow");
    printf(failures ? "%d checks failed\n" : "all checks hold\n", failures);
    return failures != 0;
}
