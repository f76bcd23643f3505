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
struct row_progress {
    row_result result;
    bool done;
    bool died;
};
struct shared_progress {
    std::atomic<std::size_t> next_row;
    std::size_t current_row[most_jobs];
    volatile std::uint64_t current_seed[most_jobs];
    row_progress rows[most_rows];
};

shared_progress* make_progress() {
    void* const memory =
        mmap(nullptr, sizeof(shared_progress), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) {
        std::perror("conformance: mmap");
        std::exit(exit_usage);
    }
    return static_cast<shared_progress*>(memory);
}

// One line, written at once, since several processes write.
void say(const std::string& line) {
    const std::string whole = line + "\n";
    if (write(STDOUT_FILENO, whole.data(), whole.size()) < 0)
        std::exit(exit_usage);
}

std::string hexadecimal(std::uint64_t value) {
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, "%#llx", static_cast<unsigned long long>(value));
    return buffer;
}

void report_difference(const opcode_row& row, const row_result& result, const difference_report& first) {
    char word[16];
    std::snprintf(word, sizeof word, "0x%08x", first.word);
    say(std::string("DIFFERS ") + row.name + " word " + word + " seed " + hexadecimal(first.seed) + ": " +
        first.text + " [" + std::to_string(result.differences) + " of " + std::to_string(result.states) +
        " states; alone: --filter " + row.name + " --only-seed " + hexadecimal(first.seed) + "]");
}

void work(const settings& chosen, const std::vector<opcode_row>& rows, shared_progress* progress,
          int process) {
    const arena memory;
    row_checker checker(memory, chosen.planted);
    for (;;) {
        const std::size_t index = progress->next_row.fetch_add(1);
        if (index >= rows.size())
            return;
        const opcode_row& row = rows[index];
        progress->current_row[process] = index;
        difference_report first = {};
        row_result& result = progress->rows[index].result;
        if (chosen.only_seed != 0) {
            progress->current_seed[process] = chosen.only_seed;
            result = checker.check_one(row, chosen.only_seed, first);
        } else {
            result = checker.check(row, chosen.seed, static_cast<std::uint32_t>(chosen.iterations),
                                   progress->current_seed[process], first);
        }
        progress->rows[index].done = true;
        if (result.differences != 0)
            report_difference(row, result, first);
    }
}

pid_t start_process(const settings& chosen, const std::vector<opcode_row>& rows, shared_progress* progress,
                    int process) {
    progress->current_row[process] = rows.size();
    std::fflush(stdout);
    const pid_t child = fork();
    if (child < 0) {
        std::perror("conformance: fork");
        std::exit(exit_usage);
    }
    if (child == 0) {
        work(chosen, rows, progress, process);
        std::fflush(stdout);
        _exit(0);
    }
    return child;
}

// A process that dies is told of, with the case at work, and another one goes on in its place.
void run_processes(const settings& chosen, const std::vector<opcode_row>& rows, shared_progress* progress) {
    const auto jobs = static_cast<int>(std::min(chosen.jobs, most_jobs));
    std::vector<pid_t> processes;
    for (int i = 0; i < jobs; ++i)
        processes.push_back(start_process(chosen, rows, progress, i));
    int status = 0;
    for (pid_t ended = wait(&status); ended > 0; ended = wait(&status)) {
        const auto found = std::find(processes.begin(), processes.end(), ended);
        if (found == processes.end() || (WIFEXITED(status) && WEXITSTATUS(status) == 0))
            continue;
        const auto process = static_cast<int>(found - processes.begin());
        const std::size_t index = progress->current_row[process];
        const std::string end = WIFSIGNALED(status) ? "signal " + std::to_string(WTERMSIG(status))
                                                    : "status " + std::to_string(WEXITSTATUS(status));
        if (index >= rows.size()) {
            say("conformance: a process ended before its first row, with " + end);
            std::exit(exit_different);
        }
        progress->rows[index].died = true;
        say(std::string("DIES ") + rows[index].name + " seed " +
            hexadecimal(progress->current_seed[process]) + ": our code ends the process with " + end +
            " [alone: --filter " + rows[index].name + " --only-seed " +
            hexadecimal(progress->current_seed[process]) + "]");
        *found = start_process(chosen, rows, progress, process);
    }
}

struct totals {
    std::uint64_t checked, states, differing, unexecuted, died, rejected_words;
};

totals add_up(const settings& chosen, const std::vector<opcode_row>& rows, const shared_progress* progress) {
    totals sum = {};
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const row_progress& row = progress->rows[i];
        if (!row.done) {
            ++sum.died;
            continue;
        }
        sum.rejected_words += row.result.rejected_words;
        sum.states += row.result.states;
        sum.differing += row.result.differences != 0;
        // A row must have been compared at as many states as were asked for.
        const std::uint64_t wanted = chosen.only_seed != 0 ? 1 : chosen.iterations;
        if (row.result.states < wanted) {
            ++sum.unexecuted;
            say(std::string("NOT COMPARABLE ") + rows[i].name + ": " + std::to_string(row.result.states) +
                " states, the processor rejects " + std::to_string(row.result.rejected_words) + " of " +
                std::to_string(row.result.rejected_words + row.result.words) + " words");
        } else {
            ++sum.checked;
        }
    }
    return sum;
}

int run(const settings& chosen, const std::vector<opcode_row>& rows) {
    shared_progress* const progress = make_progress();
    run_processes(chosen, rows, progress);
    const totals sum = add_up(chosen, rows, progress);
    const auto shown = [](std::uint64_t number) { return static_cast<unsigned long long>(number); };
    std::printf("%llu rows checked with %llu states, %llu of them differ; %llu not comparable; %llu died. "
                "%llu reserved words were rejected by the processor.\n",
                shown(sum.checked), shown(sum.states), shown(sum.differing), shown(sum.unexecuted),
                shown(sum.died), shown(sum.rejected_words));
    return sum.differing + sum.unexecuted + sum.died == 0 ? 0 : exit_different;
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
    setrlimit(RLIMIT_CORE, &no_core); // a process that dies is reported
    const std::string reason = prepare_processor();
    if (!reason.empty()) {
        std::fprintf(stderr, "conformance: %s\n", reason.c_str());
        return exit_no_processor;
    }
    return run(chosen, rows);
}
