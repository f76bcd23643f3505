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
constexpr std::size_t most_jobs = 256;
constexpr std::size_t most_rows = 4096;

struct settings {
    std::uint64_t seed = 1;
    std::uint64_t only_seed = 0;
    bool has_only_seed = false;
    std::uint32_t iterations = 100;
    std::string filter;
    bool list = false;
    bool verbose = false;
    bool processor_only = false;
    int jobs = static_cast<int>(sysconf(_SC_NPROCESSORS_ONLN));
    fault_part planted = fault_part::none;
};

constexpr char usage[] =
    "usage: conformance [OPTION]...\n"
    "Compares what the emulator does for each opcode with what this processor does. It needs 1024-bit SVE.\n"
    "  --seed N           start of the random cases (1)\n"
    "  --iterations N     states for each opcode (100)\n"
    "  --filter PATTERN   only stubs whose name contains PATTERN, or fits it if it has a *\n"
    "  --only-seed N      only the case of this seed, as a difference reported it; with --filter\n"
    "  --jobs N           processes at once (one for each processor)\n"
    "  --list             list the rows and the deliberate differences\n"
    "  --verbose          tell the counts of each row\n"
    "  --processor-only   do nothing with our code: tells of every row, missing ones too, whether its words "
    "and\n"
    "                     operands are such that the processor executes them without a fault\n"
    "  --plant-fault PART spoil a part of every result: x, sp, z, p, ffr, nzcv, fpsr, fpcr, memory\n"
    "Exit status: 0 if all agree, 1 if something differs, 2 on bad use, 77 if the processor is not fit.\n";

[[noreturn]] void fail_usage(const char* reason, const char* what) {
    std::fprintf(stderr, "conformance: %s: %s\n", what, reason);
    std::exit(exit_usage);
}

std::uint64_t number_of(const char* option, const char* text, std::uint64_t low, std::uint64_t high) {
    char* end = nullptr;
    errno = 0;
    const std::uint64_t value = std::strtoull(text, &end, 0);
    if (errno != 0 || end == text || *end != '\0' || *text == '-' || value < low || value > high)
        fail_usage("a number out of range, or none", option);
    return value;
}

