// Executes the opcode stub of one instruction word many times, for the measurement of its cost: the
// difference of two runs, divided by the difference in repetitions. See stub_cost.sh.
#include "sve/decode/decoder.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>

namespace {

constexpr int exit_usage = 2;

// Two pages; addresses lie in the middle, so that a contiguous access stays within the second page.
alignas(4096) unsigned char memory[8192];

int fail(const char* reason, const char* what) {
    std::fprintf(stderr, "stub_cost: %s: %s\n", reason, what);
    return exit_usage;
}

// Random registers but for what an instruction would fault or stop on: every general register is an address
// in `memory`, and X1 a small index. `predicates` is "all", "mixed" or "tail": every element active, every
// other byte, or all but the last 24 bytes.
bool prepare(cpu_state& state, const std::string& predicates) {
    std::mt19937 generator(1);
    auto* bytes = reinterpret_cast<unsigned char*>(&state);
    for (std::size_t i = 0; i < sizeof state; ++i)
        bytes[i] = static_cast<unsigned char>(generator());
    for (std::uint64_t& x : state.x)
        x = reinterpret_cast<std::uint64_t>(memory + sizeof memory / 2 + 512);
    state.x[1] = 4;
    state.fpcr = state.fpcr_extra = state.fpsr = 0;
    for (auto& row : state.p) {
        for (int k = 0; k < vector_bytes; ++k) {
            if (predicates == "all")
                row[k] = 1;
            else if (predicates == "mixed")
                row[k] = k / 8 % 2; // as whole doublewords, so that it is as mixed for every element size
            else if (predicates == "tail")
                row[k] = k < vector_bytes - 24;
            else
                return false;
        }
    }
    return true;
}

[[gnu::noinline]] aarch64_decode_rc empty_stub(cpu_state*, unsigned int) { return aarch64_emulated; }

// The whole text as a number of the base, or false.
bool parse(const char* text, int base, unsigned long& value) {
    char* end = nullptr;
    value = std::strtoul(text, &end, base);
    return *text != '\0' && *end == '\0';
}

} // namespace

int main(int argc, char** argv) {
    unsigned long word = 0, repetitions;
    if (argc != 4)
        return fail("usage", "stub_cost WORD|empty all|mixed|tail REPETITIONS");
    const bool empty = std::strcmp(argv[1], "empty") == 0;
    if (!empty && (!parse(argv[1], 16, word) || word > 0xFFFFFFFF))
        return fail("not a hexadecimal instruction word", argv[1]);
    if (!parse(argv[3], 10, repetitions))
        return fail("not a number", argv[3]);
    static cpu_state state;
    if (!prepare(state, argv[2]))
        return fail("not a kind of predicates", argv[2]);
    const auto opcode = static_cast<unsigned int>(word);
    const opcode_stub stub = empty ? empty_stub : is_sve(opcode);
    if (stub == nullptr)
        return fail("no opcode has this word", argv[1]);
    std::printf("%s\n", empty ? "empty" : opcode_name(stub));
    const opcode_stub volatile hidden = stub; // lest the compiler see through the empty one
    const opcode_stub called = hidden;
    for (unsigned long i = 0; i < repetitions; ++i) {
        if (called(&state, opcode) != aarch64_emulated)
            return fail("not emulated", argv[1]);
    }
    return 0;
}
