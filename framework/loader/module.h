// The modules of the application that the engine knows: records with the life of the process.
#pragma once

#include <cstdint>

struct loaded_module {
    std::uint8_t* start;       // first mapped byte
    std::uint8_t* end;         // one past the last mapped byte
    std::uint8_t* entry_point; // run-time address of the ELF entry
    const char* full_path;     // absolute path of the file
};

// The program itself, or null before it is loaded.
const loaded_module* main_module();

// The module whose mapping holds the address, or null.
const loaded_module* find_module(const std::uint8_t* address);
