// Parts of the engine's runtime by themselves.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <malloc.h>
#include <unistd.h>
#include <vector>

#include "dr_api.h"
#include "framework/loader/module.h"
#include "framework/loader/script.h"
#include "framework/runtime/executable_ranges.h"
#include "framework/runtime/mangle.h"
#include "framework/runtime/robust_list.h"

extern "C" void dr_client_main(client_id_t, int, const char**) {}

namespace {

// Ranges are added and removed at random, and compared with a flag for each page.
TEST(ExecutableRanges, UnionAndDifference) {
    constexpr std::size_t pages = 64;
    bool executable[pages + 1] = {};
    std::uint64_t random = 1;
    for (unsigned step = 0; step < 500; ++step) {
        random = random * 6364136223846793005u + 1442695040888963407u;
        const std::size_t start = random >> 40 & (pages - 1),
                          end = start + (random >> 50) % (pages + 1 - start);
        const bool add = random >> 63;
        (add ? add_executable_range : remove_executable_range)(start << 12, end << 12);
        std::fill(executable + start, executable + end, add);
        for (std::size_t page = 0, until = 0; page < pages; ++page) {
            until = std::find(executable + page, executable + pages, false) - executable;
            const std::uint64_t expected = until > page ? until << 12 : 0;
            ASSERT_EQ(executable_until(page << 12), expected) << step;
            ASSERT_EQ(executable_until((page << 12) + 0xFFC), expected) << step;
        }
    }
    remove_executable_range(0, pages << 12);
}

TEST(Modules, RangesOfMappedFiles) {
    const auto at = [](std::uint64_t address) {
        return find_module(reinterpret_cast<const std::uint8_t*>(address)).module;
    };
    constexpr std::uint64_t place = 0x7000000000, page = 0x10000;
    const int own = open("/proc/self/exe", O_RDONLY);
    // What comes and goes leaves nothing behind.
    std::size_t used = 0;
    for (unsigned n = 0; n < 300; ++n) {
        add_mapped_file(own, 0, place, page);
        EXPECT_TRUE(at(place));
        remove_modules(0, place + 100 * page);
        if (n == 20)
            used = mallinfo2().uordblks;
    }
    EXPECT_LT(mallinfo2().uordblks, used + 2000);
    add_mapped_file(own, 0, place, page);
    close(own);
    const auto program = at(place);
    ASSERT_TRUE(program);
    EXPECT_EQ(reinterpret_cast<std::uint64_t>(program->start), place);
    const auto end = reinterpret_cast<std::uint64_t>(program->end);
    EXPECT_GT(end, place + 4 * page); // all segments, not only what has been mapped
    const auto expect = [&](std::initializer_list<std::pair<std::uint64_t, bool>> places) {
        for (const auto& [address, found] : places)
            EXPECT_EQ(at(address), found ? program : nullptr) << address - place;
    };
    expect({{place - 1, false}, {end - 1, true}, {end, false}});

    // A file of another kind, over a part of it.
    const int other = open("/etc/passwd", O_RDONLY);
    add_mapped_file(other, 0, place + page, page);
    close(other);
    ASSERT_TRUE(at(place + page));
    EXPECT_EQ(at(place + page)->full_path, "/etc/passwd");
    EXPECT_EQ(reinterpret_cast<std::uint64_t>(at(place + page)->end), place + 2 * page);
    expect({{place + page - 1, true}, {place + 2 * page, true}});

    remove_modules(place + 2 * page, place + 3 * page);
    expect({{place + 2 * page, false}, {place + 3 * page, true}});
    remove_modules(0, end);
    expect({{place, false}, {end - 1, false}});
}

TEST(Scripts, FirstLineAsTheKernelReadsIt) {
    const auto shown = [](std::string start) {
        start.resize(std::max<std::size_t>(start.size(), 1));
        const std::optional<script_line> line = parse_script_line(start);
        return line ? line->interpreter + "|" + line->argument : "none";
    };
    EXPECT_EQ(shown("#!/bin/sh\ntext"), "/bin/sh|");
    EXPECT_EQ(shown("#! \t/bin/sh \t-e  -x \t\ntext"), "/bin/sh|-e  -x");
    EXPECT_EQ(shown("#!/bin/sh"), "/bin/sh|");
    EXPECT_EQ(shown(std::string("#!/bin/sh\0-e\n", 14)), "/bin/sh|");
    EXPECT_EQ(shown("#!\n/bin/sh"), "none");
    EXPECT_EQ(shown("#! \t"), "none");
    EXPECT_EQ(shown("#"), "none");
    EXPECT_EQ(shown("text"), "none");
    // Of 256 bytes without an end of line, an argument is cut off, and a name of unknown length is none.
    EXPECT_EQ(shown("#!/a " + std::string(300, 'x')), "/a|" + std::string(250, 'x'));
    EXPECT_EQ(shown("#!/" + std::string(300, 'x')), "none");
    EXPECT_EQ(shown("#!/" + std::string(252, 'x') + "\n"), "/" + std::string(252, 'x') + "|");
}

TEST(RobustList, ReleasesWhatTheThreadOwns) {
    struct entry {
        entry* next;
        std::uint32_t futex;
    };
    constexpr std::uint32_t owner = 1234, waiters = 0x80000000, owner_died = 0x40000000;
    entry entries[5] = {{&entries[1], owner},
                        {&entries[2], owner | waiters},
                        {nullptr, owner + 1},
                        {nullptr, owner},
                        {nullptr, 0}};
    struct {
        entry* first;
        std::int64_t offset;
        entry* pending;
    } head{&entries[0], offsetof(entry, futex), &entries[3]};
    entries[2].next = reinterpret_cast<entry*>(&head);
    release_robust_futexes(reinterpret_cast<std::uint64_t>(&head), owner);
    EXPECT_EQ(entries[0].futex, owner_died);
    EXPECT_EQ(entries[1].futex, owner_died | waiters);
    EXPECT_EQ(entries[2].futex, owner + 1);  // another's
    EXPECT_EQ(entries[3].futex, owner_died); // being locked when the thread ended

    // A ring that does not come back to its head ends all the same.
    entries[2].next = &entries[0];
    head.pending = nullptr;
    release_robust_futexes(reinterpret_cast<std::uint64_t>(&head), owner);
    EXPECT_EQ(entries[4].futex, 0u);
}

// The words that an application instruction at `pc` becomes.
std::vector<a64::word> emitted(a64::word instruction, std::uint64_t pc) {
    static a64::word buffer[64];
    emitter out{buffer, {}, nullptr, false, 0};
    emit_application_instruction(out, instruction, a64::classify(instruction), pc);
    out.place_literals();
    return {buffer, out.cursor};
}

TEST(Mangling, CacheTypeHidesThatCodeNeedNotBeInvalidated) {
    // MRS X3, CTR_EL0; AND X3, X3, #0xFFFFFFFFDFFFFFFF.
    EXPECT_EQ(emitted(0xD53B0023, 0x1000), (std::vector<a64::word>{0xD53B0023, 0x9262F863}));
    // MRS XZR, CTR_EL0: an AND to register 31 would set the stack pointer.
    EXPECT_EQ(emitted(0xD53B003F, 0x1000), (std::vector<a64::word>{0xD53B003F}));
}

TEST(Mangling, PageAddressOutOfReachIsALiteral) {
    // ADRP X5, +1 page, at an address that no ADRP of the cache reaches: LDR X5 of the address in the words
    // behind.
    const std::vector<a64::word> words = emitted(0xB0000005, 0x7F0123456788);
    ASSERT_GE(words.size(), 3u);
    EXPECT_EQ(words[0] & 0xFF00001F, 0x58000005u);
    const std::size_t literal = (words[0] >> 5) & 0x7FFFF;
    ASSERT_EQ(words.size(), literal + 2);
    EXPECT_EQ(words[literal], 0x23457000u);
    EXPECT_EQ(words[literal + 1], 0x7F01u);
}

TEST(Mangling, BranchesOfUnknownExtensionsDoNotRun) {
    EXPECT_EQ(emitted(0xD6FF0000, 0x1000), std::vector<a64::word>{0}); // unallocated branch to register
    EXPECT_EQ(emitted(0x74000000, 0x1000), std::vector<a64::word>{0}); // compare and branch of two registers
}

} // namespace
