// Compares every row of the opcode table with a processor that has 1024-bit SVE.
#include "sve/decode/opcode_rows.h"
#include "tests/conformance/differences.h"
#include "tests/conformance/native_execution.h"
#include "tests/conformance/row_check.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

using namespace conformance;

namespace {

constexpr int exit_different = 1;
constexpr int exit_usage = 2;
constexpr int exit_no_processor = 77;
constexpr std::uint64_t most_jobs = 256;
constexpr std::size_t most_rows = 4096;

struct settings {
    std::uint64_t seed = 1;
    std::uint64_t only_seed = 0; // if not 0, the only case
    std::uint64_t iterations = 100;
    std::uint64_t jobs = static_cast<std::uint64_t>(sysconf(_SC_NPROCESSORS_ONLN));
    std::string filter, planted;
};

constexpr char usage[] =
    "usage: conformance [OPTION VALUE]...\n"
    "Compares what the emulator does for each opcode with what this processor does. It needs 1024-bit SVE.\n"
    "  --seed N           start of the random cases (1)\n"
    "  --iterations N     states for each opcode (100)\n"
    "  --filter PATTERN   only stubs whose name contains PATTERN, or fits it if it has a *\n"
    "  --only-seed N      only the case of this seed, as a difference reported it; with --filter\n"
    "  --jobs N           processes at once (one for each processor)\n"
    "  --plant-fault PART spoil a part of every result: x, sp, z, p, ffr, nzcv, fpsr, fpcr, memory\n"
    "Exit status: 0 if all agree, 1 if something differs, 2 on bad use, 77 if the processor is not fit.\n";

[[noreturn]] void fail_usage(const char* reason, const char* what) {
    std::fprintf(stderr, "conformance: %s: %s\n", what, reason);
    std::exit(exit_usage);
}

settings parse(int count, char** arguments) {
    settings result;
    const struct {
        const char* name;
        std::uint64_t* number;
        std::string* text;
        std::uint64_t lowest, highest;
    } options[] = {{"--seed", &result.seed, nullptr, 0, UINT64_MAX},
                   {"--only-seed", &result.only_seed, nullptr, 1, UINT64_MAX},
                   {"--iterations", &result.iterations, nullptr, 1, 100000000},
                   {"--jobs", &result.jobs, nullptr, 1, most_jobs},
                   {"--filter", nullptr, &result.filter, 0, 0},
                   {"--plant-fault", nullptr, &result.planted, 0, 0}};
    for (int i = 1; i < count; i += 2) {
        if (std::strcmp(arguments[i], "--help") == 0) {
            std::fputs(usage, stdout);
            std::exit(0);
        }
        const auto option = std::find_if(std::begin(options), std::end(options), [&](const auto& known) {
            return std::strcmp(known.name, arguments[i]) == 0;
        });
        if (option == std::end(options))
            fail_usage("no such option; --help lists them", arguments[i]);
        const char* const value = arguments[i + 1];
        if (!value)
            fail_usage("a value is missing", arguments[i]);
        if (option->text) {
            *option->text = value;
            continue;
        }
        char* end = nullptr;
        errno = 0;
        *option->number = std::strtoull(value, &end, 0);
        if (errno != 0 || end == value || *end != '\0' || *value == '-' || *option->number < option->lowest ||
            *option->number > option->highest)
            fail_usage("a number out of range, or none", arguments[i]);
    }
    return result;
}

std::vector<opcode_row> selected_rows(const std::string& filter) {
    std::vector<opcode_row> rows;
    for_each_opcode([&](const opcode_row& row) {
        if (filter.empty() || matches(filter.c_str(), row.name))
            rows.push_back(row);
    });
    return rows;
}

// What the processes of a run share. Each takes the next row until there is none.
struct shared_progress {
    std::atomic<std::size_t> next_row;
    row_result results[most_rows];
};

// One line, written at once, since several processes write.
void say(const std::string& line) {
    const std::string whole = line + "\n";
    if (write(STDOUT_FILENO, whole.data(), whole.size()) < 0)
        std::exit(exit_usage);
}

void report_difference(const opcode_row& row, const row_result& result, const difference_report& first) {
    char place[160];
    std::snprintf(place, sizeof place, "DIFFERS %s word 0x%08x seed %#llx: ", row.name, first.word,
                  static_cast<unsigned long long>(first.seed));
    char alone[160];
    std::snprintf(alone, sizeof alone, " [%u of %u states; alone: --filter %s --only-seed %#llx]",
                  result.differences, result.states, row.name, static_cast<unsigned long long>(first.seed));
    say(place + first.text + alone);
}

void work(const settings& chosen, const std::vector<opcode_row>& rows, shared_progress* progress) {
    const arena memory;
    row_checker checker(memory, chosen.planted);
    for (std::size_t index; (index = progress->next_row.fetch_add(1)) < rows.size();) {
        difference_report first = {};
        row_result& result = progress->results[index];
        result = chosen.only_seed != 0 ? checker.check_one(rows[index], chosen.only_seed, first)
                                       : checker.check(rows[index], chosen.seed,
                                                       static_cast<std::uint32_t>(chosen.iterations), first);
        if (result.differences != 0)
            report_difference(rows[index], result, first);
    }
}

int run(const settings& chosen, const std::vector<opcode_row>& rows) {
    void* const memory =
        mmap(nullptr, sizeof(shared_progress), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    auto* const progress = static_cast<shared_progress*>(memory);
    for (std::uint64_t i = 0; i < chosen.jobs; ++i)
        if (fork() == 0) {
            work(chosen, rows, progress);
            _exit(0);
        }
    bool good = true;
    for (int status; wait(&status) > 0;)
        if (status != 0) {
            good = false;
            say("DIES a process of the comparison itself, with status " + std::to_string(status));
        }

    std::uint64_t checked = 0, states = 0, differing = 0, rejected = 0;
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const row_result& row = progress->results[i];
        states += row.states;
        differing += row.differences != 0;
        rejected += row.rejected_words;
        // A row must have been compared at as many states as were asked for.
        if (row.states >= (chosen.only_seed != 0 ? 1 : chosen.iterations))
            ++checked;
        else
            say(std::string("NOT COMPARABLE ") + rows[i].name + ": " + std::to_string(row.states) +
                " states, the processor rejects " + std::to_string(row.rejected_words) + " of " +
                std::to_string(row.rejected_words + row.words) + " words");
    }
    say(std::to_string(checked) + " of " + std::to_string(rows.size()) + " rows checked with " +
        std::to_string(states) + " states, " + std::to_string(differing) + " of them differ. " +
        std::to_string(rejected) + " reserved words were rejected by the processor.");
    return good && differing == 0 && checked == rows.size() ? 0 : exit_different;
}

} // namespace

int main(int count, char** arguments) {
    const settings chosen = parse(count, arguments);
    const std::vector<opcode_row> rows = selected_rows(chosen.filter);
    if (rows.empty())
        fail_usage("no stub has such a name", chosen.filter.c_str());
    cpu_state state;
    if (!row_checker(arena(), chosen.planted).spoil(state, 0))
        fail_usage("no such part", chosen.planted.c_str());
    const rlimit no_core = {0, 0};
    setrlimit(RLIMIT_CORE, &no_core);
    const std::string reason = prepare_processor();
    if (!reason.empty()) {
        std::fprintf(stderr, "conformance: %s\n", reason.c_str());
        return exit_no_processor;
    }
    return run(chosen, rows);
}
