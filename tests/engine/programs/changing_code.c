// Code that is written at run time and then changed again and again, in the way that the argument says.
#define _GNU_SOURCE
#include <pthread.h>
#include <sched.h>
#include <stdatomic.h>
#include <stdlib.h>
#include <unistd.h>

#include "tools.h"

static uint32_t random_number(uint32_t below) {
    static uint64_t state = 1;
    state = state * 6364136223846793005u + 1442695040888963407u;
    return (uint32_t)(state >> 33) % below;
}

// A graph of pieces of code that go to each other by all kinds of branches. Each adds a number to W0, counts
// W1 down, leaves if that is zero, and goes on at one of two other pieces, or calls a function before. A
// function adds a number as well, and returns or goes on to a later function. They lie across cache lines and
// pages.
enum { pieces = 96, piece_words = 7, functions = 32, function_words = 3, branch_kinds = 8 };
enum { end_word = pieces * piece_words, first_function_word = end_word + 1 };
struct piece {
    unsigned add, kind, bit, target[2];
};
static struct piece graph[pieces];
struct function {
    unsigned add, next; // `functions` if there is no next one
};
static struct function called[functions];
static uint32_t* graph_code;
static const uint64_t x28 = 0x5a5a3c3c;

static uint32_t offset_field(unsigned from, unsigned to, unsigned low, unsigned width) {
    return ((uint32_t)(to - from) & ((1u << width) - 1)) << low;
}

static void write_piece(unsigned number) {
    const struct piece* const piece = &graph[number];
    const unsigned start = number * piece_words;
    const unsigned to[2] = {piece->target[0] * piece_words, piece->target[1] * piece_words};
    uint32_t* const code = graph_code + start;
    code[0] = 0x11000000 | piece->add << 10;                         // ADD W0, W0, #add
    code[1] = 0x71000421;                                            // SUBS W1, W1, #1
    code[2] = 0x54000000 | offset_field(start + 2, end_word, 5, 19); // B.EQ
    const uint32_t short_branch = 0x36000000 | piece->bit << 19 | offset_field(start + 3, to[0], 5, 14);
    const uint32_t branch = offset_field(start + 3, to[0], 5, 19);
    const uint32_t call =
        0x94000000 | offset_field(start + 3, first_function_word + piece->bit * function_words, 0, 26);
    const uint32_t of_kind[branch_kinds] = {
        short_branch,            // TBZ W0, #bit
        short_branch | 28,       // TBZ W28, #bit
        0x35000000 | branch | 1, // CBNZ W1, always taken
        0x54000000 | branch,     // B.EQ, never taken
        0xD503201F,              // NOP
        0x10000002 | branch,     // ADR X2; ADD X2, X2, #0; BR X2
        call,                    // BL
        call,
    };
    code[3] = of_kind[piece->kind];
    code[4] = piece->kind == 5 ? 0x91000042 : 0x14000000 | offset_field(start + 4, to[1], 0, 26); // B
    code[5] = 0xD61F0040;
    publish(code, piece_words * sizeof *code);
}

static void choose_function(unsigned number) {
    struct function* const function = &called[number];
    const unsigned start = first_function_word + number * function_words;
    uint32_t* const code = graph_code + start;
    *function = (struct function){random_number(4096), functions};
    code[0] = 0x11000000 | function->add << 10; // ADD W0, W0, #add
    code[1] = 0xD65F03C0;                       // RET
    if (number + 1 < functions && random_number(2)) {
        function->next = number + 1 + random_number(functions - number - 1);
        code[1] = 0x14000000 |
                  offset_field(start + 1, first_function_word + function->next * function_words, 0, 26);
    }
    publish(code, function_words * sizeof *code);
}

static void choose_piece(unsigned number) {
    graph[number] = (struct piece){random_number(4096),
                                   random_number(branch_kinds),
                                   random_number(8),
                                   {random_number(pieces), random_number(pieces)}};
    write_piece(number);
}

