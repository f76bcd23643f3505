// An SVE instruction in the program, in memory that belongs to no file, or in a library, as the first
// argument says; the second is the path of the plugin. Prints the length of vectors.
#include <dlfcn.h>
#include <stdio.h>
#include <string.h>
#include <sys/mman.h>

static unsigned long in_program(void) {
    unsigned long result;
    __asm__ volatile(".inst 0x0420e3e0\n mov %0, x0" : "=r"(result) : : "x0"); // CNTB X0
    return result;
}

typedef unsigned long (*function)(void);

static function in_memory(void) {
    static const unsigned code[] = {0x0420E3E0, 0xD65F03C0}; // CNTB X0; RET
    void* const memory = mmap(NULL, 4096, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    memcpy(memory, code, sizeof code);
    mprotect(memory, 4096, PROT_READ | PROT_EXEC);
    __builtin___clear_cache((char*)memory, (char*)memory + sizeof code);
    return (function)memory;
}

// Where a library was that has been unloaded there is room for code of the program's own.
static function in_place_of_library(const char* path) {
    void* const handle = dlopen(path, RTLD_NOW);
    char* const page = (char*)((unsigned long)dlsym(handle, "plugin_vector_bytes") & ~4095ul);
    dlclose(handle);
    void* const memory =
        mmap(page, 4096, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED_NOREPLACE, -1, 0);
    if (memory != page)
        return NULL;
    memcpy(memory, (const void*)in_memory(), 8);
    mprotect(memory, 4096, PROT_READ | PROT_EXEC);
    __builtin___clear_cache((char*)memory, (char*)memory + 8);
    return (function)memory;
}

int main(int argc, char** argv) {
    if (argc < 3)
        return 2;
    printf("before\n");
    fflush(stdout);
    if (strcmp(argv[1], "program") == 0)
        printf("%lu\n", in_program());
    if (strcmp(argv[1], "memory") == 0)
        printf("%lu\n", in_memory()());
    if (strcmp(argv[1], "place-of-library") == 0)
        printf("%lu\n", in_place_of_library(argv[2])());
    if (strcmp(argv[1], "library") == 0) {
        void* const handle = dlopen(argv[2], RTLD_NOW);
        printf("%lu\n", ((function)dlsym(handle, "plugin_vector_bytes"))());
    }
    return 0;
}
