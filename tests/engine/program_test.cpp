// Programs behave under ostrel as they do without it. A case is the program's name and its arguments, with
// spaces between.
#include <gtest/gtest.h>
#include <sstream>

#include "command.h"

namespace {

std::string name_of(const testing::TestParamInfo<std::string>& info) {
    std::string name = info.param;
    for (char& c : name)
        if (!std::isalnum(static_cast<unsigned char>(c)))
            c = '_';
    return name;
}

// The words of the case; PLUGIN stands for the path of the plugin, _ for an empty word.
outcome run(bool translated, const std::string& text) {
    std::istringstream stream(text);
    std::string program, word;
    std::vector<std::string> arguments;
    stream >> program;
    while (stream >> word)
        arguments.push_back(word == "PLUGIN" ? program_path("plugin.so") : word == "_" ? "" : word);
    return translated ? run_translated(program, arguments) : run_directly(program, arguments);
}
outcome translated(const std::string& text) { return run(true, text); }

class SameAsDirectly : public testing::TestWithParam<std::string> {};

TEST_P(SameAsDirectly, OutputAndStatus) {
    const outcome direct = run(false, GetParam()), result = translated(GetParam());
    EXPECT_EQ(result.status, direct.status);
    EXPECT_EQ(result.output, direct.output);
    EXPECT_EQ(without_client_lines(result.errors), without_client_lines(direct.errors));
    EXPECT_FALSE(direct.output.empty());
}

std::vector<std::string> each(const std::string& program, const std::string& ways) {
    std::istringstream stream(ways);
    std::vector<std::string> result;
    for (std::string way; stream >> way;)
        result.push_back(program + " " + way);
    return result;
}

// These check themselves as well.
INSTANTIATE_TEST_SUITE_P(Machine, SameAsDirectly, testing::Values("register_cases", "machine"), name_of);

INSTANTIATE_TEST_SUITE_P(Programs, SameAsDirectly,
                         testing::Values("dynamic PLUGIN", "dynamic-fixed PLUGIN", "exceptions",
                                         "environment a _ -x --", "environment-pie a _ -x --",
                                         "environment-dynamic a _ -x --"),
                         name_of);

INSTANTIATE_TEST_SUITE_P(RandomCode, SameAsDirectly, testing::Values("random_code 60 300"), name_of);

INSTANTIATE_TEST_SUITE_P(Traces, SameAsDirectly, testing::Values("traces"), name_of);

INSTANTIATE_TEST_SUITE_P(Protection, SameAsDirectly,
                         testing::Values("exceptions-protected", "exceptions-sanitized"), name_of);

INSTANTIATE_TEST_SUITE_P(Threads, SameAsDirectly,
                         testing::ValuesIn(each("threads", "work fork return cancel exit-elsewhere "
                                                           "first-thread-ends fault-elsewhere")),
                         name_of);
INSTANTIATE_TEST_SUITE_P(DynamicThreads, SameAsDirectly, testing::Values("threads-dynamic return"), name_of);

INSTANTIATE_TEST_SUITE_P(Signals, SameAsDirectly,
                         testing::ValuesIn(each("signals",
                                                "information registers interrupted masks stacks waits "
                                                "processes threads bad-stack bad-frame")),
                         name_of);

INSTANTIATE_TEST_SUITE_P(Children, SameAsDirectly,
                         testing::ValuesIn(each("children", "vfork vfork-fork vfork-threads spawn tree")),
                         name_of);
INSTANTIATE_TEST_SUITE_P(Execute, SameAsDirectly, testing::Values("execute errors"), name_of);

INSTANTIATE_TEST_SUITE_P(ChangingCode, SameAsDirectly,
                         testing::Values("changing_code graph 3000", "changing_code rewrite 1200",
                                         "changing_code own 20", "changing_code loop 20"),
                         name_of);

// Every way in which a program may end; see endings.c.
constexpr char endings[] =
    "return exit _exit thread-exit abort terminate send-fault null call-null call-data misaligned overflow "
    "trap undefined unallocated-branch write-code hypervisor-call bad-authentication ignored-signal "
    "vector-length fork own-executable";
INSTANTIATE_TEST_SUITE_P(Endings, SameAsDirectly, testing::ValuesIn(each("endings", endings)), name_of);
INSTANTIATE_TEST_SUITE_P(EndingsOfPie, SameAsDirectly, testing::ValuesIn(each("endings-pie", endings)),
                         name_of);

TEST(Endings, StatusesAreWhatTheyShouldBe) {
    for (const auto& [way, status] : {std::pair{"return", 77},
                                      {"exit", 3},
                                      {"abort", 128 + 6},
                                      {"null", 128 + 11},
                                      {"vector-length", 8},
                                      {"fork", 11},
                                      {"own-executable", 13}})
        EXPECT_EQ(run_translated("endings", {way}).status, status) << way;
}

// A fault of the program's own code is announced, and once.
TEST(Endings, FaultsAreAnnounced) {
    for (const char* way : {"null", "write-code", "send-fault"}) {
        const outcome result = run_translated("endings", {way});
        EXPECT_EQ(occurrences(result.errors,
                              "kelvo's SVESigHandler caught signal SIGSEGV from the process being "
                              "emulated, passing it to the default signal handler.\n"),
                  1u)
            << way << result.errors;
        EXPECT_EQ(occurrences(result.errors, "SVESigHandler"), 1u) << way;
    }
}

// What a processor without SVE does not do directly: each case, all of its output, and how many SVE
// instructions are executed. They are taken over where the program itself or nobody is known to have put
// them, and are none to this processor in a library. The counts of all threads add up. And what user-mode
// emulation does not do directly: code written by way of another mapping.
TEST(MachineWithoutSVE, OutputAndCount) {
    const struct {
        std::string words, output, count;
        int status = 0;
    } cases[] = {
        {"sve_signals", "0 failed\n", ""},
        {"sve large-blocks", "", "25824"},
        {"sve program", "128\n", "1"},
        {"sve memory", "128\n", "1"},
        {"sve place-of-library PLUGIN", "plugin loaded\nplugin unloaded\n128\n", "1"},
        {"sve library PLUGIN", "plugin loaded\n", "", 128 + 4},
        {"sve threads", "right 40 of 40\n", "40080"},
        {"changing_code sve 2000", "sve: 0 wrong\n", "2000"},
        {"changing_code elsewhere 5000", "elsewhere: 0 wrong\n", "0"},
    };
    for (const auto& c : cases) {
        outcome result = translated(c.words);
        EXPECT_EQ(result.status, c.status) << c.words << result.errors;
        for (const char* line : {"before ", "after "}) // of the way, see run_way
            if (const std::size_t at = result.output.find(line); at != std::string::npos)
                result.output.erase(at, result.output.find('\n', at) + 1 - at);
        EXPECT_EQ(result.output, c.output) << c.words;
        if (!c.count.empty()) {
            EXPECT_NE(result.errors.find(": " + c.count + " SVE instructions executed\n"), std::string::npos)
                << c.words << result.errors;
        }
    }
}

// While threads are busy, the process ends with one report, and does not wait for them.
TEST(Threads, ProcessEndsAmongBusyThreads) {
    for (unsigned n = 0; n < 4; ++n) {
        const outcome result = translated("sve busy-threads");
        EXPECT_EQ(result.status, 9) << result.errors;
        EXPECT_EQ(occurrences(result.errors, " SVE instructions executed\n"), 1u) << result.errors;
    }
}

TEST(Unsupported, OneLineAndStatus125) {
    const outcome result = translated("children shared");
    EXPECT_EQ(result.status, 125);
    EXPECT_EQ(result.errors, "ostrel: " + program_path("children") +
                                 ": processes that share memory and run at the same time (clone with "
                                 "CLONE_VM alone) are not supported\n");
    EXPECT_EQ(result.output.find("after"), std::string::npos);
}

} // namespace
