// Shows what the program is started with: arguments, environment, auxiliary vector, stack, break.
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

// What the kernel shows to others.
static int is_shown(const char* file, const char* first, const char* second) {
    char shown[65536] = "";
    FILE* const stream = fopen(file, "r");
    const size_t length = stream ? fread(shown, 1, sizeof shown - 1, stream) : 0;
    if (stream)
        fclose(stream);
    return strcmp(shown, first) == 0 && length > strlen(first) + 1 &&
           strcmp(shown + strlen(first) + 1, second) == 0;
}

static int is_shown_in_auxv(uint64_t type) {
    Elf64_auxv_t shown[64] = {0};
    FILE* const stream = fopen("/proc/self/auxv", "r");
    if (stream && fread(shown, 1, sizeof shown, stream))
        fclose(stream);
    for (int n = 0; n < 64; ++n)
        if (shown[n].a_type == type)
            return shown[n].a_un.a_val == getauxval(type);
    return 0;
}

// User-mode emulation has its own mind of /proc.
static int show_process(char** argv) {
    printf("arguments %d, environment %d, entry %d, file %d\n",
           is_shown("/proc/self/cmdline", argv[0], argv[1]),
           is_shown("/proc/self/environ", environ[0], environ[1]), is_shown_in_auxv(AT_ENTRY),
           is_shown_in_auxv(AT_EXECFN));
    unsigned long start = 0, end = 0;
    char line[4096];
    FILE* const maps = fopen("/proc/self/maps", "r");
    while (maps && fgets(line, sizeof line, maps))
        if (strstr(line, "[stack]"))
            sscanf(line, "%lx-%lx", &start, &end);
    printf("stack %d\n", start <= (uintptr_t)line && (uintptr_t)line < end);
    return 0;
}

int main(int argc, char** argv) {
    if (argc == 2 && strcmp(argv[1], "process") == 0)
        return show_process(argv);
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

    unsigned char* const end = sbrk(0);
    const int grown = sbrk(1 << 20) == end;
    memset(end, 7, 1 << 20);
    const int shrunk = sbrk(-(1 << 19)) == end + (1 << 20) && sbrk(0) == end + (1 << 19);
    sbrk(1 << 19);
    printf("break %d %d, kept %d, cleared %d, too low %d\n", grown, shrunk, end[(1 << 19) - 1],
           end[(1 << 20) - 1], brk((void*)4096));
    return 0;
}
