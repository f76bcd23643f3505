#include "framework/loader/module.h"

#include <climits>
#include <cstdlib>
#include <map>
#include <optional>
#include <unistd.h>

#include "framework/runtime/process_lock.h"

namespace {

using module_pointer = std::shared_ptr<const loaded_module>;

struct module_range {
    std::uint64_t end;
    module_pointer module;
};

// Disjoint ranges by their starts.
std::map<std::uint64_t, module_range> ranges;
module_pointer program;

// The first range that ends above the address.
auto range_above(std::uint64_t address) {
    auto range = ranges.upper_bound(address);
    if (range != ranges.begin() && std::prev(range)->second.end > address)
        --range;
    return range;
}

void cut(std::uint64_t start, std::uint64_t end) {
    ++modules_version;
    auto range = range_above(start);
    while (range != ranges.end() && range->first < end) {
        const auto [old_start, old] = *range;
        range = ranges.erase(range);
        if (old_start < start)
            ranges.insert_or_assign(old_start, module_range{start, old.module});
        if (old.end > end)
            ranges.insert_or_assign(end, module_range{old.end, old.module});
    }
}

// Gives the module what belongs to no other in the range.
void fill(std::uint64_t start, std::uint64_t end, const module_pointer& module) {
    ++modules_version;
    while (start < end) {
        const auto next = range_above(start);
        const std::uint64_t next_start = next == ranges.end() ? end : next->first;
        if (next_start > start)
            ranges.emplace(start, module_range{std::min(next_start, end), module});
        start = next == ranges.end() ? end : std::max(next->second.end, start);
    }
}

std::string absolute(const char* path) {
    char resolved[PATH_MAX];
    return realpath(path, resolved) ? resolved : path;
}

module_pointer make_module(std::uint64_t start, std::uint64_t end, std::uint64_t entry, std::string path) {
    return std::make_shared<loaded_module>(
        loaded_module{reinterpret_cast<std::uint8_t*>(start), reinterpret_cast<std::uint8_t*>(end),
                      reinterpret_cast<std::uint8_t*>(entry), std::move(path)});
}

module_pointer add_image(const program_image& image, const char* path) {
    module_pointer module = make_module(image.start, image.end, image.entry, absolute(path));
    const std::lock_guard lock(process_mutex);
    cut(image.start, image.end);
    fill(image.start, image.end, module);
    return module;
}

std::string path_of(int descriptor) {
    char path[PATH_MAX];
    const ssize_t length =
        readlink(("/proc/self/fd/" + std::to_string(descriptor)).c_str(), path, sizeof path);
    return length > 0 ? std::string(path, static_cast<std::size_t>(length)) : std::string();
}

// The segment that a mapping of the file from the offset on is of: an executable one if several share the
// page.
const Elf64_Phdr* segment_at(const elf_file& file, std::uint64_t offset) {
    const Elf64_Phdr* found = nullptr;
    for (const Elf64_Phdr& segment : file.segments) {
        const std::uint64_t first = segment.p_offset & ~(page_size() - 1);
        if (segment.p_type == PT_LOAD && offset >= first && offset - first < segment.p_filesz + page_size() &&
            (!found || segment.p_flags & PF_X))
            found = &segment;
    }
    return found;
}

} // namespace

void set_main_module(const program_image& image, const char* path) { program = add_image(image, path); }
void add_library(const program_image& image, const char* path) { add_image(image, path); }

void add_mapped_file(int descriptor, std::uint64_t offset, std::uint64_t address, std::uint64_t length) {
    std::uint64_t start = address, end = address + length, entry = 0;
    const std::optional<elf_file> file = read_elf_headers(descriptor);
    if (const Elf64_Phdr* mapped = file ? segment_at(*file, offset) : nullptr) {
        const std::uint64_t bias = address - (mapped->p_vaddr + (offset - mapped->p_offset));
        for (const Elf64_Phdr& segment : file->segments) {
            if (segment.p_type != PT_LOAD)
                continue;
            start = std::min(start, (bias + segment.p_vaddr) & ~(page_size() - 1));
            end = std::max(end,
                           (bias + segment.p_vaddr + segment.p_memsz + page_size() - 1) & ~(page_size() - 1));
        }
        entry = bias + file->header.e_entry;
    }
    const module_pointer module = make_module(start, end, entry, path_of(descriptor));
    const std::lock_guard lock(process_mutex);
    cut(address, address + length);
    fill(start, end, module);
}

void remove_modules(std::uint64_t start, std::uint64_t end) {
    const std::lock_guard lock(process_mutex);
    cut(start, end);
}

const loaded_module* main_module() { return program.get(); }

module_place find_module(const std::uint8_t* address) {
    const auto number = reinterpret_cast<std::uint64_t>(address);
    const std::lock_guard lock(process_mutex);
    const auto range = range_above(number);
    if (range != ranges.end() && range->first <= number)
        return {range->second.module, range->first, range->second.end};
    return {nullptr, number, number + 1};
}
