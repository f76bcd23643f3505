// Reading and checking of an ELF executable, before anything of it is mapped.
#pragma once

#include <cstdint>
#include <elf.h>
#include <optional>
#include <string>
#include <vector>

// Why a file cannot be run: a reason for the user and the launcher's exit status.
struct load_error {
    int status;
    std::string reason;
};

// An open file whose headers have passed every check. The descriptor belongs to the record's holder.
struct elf_file {
    int descriptor;
    Elf64_Ehdr header;
    std::vector<Elf64_Phdr> segments; // all program headers
    std::string interpreter;          // path of the program that is to start it, empty if there is none
};

// Opens a regular file that may be executed. Returns -1 with the error set if it is none.
int open_executable_file(const char* path, load_error& error);

// Opens and checks the file. On failure nothing stays open, and the error says why.
std::optional<elf_file> open_elf_file(const char* path, load_error& error);

// The headers of an open file, which may be a shared library. Nothing if it is no AArch64 ELF file.
std::optional<elf_file> read_elf_headers(int descriptor);

// The page size that mappings go by.
std::uint64_t page_size();
