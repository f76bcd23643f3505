#include <algorithm>
#include <sys/auxv.h>

#include "framework/loader/module.h"
#include "framework/loader/program_image.h"
#include "framework/runtime/executable_ranges.h"

void add_virtual_object() {
    const std::uint64_t start = getauxval(AT_SYSINFO_EHDR);
    if (!start)
        return;
    const auto& header = *reinterpret_cast<const Elf64_Ehdr*>(start);
    const auto* const segments = reinterpret_cast<const Elf64_Phdr*>(start + header.e_phoff);
    std::uint64_t bytes = 0;
    for (unsigned n = 0; n < header.e_phnum; ++n)
        if (segments[n].p_type == PT_LOAD)
            bytes = std::max(bytes, segments[n].p_vaddr + segments[n].p_memsz);
    const std::uint64_t end = start + ((bytes + page_size() - 1) & ~(page_size() - 1));
    add_executable_range(start, end);
    add_library({start, start, end, start + header.e_entry, 0, 0, false}, "[vdso]");
}
