#include "sve/library/memory_access.h"

#include "sve/client/fault_trapping.h"
#include "tests/unit/fault_tools.h"

#include <gtest/gtest.h>

namespace {

// The accessors of one width, with values widened.
struct accessors {
    int width;
    std::uint64_t (*read)(std::uint64_t address, int ignored, bool* fault);
    void (*write)(std::uint64_t value, std::uint64_t address);
};

template <class Value, auto read, auto write>
constexpr accessors accessors_of = {
    sizeof(Value),
    [](std::uint64_t address, int ignored, bool* fault) -> std::uint64_t {
        return read(address, ignored, fault, nullptr);
    },
    [](std::uint64_t value, std::uint64_t address) { write(static_cast<Value>(value), address, nullptr); },
};

constexpr accessors widths[] = {
    accessors_of<std::uint8_t, ReadMemLib1, WriteMemLib1>,
    accessors_of<std::uint16_t, ReadMemLib2, WriteMemLib2>,
    accessors_of<std::uint32_t, ReadMemLib4, WriteMemLib4>,
    accessors_of<std::uint64_t, ReadMemLib8, WriteMemLib8>,
};

// At every distance from both ends of a readable page, the other readable or not.
TEST(MemoryAccess, GuardedReadsNoticeBothEnds) {
    page_pair pages;
    for (const bool second : {false, true}) {
        pages.set_readable(!second, second);
        for (const accessors& each : widths) {
            for (const std::uint64_t edge : {pages.begin(), pages.boundary(), pages.end()}) {
                for (std::uint64_t address = edge - 10; address != edge + 10; ++address) {
                    const bool readable = pages.readable(address, static_cast<std::uint64_t>(each.width));
                    for (const bool before : {false, true}) {
                        SCOPED_TRACE(testing::Message() << each.width << " bytes at edge + "
                                                        << static_cast<std::int64_t>(address - edge));
                        bool fault = before;
                        const std::uint64_t value = each.read(address, before, &fault);
                        EXPECT_EQ(fault, before || !readable);
                        EXPECT_EQ(value, readable ? pages.number_at(address, each.width, false) : 0);
                        EXPECT_EQ(SVEFaultRegion, 0u);
                    }
                }
            }
        }
    }
}

TEST(MemoryAccess, WritesOfExactlyTheWidth) {
    for (const accessors& each : widths) {
        std::uint8_t bytes[32] = {};
        each.write(0x8182838485868788, reinterpret_cast<std::uint64_t>(bytes) + 5);
        for (std::uint64_t k = 0; k < 32; ++k)
            EXPECT_EQ(bytes[k], k >= 5 && k < 5 + static_cast<std::uint64_t>(each.width) ? 0x88 - (k - 5) : 0)
                << each.width << ", " << k;
    }
}

TEST(MemoryAccess, UnguardedFaultsAreFatal) {
    page_pair pages;
    pages.set_readable(true, false);
    for (const accessors& each : widths) {
        const std::uint64_t last_fault = pages.boundary();
        const child_outcome read = run_in_child([&] { each.read(last_fault, 0, nullptr); });
        EXPECT_EQ(read.signal, SIGSEGV);
        EXPECT_EQ(occurrences(read.errors, message_of_segv), 1);
        const child_outcome write = run_in_child([&] { each.write(1, last_fault); });
        EXPECT_EQ(write.signal, SIGSEGV);
        EXPECT_EQ(occurrences(write.errors, message_of_segv), 1);
    }
}

TEST(MemoryAccess, NothingBehindTheOtherEntries) {
    page_pair pages;
    pages.set_readable(true, false);
    for (const std::uint64_t address : {pages.begin(), pages.boundary(), std::uint64_t{0}}) {
        bool fault = true;
        EXPECT_EQ(ReadMem(address, 8, 0, &fault, nullptr), 0u);
        EXPECT_FALSE(fault);
        fault = true;
        EXPECT_EQ(ReadMemSim(address, 8, 0, &fault, true, nullptr), 0u);
        EXPECT_FALSE(fault);
        WriteMem(~0ul, address, 8, nullptr);
        WriteMemSim(~0ul, address, 8, true, nullptr);
    }
    EXPECT_EQ(ReadMemLib8(pages.begin(), 0, nullptr, nullptr), pages.number_at(pages.begin(), 8, false));
}

TEST(MemoryAccess, PageSizeIsTheHosts) { EXPECT_EQ(page_size, static_cast<std::uint32_t>(getpagesize())); }

} // namespace
