// The library's gathers, scatters and block loads where a comparison with a processor does not look: other
// vector lengths, the far ends of offsets, and faults.
#include "sve/library/gather_scatter.h"
#include "sve/library/replicating_loads.h"

#include "sve/decode/decoder.h"
#include "tests/unit/fault_tools.h"
#include "tests/unit/library_operands.h"
#include "tests/unit/memory_tools.h"

namespace {

PredV first_bits(int count) {
    PredV result = {};
    for (int k = 0; k < count; ++k)
        result.words[k / 64] |= std::uint64_t{1} << (k % 64);
    return result;
}

CpuContext context_of(std::uint32_t length) { return {0, 0, 0, length, {}}; }

std::uint64_t address_of(const void* pointer) { return reinterpret_cast<std::uint64_t>(pointer); }

// One element, whose address lies at a distance from the base that is more than the offset's own bits say.
TEST(LibraryGather, OffsetsAreExtendedBeforeTheyAreScaled) {
    const std::uint64_t unsigned_minus_1 = 0xFFFFFFFF;
    const std::uint64_t upper = 0x1234567800000000; // does not count
    const struct {
        gather_from_base* load;
        std::uint64_t offset;
        std::uint64_t distance;
    } cases[] = {
        {VecU64Load2XVSZ, upper | unsigned_minus_1, ~std::uint64_t{0}},
        {VecU64Load2YVSZ, upper | unsigned_minus_1, 0xFFFFFFFF},
        {VecU64Load2YSVZ, upper | unsigned_minus_1, 0x1FFFFFFFE},
        {VecU64Load4YSVZ, upper | 0x80000000, 0x200000000},
        {VecS64Load4XVSZ, upper | 0x80000000, 0xFFFFFFFF80000000},
        {VecU64Load8YVSZ, upper | 0x80000000, 0x80000000},
        {VecU32Load1VSZ, unsigned_minus_1, 0xFFFFFFFF},
        {VecU32Load2SVZ, unsigned_minus_1, 0x1FFFFFFFE},
        {VecU32Load4SVZ, 0x80000001, 0x200000004},
    };
    const std::uint64_t memory = 0x0706050403020142;
    for (const auto& [load, offset, distance] : cases) {
        VecV offsets = {};
        set_element<std::uint64_t>(offsets, 0, offset);
        CpuContext context = context_of(16);
        const VecV result = load(first_bits(1), address_of(&memory) - distance, offsets, &context);
        EXPECT_EQ(result.bytes[0], 0x42) << std::hex << distance;
    }
}

TEST(LibraryGather, ThereAndBackAtEveryVectorLength) {
    std::mt19937_64 random(2);
    std::uint8_t memory[256];
    std::generate(std::begin(memory), std::end(memory), [&] { return static_cast<std::uint8_t>(random()); });
    for_random_operands([&](const primitive_operands& values) {
        VecV offsets = {};
        for (int i = 0; i < 64; ++i)
            set_element<std::uint32_t>(offsets, i, values.zm.bytes[i]);
        CpuContext context = values.context;
        const VecV loaded = VecS32Load1VSZ(values.pg, address_of(memory), offsets, &context);
        std::uint8_t stored[256] = {};
        VecU32Store1VSZ(values.zn, values.pg, address_of(stored), offsets, &context);
        EXPECT_EQ(std::memcmp(&context, &values.context, sizeof context), 0);

        // Where elements fall together, the last one stays.
        std::uint8_t expected_memory[256] = {};
        std::vector<std::int32_t> expected;
        const std::vector<bool> active = bits_of(values.pg, context);
        for (const std::uint32_t data : elements_of<std::uint32_t>(values.zn, context)) {
            const std::size_t i = expected.size();
            const std::uint8_t at = values.zm.bytes[i];
            const bool is_active = active_at<std::int32_t>(active, i);
            expected.push_back(is_active ? static_cast<std::int8_t>(memory[at]) : 0);
            if (is_active)
                expected_memory[at] = static_cast<std::uint8_t>(data);
        }
        EXPECT_EQ(elements_of<std::int32_t>(loaded, context), expected);
        EXPECT_EQ(std::memcmp(stored, expected_memory, sizeof stored), 0);
    });
}

TEST(LibraryBlockLoad, ReadsActiveElementsOfTheFirstBlockOnly) {
    page_pair pages;
    pages.set_readable(true, false);
    for (const std::uint32_t length : some_vector_lengths) {
        for (unsigned bits = 0; bits < 0x10000; bits += 37) {
            // The block ends behind the last active element, right before an unreadable page.
            std::uint64_t expected[2] = {};
            const bool low = bits & 1, high = bits >> 8 & 1;
            const std::uint64_t start = pages.boundary() - (high ? 16 : 8);
            if (low)
                expected[0] = pages.number_at(start, 8, false);
            if (high)
                expected[1] = pages.number_at(start + 8, 8, false);
            PredV predicate = {{bits, ~std::uint64_t{0}, bits, bits}};
            predicate.words[0] |= 0xFFFF0000;
            CpuContext context = context_of(length);
            const std::uint64_t index = bits * 0x123456789;
            const VecV by_index = VecU64LoadDup8QSSZ(predicate, start - index * 8, index, &context);
            const VecV by_immediate = VecU64LoadDup8QSIZ(predicate, start + 128, -8, &context);
            for (std::uint32_t i = 0; i < length; ++i) {
                EXPECT_EQ(get_element<std::uint64_t>(by_index, static_cast<int>(i)), expected[i % 2]);
                EXPECT_EQ(get_element<std::uint64_t>(by_immediate, static_cast<int>(i)), expected[i % 2]);
            }
        }
    }
}

// LD1H { z1.d }, p2/z, [x3, z4.d, sxtw].
TEST(LibraryGather, FaultLeavesTheDestinationAsItWas) {
    page_pair pages;
    pages.set_readable(true, false);
    const unsigned int word = 0xC4C04000 | 4 << 16 | 2 << 10 | 3 << 5 | 1;
    ASSERT_STREQ(opcode_name(is_sve(word)), "VecU64Load2XVSZ");
    cpu_state state = random_state(6);
    std::fill_n(state.p[2], vector_bytes, std::uint8_t{1});
    state.x[3] = pages.boundary() - 6;
    for (int i = 0; i < 16; ++i)
        set_element<std::uint64_t>(state.z[4], i, static_cast<std::uint64_t>(2 * i)); // 3 is out of reach
    const cpu_state before = state;
    EXPECT_TRUE(faults([&] { is_sve(word)(&state, word); }));
    EXPECT_TRUE(same_state(state, before));
}

// Two stores with the third element out of reach, in a child that shares the memory.
TEST(FaultInAStore, LowerElementsAreInMemory) {
    const struct {
        const char* name;
        unsigned int word;
    } cases[] = {
        {"VecU64Store4XVSZ",
         0xE500C000 | 4 << 16 | 2 << 10 | 3 << 5 | 1}, // ST1W { z1.d }, p2, [x3, z4.d, sxtw]
        {"VecU64CStore4LSSZ",
         0xE5604000 | 4 << 16 | 2 << 10 | 3 << 5 | 1}, // ST1W { z1.d }, p2, [x3, x4, lsl #2]
    };
    for (const auto& each : cases) {
        const opcode_stub stub = is_sve(each.word);
        ASSERT_STREQ(opcode_name(stub), each.name);
        const auto page = static_cast<std::size_t>(getpagesize());
        auto* const shared = static_cast<std::uint8_t*>(
            mmap(nullptr, 2 * page, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
        mprotect(shared + page, page, PROT_NONE);
        std::uint8_t* const end = shared + page;
        cpu_state state = random_state(6);
        std::fill_n(state.p[2], vector_bytes, std::uint8_t{1});
        state.p[2][0] = 0;
        state.x[3] = address_of(end) - 12;
        state.x[4] = 0;
        for (int i = 0; i < 16; ++i)
            set_element<std::uint64_t>(state.z[4], i, static_cast<std::uint64_t>(4 * i));
        std::fill_n(end - 16, 16, std::uint8_t{0xEE});

        const child_outcome result = run_in_child([&] { stub(&state, each.word); });
        EXPECT_EQ(result.signal, SIGSEGV);
        EXPECT_EQ(occurrences(result.errors, message_of_segv), 1);
        for (int k = 0; k < 8; ++k)
            EXPECT_EQ(end[k - 16], 0xEE);
        EXPECT_EQ(std::memcmp(end - 8, state.z[1] + 8, 4), 0);
        EXPECT_EQ(std::memcmp(end - 4, state.z[1] + 16, 4), 0);
        munmap(shared, 2 * page);
    }
}

} // namespace
