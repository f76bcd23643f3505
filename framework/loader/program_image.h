// The program in memory: its segments, its initial stack, its first registers.
#pragma once

#include <cstdint>
#include <string>

#include "framework/loader/elf_file.h"

struct program_image {
    std::uint64_t start;          // first mapped byte
    std::uint64_t bias;           // of run-time addresses above those in the file
    std::uint64_t end;            // one past the last, where the break starts
    std::uint64_t entry;          // run-time address
    std::uint64_t header_address; // of the program headers, 0 if no segment holds them
    std::uint64_t header_count;
    bool executable_stack;
};

// Where a position-independent program goes if it can: two thirds up the address space, as kernels do it and
// as sanitizers expect it, above the engine's heap, which the kernel starts there.
std::uint64_t program_base();

// Maps the file's segments, without the right to be executed in place, which is noted in the executable
// ranges instead. If the file allows any place, it goes to the base if that is free, and where the kernel
// likes otherwise, or if the base is 0. False with the error set if there is no room for it.
bool map_program(const elf_file& file, std::uint64_t base, program_image& image, load_error& error);

// Maps a stack as large as the soft limit says, with the arguments, the environment and the auxiliary vector
// as the kernel lays them out. Returns the initial SP; 0 with the error set if there is no room.
// `interpreter_bias` is 0 if there is no interpreter. `host_auxiliary` is the engine's own auxiliary vector,
// from which the entries that do not concern the image are taken.
std::uint64_t build_initial_stack(const program_image& image, std::uint64_t interpreter_bias,
                                  const char* path, char* const* arguments, char* const* environment,
                                  const Elf64_auxv_t* host_auxiliary, load_error& error);

// Addresses in the initial stack. The strings of the environment follow those of the arguments.
struct stack_layout {
    std::uint64_t sp;
    std::uint64_t arguments;
    std::uint64_t environment;
    std::uint64_t environment_end;
    std::uint64_t auxiliary;
    std::uint64_t auxiliary_bytes;
};

// Has the kernel show these in /proc and to ps as what the process was started with, in place of the
// engine's. A kernel that has no such call (it is made for checkpoints) goes on showing the engine's.
void describe_process(const stack_layout& stack);

// Notes the code of the shared object that the kernel has mapped, if it has, by which programs tell the time
// without a system call. The auxiliary vector passes its address on.
void add_virtual_object();

// The file that a shell would run for the name: itself if it has a slash, else the first executable regular
// file of that name in the directories of PATH. Empty if there is none.
std::string find_program(const char* name);
