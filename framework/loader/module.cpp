#include "framework/loader/module.h"

#include <climits>
#include <cstdlib>
#include <string>

#include "framework/loader/program_image.h"

namespace {

loaded_module program;
std::string program_path;

} // namespace

void set_main_module(const program_image& image, const char* path) {
    char resolved[PATH_MAX];
    program_path = realpath(path, resolved) ? resolved : path;
    program = {reinterpret_cast<std::uint8_t*>(image.start), reinterpret_cast<std::uint8_t*>(image.end),
               reinterpret_cast<std::uint8_t*>(image.entry), program_path.c_str()};
}

const loaded_module* main_module() { return program.start ? &program : nullptr; }

const loaded_module* find_module(const std::uint8_t* address) {
    return address >= program.start && address < program.end ? &program : nullptr;
}
