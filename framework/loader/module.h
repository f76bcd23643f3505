// The modules of the application: the program, its interpreter and the libraries that it has loaded, by the
// addresses that their files are mapped to.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>

#include "framework/loader/program_image.h"

struct loaded_module {
    std::uint8_t* start;       // first mapped byte
    std::uint8_t* end;         // one past the last mapped byte
    std::uint8_t* entry_point; // run-time address of the ELF entry
    std::string full_path;     // absolute path of the file
};

// Registers the program itself, or a library, here the interpreter, that the engine has mapped.
void set_main_module(const program_image& image, const char* path);
void add_library(const program_image& image, const char* path);

// Registers what the application has mapped executable from an open file, at that offset in it. Of an ELF
// file all that its segments take up belongs to the module, of another just what is mapped.
void add_mapped_file(int descriptor, std::uint64_t offset, std::uint64_t address, std::uint64_t length);

// Notes that no file is executable in the range any more.
void remove_modules(std::uint64_t start, std::uint64_t end);

// The program itself, or null before it is loaded.
const loaded_module* main_module();

// The module that the address belongs to, or null, and the range around it where the answer is the same.
struct module_place {
    std::shared_ptr<const loaded_module> module;
    std::uint64_t start;
    std::uint64_t end;
};
module_place find_module(const std::uint8_t* address);

// Changes whenever answers may change.
inline std::atomic<std::uint64_t> modules_version{1};
