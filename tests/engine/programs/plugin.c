// A library that dynamic.c loads while it runs.
#include <stdio.h>

static _Thread_local int calls = 100;
static const char* const names[] = {"none", "one", "many"}; // pointers that are relocated

__attribute__((constructor)) static void loaded(void) { printf("plugin loaded\n"); }
__attribute__((destructor)) static void unloaded(void) { printf("plugin unloaded\n"); }

int plugin_call(int (*back)(int), int value) {
    ++calls;
    printf("plugin %s\n", names[value > 2 ? 2 : value]);
    return back(value) + calls;
}

// The length of vectors in bytes, CNTB.
unsigned long plugin_vector_bytes(void) {
    unsigned long result;
    __asm__(".inst 0x0420e3e0\n mov %0, x0" : "=r"(result) : : "x0");
    return result;
}
