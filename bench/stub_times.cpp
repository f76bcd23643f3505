// Time of opcode stubs of both routes on the machine at hand, a few of each. An argument selects others: a
// name from the opcode table, such as VecU8AddVVM, for each time that is wanted.
#include "bench/stub_inputs.h"

#include <benchmark/benchmark.h>
#include <string>
#include <string_view>

namespace {

constexpr const char* handlers[] = {
    "VecU8AddVVM",    "VecS32MLAVVVM",   "VecU64ShlVVM",     "VecU8CmpFlgGTVVZ",
    "VecU8CLoad1SIZ", "VecU32CLoad4SIZ", "VecU32CStore4SIZ", "VecU32E3Load4SIZ",
    "VecU64Load8SVZ", "VecU32Load4XSVZ", "VecD64AddVVM",     "VecF32CmpGEVVZ",
};
constexpr const char* primitives[] = {
    "VecU8CountVLSI", "VecU8QAddVVX",     "VecS32ShrDVIM",      "VecU8CmpFlgGTVWZ",
    "VecU32Load4SVZ", "VecU32LoadFF4SVZ", "VecS32CLoadFF2LSSZ", "VecD64SqrtVM",
};

void run(benchmark::State& timing, const opcode_row& row, const char* predicates) {
    static cpu_state state;
    bench::prepare(state, row, predicates);
    const std::uint32_t word = bench::word_of(row);
    for (auto _ : timing) {
        if (row.stub(&state, word) != aarch64_emulated) {
            timing.SkipWithError("not emulated");
            break;
        }
        benchmark::ClobberMemory();
    }
}

// False if the table has no such opcode.
bool add(const char* name) {
    bool found = false;
    for_each_opcode([&](const opcode_row& row) {
        if (std::string_view(name) != row.name)
            return;
        found = true;
        for (const char* predicates : {"all", "random"}) {
            benchmark::RegisterBenchmark(
                (std::string(name) + "/" + predicates).c_str(),
                [&row, predicates](benchmark::State& timing) { run(timing, row, predicates); });
        }
    });
    if (!found)
        std::fprintf(stderr, "stub_times: no opcode of this name: %s\n", name);
    return found;
}

} // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    bool good = true;
    for (int i = 1; i < argc; ++i)
        good = add(argv[i]) && good;
    if (argc == 1) {
        for (const char* name : handlers)
            good = add(name) && good;
        for (const char* name : primitives)
            good = add(name) && good;
    }
    if (!good)
        return 2;
    benchmark::RunSpecifiedBenchmarks();
}
