// Executes other programs in the way that the first argument says.
#define _GNU_SOURCE
#include <errno.h>
#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <stdlib.h>
#include <sys/auxv.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "tools.h"

extern char** environ;

static void try(const char* what, const void* path, const void* arguments, const void* environment) {
    const long result = syscall(SYS_execve, path, arguments, environment);
    printf("%s: %ld %s\n", what, result, strerror(errno));
}

// Whatever fails leaves the program as it was.
static void errors(void) {
    char directory[] = "/tmp/ostrel_execute_XXXXXX";
    if (!mkdtemp(directory) || chdir(directory) != 0)
        return perror(directory);
    if (system("echo echo text >text; echo '#!/bin/sh' >not-executable; echo '#!/nowhere/sh' >lost-script;"
               "echo '#! ' >nameless-script; echo '#!./endless-script' >endless-script; printf '\\177ELF\\2' "
               ">damaged;"
               "chmod 755 *; chmod 644 not-executable; ln -s ring ring; mkfifo -m 755 pipe") != 0)
        perror(directory);
    static const char* const names[] = {"text",           "not-executable",
                                        "lost-script",    "nameless-script",
                                        "endless-script", "damaged",
                                        "missing",        "ring",
                                        "pipe",           ".",
                                        "text/missing",   ""};
    char* some[] = {"name", NULL};
    for (size_t n = 0; n < sizeof names / sizeof *names; ++n)
        try(names[n], names[n], some, environ);
    static char long_name[5000];
    memset(long_name, 'n', sizeof long_name - 1);
    try("long name", long_name, some, environ);

    char own[4096] = "";
    if (readlink("/proc/self/exe", own, sizeof own - 1) < 0)
        perror("/proc/self/exe");
    void* const nowhere = (void*)16;
    try("path nowhere", nowhere, some, environ);
    try("arguments nowhere", "/bin/sh", nowhere, environ);
    try("environment nowhere", "/bin/sh", some, nowhere);
    char* bad[] = {"name", nowhere, NULL};
    try("argument nowhere", "/bin/sh", bad, environ);
    char** const edge = mmap(NULL, 131072, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    mprotect((char*)edge + 65536, 65536, PROT_NONE);
    char** const last = (char**)((char*)edge + 65536) - 2;
    last[0] = last[1] = "argument";
    try("arguments without an end", "/bin/sh", last, environ);

    char* const text = malloc(100001);
    memset(text, 'x', 100000);
    text[100000] = 0;
    static char* many[201];
    for (int n = 0; n < 200; ++n)
        many[n] = text;
    try("arguments too long", own, many, environ);
    char** const most = malloc(800001 * sizeof *most);
    for (int n = 0; n < 800000; ++n)
        most[n] = "";
    most[800000] = NULL;
    try("arguments too many", own, most, environ);

    if (system("rm *") != 0 || rmdir(directory) != 0)
        perror(directory);
}

static void start_afresh(void) {
    umask(022);
    for (int n = 3; n < 1024; ++n)
        close(n);
}

// Sets up what is kept and what is lost, and goes on in `shows_state`.
static void keeps_state(const char* program) {
    start_afresh();
    signal(SIGUSR1, SIG_IGN);
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGUSR2);
    sigaddset(&set, SIGRTMIN + 3);
    sigprocmask(SIG_BLOCK, &set, NULL);
    raise(SIGUSR2);
    alarm(100);
    umask(0127);
    dup2(1, 20);
    dup3(1, 21, O_CLOEXEC);
    char* arguments[] = {"another name", "shows-state", "", "last", NULL};
    char* environment[] = {"FIRST=1", "SECOND=", NULL};
    execve(program, arguments, environment);
    perror(program);
}

static void shows_state(int argc, char** argv) {
    for (int n = 0; n < argc; ++n)
        printf("argv[%d] %s\n", n, argv[n]);
    for (char** variable = environ; *variable; ++variable)
        printf("environment %s\n", *variable);
    struct sigaction action;
    sigset_t set, pending;
    sigprocmask(SIG_SETMASK, NULL, &set);
    sigpending(&pending);
    for (int n = 1; n < SIGRTMAX; ++n) {
        sigaction(n, NULL, &action);
        if (action.sa_handler == SIG_IGN || sigismember(&set, n) || sigismember(&pending, n))
            printf("signal %d: ignored %d, blocked %d, pending %d\n", n, action.sa_handler == SIG_IGN,
                   sigismember(&set, n), sigismember(&pending, n));
    }
    for (int n = 3; n < 1024; ++n)
        if (fcntl(n, F_GETFD) >= 0)
            printf("open %d\n", n);
    char name[16];
    prctl(PR_GET_NAME, name);
    printf("path %s, process %s\n", (const char*)getauxval(AT_EXECFN), name);
    printf("alarm %d, mask %o\n", alarm(0) > 0, umask(0));
}

static void spawns(const char* program) {
    char* arguments[] = {"spawned", "status", "17", NULL};
    for (int n = 0; n < 3; ++n) {
        pid_t child;
        const int result = posix_spawn(&child, program, NULL, NULL, arguments, environ);
        printf("spawned %d, status %d\n", result, status_of(child));
    }
}

static int status_by(int descriptor, const char* name, int flags) {
    char* arguments[] = {"by descriptor", "shows-state", NULL};
    char* environment[] = {NULL};
    const pid_t child = fork();
    if (child == 0) {
        syscall(SYS_execveat, descriptor, name, arguments, environment, flags);
        _exit(errno);
    }
    return status_of(child);
}

// By a descriptor: of a directory, of the file, and of a file without a name; those that are closed when a
// program is executed are closed. A script's interpreter could not open one.
static void by_descriptors(const char* path, const char* name) {
    start_afresh();
    const int directory = open(path, O_PATH | O_DIRECTORY | O_CLOEXEC);
    printf("in directory %d\n", status_by(directory, name, 0));
    const int file = openat(directory, name, O_RDONLY);
    printf("file %d\n", status_by(file, "", AT_EMPTY_PATH));
    const int copy = memfd_create("copy", MFD_CLOEXEC);
    char block[65536];
    for (ssize_t length; (length = read(file, block, sizeof block)) > 0;)
        if (write(copy, block, (size_t)length) != length)
            perror("copy");
    printf("copy %d\n", status_by(copy, "", AT_EMPTY_PATH));
}

int main(int argc, char** argv) {
    setvbuf(stdout, NULL, _IONBF, 0);
    const char* const way = argc > 1 ? argv[1] : "";
    if (strcmp(way, "errors") == 0)
        errors();
    if (strcmp(way, "keeps-state") == 0)
        keeps_state(argv[2]);
    if (strcmp(way, "shows-state") == 0)
        shows_state(argc, argv);
    if (strcmp(way, "spawns") == 0)
        spawns(argv[2]);
    if (strcmp(way, "status") == 0)
        return atoi(argv[2]);
    if (strcmp(way, "by-descriptors") == 0)
        by_descriptors(argv[2], argv[3]);
    if (strcmp(way, "runs") == 0) {
        execv(argv[2], argv + 3);
        perror(argv[2]);
    }
    if (strcmp(way, "own-executable") == 0) {
        start_afresh();
        char* arguments[] = {"itself", "shows-state", NULL};
        char* environment[] = {NULL};
        execve("/proc/self/exe", arguments, environment);
    }
    return 0;
}
