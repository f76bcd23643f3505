// What a dynamically linked program has to do with its interpreter. The argument is the path of the plugin.
#define _GNU_SOURCE
#include <dlfcn.h>
#include <link.h>
#include <math.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/auxv.h>
#include <unistd.h>

__attribute__((constructor)) static void first(void) { printf("constructor\n"); }
__attribute__((destructor)) static void last(void) { printf("destructor\n"); }
static void at_exit(void) { printf("at exit\n"); }

static int twice(int value) { return 2 * value; }

static int count_module(struct dl_phdr_info* info, size_t size, void* count) {
    const char* const name = strrchr(info->dlpi_name, '/');
    if (!strstr(info->dlpi_name, "vdso"))
        printf("module %d %s\n", (*(int*)count)++, name ? name + 1 : info->dlpi_name);
    return 0;
}

static int plugin(const char* path, int value) {
    void* const handle = dlopen(path, RTLD_NOW);
    if (!handle) {
        printf("%s\n", dlerror());
        return -1;
    }
    int (*const call)(int (*)(int), int) = (int (*)(int (*)(int), int))dlsym(handle, "plugin_call");
    const int first_result = call(twice, value), second_result = call(twice, value + 1);
    dlclose(handle);
    return 1000 * first_result + second_result;
}

int main(int argc, char** argv) {
    atexit(at_exit);
    const char* const path = argc > 1 ? argv[1] : "";
    printf("%.17g %.17g\n", exp(1.0 / argc), pow(argc, 0.25));
    for (int round = 0; round < 4; ++round)
        printf("plugin %d\n", plugin(path, round));
    printf("missing %d\n", plugin("./no-such-plugin.so", 1));

    int modules = 0;
    dl_iterate_phdr(count_module, &modules);
    Dl_info of_interpreter;
    const unsigned long base = getauxval(AT_BASE);
    printf("base is the interpreter %d\n",
           dladdr((void*)base, &of_interpreter) && (unsigned long)of_interpreter.dli_fbase == base);
    char own[4096] = "", resolved[4096] = "";
    if (readlink("/proc/self/exe", own, sizeof own - 1) < 0 || !realpath(argv[0], resolved))
        return 1;
    printf("own executable %d\n", strcmp(own, resolved) == 0);
    printf("preloaded %s\n", getenv("LD_BIND_NOW") ? "now" : "lazily");
    return 21;
}
