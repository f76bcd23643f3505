// Shows what the program is started with: arguments, environment, auxiliary vector, stack.
#define _GNU_SOURCE
#include <elf.h>
#include <inttypes.h>
#include <stdio.h>
#include <string.h>
#include <sys/auxv.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

extern char** environ;
extern void _start(void);

static int is_later(struct timespec a, struct timespec b) {
    return a.tv_sec > b.tv_sec || (a.tv_sec == b.tv_sec && a.tv_nsec > b.tv_nsec);
}

int main(int argc, char** argv) {
    printf("argc %d\n", argc);
    for (int n = 0; n <= argc; ++n)
        printf("argv[%d] %s\n", n, argv[n] ? argv[n] : "null");
    for (char** variable = environ; *variable; ++variable)
        if (strncmp(*variable, "OSTREL_TEST", 11) == 0)
            printf("environment %s\n", *variable);

    const Elf64_Phdr* const headers = (const Elf64_Phdr*)getauxval(AT_PHDR);
    int load_segments = 0;
    for (unsigned n = 0; n < getauxval(AT_PHNUM); ++n)
        load_segments += headers[n].p_type == PT_LOAD;
    printf("program headers %lu of %lu bytes, %d to load\n", getauxval(AT_PHNUM), getauxval(AT_PHENT),
           load_segments);
    printf("entry %d, base %d, page %lu, secure %lu, ticks %lu\n", getauxval(AT_ENTRY) == (uintptr_t)_start,
           getauxval(AT_BASE) != 0, getauxval(AT_PAGESZ), getauxval(AT_SECURE), getauxval(AT_CLKTCK));
    printf("ids %d %d %d %d\n", getauxval(AT_UID) == getuid(), getauxval(AT_EUID) == geteuid(),
           getauxval(AT_GID) == getgid(), getauxval(AT_EGID) == getegid());
    printf("file %s, platform %s, random %d\n", (const char*)getauxval(AT_EXECFN),
           (const char*)getauxval(AT_PLATFORM), getauxval(AT_RANDOM) != 0);
    const unsigned long not_sve = 0x00ff; // FP to CRC32
    printf("hwcap %lx\n", getauxval(AT_HWCAP) & not_sve);

    // The C library tells the time by the kernel's virtual shared object if there is one.
    struct timespec before, told, after;
    syscall(SYS_clock_gettime, CLOCK_MONOTONIC, &before);
    clock_gettime(CLOCK_MONOTONIC, &told);
    syscall(SYS_clock_gettime, CLOCK_MONOTONIC, &after);
    printf("virtual object %d, time between %d\n", getauxval(AT_SYSINFO_EHDR) != 0,
           !is_later(before, told) && !is_later(told, after));

    // The stack starts as the procedure call standard and the kernel promise.
    uint64_t* const start = (uint64_t*)(argv - 1);
    printf("stack aligned %d, argc below argv %d, environment behind %d\n", (uintptr_t)start % 16 == 0,
           *start == (uint64_t)argc, environ == argv + argc + 1);

    struct rlimit limit;
    getrlimit(RLIMIT_STACK, &limit);
    volatile char* const deep =
        (char*)start - (limit.rlim_cur < 8 << 20 ? limit.rlim_cur : 8 << 20) + (1 << 18);
    *deep = 1;
    printf("stack as deep as the limit %d\n", *deep);
    return 0;
}
