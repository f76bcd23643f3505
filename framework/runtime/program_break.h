// The program's break. The kernel's belongs to the engine, whose own heap it is.
#pragma once

#include <cstdint>

// Sets the lowest break, behind the program's image.
void set_initial_break(std::uint64_t address);

// What brk does: moves the break if it can, and returns where it is then.
std::uint64_t move_break(std::uint64_t address);
