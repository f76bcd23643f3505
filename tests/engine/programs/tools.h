// What several of the programs use.
#pragma once

#include <stdint.h>
#include <stdio.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/wait.h>

// One of the things that a program does; the first argument names it.
struct way {
    const char* name;
    void (*run)(char** arguments); // those behind the name
};

// Runs the way that arguments[1] names, in a table that ends with a null; returns the program's status.
static inline int run_way(const struct way* ways, char** arguments) {
    setvbuf(stdout, NULL, _IONBF, 0);
    for (; arguments[1] && ways->name; ++ways)
        if (strcmp(arguments[1], ways->name) == 0) {
            printf("before %s\n", ways->name);
            ways->run(arguments + 2);
            printf("after %s\n", ways->name);
            return 0;
        }
    return 2;
}

// The status that the child ends with, 1000 more than the number if it ends by a signal, or -1.
static inline int status_of(pid_t child) {
    int status;
    if (child < 0 || waitpid(child, &status, 0) != child)
        return -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status);
}

// Code that is written at run time.
enum { code_bytes = 65536, writable = PROT_READ | PROT_WRITE, executable = PROT_READ | PROT_EXEC };
static inline uint32_t* map_code(void* address, int flags) {
    return mmap(address, code_bytes, writable | PROT_EXEC, MAP_PRIVATE | MAP_ANONYMOUS | flags, -1, 0);
}
static inline void publish(void* code, size_t bytes) {
    __builtin___clear_cache((char*)code, (char*)code + bytes);
}
// MOV W0, #value; RET.
static inline void write_function(uint32_t* code, unsigned value) {
    code[0] = 0x52800000 | (value & 0xFFFF) << 5;
    code[1] = 0xD65F03C0;
}
static inline unsigned call(const uint32_t* code) {
    unsigned (*volatile function)(void) = (unsigned (*)(void))(void*)code;
    return function();
}
