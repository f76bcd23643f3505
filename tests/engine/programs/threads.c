// Threads, in the way that the argument says.
#define _GNU_SOURCE
#include <pthread.h>
#include <semaphore.h>
#include <signal.h>
#include <stdatomic.h>
#include <stdlib.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "tools.h"

static pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
static pthread_cond_t changed = PTHREAD_COND_INITIALIZER;
static _Thread_local unsigned own = 7;
static unsigned shared;
static atomic_uint atomic_sum, destroyed;
static pthread_key_t key;

static void destroy(void* value) { atomic_fetch_add(&destroyed, (unsigned)(uintptr_t)value); }

static void* work(void* argument) {
    const unsigned n = (unsigned)(uintptr_t)argument;
    pthread_setspecific(key, (void*)(uintptr_t)1);
    char* const memory = malloc(1000 + n);
    memset(memory, (int)n, 1000 + n);
    for (unsigned round = 0; round < 50; ++round) {
        own += n;
        pthread_mutex_lock(&mutex);
        ++shared;
        pthread_mutex_unlock(&mutex);
        atomic_fetch_add(&atomic_sum, (unsigned char)memory[round]);
    }
    free(memory);
    if (n % 3 == 0)
        pthread_exit((void*)(uintptr_t)own);
    return (void*)(uintptr_t)own;
}

static void create_and_join(void) {
    enum { batches = 10, threads = 16 };
    uint64_t sum = 0;
    pthread_key_create(&key, destroy);
    for (unsigned batch = 0; batch < batches; ++batch) {
        pthread_t id[threads];
        for (unsigned n = 0; n < threads; ++n)
            pthread_create(&id[n], NULL, work, (void*)(uintptr_t)n);
        for (unsigned n = 0; n < threads; ++n) {
            void* result;
            pthread_join(id[n], &result);
            sum = sum * 3 + (uintptr_t)result;
        }
    }
    printf("joined %llu, shared %u, atomic %u, destroyed %u, own %u\n", (unsigned long long)sum, shared,
           atomic_sum, destroyed, own);
}

static sem_t done;

// A value goes from thread to thread in turn. They are detached.
static unsigned turn;
static void* take_turns(void* argument) {
    const unsigned n = (unsigned)(uintptr_t)argument;
    for (unsigned round = 0; round < 30; ++round) {
        pthread_mutex_lock(&mutex);
        while (turn % 4 != n)
            pthread_cond_wait(&changed, &mutex);
        ++turn;
        pthread_cond_broadcast(&changed);
        pthread_mutex_unlock(&mutex);
    }
    sem_post(&done);
    return NULL;
}
static void turns(void) {
    pthread_t id;
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED);
    sem_init(&done, 0, 0);
    for (unsigned n = 0; n < 4; ++n)
        pthread_create(&id, &attributes, take_turns, (void*)(uintptr_t)n);
    for (unsigned n = 0; n < 4; ++n)
        sem_wait(&done);
    printf("turns %u\n", turn);
}

// A thread ends with a list of robust mutexes that cannot be read to its end.
struct robust_entry {
    void* next;
    uint32_t futex;
};
struct robust_list {
    void* first;
    long futex_offset;
    void* pending;
};
static void* leave_list(void* list) {
    struct robust_list* const head = list;
    if ((uintptr_t)list > 4096 && (uintptr_t)head->first > 4096)
        ((struct robust_entry*)head->first)->futex = (uint32_t)syscall(SYS_gettid);
    syscall(SYS_set_robust_list, list, sizeof *head);
    return NULL;
}
static void broken_lists(void) {
    struct robust_entry owned = {(void*)16, 0};
    struct robust_list to_nowhere = {(void*)16, 8, NULL}, broken = {&owned, 8, NULL},
                       misaligned = {&owned, 9, (void*)32};
    void* const lists[] = {(void*)16, &to_nowhere, &misaligned, &broken};
    for (unsigned n = 0; n < sizeof lists / sizeof *lists; ++n) {
        pthread_t id;
        pthread_create(&id, NULL, leave_list, lists[n]);
        pthread_join(id, NULL);
        printf("broken list %u, owner died %u\n", n, owned.futex >> 30 & 1);
    }
}

static void* spin(void* argument) {
    for (volatile uint64_t n = 0;; ++n)
        ;
    return argument;
}
static void* wait_forever(void* argument) {
    for (;;)
        pause();
    return argument;
}
static void* wait_to_be_cancelled(void* argument) {
    pthread_setcanceltype(PTHREAD_CANCEL_ASYNCHRONOUS, NULL);
    sem_post(&done);
    return spin(argument);
}
static void* exit_group(void* argument) {
    printf("leaving\n");
    exit((int)(uintptr_t)argument);
}
static void* exit_late(void* argument) {
    usleep(50000);
    printf("last thread\n");
    return argument;
}

static void* allocate(void* argument) {
    for (;;)
        free(malloc(100));
    return argument;
}

// A child made by fork has one thread, whatever the others were doing.
static void fork_with_threads(char** arguments) {
    pthread_t id;
    pthread_create(&id, NULL, spin, NULL);
    pthread_create(&id, NULL, allocate, NULL);
    for (int n = 0; n < 5; ++n) {
        const pid_t child = fork();
        if (child == 0) {
            char* const memory = malloc(100000);
            memset(memory, n, 100000);
            exit(memory[99999] + 20);
        }
        printf("child %d\n", status_of(child));
    }
    exit(0);
}

static void run_and_join(void* (*run)(void*), void* argument) {
    pthread_t id;
    pthread_create(&id, NULL, run, argument);
    pthread_join(id, NULL);
}

static void all_work(char** arguments) {
    create_and_join();
    turns();
    broken_lists();
}
// The process ends while others spin, wait, and start threads.
static void end_here(char** arguments) {
    pthread_t id;
    for (int n = 0; n < 3; ++n) {
        pthread_create(&id, NULL, spin, NULL);
        pthread_create(&id, NULL, wait_forever, NULL);
    }
    if (arguments)
        exit(33);
}
static void end_elsewhere(char** arguments) {
    end_here(NULL);
    run_and_join(exit_group, (void*)34);
}
// The process outlives the thread that it started with.
static void end_first_thread(char** arguments) {
    pthread_t id;
    pthread_create(&id, NULL, exit_late, arguments);
    pthread_exit(NULL);
}
static void fault_elsewhere(char** arguments) { run_and_join((void* (*)(void*))16, arguments); }
static void cancel(char** arguments) {
    pthread_t id;
    sem_init(&done, 0, 0);
    pthread_create(&id, NULL, wait_to_be_cancelled, arguments);
    sem_wait(&done);
    pthread_cancel(id);
    pthread_join(id, NULL);
}

int main(int argc, char** argv) {
    static const struct way ways[] = {{"work", all_work},
                                      {"fork", fork_with_threads},
                                      {"return", end_here},
                                      {"exit-elsewhere", end_elsewhere},
                                      {"first-thread-ends", end_first_thread},
                                      {"fault-elsewhere", fault_elsewhere},
                                      {"cancel", cancel},
                                      {NULL, NULL}};
    return run_way(ways, argv);
}
