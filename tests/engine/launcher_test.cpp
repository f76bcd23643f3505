// What ostrel makes of its options, and of programs that execute others.
#include <fcntl.h>
#include <fstream>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "command.h"

namespace {

unsigned reports(const std::string& errors) { return occurrences(errors, " SVE instructions executed\n"); }

std::string script(const std::string& name, const std::string& content) {
    const std::string path = testing::TempDir() + "ostrel_" + std::to_string(getpid()) + "_" + name;
    std::ofstream(path) << content;
    chmod(path.c_str(), 0755);
    return path;
}

TEST(Execute, KeepsWhatTheKernelKeeps) {
    const std::string program = program_path("execute");
    const outcome result = run_followed({}, program, {"keeps-state", program});
    EXPECT_EQ(result.status, 0) << result.errors;
    std::string environment = "environment FIRST=1\nenvironment SECOND=\n";
    if (result.output.find(environment) == std::string::npos) // user-mode emulation turns the order round
        environment = "environment SECOND=\nenvironment FIRST=1\n";
    EXPECT_EQ(result.output, "argv[0] another name\nargv[1] shows-state\nargv[2] \nargv[3] last\n" +
                                 environment +
                                 "signal 10: ignored 1, blocked 0, pending 0\n"
                                 "signal 12: ignored 0, blocked 1, pending 1\n"
                                 "signal 37: ignored 0, blocked 1, pending 0\n"
                                 "open 20\npath " +
                                 program + ", process execute\nalarm 1, mask 127\n");
    EXPECT_EQ(reports(result.errors), 1u) << result.errors;
}

TEST(Execute, ReportsOfAllProcesses) {
    for (const std::string name : {"execute", "execute-dynamic"}) {
        const std::string program = program_path(name);
        const outcome result = run_followed({}, program, {"spawns", program});
        EXPECT_EQ(result.output, "spawned 0, status 17\nspawned 0, status 17\nspawned 0, status 17\n");
        EXPECT_EQ(reports(result.errors), 4u) << result.errors;
    }
    const std::string program = program_path("execute");
    EXPECT_EQ(reports(run_followed({"--no-follow-children"}, program, {"spawns", program}).errors), 1u);
    EXPECT_EQ(run_followed({}, program, {"own-executable"}).output,
              "argv[0] itself\nargv[1] shows-state\npath /proc/self/exe, process exe\nalarm 0, mask 22\n");
}

// One that runs itself would not come far.
TEST(Execute, EngineIsNotTranslated) {
    const outcome result =
        run_followed({}, program_path("execute"),
                     {"runs", OSTREL_PATH, "zero", "--", program_path("execute"), "status", "21"});
    EXPECT_EQ(result.status, 21);
    EXPECT_EQ(reports(result.errors), 1u) << result.errors;
}

// Whoever reads what a program writes to standard error is not to find the counts there.
TEST(Execute, ReportsGoToAFile) {
    const std::string file = testing::TempDir() + "report-" + std::to_string(getpid());
    const outcome result = run_followed({"--report", file}, program_path("execute"),
                                        {"runs", program_path("execute"), "zero", "status", "21"});
    EXPECT_EQ(result.status, 21);
    EXPECT_EQ(result.errors, "");
    std::ifstream stream(file);
    const std::string written{std::istreambuf_iterator<char>(stream), {}};
    EXPECT_EQ(reports(written), 1u) << written;
    std::remove(file.c_str());

    // As a program finds it that may not write there.
    const outcome kept = run_followed({"--inherited-report", "/no/such/directory/report"},
                                      program_path("execute"), {"status", "21"});
    EXPECT_EQ(kept.status, 21);
    EXPECT_EQ(reports(kept.errors), 1u) << kept.errors;
}

TEST(Execute, ByDescriptor) {
    const outcome result =
        run_followed({}, program_path("execute"), {"by-descriptors", program_path(""), "execute"});
    const std::string shown = "argv[0] by descriptor\nargv[1] shows-state\n";
    EXPECT_EQ(result.output,
              shown + "path /dev/fd/3/execute, process execute\nalarm 0, mask 22\nin directory 0\n" + shown +
                  "open 4\npath /dev/fd/4, process execute\nalarm 0, mask 22\nfile 0\n" + shown +
                  "open 4\npath /dev/fd/5, process memfd:copy\nalarm 0, mask 22\ncopy 0\n")
        << result.errors;
}

// Five scripts, each the interpreter of the next, as many as the kernel follows.
TEST(Execute, Scripts) {
    std::vector<std::string> scripts{
        script("0", "#! " + program_path("environment") + " \tone argument \t\n")};
    std::string arguments = "argv[1] one argument\n";
    for (int n = 1; n < 6; ++n)
        scripts.push_back(script(std::to_string(n), "#!" + scripts.back()));
    for (int n = 0; n < 5; ++n)
        arguments += "argv[" + std::to_string(n + 2) + "] " + scripts[static_cast<std::size_t>(n)] + "\n";
    arguments += "argv[7] given\n";

    for (const bool by_program : {false, true}) {
        const auto run = [&](const std::string& path) {
            return by_program ? run_followed({}, program_path("execute"), {"runs", path, "zero", "given"})
                              : run_followed({}, path, {"given"});
        };
        const outcome result = run(scripts[4]);
        EXPECT_EQ(result.status, 0);
        EXPECT_NE(result.output.find("argv[0] " + program_path("environment") + "\n" + arguments),
                  std::string::npos)
            << result.output << result.errors;
        EXPECT_NE(result.output.find("file " + scripts[4] + ","), std::string::npos) << result.output;

        const outcome refused = run(scripts[5]);
        EXPECT_EQ(refused.status, by_program ? 0 : 126);
        EXPECT_EQ(refused.output, "");
    }
    for (const std::string& path : scripts)
        unlink(path.c_str());
}

TEST(Options, Environment) {
    const outcome result =
        run_followed({"-E", "OSTREL_TEST_A=1=2", "--env", "OSTREL_TEST_B=", "--env=OSTREL_TEST_C=x",
                      "--unset-env", "OSTREL_TEST_A", "--"},
                     program_path("environment"), {});
    EXPECT_EQ(result.output.find("OSTREL_TEST_A"), std::string::npos) << result.output;
    EXPECT_NE(result.output.find("environment OSTREL_TEST_B=\n"), std::string::npos) << result.output;
    EXPECT_NE(result.output.find("environment OSTREL_TEST_C=x\n"), std::string::npos) << result.output;
}

// How often code is translated shows in the count of instructions.
TEST(Options, CodeCacheIsFlushedWhenItIsFull) {
    const auto translated = [](const outcome& result) {
        return std::atol(result.errors.c_str() + result.errors.find("executed\nrandom_code: ") + 22);
    };
    const std::string program = program_path("random_code");
    const outcome large = run_followed({}, program, {"300", "6"});
    const outcome small = run_followed({"--code-cache", "256"}, program, {"300", "6"});
    EXPECT_EQ(small.output, large.output);
    EXPECT_GT(translated(large), 30000) << large.errors;
    EXPECT_GT(translated(small), 4 * translated(large)) << small.errors;
}

TEST(Options, AnnouncedSVE) {
    constexpr char without[] = "capability 0, field 0, features 0, length -1\n"
                               "set 128: -1, set 256: -1, set 64: -1, set 17: -1\n";
    constexpr char with[] = "capability 1, field 1, features 0, length 128\n"
                            "set 128: 131200, set 256: 128, set 64: -1, set 17: -1\n";
    const std::string program = program_path("announced");
    EXPECT_EQ(run_followed({}, program, {}).output, without);
    EXPECT_EQ(run_followed({"--hwcap-sve"}, program, {}).output, with);
    EXPECT_EQ(run_followed({"--hwcap-sve"}, program_path("execute"), {"runs", program, "zero"}).output, with);
}

} // namespace
