// Ends in the way that the argument says.
#include <fcntl.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

static int overflow(volatile int depth) {
    volatile char frame[4096];
    frame[0] = (char)depth;
    return overflow(depth + 1) + frame[0];
}

int main(int argc, char** argv) {
    const char* const way = argc > 1 ? argv[1] : "";
    setvbuf(stdout, NULL, _IONBF, 0);
    printf("before %s\n", way);
    if (strcmp(way, "return") == 0)
        return 77;
    if (strcmp(way, "exit") == 0)
        exit(256 + 3);
    if (strcmp(way, "_exit") == 0)
        _exit(4);
    if (strcmp(way, "thread-exit") == 0)
        syscall(SYS_exit, 5);
    if (strcmp(way, "abort") == 0)
        abort();
    if (strcmp(way, "terminate") == 0)
        kill(getpid(), SIGTERM);
    if (strcmp(way, "send-fault") == 0)
        kill(getpid(), SIGSEGV);
    if (strcmp(way, "null") == 0)
        *(volatile int*)16 = 1;
    if (strcmp(way, "call-null") == 0)
        ((void (*volatile)(void))0)();
    if (strcmp(way, "call-data") == 0) {
        static unsigned data[4] = {0xD65F03C0}; // RET
        ((void (*)(void))data)();
        return 0;
    }
    if (strcmp(way, "misaligned") == 0)
        ((void (*volatile)(void))((char*)main + 2))();
    if (strcmp(way, "overflow") == 0)
        return overflow(0);
    if (strcmp(way, "trap") == 0)
        __asm__ volatile("brk #7");
    if (strcmp(way, "undefined") == 0)
        __asm__ volatile(".inst 0x00000000");
    if (strcmp(way, "unallocated-branch") == 0)
        __asm__ volatile(".inst 0xd69f03e0"); // ERET
    if (strcmp(way, "write-code") == 0)
        *(volatile unsigned*)main = 0;
    if (strcmp(way, "hypervisor-call") == 0)
        __asm__ volatile("hvc #0");
    if (strcmp(way, "bad-authentication") == 0)
        __asm__ volatile(".arch armv8.5-a\n pacia x30, sp\n eor x30, x30, #(1 << 54)\n retaa" ::
                             : "x30", "memory");

    if (strcmp(way, "ignored-signal") == 0) {
        signal(SIGUSR1, SIG_IGN);
        raise(SIGUSR1);
        return signal(SIGUSR1, SIG_DFL) == SIG_IGN && signal(SIGUSR1, SIG_DFL) == SIG_DFL ? 6 : 7;
    }
    if (strcmp(way, "vector-length") == 0)
        return prctl(50, 16) == -1 && prctl(51) == -1 ? 8 : 9;
    if (strcmp(way, "fork") == 0) {
        int status;
        const pid_t child = fork();
        if (child == 0) {
            printf("child\n");
            exit(10);
        }
        return waitpid(child, &status, 0) == child && WIFEXITED(status) ? WEXITSTATUS(status) + 1 : 12;
    }
    if (strcmp(way, "own-executable") == 0) {
        char path[4096] = "";
        const ssize_t length = readlink("/proc/self/exe", path, sizeof path - 1);
        char resolved[4096];
        char magic[4] = "", tail[3] = "";
        const int file = open("/proc/self/exe", O_RDONLY);
        const int same =
            length == (ssize_t)strlen(path) && realpath(argv[0], resolved) && strcmp(resolved, path) == 0;
        return same && read(file, magic, 4) == 4 && memcmp(magic, "\177ELF", 4) == 0 &&
                       readlink("/proc/self/exe", tail, 2) == 2 && tail[0] == '/' && tail[2] == 0
                   ? 13
                   : 14;
    }
    printf("after %s\n", way);
    return 0;
}