static uint32_t run_graph(unsigned start, uint32_t count) {
    register uint64_t result __asm__("x0") = 0;
    register uint64_t counter __asm__("x1") = count;
    register const uint32_t* code __asm__("x3") = graph_code + start * piece_words;
    __asm__ volatile("mov x28, %3\n\tadr x4, 1f\n\tbr %2\n1:"
                     : "+r"(result), "+r"(counter)
                     : "r"(code), "r"(x28)
                     : "x2", "x4", "x28", "x30", "cc", "memory");
    return (uint32_t)result;
}

static uint32_t follow_graph(unsigned at, uint32_t count) {
    uint32_t sum = 0;
    for (;;) {
        const struct piece* const piece = &graph[at];
        sum += piece->add;
        if (--count == 0)
            return sum;
        if (piece->kind >= 6)
            for (unsigned n = piece->bit; n < functions; n = called[n].next)
                sum += called[n].add;
        unsigned taken = piece->kind == 2 || piece->kind == 5;
        if (piece->kind == 0)
            taken = !(sum >> piece->bit & 1);
        if (piece->kind == 1)
            taken = !(x28 >> piece->bit & 1);
        at = piece->target[!taken];
    }
}

static unsigned check_graph(unsigned rounds) {
    graph_code = map_code(NULL, 0);
    graph_code[end_word] = 0xD61F0080; // BR X4
    for (unsigned n = 0; n < pieces; ++n)
        choose_piece(n);
    for (unsigned n = 0; n < functions; ++n)
        choose_function(n);
    unsigned wrong = 0;
    for (unsigned round = 0; round < rounds; ++round) {
        for (unsigned n = random_number(3); n > 0; --n)
            choose_piece(random_number(pieces));
        if (random_number(8) == 0)
            choose_function(random_number(functions));
        const unsigned start = random_number(pieces), count = 1 + random_number(2000);
        wrong += run_graph(start, count) != follow_graph(start, count);
    }
    return wrong;
}

// A second thread calls the code after each change as well, and makes no system call in between.
static const uint32_t* volatile target;
static atomic_uint written, answered, others_result;
static void* call_too(void* argument) {
    for (unsigned n = 1;; ++n) {
        while (atomic_load(&written) < n)
            ;
        atomic_store(&others_result, call(target));
        atomic_store(&answered, n);
    }
    return argument;
}
static unsigned call_in_both(const uint32_t* code, unsigned value) {
    target = code;
    const unsigned n = atomic_fetch_add(&written, 1) + 1;
    while (atomic_load(&answered) < n)
        sched_yield();
    return (atomic_load(&others_result) != value) + (call(code) != value);
}

// The same place written in turn as it is, with changes of protection, when it has been mapped anew, and with
// code that has been moved there.
static unsigned rewrite(unsigned rounds) {
    uint32_t* const code = map_code(NULL, 0);
    unsigned wrong = 0;
    pthread_t other;
    pthread_create(&other, NULL, call_too, NULL);
    for (unsigned n = 0; n < rounds; ++n) {
        const char how = "wwwpamwumwva"[n % 12];
        uint32_t* from = code;
        switch (how) {
        case 'p':
            mprotect(code, code_bytes, writable);
            break;
        case 'u':
            munmap(code, code_bytes);
            // fall through
        case 'a':
            map_code(code, MAP_FIXED);
            break;
        case 'm':
        case 'v':
            from = map_code(NULL, 0);
            write_function(from, 9);
            publish(from, 8);
            wrong += how == 'v' && call(from) != 9;
        }
        write_function(from, n);
        if (how != 'a' && how != 'u') // there was no code before: no maintenance is needed
            publish(from, 8);
        if (how == 'p')
            mprotect(code, code_bytes, n % 24 < 12 ? executable : PROT_EXEC);
        if (from != code)
            mremap(from, code_bytes, code_bytes, MREMAP_MAYMOVE | MREMAP_FIXED, code);
        wrong += call_in_both(code, n & 0xFFFF);
        if (how == 'p')
            mprotect(code, code_bytes, writable | PROT_EXEC);
    }
    return wrong;
}

