// System calls on the address space: the break, and mappings, whose right to be executed only the engine
// knows.
#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "framework/loader/module.h"
#include "framework/runtime/executable_ranges.h"
#include "framework/runtime/process_lock.h"
#include "framework/runtime/program_break.h"
#include "framework/runtime/raw_system_call.h"
#include "framework/runtime/system_calls.h"
#include "framework/runtime/translated_code.h"

namespace {

std::uint64_t lowest_break;
std::uint64_t current_break;

std::uint64_t round_to_page(std::uint64_t value) {
    static const std::uint64_t page = static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
    return (value + page - 1) & ~(page - 1);
}

bool map_break_pages(std::uint64_t start, std::uint64_t end) {
    constexpr int flags = MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED_NOREPLACE;
    const std::uint64_t mapped =
        raw_system_call(SYS_mmap, start, end - start, PROT_READ | PROT_WRITE, flags, -1, 0);
    if (!is_error(mapped) && mapped != start) // a kernel that does not know the flag
        raw_system_call(SYS_munmap, mapped, end - start);
    return mapped == start;
}

// A protection as the kernel gets it: readable in place of executable, since the code is read, never run in
// place.
constexpr std::uint64_t branch_targets_guarded = 0x10; // PROT_BTI, which has no meaning without PROT_EXEC
std::uint64_t without_execution(std::uint64_t protection) {
    if (!(protection & PROT_EXEC))
        return protection;
    return (protection & ~(PROT_EXEC | branch_targets_guarded)) | PROT_READ;
}

// Notes that the range has new content or rights.
void range_changed(thread_context* context, std::uint64_t start, std::uint64_t length, bool executable) {
    const std::uint64_t end = start + round_to_page(length);
    code_changed(context, start, end);
    (executable ? add_executable_range : remove_executable_range)(start, end);
}

void handle_brk(thread_context* context) {
    const std::lock_guard lock(mappings_mutex);
    context->x[0] = move_break(context->x[0]);
}

void handle_mmap(thread_context* context) {
    const std::lock_guard lock(mappings_mutex);
    const std::uint64_t length = context->x[1], protection = context->x[2], flags = context->x[3];
    context->x[2] = without_execution(protection);
    call_kernel(context);
    context->x[2] = protection;
    if (is_error(context->x[0]))
        return;
    const std::uint64_t start = context->x[0];
    range_changed(context, start, length, protection & PROT_EXEC);
    if (!(protection & PROT_EXEC))
        return;
    if (flags & MAP_ANONYMOUS)
        remove_modules(start, start + round_to_page(length));
    else
        add_mapped_file(static_cast<int>(context->x[4]), context->x[5], start, round_to_page(length));
}

void handle_mprotect(thread_context* context) {
    const std::lock_guard lock(mappings_mutex);
    const std::uint64_t start = context->x[0], length = context->x[1], protection = context->x[2];
    context->x[2] = without_execution(protection);
    call_kernel(context);
    context->x[2] = protection;
    if (context->x[0] == 0)
        range_changed(context, start, length, protection & PROT_EXEC);
}

void handle_munmap(thread_context* context) {
    const std::lock_guard lock(mappings_mutex);
    const std::uint64_t start = context->x[0], length = context->x[1];
    call_kernel(context);
    if (context->x[0] != 0)
        return;
    range_changed(context, start, length, false);
    remove_modules(start, start + round_to_page(length));
}

void handle_mremap(thread_context* context) {
    const std::lock_guard lock(mappings_mutex);
    const std::uint64_t old_start = context->x[0], old_length = context->x[1], new_length = context->x[2];
    const bool executable = executable_until(old_start) != 0;
    call_kernel(context);
    if (is_error(context->x[0]))
        return;
    range_changed(context, old_start, old_length, false);
    range_changed(context, context->x[0], new_length, executable);
    if (context->x[0] != old_start)
        remove_modules(old_start, old_start + round_to_page(old_length));
}

constexpr system_call_row rows[] = {
    {SYS_brk, handle_brk},           {SYS_mmap, handle_mmap},
    {SYS_mprotect, handle_mprotect}, {SYS_pkey_mprotect, handle_mprotect},
    {SYS_munmap, handle_munmap},     {SYS_mremap, handle_mremap},
};

} // namespace

void set_initial_break(std::uint64_t address) { lowest_break = current_break = round_to_page(address); }

std::uint64_t move_break(std::uint64_t address) {
    if (address < lowest_break)
        return current_break;
    const std::uint64_t old_end = round_to_page(current_break);
    const std::uint64_t new_end = round_to_page(address);
    if (new_end < address)
        return current_break;
    if (new_end > old_end && !map_break_pages(old_end, new_end))
        return current_break;
    if (new_end < old_end)
        raw_system_call(SYS_munmap, new_end, old_end - new_end);
    current_break = address;
    return current_break;
}

system_call_rows memory_calls() { return rows; }
