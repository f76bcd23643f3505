#include "tests/client/client_fixture.h"

const loaded_module* main_module() { return program.start != nullptr ? &program : nullptr; }

std::shared_ptr<const loaded_module> find_module(const std::uint8_t* address) {
    for (const loaded_module* module : {&program, &library})
        if (address >= module->start && address < module->end)
            return {std::shared_ptr<void>(), module}; // owned by nobody
    return nullptr;
}