// By way of another mapping of the same file.
static unsigned rewrite_elsewhere(unsigned rounds) {
    const int file = memfd_create("code", 0);
    if (file < 0 || ftruncate(file, code_bytes) != 0)
        return 1;
    uint32_t* const data = mmap(NULL, code_bytes, writable, MAP_SHARED, file, 0);
    uint32_t* const code = mmap(NULL, code_bytes, executable, MAP_SHARED, file, 0);
    unsigned wrong = 0;
    for (unsigned n = 0; n < rounds; ++n) {
        write_function(data, n);
        publish(code, 8);
        wrong += call(code) != (n & 0xFFFF);
    }
    return wrong;
}

// RDVL X0, #value; RET: an instruction that the processor may not have.
static unsigned rewrite_sve(unsigned rounds) {
    uint32_t* const code = map_code(NULL, 0);
    unsigned wrong = 0;
    for (unsigned n = 0; n < rounds; ++n) {
        code[0] = 0x04BF5000 | n % 32 << 5;
        code[1] = 0xD65F03C0;
        publish(code, 8);
        wrong += call(code) != n % 32 * 128;
    }
    return wrong;
}

// A function that rewrites the instructions right behind its own cache maintenance: STR W1, [X0], then the
// maintenance, and behind the barriers the target, MOV W0, #1, which is to become MOV W0, #value.
static unsigned rewrite_own(unsigned rounds) {
    static const uint32_t words[] = {0xB9000001, 0xD50B7B20, 0xD5033B9F, 0xD50B7520,
                                     0xD5033B9F, 0xD5033FDF, 0x52800020, 0xD65F03C0};
    uint32_t* const code = map_code(NULL, 0);
    memcpy(code, words, sizeof words);
    publish(code, sizeof words);
    unsigned (*const own)(uint32_t*, uint32_t) = (unsigned (*)(uint32_t*, uint32_t))(void*)code;
    unsigned wrong = 0;
    for (unsigned n = 0; n < rounds; ++n)
        wrong += own(code + 6, 0x52800000 | (n & 0xFFFF) << 5) != (n & 0xFFFF);
    return wrong;
}

// One thread stays in a loop that only branches; the other changes the loop to leave, or takes it away.
static uint32_t* loop;
static atomic_uint entered;
static void* run_loop(void* argument) {
    atomic_fetch_add(&entered, 1);
    return (void*)(uintptr_t)call(argument);
}
static unsigned leave_loop(unsigned rounds) {
    unsigned wrong = 0;
    loop = map_code(NULL, 0);
    for (unsigned n = 0; n < rounds; ++n) {
        // 1: B 2f; NOP; 2: CBZ WZR, 1b; MOV W0, #n; RET
        const uint32_t code[] = {0x14000002, 0xD503201F, 0x34FFFFDF, 0x52800000 | n << 5, 0xD65F03C0};
        memcpy(loop, code, sizeof code);
        publish(loop, sizeof code);
        pthread_t threads[2];
        atomic_store(&entered, 0);
        for (unsigned t = 0; t < 2; ++t)
            pthread_create(&threads[t], NULL, run_loop, loop);
        while (atomic_load(&entered) < 2)
            usleep(100);
        usleep(2000);
        loop[n % 2 * 2] =
            n % 2 ? 0xD503201F : 0x14000003; // the second branch becomes NOP, or the first goes to the end
        publish(loop, sizeof code);
        for (unsigned t = 0; t < 2; ++t) {
            void* result;
            pthread_join(threads[t], &result);
            wrong += (uintptr_t)result != n;
        }
    }
    return wrong;
}

int main(int argc, char** argv) {
    static const struct {
        const char* name;
        unsigned (*run)(unsigned);
    } ways[] = {{"graph", check_graph}, {"rewrite", rewrite}, {"elsewhere", rewrite_elsewhere},
                {"sve", rewrite_sve},   {"own", rewrite_own}, {"loop", leave_loop}};
    for (unsigned n = 0; argc > 2 && n < sizeof ways / sizeof *ways; ++n)
        if (strcmp(argv[1], ways[n].name) == 0) {
            const unsigned wrong = ways[n].run((unsigned)atoi(argv[2]));
            printf("%s: %u wrong\n", argv[1], wrong);
            return wrong != 0;
        }
    return 2;
}
