#include "sve/client/fault_trapping.h"

#include "sve/client/host_fault.h"
#include "sve/library/memory_access.h"
#include "tests/unit/fault_tools.h"

#include <atomic>
#include <cstring>
#include <gtest/gtest.h>
#include <thread>

namespace {

struct sigaction action_for(int signal) {
    struct sigaction action;
    sigaction(signal, nullptr, &action);
    return action;
}

volatile char* at(std::uint64_t address) { return reinterpret_cast<volatile char*>(address); }

TEST(FaultTrapping, IsInstalledAtLoad) {
    for (const int signal : {SIGSEGV, SIGBUS}) {
        const struct sigaction action = action_for(signal);
        EXPECT_EQ(action.sa_sigaction, SVESigHandler);
        EXPECT_EQ(action.sa_flags & 0x58000007, 0x50000004); // but for the C library's own SA_RESTORER
        for (const int other : {SIGSEGV, SIGBUS, SIGUSR1})
            EXPECT_EQ(sigismember(&action.sa_mask, other), 0);
    }
    EXPECT_EQ(ctxt, &cpu_ctxt);
    EXPECT_EQ(cpu_ctxt.vl, 2u);
}

TEST(FaultTrapping, InstallsOnce) {
    struct sigaction other = {};
    struct sigaction previous;
    other.sa_handler = SIG_IGN;
    sigaction(SIGSEGV, &other, &previous);
    EXPECT_EQ(SVEInitialize(), 1u);
    EXPECT_EQ(action_for(SIGSEGV).sa_handler, SIG_IGN);
    sigaction(SIGSEGV, &previous, nullptr);
}

// Whether the guard reports a fault of the one access.
[[gnu::noinline]] bool guarded_access_faults(volatile char* address) {
    if (sigsetjmp(sveFaultJB, 1) != 0)
        return true;
    SVEFaultRegion = 1;
    static_cast<void>(*address);
    SVEFaultRegion = 0;
    return false;
}

TEST(FaultTrapping, GuardedSectionSurvivesEveryFault) {
    page_pair pages;
    pages.set_readable(true, false);
    sigset_t before, after;
    sigprocmask(SIG_SETMASK, nullptr, &before);
    for (int times = 0; times < 3; ++times) {
        EXPECT_TRUE(guarded_access_faults(at(pages.boundary())));
        EXPECT_EQ(SVEFaultRegion, 0u);
        EXPECT_FALSE(guarded_access_faults(at(pages.boundary() - 1)));
        EXPECT_EQ(SVEFaultRegion, 0u);
    }
    sigprocmask(SIG_SETMASK, nullptr, &after);
    for (int signal = 1; signal < 32; ++signal)
        EXPECT_EQ(sigismember(&before, signal), sigismember(&after, signal)) << signal;
    EXPECT_EQ(action_for(SIGSEGV).sa_sigaction, SVESigHandler);
}

// A shared mapping of a file that is a page shorter, where accesses raise SIGBUS.
volatile char* beyond_end_of_file() {
    std::FILE* const file = std::tmpfile();
    const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    void* const mapped = mmap(nullptr, page, PROT_READ | PROT_WRITE, MAP_SHARED, fileno(file), 0);
    std::fclose(file);
    return static_cast<volatile char*>(mapped);
}

TEST(FaultTrapping, FaultOutsideOfTheGuardEndsTheProcess) {
    page_pair pages;
    pages.set_readable(true, false);
    const child_outcome segv = run_in_child([&] { *at(pages.boundary()) = 1; });
    EXPECT_EQ(segv.signal, SIGSEGV);
    EXPECT_EQ(occurrences(segv.errors, message_of_segv), 1);
    EXPECT_EQ(occurrences(segv.errors, "SVESigHandler"), 1);

    const child_outcome bus = run_in_child([] { *beyond_end_of_file() = 1; });
    EXPECT_EQ(bus.signal, SIGBUS);
    EXPECT_EQ(occurrences(bus.errors, message_of_bus), 1);
    EXPECT_EQ(occurrences(bus.errors, "SVESigHandler"), 1);

    const child_outcome after_guarded = run_in_child([&] {
        guarded_access_faults(at(pages.boundary()));
        *at(pages.boundary()) = 1;
    });
    EXPECT_EQ(after_guarded.signal, SIGSEGV);
    EXPECT_EQ(occurrences(after_guarded.errors, message_of_segv), 1);
}

TEST(FaultTrapping, SentSignalEndsTheProcess) {
    for (const int signal : {SIGSEGV, SIGBUS}) {
        const child_outcome result = run_in_child([=] {
            kill(getpid(), signal);
            _exit(7);
        });
        EXPECT_EQ(result.signal, signal);
        EXPECT_EQ(occurrences(result.errors, signal == SIGSEGV ? message_of_segv : message_of_bus), 1);
    }
}

TEST(Probe, TellsWhatCanBeReadAndLeavesTheActionInPlace) {
    page_pair pages;
    pages.set_readable(true, false);
    const struct {
        std::uint64_t address;
        bool readable;
    } cases[] = {
        {pages.begin(), true},           {pages.boundary() - 1, true}, {pages.begin() - 1, false},
        {pages.boundary(), false},       {pages.end() - 1, false},     {0, false},
        {std::uint64_t{1} << 63, false}, {~std::uint64_t{0}, false},
    };
    // The second time with another action than that of load time.
    const struct sigaction at_load = action_for(SIGSEGV);
    struct sigaction own = {};
    own.sa_handler = [](int) { _exit(99); };
    own.sa_flags = SA_RESETHAND;
    sigaddset(&own.sa_mask, SIGUSR2);
    for (const struct sigaction& installed : {at_load, own}) {
        sigaction(SIGSEGV, &installed, nullptr);
        for (const auto& [address, readable] : cases) {
            for (int times = 0; times < 2; ++times)
                EXPECT_EQ(addr_is_readable<char>(at(address)), readable) << std::hex << address;
            const struct sigaction left = action_for(SIGSEGV);
            EXPECT_EQ(left.sa_sigaction, installed.sa_sigaction);
            EXPECT_EQ(left.sa_flags & 0xF8000007, installed.sa_flags & 0xF8000007);
            EXPECT_EQ(sigismember(&left.sa_mask, SIGUSR2), sigismember(&installed.sa_mask, SIGUSR2));
        }
    }
    sigaction(SIGSEGV, &at_load, nullptr);
}

// Calls body(turn) in several threads at once, and returns for how many turns it wasn't true.
template <class Body> int failures_in_threads(Body body) {
    std::atomic<int> failures = 0;
    std::vector<std::thread> threads;
    for (int number = 0; number < 4; ++number)
        threads.emplace_back([&] {
            for (int turn = 0; turn < 500; ++turn)
                failures += !body(turn);
        });
    for (std::thread& thread : threads)
        thread.join();
    return failures;
}

TEST(FaultTrapping, ServesThreadsAtOnce) {
    page_pair pages;
    pages.set_readable(true, false);
    EXPECT_EQ(failures_in_threads([&](int turn) {
                  const std::uint64_t address = pages.boundary() - static_cast<unsigned>(turn % 2);
                  bool fault = false;
                  ReadMemLib1(address, 0, &fault, nullptr);
                  return fault != pages.readable(address) &&
                         addr_is_readable<char>(at(address)) == pages.readable(address);
              }),
              0);
    EXPECT_EQ(action_for(SIGSEGV).sa_sigaction, SVESigHandler);
}

TEST(Probe, LeavesOtherThreadsTheirFaults) {
    page_pair pages;
    pages.set_readable(true, false);
    static std::atomic<int> faults = 0;
    struct sigaction counting = {}, at_load;
    counting.sa_flags = SA_SIGINFO;
    counting.sa_sigaction = [](int, siginfo_t*, void* context) {
        ++faults;
        step_over_load(static_cast<ucontext_t*>(context));
    };
    sigaction(SIGSEGV, &counting, &at_load);
    std::atomic<bool> done = false;
    std::thread prober([&] {
        while (!done)
            addr_is_readable<char>(at(pages.boundary()));
    });
    for (int turn = 0; turn < 2000; ++turn)
        load_and_drop(pages.boundary());
    done = true;
    prober.join();
    sigaction(SIGSEGV, &at_load, nullptr);
    EXPECT_EQ(faults, 2000);
}

TEST(Probe, PassesOnBusErrors) {
    const child_outcome result = run_in_child([] { addr_is_readable<char>(beyond_end_of_file()); });
    EXPECT_EQ(result.signal, SIGBUS);
    EXPECT_EQ(occurrences(result.errors, message_of_bus), 1);
}

} // namespace
