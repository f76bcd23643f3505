#include "tests/client/client_fixture.h"

const loaded_module* main_module() { return program.start != nullptr ? &program : nullptr; }

module_place find_module(const std::uint8_t* address) {
    // Modules come and go with the tests, so the answer holds for no range.
    for (const loaded_module* module : {&program, &library})
        if (address >= module->start && address < module->end)
            return {{std::shared_ptr<void>(), module}, 0, 0}; // owned by nobody
    return {nullptr, 0, 0};
}
