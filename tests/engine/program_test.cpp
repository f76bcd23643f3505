// Programs behave under ostrel as they do without it.
#include <gtest/gtest.h>

#include "command.h"

namespace {

struct program_case {
    std::string program;
    std::vector<std::string> arguments;
};

std::string name_of(const testing::TestParamInfo<program_case>& info) {
    std::string name = info.param.program;
    for (const std::string& argument : info.param.arguments)
        name += "_" + argument;
    for (char& c : name)
        if (!std::isalnum(static_cast<unsigned char>(c)))
            c = '_';
    return name;
}

std::string plugin_path() { return program_path("plugin.so"); }

class SameAsDirectly : public testing::TestWithParam<program_case> {};

TEST_P(SameAsDirectly, OutputAndStatus) {
    const outcome direct = run_directly(GetParam().program, GetParam().arguments);
    const outcome translated = run_translated(GetParam().program, GetParam().arguments);
    EXPECT_EQ(translated.status, direct.status);
    EXPECT_EQ(translated.output, direct.output);
    EXPECT_EQ(without_client_lines(translated.errors), without_client_lines(direct.errors));
    EXPECT_FALSE(direct.output.empty());
}

// Programs that check themselves end with status 0.
class ChecksItself : public testing::TestWithParam<program_case> {};

TEST_P(ChecksItself, Passes) {
    for (const outcome& result :
         {run_directly(GetParam().program, {}), run_translated(GetParam().program, {})}) {
        EXPECT_EQ(result.status, 0) << result.output << result.errors;
        EXPECT_NE(result.output.find("0 failed"), std::string::npos) << result.output;
    }
}

INSTANTIATE_TEST_SUITE_P(Machine, ChecksItself,
                         testing::Values(program_case{"register_cases", {}}, program_case{"transfers", {}},
                                         program_case{"machine_state", {}}),
                         name_of);

TEST(MachineWithoutSVE, LargeEmulatedBlocks) {
    const outcome result = run_translated("sve_blocks", {});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, "0 failed\n");
}

// SVE instructions are taken over where the program itself or nobody is known to have put them, and are none
// to this processor in a library.
TEST(MachineWithoutSVE, PlacesOfInstructions) {
    for (const std::string place : {"program", "memory", "place-of-library"}) {
        const outcome result = run_translated("sve_places", {place, plugin_path()});
        EXPECT_EQ(result.status, 0) << place << result.errors;
        const std::string loading = place == "place-of-library" ? "plugin loaded\nplugin unloaded\n" : "";
        EXPECT_EQ(result.output, "before\n" + loading + "128\n") << place;
        EXPECT_NE(result.errors.find("sve_places: 1 SVE instructions executed\n"), std::string::npos)
            << result.errors;
    }
    const outcome result = run_translated("sve_places", {"library", plugin_path()});
    EXPECT_EQ(result.status, 128 + 4);
    EXPECT_EQ(result.output, "before\n");
}

INSTANTIATE_TEST_SUITE_P(
    Programs, SameAsDirectly,
    testing::Values(program_case{"library", {}}, program_case{"library-pie", {}},
                    program_case{"library-dynamic", {}}, program_case{"library-dynamic-fixed", {}},
                    program_case{"environment-dynamic", {"a", "b c", "", "-x", "--"}},
                    program_case{"environment-dynamic-fixed", {"a"}},
                    program_case{"dynamic", {plugin_path()}}, program_case{"dynamic-fixed", {plugin_path()}},
                    program_case{"exceptions", {}}, program_case{"environment", {"a", "b c", "", "-x", "--"}},
                    program_case{"environment-pie", {"a", "b c", "", "-x", "--"}},
                    program_case{"rewriting", {}}, program_case{"rewriting-pie", {}}),
    name_of);

INSTANTIATE_TEST_SUITE_P(Traces, SameAsDirectly, testing::Values(program_case{"traces", {}}), name_of);

INSTANTIATE_TEST_SUITE_P(BranchProtection, SameAsDirectly,
                         testing::Values(program_case{"exceptions-protected", {}},
                                         program_case{"library-protected", {}}),
                         name_of);

INSTANTIATE_TEST_SUITE_P(Threads, SameAsDirectly,
                         testing::Values(program_case{"threads", {"work"}}, program_case{"threads", {"fork"}},
                                         program_case{"threads", {"return"}},
                                         program_case{"threads", {"cancel"}},
                                         program_case{"threads-dynamic", {"return"}},
                                         program_case{"threads", {"exit-elsewhere"}},
                                         program_case{"threads", {"first-thread-ends"}},
                                         program_case{"threads", {"fault-elsewhere"}}),
                         name_of);

INSTANTIATE_TEST_SUITE_P(
    Signals, SameAsDirectly,
    testing::Values(program_case{"signals", {"information"}}, program_case{"signals", {"registers"}},
                    program_case{"signals", {"interrupted"}}, program_case{"signals", {"masks"}},
                    program_case{"signals", {"stacks"}}, program_case{"signals", {"waits"}},
                    program_case{"signals", {"jumps"}}, program_case{"signals", {"processes"}},
                    program_case{"signals", {"threads"}}, program_case{"signals", {"bad-stack"}},
                    program_case{"signals", {"bad-frame"}}),
    name_of);