settings parse(int count, char** arguments) {
    settings result;
    for (int i = 1; i < count; ++i) {
        const std::string option = arguments[i];
        if (option == "--list" || option == "--verbose" || option == "--processor-only") {
            (option == "--list"      ? result.list
             : option == "--verbose" ? result.verbose
                                     : result.processor_only) = true;
            continue;
        }
        if (option == "--help") {
            std::fputs(usage, stdout);
            std::exit(0);
        }
        const bool known = option == "--seed" || option == "--iterations" || option == "--filter" ||
                           option == "--only-seed" || option == "--jobs" || option == "--plant-fault";
        if (!known)
            fail_usage("no such option; --help lists them", option.c_str());
        if (++i == count)
            fail_usage("a value is missing", option.c_str());
        const char* const value = arguments[i];
        if (option == "--seed") {
            result.seed = number_of("--seed", value, 0, UINT64_MAX);
        } else if (option == "--iterations") {
            result.iterations = static_cast<std::uint32_t>(number_of("--iterations", value, 1, 100000000));
        } else if (option == "--filter") {
            result.filter = value;
        } else if (option == "--only-seed") {
            result.only_seed = number_of("--only-seed", value, 0, UINT64_MAX);
            result.has_only_seed = true;
        } else if (option == "--jobs") {
            result.jobs = static_cast<int>(number_of("--jobs", value, 1, most_jobs));
        } else {
            result.planted = fault_part_of(value);
            if (result.planted == fault_part::none)
                fail_usage("no such part", value);
        }
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
    row_checker checker(memory, chosen.planted, chosen.processor_only);
    for (;;) {
        const std::size_t index = progress->next_row.fetch_add(1);
        if (index >= rows.size())
            return;
        const opcode_row& row = rows[index];
        if (row.missing && !chosen.processor_only)
            continue;
        progress->current_row[process] = index;
        difference_report first = {};
        row_result& result = progress->rows[index].result;
        if (chosen.has_only_seed) {
            progress->current_seed[process] = chosen.only_seed;
            result = checker.check_one(row, chosen.only_seed, first);
        } else {
            result =
                checker.check(row, chosen.seed, chosen.iterations, progress->current_seed[process], first);
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
    const int jobs =
        static_cast<int>(std::min<std::size_t>(static_cast<std::size_t>(chosen.jobs), most_jobs));
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
    std::uint64_t checked, states, differing, missing, unexecuted, died, rejected_words;
};

totals add_up(const settings& chosen, const std::vector<opcode_row>& rows, const shared_progress* progress) {
    totals sum = {};
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const row_progress& row = progress->rows[i];
        if (rows[i].missing && !chosen.processor_only) {
            ++sum.missing;
            continue;
        }
        if (!row.done) {
            ++sum.died;
            continue;
        }
        sum.rejected_words += row.result.rejected_words;
        sum.states += row.result.states;
        sum.differing += row.result.differences != 0;
        // A row must have been compared at as many states as were asked for.
        const std::uint32_t wanted = chosen.has_only_seed ? 1 : chosen.iterations;
        if (row.result.states < wanted) {
            ++sum.unexecuted;
            say(std::string("NOT COMPARABLE ") + rows[i].name + ": " + std::to_string(row.result.states) +
                " states, the processor rejects " + std::to_string(row.result.rejected_words) + " of " +
                std::to_string(row.result.rejected_words + row.result.words) + " words");
        } else {
            ++sum.checked;
        }
        if (chosen.verbose)
            say(std::string(rows[i].name) + ": " + std::to_string(row.result.states) + " states, " +
                std::to_string(row.result.differences) + " differ, " + std::to_string(row.result.words) +
                " words, " + std::to_string(row.result.rejected_words) + " rejected");
    }
    return sum;
}

int run(const settings& chosen, const std::vector<opcode_row>& rows) {
    shared_progress* const progress = make_progress();
    run_processes(chosen, rows, progress);
    const totals sum = add_up(chosen, rows, progress);
    if (chosen.processor_only)
        std::printf("Nothing was compared: the processor alone has executed this. ");
    std::printf("%llu rows checked with %llu states, %llu of them differ; %llu missing; %llu not comparable; "
                "%llu died. %llu reserved words were rejected by the processor.\n",
                static_cast<unsigned long long>(sum.checked), static_cast<unsigned long long>(sum.states),
                static_cast<unsigned long long>(sum.differing), static_cast<unsigned long long>(sum.missing),
                static_cast<unsigned long long>(sum.unexecuted), static_cast<unsigned long long>(sum.died),
                static_cast<unsigned long long>(sum.rejected_words));
    return sum.differing + sum.unexecuted + sum.died == 0 ? 0 : exit_different;
}

void list(const std::vector<opcode_row>& rows) {
    for (const opcode_row& row : rows)
        std::printf("%s%s\n", row.name, row.missing ? " (missing)" : "");
    for (const deliberate_difference& difference : deliberate_differences())
        std::printf("deliberate difference of %s: %s\n", difference.pattern, difference.reason);
}

} // namespace

int main(int count, char** arguments) {
    const settings chosen = parse(count, arguments);
    const std::vector<opcode_row> rows = selected_rows(chosen.filter);
    if (rows.empty())
        fail_usage("no stub has such a name", chosen.filter.c_str());
    if (chosen.list) {
        list(rows);
        return 0;
    }
    const rlimit no_core = {0, 0};
    setrlimit(RLIMIT_CORE, &no_core); // a process that dies is reported
    const std::string reason = prepare_processor();
    if (!reason.empty()) {
        std::fprintf(stderr, "conformance: %s\n", reason.c_str());
        return exit_no_processor;
    }
    return run(chosen, rows);
}
