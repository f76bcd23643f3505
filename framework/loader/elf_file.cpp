#include "framework/loader/elf_file.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
#include <fcntl.h>
#include <sys/auxv.h>
#include <sys/stat.h>
#include <unistd.h>

#include "framework/runtime/process_end.h"

namespace {

// Above any address that a user process can have.
constexpr std::uint64_t address_limit = std::uint64_t{1} << 52;
constexpr unsigned header_count_limit = 65536 / sizeof(Elf64_Phdr); // the kernel's own limit

bool read_fully(int descriptor, void* buffer, std::size_t size, std::uint64_t offset) {
    auto* bytes = static_cast<char*>(buffer);
    while (size > 0) {
        const ssize_t got = pread(descriptor, bytes, size, static_cast<off_t>(offset));
        if (got <= 0)
            return false;
        bytes += got;
        offset += static_cast<std::uint64_t>(got);
        size -= static_cast<std::size_t>(got);
    }
    return true;
}

const char* machine_name(unsigned machine) {
    switch (machine) {
    case EM_X86_64:
        return "x86-64";
    case EM_386:
        return "x86";
    case EM_ARM:
        return "32-bit Arm";
    case EM_RISCV:
        return "RISC-V";
    case EM_PPC64:
        return "PowerPC";
    case EM_S390:
        return "S/390";
    default:
        return nullptr;
    }
}

// Each check returns an empty string if it passes, or the reason.
std::string check_header(const Elf64_Ehdr& header) {
    if (header.e_ident[EI_CLASS] != ELFCLASS64)
        return header.e_ident[EI_CLASS] == ELFCLASS32 ? "32-bit ELF file, AArch64 expected"
                                                      : "corrupt ELF header (class)";
    if (header.e_ident[EI_DATA] != ELFDATA2LSB)
        return header.e_ident[EI_DATA] == ELFDATA2MSB ? "big-endian ELF file, little-endian AArch64 expected"
                                                      : "corrupt ELF header (byte order)";
    if (header.e_ident[EI_VERSION] != EV_CURRENT || header.e_version != EV_CURRENT)
        return "corrupt ELF header (version)";
    if (header.e_machine != EM_AARCH64) {
        const char* const name = machine_name(header.e_machine);
        return "ELF file for " + (name ? name : "machine " + std::to_string(header.e_machine)) +
               ", AArch64 expected";
    }
    if (header.e_type != ET_EXEC && header.e_type != ET_DYN)
        return "ELF file is not an executable";
    if (header.e_phentsize != sizeof(Elf64_Phdr) || header.e_phnum == 0 ||
        header.e_phnum > header_count_limit)
        return "corrupt ELF header (program headers)";
    return {};
}

std::string check_segment(const Elf64_Phdr& segment, std::uint64_t file_size) {
    if (segment.p_filesz > segment.p_memsz)
        return "corrupt program header (file size above memory size)";
    if (segment.p_offset > file_size || segment.p_filesz > file_size - segment.p_offset)
        return "truncated file (segment beyond its end)";
    if (segment.p_vaddr > address_limit || segment.p_memsz > address_limit - segment.p_vaddr)
        return "corrupt program header (address out of range)";
    if ((segment.p_align & (segment.p_align - 1)) != 0 || segment.p_align > address_limit)
        return "corrupt program header (alignment)";
    if ((segment.p_vaddr - segment.p_offset) % page_size() != 0)
        return "segment is not aligned to pages of " + std::to_string(page_size()) + " bytes";
    return {};
}

std::string check_segments(const elf_file& file, std::uint64_t file_size) {
    const Elf64_Phdr* previous = nullptr;
    bool entry_found = false;
    for (const Elf64_Phdr& segment : file.segments) {
        if (segment.p_type != PT_LOAD)
            continue;
        if (std::string reason = check_segment(segment, file_size); !reason.empty())
            return reason;
        if (previous && segment.p_vaddr < previous->p_vaddr + previous->p_memsz)
            return "corrupt program headers (overlapping segments)";
        previous = &segment;
        entry_found |= (segment.p_flags & PF_X) && file.header.e_entry >= segment.p_vaddr &&
                       file.header.e_entry - segment.p_vaddr < segment.p_memsz;
    }
    if (!previous)
        return "no loadable segment";
    if (!entry_found || file.header.e_entry % 4 != 0)
        return "corrupt ELF header (entry point)";
    return {};
}

// Reads the path that the first header of an interpreter points at.
std::string read_interpreter(elf_file& file, std::uint64_t file_size) {
    for (const Elf64_Phdr& segment : file.segments) {
        if (segment.p_type != PT_INTERP)
            continue;
        if (segment.p_offset > file_size || segment.p_filesz > file_size - segment.p_offset)
            return "truncated file (interpreter's path beyond its end)";
        std::string path(std::min<std::uint64_t>(segment.p_filesz, PATH_MAX + 1), '\0');
        if (path.size() < 2 || path.size() > PATH_MAX ||
            !read_fully(file.descriptor, path.data(), path.size(), segment.p_offset) || path.back() != '\0' ||
            path.front() == '\0')
            return "corrupt program header (interpreter's path)";
        file.interpreter = path.c_str();
        return {};
    }
    return {};
}

// Reads and checks the header and the program headers.
bool read_headers(elf_file& file, std::uint64_t file_size, load_error& error) {
    file.header = {};
    const std::size_t available = std::min<std::uint64_t>(file_size, sizeof file.header);
    if (!read_fully(file.descriptor, &file.header, available, 0)) {
        error.reason = "cannot be read";
        return false;
    }
    if (available < SELFMAG || std::memcmp(file.header.e_ident, ELFMAG, SELFMAG) != 0) {
        error.reason = file_size == 0 ? "empty file, not an ELF file" : "not an ELF file";
        return false;
    }
    if (available < sizeof file.header) {
        error.reason = "truncated ELF header";
        return false;
    }
    error.reason = check_header(file.header);
    if (!error.reason.empty())
        return false;

    file.segments.resize(file.header.e_phnum);
    const std::uint64_t table_bytes = file.segments.size() * sizeof(Elf64_Phdr);
    if (file.header.e_phoff > file_size || table_bytes > file_size - file.header.e_phoff ||
        !read_fully(file.descriptor, file.segments.data(), table_bytes, file.header.e_phoff)) {
        error.reason = "truncated file (program headers beyond its end)";
        return false;
    }
    return true;
}

// User-mode emulation may look up a path in another root directory when it is opened, but not when it is
// asked for its rights: then the open file has to be asked.
bool is_executable(const char* path, int descriptor) {
    return access(path, X_OK) == 0 ||
           (errno == ENOENT && access(("/proc/self/fd/" + std::to_string(descriptor)).c_str(), X_OK) == 0);
}

std::uint64_t file_size_of(int descriptor) {
    struct stat status;
    return fstat(descriptor, &status) == 0 ? static_cast<std::uint64_t>(status.st_size) : 0;
}

} // namespace

