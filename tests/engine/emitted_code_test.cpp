// Reads the code that the engine emits. From a load-exclusive to its store-exclusive, it accesses no memory
// but what the application does. And whatever is written to the cache is seen by the processor's instruction
// fetch.
#include <algorithm>
#include <cstdio>
#include <gtest/gtest.h>
#include <map>

#include "framework/aarch64/classify.h"
#include "framework/runtime/block_builder.h"
#include "framework/runtime/code_cache.h"
#include "framework/runtime/exclusives.h"
#include "framework/runtime/executable_ranges.h"
#include "framework/runtime/recovery.h"
#include "framework/runtime/traces.h"

// Each stretch begins at its name with a load-exclusive. None of this is run here.
asm(R"(
    .pushsection .text
    .globl update_of_x28, pair_with_status_in_x28, branches_within, own_addresses, literals_between
update_of_x28:
    ldxr x28, [x1]
    tbz x28, #3, 1f
    cbz w28, 1f
    add x28, x28, #1
    stxr w2, x28, [x1]
    cbnz w2, update_of_x28
1:  ret
pair_with_status_in_x28:
    ldaxp x0, x3, [x1]
    ccmp x0, x4, #0, eq
    b.ne 1f
    stlxp w28, x5, x6, [x1]
    cbnz w28, pair_with_status_in_x28
1:  ret
branches_within:
    ldxrh w0, [x28]
    cbz w0, 1f
    add w0, w0, #1
    b 2f
1:  sub w0, w0, #1
2:  stxrh w3, w0, [x28]
    cbnz w3, branches_within
    ret
own_addresses:
    ldxr x0, [x1]
    adr x2, own_addresses
    adrp x28, etext
    mrs x3, tpidr_el0
    stxr w4, x28, [x1]
    cbnz w4, own_addresses
    ret
literals_between:
    ldxr x0, [x1]
    ldr x2, 1f
    ldrsw x28, 1f
    stxr w4, x2, [x1]
    cbnz w4, literals_between
    ret
1:  .quad 0
    .popsection
)");
extern "C" const a64::word update_of_x28[], pair_with_status_in_x28[], branches_within[], own_addresses[],
    literals_between[];
extern "C" const char __executable_start[], etext[];

namespace {

using a64::word;

constexpr bool accesses_memory(word instruction) { return (instruction & 0x0A000000) == 0x08000000; }
constexpr bool is_store_exclusive(word instruction) {
    return (instruction & 0x3FE00000) == 0x08000000 || (instruction & 0xBFE00000) == 0x88200000;
}

// The most accesses on a way from `place`, behind the load, to a store; -1 if no way leads to one. Indirect
// branches, those to the dispatcher among them, end a way.
int most_accesses(const word* place, std::map<const word*, int>& known) {
    if (const auto found = known.find(place); found != known.end())
        return found->second;
    known[place] = -1; // for a way that comes back here
    const a64::kind k = a64::classify(*place);
    const auto* const target =
        reinterpret_cast<const word*>(a64::named_address(*place, k, reinterpret_cast<std::uint64_t>(place)));
    int most = -1;
    if (is_store_exclusive(*place))
        return known[place] = 0;
    if (k == a64::kind::branch)
        most = most_accesses(target, known);
    else if (a64::is_conditional(k))
        most = std::max(most_accesses(place + 1, known), most_accesses(target, known));
    else if (!a64::ends_block(k) && *place != a64::undefined)
        most = most_accesses(place + 1, known);
    if (most >= 0 && accesses_memory(*place))
        ++most;
    return known[place] = most;
}

struct stretch {
    const char* name;
    const word* code;
    int own_accesses; // of the application, between load and store
};
void PrintTo(const stretch& value, std::ostream* out) { *out << value.name; }

class Exclusives : public testing::TestWithParam<stretch> {
protected:
    Exclusives() {
        add_executable_range(reinterpret_cast<std::uint64_t>(__executable_start),
                             reinterpret_cast<std::uint64_t>(etext));
        create_code_cache(context, 0, 1 << 16);
        context->pc = reinterpret_cast<std::uint64_t>(GetParam().code);
        first = build_block(context, nullptr);
    }
    ~Exclusives() override { destroy_thread_context(context); }

