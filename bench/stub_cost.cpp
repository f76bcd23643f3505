// Executes opcode stubs for the measurement of their cost in instructions. Around each call stands a system
// call at which the counting plugin prints its count; standard output says what was between two of them. See
// stub_cost.sh.
#include "bench/stub_inputs.h"

#include <cstdio>
#include <fnmatch.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

[[gnu::noinline]] aarch64_decode_rc empty_stub(cpu_state*, unsigned int) { return aarch64_emulated; }

void print_count() { syscall(SYS_getppid); }

// One call that is counted, after one that sets up whatever is set up only once.
bool measure(opcode_stub stub, std::uint32_t word, const cpu_state& before) {
    const opcode_stub volatile hidden = stub; // lest the compiler see through the empty one
    const opcode_stub called = hidden;
    static cpu_state state;
    state = before;
    if (called(&state, word) != aarch64_emulated)
        return false;
    state = before;
    print_count();
    called(&state, word);
    print_count();
    return true;
}

const char* name_of(opcode_route route) {
    switch (route) {
    case opcode_route::handler:
        return "handler";
    case opcode_route::library:
        return "library";
    default:
        return "prefetch";
    }
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fputs("usage: stub_cost PATTERN\n", stderr);
        return 2;
    }
    static cpu_state state;
    measure(empty_stub, 0, state);
    std::puts("none none empty 00000000 all");

    int status = 0;
    bench::for_each_family([&](const char* family, std::span<const opcode_row> rows) {
        for (const opcode_row& row : rows) {
            if (fnmatch(argv[1], row.name, 0) != 0)
                continue;
            const std::uint32_t word = bench::word_of(row);
            for (const char* predicates : bench::predicate_kinds) {
                bench::prepare(state, row, predicates);
                if (!measure(row.stub, word, state)) {
                    std::fprintf(stderr, "stub_cost: %s does not emulate %08x\n", row.name, word);
                    status = 1;
                    continue;
                }
                std::printf("%s %s %s %08x %s\n", family, name_of(row.route), row.name, word, predicates);
            }
        }
    });
    return status;
}