int open_executable_file(const char* path, load_error& error) {
    // Not blocking, so that a pipe without a writer is refused and not waited for.
    const int descriptor = open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (descriptor < 0) {
        const bool missing = errno == ENOENT || errno == ENOTDIR;
        error = {missing ? status_not_found : status_cannot_execute, std::strerror(errno)};
        return -1;
    }
    struct stat status;
    if (fstat(descriptor, &status) != 0)
        error = {status_cannot_execute, std::strerror(errno)};
    else if (!S_ISREG(status.st_mode))
        error = {status_cannot_execute, S_ISDIR(status.st_mode) ? "is a directory" : "not a regular file"};
    else if (!is_executable(path, descriptor))
        error = {status_cannot_execute, std::strerror(errno)};
    else
        return descriptor;
    close(descriptor);
    return -1;
}

std::optional<elf_file> open_elf_file(const char* path, load_error& error) {
    elf_file file{};
    file.descriptor = open_executable_file(path, error);
    if (file.descriptor < 0)
        return std::nullopt;
    error.status = status_cannot_execute;
    const std::uint64_t file_size = file_size_of(file.descriptor);
    if (read_headers(file, file_size, error)) {
        error.reason = check_segments(file, file_size);
        if (error.reason.empty())
            error.reason = read_interpreter(file, file_size);
        if (error.reason.empty())
            return file;
    }
    close(file.descriptor);
    return std::nullopt;
}

std::optional<elf_file> read_elf_headers(int descriptor) {
    elf_file file{};
    file.descriptor = descriptor;
    struct stat status;
    load_error ignored;
    if (fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode) ||
        !read_headers(file, static_cast<std::uint64_t>(status.st_size), ignored))
        return std::nullopt;
    return file;
}

std::uint64_t page_size() { return getauxval(AT_PAGESZ); }
