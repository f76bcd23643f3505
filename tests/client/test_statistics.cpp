// Counts of executed instructions.
#include "sve/client/statistics.h"

#include <barrier>
#include <gtest/gtest.h>
#include <mutex>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

struct statistics : testing::Test {
    unsigned int code[4] = {};

    void SetUp() override {
        icounts.clear();
        sve_instr_count = 0;
    }
    static std::string dump() {
        testing::internal::CaptureStderr();
        dump_sve_stats();
        return testing::internal::GetCapturedStderr();
    }
};

TEST_F(statistics, keep_the_first_word_of_an_address) {
    update_sve_stats(&code[2], 0x11);
    EXPECT_EQ(icounts.at(&code[2]).second, 1u);
    update_sve_stats(&code[2], 0x22);
    update_sve_stats(&code[1], 0x33);
    EXPECT_EQ(sve_instr_count, 3u);
    ASSERT_EQ(icounts.size(), 2u);
    EXPECT_EQ(icounts.at(&code[2]).first, 0x11u);
    EXPECT_EQ(icounts.at(&code[2]).second, 2u);
    EXPECT_EQ(icounts.at(&code[1]).first, 0x33u);
}

// The child has no thread that could give the mutex back.
TEST_F(statistics, count_in_the_child_of_a_fork_while_another_thread_counts) {
    std::barrier held(2);
    std::thread holder([&] {
        const std::lock_guard lock(icounts_mutex);
        held.arrive_and_wait();
        usleep(20000);
    });
    held.arrive_and_wait();
    const pid_t child = fork();
    if (child == 0) {
        alarm(5);
        update_sve_stats(&code[0], 1);
        _exit(static_cast<int>(icounts.at(&code[0]).second));
    }
    holder.join();
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 1 << 8) << "blocked, or counted wrong";
    update_sve_stats(&code[0], 1);
    EXPECT_EQ(sve_instr_count, 1u);
}

TEST_F(statistics, are_dumped_in_order_of_address) {
    EXPECT_EQ(dump(), "");
    update_sve_stats(&code[3], 0xABCDEF);
    update_sve_stats(&code[0], 0x04200000);
    update_sve_stats(&code[3], 0xABCDEF);
    char expected[128];
    std::snprintf(expected, sizeof expected, "%p: 0x04200000 1\n%p: 0x00abcdef 2\n",
                  static_cast<void*>(&code[0]), static_cast<void*>(&code[3]));
    EXPECT_EQ(dump(), expected);
}

TEST_F(statistics, lose_no_count_between_threads) {
    constexpr unsigned threads = 4, rounds = 2;
    std::vector<unsigned int> addresses(40000);
    std::barrier start(threads);
    const auto count_all = [&](unsigned number) {
        start.arrive_and_wait();
        // Each thread begins elsewhere, so that rows are made by all of them at once.
        for (std::size_t step = 0; step < rounds * addresses.size(); ++step)
            update_sve_stats(&addresses[(step * 7 + number * 10000) % addresses.size()], 1);
    };
    std::vector<std::thread> running;
    for (unsigned number = 0; number < threads; ++number)
        running.emplace_back(count_all, number);
    for (std::thread& thread : running)
        thread.join();
    EXPECT_EQ(sve_instr_count, threads * rounds * addresses.size());
    ASSERT_EQ(icounts.size(), addresses.size());
    for (const auto& [address, row] : icounts)
        ASSERT_EQ(row.second, threads * rounds);
}

} // namespace
