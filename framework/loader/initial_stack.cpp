#include <algorithm>
#include <cerrno>
#include <cstring>
#include <sys/mman.h>
#include <sys/resource.h>
#include <vector>

#include "framework/loader/program_image.h"
#include "framework/runtime/announced_sve.h"
#include "framework/runtime/executable_ranges.h"
#include "framework/runtime/process_end.h"

namespace {

constexpr std::uint64_t default_stack_bytes = 8 << 20;
constexpr std::uint64_t least_stack_bytes = 256 << 10; // beside the arguments
constexpr std::uint64_t guard_bytes = 1 << 20;

// Bits of AT_HWCAP and AT_HWCAP2 that promise SVE or SME, which the program must not choose its code by
// unless the user says so: what runs here is what a processor without them runs, but for the instructions
// that the client takes over.
constexpr std::uint64_t bits(std::initializer_list<unsigned> numbers) {
    std::uint64_t result = 0;
    for (const unsigned number : numbers)
        result |= std::uint64_t{1} << number;
    return result;
}
constexpr std::uint64_t hwcap_sve = bits({22});
constexpr std::uint64_t hidden_hwcap2 =
    bits({1, 2, 3, 4, 5, 6, 9, 10, 11, 12, 33, 36, 45}) | // SVE2 and extensions
    bits({23, 24, 25, 26, 27, 28, 29, 30, 37, 38, 39, 40, 41, 42, 57, 58, 59, 60, 61, 62}); // SME

std::uint64_t stack_size() {
    rlimit limit;
    if (getrlimit(RLIMIT_STACK, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY)
        return default_stack_bytes;
    return std::max<std::uint64_t>(limit.rlim_cur, least_stack_bytes);
}

// A downward-growing area in which the stack's content is laid out.
struct stack_writer {
    std::uint64_t top;

    std::uint64_t put(const void* data, std::size_t size) {
        top -= size;
        std::memcpy(reinterpret_cast<void*>(top), data, size);
        return top;
    }
    std::uint64_t put_string(const char* text) { return put(text, std::strlen(text) + 1); }
};

std::size_t bytes_of(char* const* strings) {
    std::size_t total = sizeof(char*);
    for (; *strings; ++strings)
        total += std::strlen(*strings) + 1 + sizeof(char*);
    return total;
}

struct auxiliary_strings {
    std::uint64_t path;
    std::uint64_t platform;
    std::uint64_t random;
};

// The program's auxiliary vector: the host's, in its order, with what concerns the image replaced.
std::vector<std::uint64_t> auxiliary_vector(const program_image& image, std::uint64_t interpreter_bias,
                                            const Elf64_auxv_t* host, const auxiliary_strings& strings) {
    std::vector<std::uint64_t> result;
    const auto add = [&](std::uint64_t type, std::uint64_t value) {
        result.push_back(type);
        result.push_back(value);
    };
    for (; host->a_type != AT_NULL; ++host) {
        const std::uint64_t value = host->a_un.a_val;
        switch (host->a_type) {
        case AT_PHDR:
            add(AT_PHDR, image.header_address);
            break;
        case AT_PHENT:
            add(AT_PHENT, sizeof(Elf64_Phdr));
            break;
        case AT_PHNUM:
            add(AT_PHNUM, image.header_count);
            break;
        case AT_BASE:
            add(AT_BASE, interpreter_bias);
            break;
        case AT_ENTRY:
            add(AT_ENTRY, image.entry);
            break;
        case AT_EXECFN:
            add(AT_EXECFN, strings.path);
            break;
        case AT_PLATFORM:
            add(AT_PLATFORM, strings.platform);
            break;
        case AT_RANDOM:
            add(AT_RANDOM, strings.random);
            break;
        case AT_HWCAP:
            add(AT_HWCAP, (value & ~hwcap_sve) | (sve_is_announced ? hwcap_sve : 0));
            break;
        case AT_HWCAP2:
            add(AT_HWCAP2, value & ~hidden_hwcap2);
            break;
        case AT_PAGESZ:
        case AT_FLAGS:
        case AT_UID:
        case AT_EUID:
        case AT_GID:
        case AT_EGID:
        case AT_SECURE:
        case AT_CLKTCK:
        case AT_SYSINFO_EHDR:
        case 51: // AT_MINSIGSTKSZ
            add(host->a_type, value);
            break;
        default: // the rest, as restartable sequences, is not offered
            break;
        }
    }
    add(AT_NULL, 0);
    return result;
}

const void* host_value(const Elf64_auxv_t* host, std::uint64_t type) {
    for (; host->a_type != AT_NULL; ++host)
        if (host->a_type == type)
            return reinterpret_cast<const void*>(host->a_un.a_val);
    return nullptr;
}

// Maps the stack; returns its upper end, or 0.
std::uint64_t map_stack(std::uint64_t size, bool executable) {
    void* const mapped = mmap(nullptr, guard_bytes + size, PROT_READ | PROT_WRITE,
                              MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE | MAP_STACK, -1, 0);
    if (mapped == MAP_FAILED || mprotect(mapped, guard_bytes, PROT_NONE) != 0)
        return 0;
    const std::uint64_t start = reinterpret_cast<std::uint64_t>(mapped) + guard_bytes;
    if (executable)
        add_executable_range(start, start + size);
    return start + size;
}

} // namespace

std::uint64_t build_initial_stack(const program_image& image, std::uint64_t interpreter_bias,
                                  const char* path, char* const* arguments, char* const* environment,
                                  const Elf64_auxv_t* host_auxiliary, load_error& error) {
    const std::uint64_t page = page_size();
    const std::uint64_t content = bytes_of(arguments) + bytes_of(environment) + std::strlen(path) + 4096;
    const std::uint64_t size = (std::max(stack_size(), content + least_stack_bytes) + page - 1) & ~(page - 1);
    stack_writer stack{map_stack(size, image.executable_stack)};
    if (stack.top == 0) {
        error = {status_cannot_execute, std::string("its stack cannot be mapped: ") + std::strerror(errno)};
        return 0;
    }

    stack.top -= 8; // the kernel ends the stack with a null word
    auxiliary_strings strings{};
    strings.path = stack.put_string(path);
    const auto put_all = [&](char* const* source) {
        std::size_t count = 0;
        while (source[count])
            ++count;
        // From the last to the first, so that they stand in ascending order, as programs that rewrite their
        // title expect.
        std::vector<std::uint64_t> addresses(count + 1);
        for (std::size_t n = count; n-- > 0;)
            addresses[n] = stack.put_string(source[n]);
        return addresses;
    };
    stack_layout layout{};
    layout.environment_end = stack.top;
    const std::vector<std::uint64_t> environment_vector = put_all(environment);
    layout.environment = stack.top;
    const std::vector<std::uint64_t> argument_vector = put_all(arguments);
    layout.arguments = stack.top;

    strings.platform = stack.put_string("aarch64");
    if (const void* random = host_value(host_auxiliary, AT_RANDOM))
        strings.random = stack.put(random, 16);
    const std::vector<std::uint64_t> auxiliary =
        auxiliary_vector(image, interpreter_bias, host_auxiliary, strings);
    std::vector<std::uint64_t> vectors{argument_vector.size() - 1};
    for (const auto* part : {&argument_vector, &environment_vector, &auxiliary})
        vectors.insert(vectors.end(), part->begin(), part->end());

    stack.top = (stack.top - vectors.size() * 8) & ~std::uint64_t{15};
    std::memcpy(reinterpret_cast<void*>(stack.top), vectors.data(), vectors.size() * 8);
    layout.sp = stack.top;
    layout.auxiliary_bytes = auxiliary.size() * 8;
    layout.auxiliary = stack.top + vectors.size() * 8 - layout.auxiliary_bytes;
    describe_process(layout);
    return stack.top;
}