    thread_context* const context = create_thread_context();
    const block* first;
};

TEST_P(Exclusives, NoAccessBetween) {
    // What follows the block is linked as it is when it has been run.
    code_cache& cache = *context->cache;
    const std::uint64_t end = context->pc + 16 * sizeof(word);
    for (std::size_t n = 0; n < cache.exits.size(); ++n) {
        exit_record& exit = cache.exits[n];
        if (exit.kind != exit_kind::direct || exit.linked_to ||
            exit.target - context->pc >= end - context->pc)
            continue;
        if (const block* const target = find_block(cache, exit.target)) {
            link_exit(exit, *target);
            continue;
        }
        const std::uint64_t start = std::exchange(context->pc, exit.target);
        build_block(context, &exit);
        context->pc = start;
    }
    const word* load = first->entry;
    while (!is_load_exclusive(*load))
        ++load;
    std::map<const word*, int> known;
    EXPECT_EQ(most_accesses(load + 1, known), GetParam().own_accesses);
}

// Wherever a signal arrives in the block, the application's registers are found: here each register holds ten
// times its number, but those that serve as X28 and the thread pointer.
TEST_P(Exclusives, RegistersAreRecovered) {
    code_cache& cache = *context->cache;
    context->app_x28 = 280;
    registers_in_place in_place = none_in_place;
    for (const word* place = first->entry; place < cache.out.cursor; ++place)
        if (const auto found = find_place(cache.map, place); found && found->in_place.stolen != 31)
            in_place = found->in_place;
    for (const word* place = first->entry; find_place(cache.map, place); ++place) {
        const code_place found = *find_place(cache.map, place);
        if (place > found.effect)
            break;
        std::uint64_t x[32];
        for (unsigned n = 0; n < 32; ++n)
            x[n] = 10 * n;
        context->scratch[2] = 10 * in_place.stolen;
        context->scratch[3] = 10 * in_place.thread_pointer;
        // Behind the load both are in place. Before, only what has been saved is to be taken back.
        if (found.start != first->entry) {
            context->app_x28 = in_place.stolen == 31 ? 280 : 0;
            x[in_place.stolen] = 280;
            x[in_place.thread_pointer] = 0;
        }
        interrupted_machine machine{x, reinterpret_cast<std::uint64_t>(place)};
        const recovery result = recover_state(cache, machine);
        EXPECT_EQ(result.found, recovery::outcome::complete);
        EXPECT_EQ(result.pc - reinterpret_cast<std::uint64_t>(GetParam().code), found.pc - context->pc);
        for (unsigned n = 0; n < 31; ++n)
            EXPECT_EQ(n == 28 ? context->app_x28 : x[n], 10 * n) << place - first->entry;
    }
}

INSTANTIATE_TEST_SUITE_P(Stretches, Exclusives,
                         testing::Values(stretch{"update_of_x28", update_of_x28, 0},
                                         stretch{"pair_with_status_in_x28", pair_with_status_in_x28, 0},
                                         stretch{"branches_within", branches_within, 0},
                                         stretch{"own_addresses", own_addresses, 0},
                                         stretch{"literals_between", literals_between, 2}),
                         [](const testing::TestParamInfo<stretch>& info) {
                             return std::string(info.param.name);
                         });

// The words of a cache as the last maintenance left them.
a64::word* maintained_start;
std::vector<word> maintained;

void expect_all_maintained(const code_cache& cache) {
    for (std::size_t n = 0; n < maintained.size(); ++n)
        ASSERT_EQ(maintained_start[n], maintained[n]) << "word " << n << " of " << &cache;
}

// Some exit that the dispatcher may see, since it is not linked yet or counts, every other time that which
// ends the code; null if there is none.
exit_record* open_exit(code_cache& cache, std::uint64_t random) {
    std::vector<exit_record*> found;
    cache.blocks.for_each([&](const block_key&, const block& owner) {
        for (exit_record* exit = owner.exits; exit; exit = exit->next)
            if (exit->kind == exit_kind::direct && (!exit->linked_to || (exit->counter && exit->countdown)))
                found.push_back(exit);
    });
    std::ranges::sort(found, {}, &exit_record::branch);
    return found.empty() ? nullptr : found[random % 2 ? found.size() - 1 : random / 2 % found.size()];
}

// Blocks of this program, built and linked from exit to exit, dropped and built again, in a cache that is
// filled and flushed meanwhile.
TEST(Maintenance, CoversWhatIsWritten) {
    add_executable_range(reinterpret_cast<std::uint64_t>(__executable_start),
                         reinterpret_cast<std::uint64_t>(etext));
    thread_context* const context = create_thread_context();
    code_cache& cache = *create_code_cache(context, 0, 1 << 15);
    maintained_start = cache.start;
    maintained.assign(cache.start, cache.limit);
    std::uint64_t random = 1;
    unsigned copies = 0;
    for (unsigned step = 0; step < 1500 && !HasFatalFailure(); ++step) {
        random = random * 6364136223846793005u + 1442695040888963407u;
        exit_record* const exit = step % 100 == 0 ? nullptr : open_exit(cache, random >> 40);
        context->pc = exit ? exit->target : reinterpret_cast<std::uint64_t>(&std::snprintf) + step / 25 * 4;
        const block* const target = find_block(cache, context->pc);
        const unsigned generation = cache.generation;
        if (exit && exit->path) {
            if (exit->counter)
                exit->countdown = 0;
            if (target || (build_block(context, nullptr) && generation == cache.generation))
                copies += follow_path(cache, *exit) != find_block(cache, exit->target);
        } else if (!target)
            build_block(context, exit);
        else if (exit)
            link_exit(*exit, *target);
        if (random >> 61 == 0)
            drop_blocks(cache, {context->pc, context->pc + (random >> 50 & 0xFFC) + 4});
        expect_all_maintained(cache);
    }
    EXPECT_GT(cache.generation, 0u);
    EXPECT_GT(copies, 10u);
    maintained.clear();
    destroy_thread_context(context);
}

} // namespace

extern "C" void __real___clear_cache(void* start, void* end);
extern "C" void __wrap___clear_cache(void* start, void* end) {
    for (word* place = static_cast<word*>(start); place < end; ++place)
        if (!maintained.empty() && place >= maintained_start && place < maintained_start + maintained.size())
            maintained[static_cast<std::size_t>(place - maintained_start)] = *place;
    __real___clear_cache(start, end);
}
