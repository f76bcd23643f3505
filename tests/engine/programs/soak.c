// Does everything that may leave something behind again and again, for the seconds that the first argument
// says, and tells how much the process has grown. The second is a library to be loaded and unloaded, if there
// is one.
#define _GNU_SOURCE
#include <dlfcn.h>
#include <pthread.h>
#include <signal.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

// Bytes that are mapped readable and writable. Unlike the pages in use, they are the same in an emulator.
static long mapped_bytes(void) {
    FILE* const maps = fopen("/proc/self/maps", "r");
    char line[512], rights[5];
    long sum = 0;
    unsigned long start, end;
    while (maps && fgets(line, sizeof line, maps))
        if (sscanf(line, "%lx-%lx %4s", &start, &end, rights) == 3 && rights[0] == 'r' && rights[1] == 'w')
            sum += (long)(end - start);
    if (maps)
        fclose(maps);
    return sum;
}

static unsigned failed;

static void* work(void* argument) {
    char* const memory = malloc(5000);
    memset(memory, 1, 5000);
    unsigned sum = 0;
    for (unsigned n = 0; n < 5000; ++n)
        sum += (unsigned char)memory[n];
    free(memory);
    return (void*)((uintptr_t)argument + sum);
}
static void threads(void) {
    enum { count = 6 };
    pthread_t id[count];
    for (uintptr_t n = 0; n < count; ++n)
        if (pthread_create(&id[n], NULL, work, (void*)n) != 0)
            ++failed;
    for (uintptr_t n = 0; n < count; ++n) {
        void* result;
        failed += pthread_join(id[n], &result) != 0 || (uintptr_t)result != n + 5000;
    }
}

static unsigned call(const uint32_t* code) {
    unsigned (*volatile function)(void) = (unsigned (*)(void))(void*)code;
    return function();
}
static void code(unsigned round) {
    static uint32_t* kept;
    if (!kept)
        kept = mmap(NULL, 4096, PROT_READ | PROT_WRITE | PROT_EXEC, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    uint32_t* const fresh =
        mmap(NULL, 65536, PROT_READ | PROT_WRITE | PROT_EXEC, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    for (unsigned n = 0; n < 50; ++n) {
        uint32_t* const place = n % 2 ? kept + n : fresh + n * 64;
        place[0] = 0x52800000 | ((round + n) & 0xFFFF) << 5; // MOV W0, #value; RET
        place[1] = 0xD65F03C0;
        __builtin___clear_cache((char*)place, (char*)(place + 2));
        failed += call(place) != ((round + n) & 0xFFFF);
    }
    munmap(fresh, 65536);
}

static volatile sig_atomic_t handled;
static void handler(int number) { handled += number; }
static void signals(void) {
    signal(SIGUSR1, handler);
    for (unsigned n = 0; n < 20; ++n) {
        const int before = handled;
        raise(SIGUSR1);
        failed += handled != before + SIGUSR1;
    }
}

static void children(unsigned round) {
    int status = 0;
    const pid_t child = fork();
    if (child == 0)
        _exit((int)(round % 100));
    failed += waitpid(child, &status, 0) != child || WEXITSTATUS(status) != (int)(round % 100);
}

static void libraries(const char* path) {
    void* const library = dlopen(path, RTLD_NOW);
    failed += library == NULL || dlclose(library) != 0;
}

int main(int argc, char** argv) {
    const long seconds = argc > 1 ? atol(argv[1]) : 10;
    if (!freopen("/dev/null", "w", stdout)) // what the library says
        return 1;
    const time_t start = time(NULL);
    long after_a_while = 0;
    unsigned round = 0;
    for (long at = 0, printed = 0; (at = time(NULL) - start) < seconds || round < 20; ++round) {
        threads();
        code(round);
        signals();
        if (round % 4 == 0)
            children(round);
        if (argc > 2 && round % 4 == 1)
            libraries(argv[2]);
        if (!after_a_while && round >= 10 && at * 4 >= seconds)
            after_a_while = mapped_bytes();
        if (at >= printed + 10) {
            fprintf(stderr, "%ld s, %u rounds, %ld kB mapped\n", at, round, mapped_bytes() / 1024);
            printed = at;
        }
    }
    const long grown = mapped_bytes() - after_a_while;
    fprintf(stderr, "%u rounds, grown by %ld kB of %ld, %u failed\n", round, grown / 1024,
            after_a_while / 1024, failed);
    return failed != 0 || grown * 50 > after_a_while;
}