// What a processor with SVE does as well: the program checks itself.
TEST(MachineWithoutSVE, SignalHandlersKeepTheRegistersOfSVE) {
    const outcome result = run_translated("sve_signals", {});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, "0 failed\n");
}

INSTANTIATE_TEST_SUITE_P(
    Children, SameAsDirectly,
    testing::Values(program_case{"children", {"vfork"}}, program_case{"children", {"vfork-fork"}},
                    program_case{"children", {"vfork-threads"}}, program_case{"children", {"spawn"}},
                    program_case{"children", {"tree"}}, program_case{"execute", {"errors"}}),
    name_of);

// The counts of all threads add up: 40 threads with 1002 instructions each.
TEST(MachineWithoutSVE, ThreadsHaveTheirOwnState) {
    const outcome result = run_translated("sve_threads", {});
    EXPECT_EQ(result.output, "right 40 of 40\n");
    EXPECT_NE(result.errors.find("sve_threads: 40080 SVE instructions executed\n"), std::string::npos)
        << result.errors;
}

// While threads are busy, the process ends with one report, and does not wait for them.
TEST(Threads, ProcessEndsAmongBusyThreads) {
    for (unsigned n = 0; n < 4; ++n) {
        const outcome result = run_translated("sve_threads", {"endless"});
        EXPECT_EQ(result.status, 9) << result.errors;
        const std::size_t report = result.errors.find(" SVE instructions executed\n");
        EXPECT_NE(report, std::string::npos) << result.errors;
        EXPECT_EQ(result.errors.find(" SVE instructions executed\n", report + 1), std::string::npos);
    }
}

INSTANTIATE_TEST_SUITE_P(ChangingCode, SameAsDirectly,
                         testing::Values(program_case{"changing_code", {"graph", "3000"}},
                                         program_case{"changing_code", {"in-place", "20000"}},
                                         program_case{"changing_code", {"protected", "5000"}},
                                         program_case{"changing_code", {"loop", "20"}}),
                         name_of);

// What user-mode emulation does not do directly: code written by way of another mapping, and SVE.
TEST(MachineWithoutSVE, ChangingCode) {
    EXPECT_EQ(run_translated("changing_code", {"elsewhere", "5000"}).output, "elsewhere: 0 wrong\n");
    const outcome result = run_translated("changing_code", {"sve", "2000"});
    EXPECT_EQ(result.output, "sve: 0 wrong\n");
    EXPECT_NE(result.errors.find("changing_code: 2000 SVE instructions executed\n"), std::string::npos)
        << result.errors;
}

// Every way in which a program may end; see endings.c.
std::vector<program_case> endings() {
    std::vector<program_case> result;
    for (const char* program : {"endings", "endings-pie"})
        for (const char* way : {"return",
                                "exit",
                                "_exit",
                                "thread-exit",
                                "abort",
                                "terminate",
                                "send-fault",
                                "null",
                                "call-null",
                                "call-data",
                                "call-stack",
                                "misaligned",
                                "overflow",
                                "trap",
                                "undefined",
                                "unallocated-branch",
                                "write-code",
                                "hypervisor-call",
                                "bad-authentication",
                                "ignored-signal",
                                "vector-length",
                                "fork",
                                "own-executable"})
            result.push_back({program, {way}});
    return result;
}
INSTANTIATE_TEST_SUITE_P(Endings, SameAsDirectly, testing::ValuesIn(endings()), name_of);

TEST(Endings, StatusesAreWhatTheyShouldBe) {
    EXPECT_EQ(run_translated("endings", {"return"}).status, 77);
    EXPECT_EQ(run_translated("endings", {"exit"}).status, 3);
    EXPECT_EQ(run_translated("endings", {"abort"}).status, 128 + 6);
    EXPECT_EQ(run_translated("endings", {"null"}).status, 128 + 11);
    EXPECT_EQ(run_translated("endings", {"vector-length"}).status, 8);
    EXPECT_EQ(run_translated("endings", {"fork"}).status, 11);
    EXPECT_EQ(run_translated("endings", {"own-executable"}).status, 13);
}

// A fault of the program's own code is announced, and once.
TEST(Endings, FaultsAreAnnounced) {
    for (const char* way : {"null", "write-code", "send-fault"}) {
        const outcome result = run_translated("endings", {way});
        const std::string line =
            "kelvo's SVESigHandler caught signal SIGSEGV from the process being emulated, "
            "passing it to the default signal handler.\n";
        const std::size_t at = result.errors.find(line);
        ASSERT_NE(at, std::string::npos) << way << ": " << result.errors;
        EXPECT_EQ(result.errors.find("SVESigHandler", at + line.size()), std::string::npos) << way;
    }
}

TEST(Unsupported, OneLineAndStatus125) {
    const outcome result = run_translated("children", {"shared"});
    EXPECT_EQ(result.status, 125);
    EXPECT_EQ(result.errors, "ostrel: " + program_path("children") +
                                 ": processes that share memory and run at the same time (clone with "
                                 "CLONE_VM alone) are not supported\n");
    EXPECT_EQ(result.output.find("after"), std::string::npos);
}

} // namespace
