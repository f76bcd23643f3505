// Threads, in the way that the argument says.
#define _GNU_SOURCE
#include <pthread.h>
#include <semaphore.h>
#include <signal.h>
#include <stdatomic.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

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
            if (pthread_create(&id[n], NULL, work, (void*)(uintptr_t)n) != 0)
                printf("cannot create\n");
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
static void* post(void* argument) {
    sem_post(&done);
    return argument;
}
static void detached(void) {
    sem_init(&done, 0, 0);
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED);
    pthread_attr_setstacksize(&attributes, 65536 * 4);
    for (unsigned n = 0; n < 40; ++n) {
        pthread_t id;
        pthread_create(&id, &attributes, post, NULL);
    }
    for (unsigned n = 0; n < 40; ++n)
        sem_wait(&done);
    printf("all detached threads have run\n");
}

// A value goes from thread to thread in turn.
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
    return NULL;
}
static void turns(void) {
    pthread_t id[4];
    for (unsigned n = 0; n < 4; ++n)
        pthread_create(&id[n], NULL, take_turns, (void*)(uintptr_t)n);
    for (unsigned n = 0; n < 4; ++n)
        pthread_join(id[n], NULL);
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

// One thread rewrites, or maps anew, the code that another calls through a pointer. The other makes no system
// call between its calls.
typedef unsigned (*function)(void);
static atomic_uint written, called;
enum { changes = 15 };
static unsigned results[changes];
static function volatile target;
static void* call_changing(void* argument) {
    for (unsigned n = 0; n < changes; ++n) {
        while (atomic_load(&written) <= n)
            ;
        results[n] = target();
        atomic_store(&called, n + 1);
    }
    return argument;
}
static void changing_code(void) {
    const int writable = PROT_READ | PROT_WRITE;
    unsigned* const code = mmap(NULL, 65536, writable | PROT_EXEC, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    target = (function)code;
    pthread_t id;
    pthread_create(&id, NULL, call_changing, NULL);
    unsigned wrong = 0;
    for (unsigned n = 0; n < changes; ++n) {
        if (n % 5 == 4) {
            munmap(code, 65536);
            mmap(code, 65536, writable | PROT_EXEC, MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED, -1, 0);
        }
        code[0] = 0x52800000 | n << 5; // MOV W0, #n; RET
        code[1] = 0xD65F03C0;
        __builtin___clear_cache((char*)code, (char*)(code + 2));
        atomic_store(&written, n + 1);
        while (atomic_load(&called) <= n)
            usleep(1000);
        wrong += results[n] != n || target() != n;
    }
    pthread_join(id, NULL);
    printf("changing code, wrong %u\n", wrong);
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
static int fork_with_threads(void) {
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
        int status = 0;
        if (waitpid(child, &status, 0) != child || !WIFEXITED(status))
            return 1;
        printf("child %d\n", WEXITSTATUS(status));
    }
    return 0;
}

int main(int argc, char** argv) {
    const char* const way = argc > 1 ? argv[1] : "";
    pthread_t id;
    printf("before %s\n", way);
    fflush(stdout);
    if (strcmp(way, "work") == 0) {
        create_and_join();
        detached();
        turns();
        broken_lists();
        changing_code();
    }
    if (strcmp(way, "fork") == 0)
        return fork_with_threads();
    // The process ends while others spin, wait, and start threads.
    if (strcmp(way, "return") == 0 || strcmp(way, "exit-elsewhere") == 0) {
        for (int n = 0; n < 3; ++n) {
            pthread_create(&id, NULL, spin, NULL);
            pthread_create(&id, NULL, wait_forever, NULL);
        }
        if (way[0] == 'r')
            return 33;
        pthread_create(&id, NULL, exit_group, (void*)34);
        pthread_join(id, NULL);
    }
    // The process outlives the thread that it started with.
    if (strcmp(way, "first-thread-ends") == 0) {
        pthread_create(&id, NULL, exit_late, NULL);
        pthread_exit(NULL);
    }
    if (strcmp(way, "fault-elsewhere") == 0) {
        pthread_create(&id, NULL, (void* (*)(void*))16, NULL);
        pthread_join(id, NULL);
    }
    if (strcmp(way, "cancel") == 0) {
        sem_init(&done, 0, 0);
        pthread_create(&id, NULL, wait_to_be_cancelled, NULL);
        sem_wait(&done);
        pthread_cancel(id);
        pthread_join(id, NULL);
    }
    printf("after %s\n", way);
    return 0;
}
