// What a client asks of the process: output, modules, memory, its end.
#include "framework/ir/services.h"

#include "dr_api.h"
#include "framework/loader/module.h"

#include <algorithm>
#include <cassert>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <unistd.h>

static_assert(sizeof(module_data_t) == 96 && offsetof(module_data_t, full_path) == 56);
static_assert(sizeof(opnd_t) == 16);

unsigned client_log_level = 0;

namespace {

const char* name = "Tool";
const char* report_url = "your tool's issue tracker";

// Longest text of one dr_fprintf, and its terminator.
constexpr std::size_t print_buffer_bytes = 2560;

ssize_t print(file_t file, const char* format, va_list arguments) {
    char text[print_buffer_bytes];
    const int length = std::vsnprintf(text, sizeof text, format, arguments);
    if (length < 0)
        return -1;
    return write(file, text, std::min<std::size_t>(static_cast<std::size_t>(length), sizeof text - 1));
}

void describe(module_data_t* data, const loaded_module& module, char* path) {
    *data = {};
    data->start = module.start;
    data->end = module.end;
    data->entry_point = module.entry_point;
    data->full_path = path;
    const char* slash = std::strrchr(path, '/');
    data->names.file_name = slash != nullptr ? slash + 1 : path;
    data->contiguous = true;
}

module_data_t* copy_module(const loaded_module* module) {
    if (module == nullptr)
        return nullptr;
    const std::size_t path_bytes = module->full_path.size() + 1;
    // The path stands behind the record, so that one free releases both.
    void* memory = std::malloc(sizeof(module_data_t) + path_bytes);
    if (memory == nullptr)
        return nullptr;
    char* path = static_cast<char*>(memory) + sizeof(module_data_t);
    std::memcpy(path, module->full_path.c_str(), path_bytes);
    auto* data = static_cast<module_data_t*>(memory);
    describe(data, *module, path);
    return data;
}

// Clients look up the module of every block and give the copy back at once: each thread keeps its last one.
struct kept_copy {
    module_data_t* copy = nullptr;
    module_data_t original;
    bool lent = false;
    std::uint64_t version = 0, start = 0, end = 0;

    ~kept_copy() {
        if (!lent)
            std::free(copy);
        copy = nullptr;
    }
};
thread_local kept_copy kept;

module_data_t* look_up_module(byte* pc) {
    const auto number = reinterpret_cast<std::uint64_t>(pc);
    const std::uint64_t version = modules_version.load();
    if (kept.version == version && number >= kept.start && number < kept.end && !kept.lent) {
        kept.lent = kept.copy != nullptr;
        if (kept.copy)
            *kept.copy = kept.original;
        return kept.copy;
    }
    const module_place place = find_module(pc);
    module_data_t* const copy = copy_module(place.module.get());
    if (!kept.lent) {
        std::free(kept.copy);
        kept.copy = copy;
        if (copy)
            kept.original = *copy;
        kept.lent = copy != nullptr;
        kept.version = version;
        kept.start = place.start;
        kept.end = place.end;
    }
    return copy;
}

void free_module(module_data_t* data) {
    if (data != nullptr && data == kept.copy)
        kept.lent = false;
    else
        std::free(data);
}

} // namespace

const char* client_name() { return name; }
const char* client_report_url() { return report_url; }

extern "C" {

file_t our_stdout = STDOUT_FILENO;
file_t our_stderr = STDERR_FILENO;
file_t our_stdin = STDIN_FILENO;

bool dr_set_client_name(const char* client, const char* report_URL) {
    if (client == nullptr || report_URL == nullptr)
        return false;
    name = client;
    report_url = report_URL;
    return true;
}

void dr_abort(void) { _exit(255); }

// The engine gives each thread a cache of its own.
bool dr_using_all_private_caches(void) { return true; }

ssize_t dr_fprintf(file_t f, const char* fmt, ...) {
    va_list arguments;
    va_start(arguments, fmt);
    const ssize_t written = print(f, fmt, arguments);
    va_end(arguments);
    return written;
}

void dr_log(void*, uint mask, uint level, const char* fmt, ...) {
    if ((mask & DR_LOG_ALL) == 0 || level > client_log_level)
        return;
    va_list arguments;
    va_start(arguments, fmt);
    print(our_stderr, fmt, arguments);
    va_end(arguments);
}

module_data_t* dr_get_main_module(void) { return copy_module(main_module()); }
module_data_t* dr_lookup_module(byte* pc) { return look_up_module(pc); }
void dr_free_module_data(module_data_t* data) { free_module(data); }

// The size stands in front of the memory, to hold the caller to freeing what it allocated.
static constexpr std::size_t allocation_header = 16;

void* dr_thread_alloc(void*, size_t size) {
    char* memory = static_cast<char*>(std::malloc(allocation_header + size));
    if (memory == nullptr) {
        dr_fprintf(our_stderr, "%s: out of memory\n", name);
        dr_abort();
    }
    std::memcpy(memory, &size, sizeof size);
    return memory + allocation_header;
}

void dr_thread_free(void*, void* mem, [[maybe_unused]] size_t size) {
    char* memory = static_cast<char*>(mem) - allocation_header;
    assert(std::memcmp(memory, &size, sizeof size) == 0);
    std::free(memory);
}

app_pc dr_fragment_app_pc(void* tag) { return static_cast<app_pc>(tag); }

} // extern "C"
