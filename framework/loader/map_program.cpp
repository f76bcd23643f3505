#include <algorithm>
#include <bit>
#include <cerrno>
#include <cstring>
#include <sys/mman.h>
#include <unistd.h>

#include "framework/loader/program_image.h"
#include "framework/runtime/executable_ranges.h"
#include "framework/runtime/process_end.h"

namespace {

std::uint64_t round_down(std::uint64_t value, std::uint64_t unit) { return value & ~(unit - 1); }
std::uint64_t round_up(std::uint64_t value, std::uint64_t unit) { return round_down(value + unit - 1, unit); }

void* pointer(std::uint64_t address) { return reinterpret_cast<void*>(address); }

// Reserves the range without access; returns its address, or 0. With `fixed` no other place will do.
std::uint64_t reserve(std::uint64_t address, std::uint64_t size, bool fixed) {
    constexpr int flags = MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE;
    void* const mapped =
        mmap(pointer(address), size, PROT_NONE, flags | (fixed ? MAP_FIXED_NOREPLACE : 0), -1, 0);
    if (mapped == MAP_FAILED)
        return 0;
    if (fixed && mapped != pointer(address)) { // a kernel that does not know the flag
        munmap(mapped, size);
        errno = EEXIST;
        return 0;
    }
    return reinterpret_cast<std::uint64_t>(mapped);
}

// Reserves room for an image of that size whose addresses may be moved by any multiple of the alignment, at
// the wanted address if that is free and not 0.
std::uint64_t reserve_aligned(std::uint64_t wanted, std::uint64_t size, std::uint64_t alignment) {
    if (wanted) {
        if (const std::uint64_t base = reserve(round_up(wanted, alignment), size, true))
            return base;
    }
    const std::uint64_t wide = reserve(0, size + alignment, false);
    if (!wide)
        return 0;
    // What sticks out is given back: the break is to grow there.
    const std::uint64_t base = round_up(wide, alignment);
    if (base > wide)
        munmap(pointer(wide), base - wide);
    if (wide + alignment > base)
        munmap(pointer(base + size), wide + alignment - base);
    return base;
}

int protection_of(const Elf64_Phdr& segment) {
    const bool readable = segment.p_flags & (PF_R | PF_X); // code is read in order to be translated
    return (readable ? PROT_READ : 0) | (segment.p_flags & PF_W ? PROT_WRITE : 0);
}

bool map_segment(int descriptor, const Elf64_Phdr& segment, std::uint64_t bias) {
    const std::uint64_t page = page_size();
    const std::uint64_t start = bias + segment.p_vaddr;
    const std::uint64_t file_end = start + segment.p_filesz;
    const std::uint64_t memory_end = start + segment.p_memsz;
    const std::uint64_t first_page = round_down(start, page);
    const int protection = protection_of(segment);

    std::uint64_t anonymous_start = first_page;
    if (segment.p_filesz > 0) {
        const std::uint64_t offset = segment.p_offset - (start - first_page);
        anonymous_start = round_up(file_end, page);
        const std::uint64_t mapped_bytes = anonymous_start - first_page;
        void* const mapped = mmap(pointer(first_page), mapped_bytes, protection | PROT_WRITE,
                                  MAP_PRIVATE | MAP_FIXED, descriptor, static_cast<off_t>(offset));
        if (mapped == MAP_FAILED)
            return false;
        // Zeroed memory, if there is any, takes the rest of the last page. Programs use what lies behind
        // their last variable there as a first heap.
        if (memory_end > file_end)
            std::memset(pointer(file_end), 0, anonymous_start - file_end);
        if (!(protection & PROT_WRITE) && mprotect(mapped, mapped_bytes, protection) != 0)
            return false;
    }
    if (memory_end > anonymous_start) {
        void* const mapped = mmap(pointer(anonymous_start), memory_end - anonymous_start, protection,
                                  MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED, -1, 0);
        if (mapped == MAP_FAILED)
            return false;
    }
    if (segment.p_flags & PF_X)
        add_executable_range(first_page, round_up(memory_end, page));
    return true;
}

} // namespace

std::uint64_t program_base() {
    // The engine's own stack is at the upper end of the address space.
    const std::uint64_t top = std::bit_ceil(reinterpret_cast<std::uint64_t>(environ));
    constexpr std::uint64_t heap_bytes = 0x6000'0000; // a gigabyte at random, and room
    return round_down(top / 3 * 2 + heap_bytes, 1 << 24);
}

bool map_program(const elf_file& file, std::uint64_t base, program_image& image, load_error& error) {
    const std::uint64_t page = page_size();
    std::uint64_t low = ~std::uint64_t{0}, high = 0, alignment = page;
    image = {};
    image.header_count = file.segments.size();
    for (const Elf64_Phdr& segment : file.segments) {
        if (segment.p_type == PT_GNU_STACK)
            image.executable_stack = segment.p_flags & PF_X;
        if (segment.p_type != PT_LOAD)
            continue;
        low = std::min(low, round_down(segment.p_vaddr, page));
        high = std::max(high, round_up(segment.p_vaddr + segment.p_memsz, page));
        alignment = std::max<std::uint64_t>(alignment, segment.p_align);
    }

    const bool movable = file.header.e_type == ET_DYN;
    const std::uint64_t size = high - low;
    const std::uint64_t start = size == 0 ? 0
                                : movable ? reserve_aligned(base, size, alignment)
                                          : reserve(low, size, true);
    if (start == 0) {
        error = {status_cannot_execute,
                 std::string("its address range cannot be mapped: ") + std::strerror(errno)};
        return false;
    }
    const std::uint64_t bias = start - low;
    for (const Elf64_Phdr& segment : file.segments) {
        if (segment.p_type != PT_LOAD)
            continue;
        if (segment.p_memsz > 0 && !map_segment(file.descriptor, segment, bias)) {
            error = {status_cannot_execute,
                     std::string("a segment cannot be mapped: ") + std::strerror(errno)};
            return false;
        }
        const std::uint64_t table = file.header.e_phoff;
        if (table >= segment.p_offset &&
            table + image.header_count * sizeof(Elf64_Phdr) <= segment.p_offset + segment.p_filesz)
            image.header_address = bias + segment.p_vaddr + (table - segment.p_offset);
    }
    image.start = start;
    image.bias = bias;
    image.end = bias + high;
    image.entry = bias + file.header.e_entry;
    return true;
}
