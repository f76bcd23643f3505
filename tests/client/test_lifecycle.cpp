// Start-up, arguments, thread events and exit.
#include "tests/client/client_fixture.h"

#include <cstring>

namespace {

using calls = std::vector<std::string>;

struct started_by_hand : testing::Test {
    std::uint32_t code[4] = {};

    void SetUp() override {
        program = {reinterpret_cast<std::uint8_t*>(code), reinterpret_cast<std::uint8_t*>(code + 4),
                   reinterpret_cast<std::uint8_t*>(code), "/usr/local/bin/a.out"};
        recorded_calls.clear();
    }
    void TearDown() override {
        program = {};
        failing_call.clear();
    }
    static void start(std::vector<const char*> arguments) {
        const int count = static_cast<int>(arguments.size());
        arguments.push_back(nullptr);
        start_client(count, arguments.data());
    }
    static std::string exit_report() {
        testing::internal::CaptureStderr();
        raise_process_exit();
        return testing::internal::GetCapturedStderr();
    }
};

TEST_F(started_by_hand, registers_and_ends_in_order) {
    start({"ostrel"});
    EXPECT_EQ(recorded_calls,
              (calls{"dr_set_client_name", "drmgr_init", "drreg_init", "dr_get_main_module",
                     "drmgr_register_thread_init_event", "drmgr_register_thread_exit_event",
                     "drmgr_register_exit_event", "drmgr_register_bb_app2app_event",
                     "drmgr_register_tls_field", "dr_log global 0xffffff 1 SVE client initializing\n"}));
    EXPECT_EQ(exe_start, program.start);

    recorded_calls.clear();
    exit_report();
    EXPECT_EQ(recorded_calls, (calls{"dr_log global 0xffffff 1 SVE client exiting\n", "dr_free_module_data",
                                     "drmgr_unregister_bb_app2app_event", "drreg_exit", "drmgr_exit"}));
    // Both uses of drmgr have ended: nothing can be registered any more.
    EXPECT_FALSE(drmgr_register_exit_event([] {}));
}

TEST_F(started_by_hand, reports_both_counts_under_the_base_name) {
    const auto expect_report = [](const std::string& sve, const std::string& others) {
        EXPECT_EQ(exit_report(), "a.out: " + sve + " SVE instructions executed\n" + "a.out: " + others +
                                     " Non-SVE AArch64 instructions executed\n");
    };
    start({"ostrel", "--"});
    expect_report("0", "0");
    start({"ostrel", "--", "-x"});
    sve_instr_count = 5'000'000'000;
    aarch64_instr_count = 7'000'000'001;
    expect_report("5000000000", "7000000001");
    start({"ostrel", "--", "--", "word"});
    expect_report("0", "0");
}

TEST_F(started_by_hand, refuses_any_argument_ahead_of_two_dashes) {
    for (const char* argument : {"-x", "--verbose", "word", "-", "---", "", "-a=1"})
        for (const char* next : {"--", "-b"})
            EXPECT_EXIT(start({"ostrel", argument, next}), testing::ExitedWithCode(255),
                        "^Usage error: Unknown option: " + std::string(argument) + "\n$");
}

TEST_F(started_by_hand, aborts_when_the_framework_fails_it) {
    for (const char* call : {"drmgr_init", "drreg_init", "drmgr_register_bb_app2app_event"}) {
        failing_call = call;
        EXPECT_EXIT(start({"ostrel"}), testing::ExitedWithCode(255),
                    "^ASSERT FAILURE: sve/client/sve_client:[0-9]+: false \\(\\)\n$")
            << call;
    }
    failing_call.clear();
    start({"ostrel"});
    for (const char* call : {"drmgr_unregister_bb_app2app_event", "drreg_exit"}) {
        failing_call = call;
        EXPECT_EXIT(raise_process_exit(), testing::ExitedWithCode(255), "ASSERT FAILURE: .*: false \\(\\)\n$")
            << call;
    }
    failing_call.clear();
    exit_report();
}

TEST_F(started_by_hand, starts_without_a_main_module) {
    program = {};
    exe_start = nullptr;
    start({"ostrel"});
    EXPECT_EQ(exe_start, nullptr);
    ASSERT_EQ(drreg_exit(), DRREG_SUCCESS);
    drmgr_exit();
}

TEST_F(started_by_hand, gives_each_thread_a_cleared_state_and_takes_it_back) {
    start({"ostrel"});
    thread_context first = {}, second = {};
    // Memory that is handed out again must come back cleared.
    for (int round = 0; round < 2; ++round) {
        raise_thread_init(&first);
        raise_thread_init(&second);
        auto* one = static_cast<cpu_state*>(drmgr_get_tls_field(&first, tls_idx));
        auto* two = static_cast<cpu_state*>(drmgr_get_tls_field(&second, tls_idx));
        ASSERT_NE(one, nullptr);
        ASSERT_NE(two, nullptr);
        EXPECT_NE(one, two);
        const std::vector<unsigned char> zeros(sizeof(cpu_state), 0);
        EXPECT_EQ(std::memcmp(one, zeros.data(), sizeof *one), 0);
        std::memset(static_cast<void*>(one), 0xA5, sizeof *one);
        EXPECT_EQ(std::memcmp(two, zeros.data(), sizeof *two), 0);
        std::memset(static_cast<void*>(two), 0x5A, sizeof *two);

        recorded_calls.clear();
        raise_thread_exit(&first);
        raise_thread_exit(&second);
        EXPECT_EQ(recorded_calls, (calls{"dr_thread_free", "dr_thread_free"}));
    }
    exit_report();
}

TEST_F(started_by_hand, aborts_at_the_exit_of_a_thread_without_state) {
    start({"ostrel"});
    thread_context context = {};
    EXPECT_EXIT(raise_thread_exit(&context), testing::ExitedWithCode(255),
                "^ASSERT FAILURE: sve/client/sve_client:[0-9]+: data != __null \\(\\)\n$");
    exit_report();
}

} // namespace
