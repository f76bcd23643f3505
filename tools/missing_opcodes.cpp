// Lists the opcodes that are recognised but not carried out yet, one a line: stub and family's route.
#include "sve/decode/opcode_rows.h"

#include <cstdio>

int main() {
    for_each_opcode([](const opcode_row& row) {
        if (row.missing)
            std::printf("%s (%s)\n", row.name, row.route == opcode_route::handler ? "handler" : "library");
    });
}
