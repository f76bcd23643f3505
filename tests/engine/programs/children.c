// Child processes in the way that the argument says.
#define _GNU_SOURCE
#include <pthread.h>
#include <sched.h>
#include <signal.h>
#include <spawn.h>
#include <stdlib.h>
#include <unistd.h>

#include "tools.h"

// Registers, also those that a caller may keep values in, are the parent's own afterwards.
static __attribute__((noinline)) double mix(double seed, int round) { return seed * 1.25 + round; }

static void vforks(char** unused) {
    static volatile int from_child;
    double sum = 0.5;
    for (int round = 0; round < 20; ++round) {
        sum = mix(sum, round);
        const pid_t child = vfork();
        if (child == 0) {
            double others = 0;
            for (int n = 0; n < round; ++n)
                others += mix(others, n);
            from_child = others > 0;
            _exit(40 + round);
        }
        printf("child %d\n", status_of(child));
    }
    printf("sum %.6f, from child %d\n", sum, from_child);

    pid_t child = vfork();
    if (child == 0)
        abort();
    printf("aborted %d\n", status_of(child));

    child = vfork();
    if (child == 0) {
        const pid_t grandchild = vfork();
        if (grandchild == 0)
            _exit(3);
        _exit(status_of(grandchild) + 1);
    }
    printf("nested %d\n", status_of(child));
}

static void* add_one(void* number) {
    ++*(int*)number;
    return NULL;
}
static void* end_after_first(void* argument) {
    usleep(20000);
    exit(argument ? 9 : 10);
}

// A child of a child that shares memory is a process like any other, with threads and all.
static void forks_of_vforks(char** unused) {
    for (int outlived = 0; outlived < 2; ++outlived) {
        const pid_t child = vfork();
        if (child == 0) {
            const pid_t grandchild = fork();
            if (grandchild == 0) {
                int number = 4;
                pthread_t thread;
                pthread_create(&thread, NULL, outlived ? end_after_first : add_one, &number);
                if (outlived)
                    pthread_exit(NULL);
                pthread_join(thread, NULL);
                exit(number);
            }
            _exit(status_of(grandchild) + 1);
        }
        printf("outlived %d: %d\n", outlived, status_of(child));
    }
}

static volatile int stop;
static void* work(void* count) {
    for (unsigned n = 1; !stop; ++n) {
        char text[32];
        snprintf(text, sizeof text, "%u", n);
        char* const copy = strdup(text);
        *(unsigned*)count += copy[0] == text[0];
        free(copy);
    }
    return NULL;
}
static __attribute__((noinline)) pid_t ending_child(int status) {
    const pid_t child = vfork();
    if (child == 0)
        _exit(status);
    return child;
}
static void* vfork_often(void* right) {
    for (int n = 0; n < 10; ++n) {
        *(int*)right += status_of(ending_child(n)) == n;
    }
    return NULL;
}

// Children of several threads at once, among others that go on.
static void vforks_of_threads(char** unused) {
    pthread_t workers[2], parents[3];
    unsigned counts[2] = {0, 0};
    int right[3] = {0, 0, 0};
    for (int n = 0; n < 2; ++n)
        pthread_create(&workers[n], NULL, work, &counts[n]);
    for (int n = 0; n < 3; ++n)
        pthread_create(&parents[n], NULL, vfork_often, &right[n]);
    for (int n = 0; n < 3; ++n)
        pthread_join(parents[n], NULL);
    stop = 1;
    for (int n = 0; n < 2; ++n)
        pthread_join(workers[n], NULL);
    printf("right %d %d %d, worked %d\n", right[0], right[1], right[2], counts[0] && counts[1]);
}

static void spawns(char** arguments) {
    pid_t child = 0;
    const int result = posix_spawn(&child, "/nowhere/missing", NULL, NULL, arguments, environ);
    printf("missing: %s, child %d\n", strerror(result), child ? status_of(child) : 0);
    printf("system %d\n", WEXITSTATUS(system("exit 6")));
    FILE* const pipe = popen("read line; echo got $line", "w");
    fputs("text\n", pipe);
    fflush(pipe);
    printf("closed %d\n", pclose(pipe));
}

static int tree(int depth) {
    if (depth == 0)
        return 1;
    const pid_t left = fork();
    if (left == 0)
        _exit(tree(depth - 1));
    const pid_t right = fork();
    if (right == 0)
        _exit(tree(depth - 1));
    return status_of(left) + status_of(right);
}

static void fork_tree(char** arguments) { printf("leaves %d\n", tree(4)); }

static char stack[65536];
static int run_alone(void* argument) { return argument != NULL; }
static void share(char** arguments) { clone(run_alone, stack + sizeof stack, CLONE_VM | SIGCHLD, arguments); }

int main(int argc, char** argv) {
    static const struct way ways[] = {{"vfork", vforks},
                                      {"vfork-fork", forks_of_vforks},
                                      {"vfork-threads", vforks_of_threads},
                                      {"spawn", spawns},
                                      {"tree", fork_tree},
                                      {"shared", share},
                                      {NULL, NULL}};
    return run_way(ways, argv);
}
