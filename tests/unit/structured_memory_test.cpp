// Structured loads and stores against an element-by-element definition, in memory that ends at unreadable
// pages.
#include "sve/handlers/structured_memory.h"

#include "tests/unit/memory_tools.h"

namespace {

struct structured_form {
    const char* name;
    contiguous_immediate_handler* immediate;
    contiguous_scaled_handler* scaled;
    int registers;
    int element_bytes;
    bool is_store;

    transfer_kind kind() const { return {element_bytes, element_bytes, false, is_store}; }
    int bytes_in_memory() const { return registers * vector_bytes; }
};

const structured_form forms[] = {
    {"ld2b", sve_ld2b_zpri, sve_ld2b_scaled_zprr, 2, 1, false},
    {"ld3b", sve_ld3b_zpri, sve_ld3b_scaled_zprr, 3, 1, false},
    {"ld4b", sve_ld4b_zpri, sve_ld4b_scaled_zprr, 4, 1, false},
    {"ld2h", sve_ld2h_zpri, sve_ld2h_scaled_zprr, 2, 2, false},
    {"ld3h", sve_ld3h_zpri, sve_ld3h_scaled_zprr, 3, 2, false},
    {"ld4h", sve_ld4h_zpri, sve_ld4h_scaled_zprr, 4, 2, false},
    {"ld2w", sve_ld2w_zpri, sve_ld2w_scaled_zprr, 2, 4, false},
    {"ld3w", sve_ld3w_zpri, sve_ld3w_scaled_zprr, 3, 4, false},
    {"ld4w", sve_ld4w_zpri, sve_ld4w_scaled_zprr, 4, 4, false},
    {"ld2d", sve_ld2d_zpri, sve_ld2d_scaled_zprr, 2, 8, false},
    {"ld3d", sve_ld3d_zpri, sve_ld3d_scaled_zprr, 3, 8, false},
    {"ld4d", sve_ld4d_zpri, sve_ld4d_scaled_zprr, 4, 8, false},
    {"st2b", sve_st2b_zpri, sve_st2b_scaled_zprr, 2, 1, true},
    {"st3b", sve_st3b_zpri, sve_st3b_scaled_zprr, 3, 1, true},
    {"st4b", sve_st4b_zpri, sve_st4b_scaled_zprr, 4, 1, true},
    {"st2h", sve_st2h_zpri, sve_st2h_scaled_zprr, 2, 2, true},
    {"st3h", sve_st3h_zpri, sve_st3h_scaled_zprr, 3, 2, true},
    {"st4h", sve_st4h_zpri, sve_st4h_scaled_zprr, 4, 2, true},
    {"st2w", sve_st2w_zpri, sve_st2w_scaled_zprr, 2, 4, true},
    {"st3w", sve_st3w_zpri, sve_st3w_scaled_zprr, 3, 4, true},
    {"st4w", sve_st4w_zpri, sve_st4w_scaled_zprr, 4, 4, true},
    {"st2d", sve_st2d_zpri, sve_st2d_scaled_zprr, 2, 8, true},
    {"st3d", sve_st3d_zpri, sve_st3d_scaled_zprr, 3, 8, true},
    {"st4d", sve_st4d_zpri, sve_st4d_scaled_zprr, 4, 8, true},
};

// Executes the form with registers and addressing drawn from the seed, in such a way that its address is as
// given, and compares with the definition.
void check(const structured_form& form, predicate_shape shape, std::uint64_t address,
           const fenced_memory& memory, const cpu_state& random, unsigned seed) {
    std::mt19937_64 generator(seed);
    const int zt =
        generator() % 3 == 0 ? 31 - static_cast<int>(generator() % 3) : static_cast<int>(generator() % 29);
    const int pg = static_cast<int>(generator() % 8);
    const int rn = generator() % 4 == 0 ? 31 : static_cast<int>(generator() % 31);
    const int rm = generator() % 4 == 0 ? 31 : (rn + 1) % 31;
    const int imm4 = static_cast<int>(generator() % 16) - 8;
    const bool scaled = generator() % 2;

    cpu_state state = random;
    set_predicate_of_size(form.element_bytes, state.p[pg], shape, seed);
    const std::uint64_t offset =
        scaled ? (rm == 31 ? 0 : state.x[rm] * static_cast<std::uint64_t>(form.element_bytes))
               : static_cast<std::uint64_t>(imm4 * form.bytes_in_memory());
    state.x[rn] = address - offset;

    std::vector<transfer> transfers;
    std::uint64_t place = address;
    for (int i = 0; i < form.kind().element_count(); ++i)
        for (int k = 0; k < form.registers; ++k, place += static_cast<std::uint64_t>(form.element_bytes))
            transfers.push_back({(zt + k) % 32, i, place});
    expect_transfers(form.kind(), transfers, pg, state, memory, [&](cpu_state* actual) {
        return scaled ? form.scaled(actual, data_register(zt), governing_register(pg), base_register(rn),
                                    i_operand(rm))
                      : form.immediate(actual, data_register(zt), governing_register(pg), base_register(rn),
                                       imm4);
    });
}

// Every form at many distances from a boundary of memory of so many pages, of every alignment.
template <class Boundary> void check_around(std::size_t pages, Boundary boundary) {
    fenced_memory memory(pages);
    const cpu_state random = random_state(7);
    unsigned seed = 0;
    for (const structured_form& form : forms) {
        for (int distance = -9; distance <= form.bytes_in_memory() + 1; distance += 5) {
            for (const predicate_shape shape : predicate_shapes) {
                SCOPED_TRACE(testing::Message()
                             << form.name << ", " << distance << " bytes before the boundary, shape "
                             << static_cast<int>(shape) << ", seed " << seed);
                memory.fill(distance % 16 == 1 ? seed : 1);
                check(form, shape, reinterpret_cast<std::uint64_t>(boundary(memory) - distance), memory,
                      random, seed);
                ++seed;
                if (testing::Test::HasFailure())
                    return;
            }
        }
    }
}

TEST(StructuredMemory, AcrossAPageBoundary) {
    check_around(2, [](const fenced_memory& memory) { return memory.middle(); });
}

TEST(StructuredMemory, OverTheStartOfMemory) {
    check_around(1, [](const fenced_memory& memory) { return memory.begin(); });
}

TEST(StructuredMemory, OverTheEndOfMemory) {
    check_around(1, [](const fenced_memory& memory) { return memory.end(); });
}

// Where the first element of a load, or what a store changes first, is.
TEST(StructuredMemory, ImmediateCountsGroupsOfRegistersAndIndexElements) {
    const struct {
        const char* name;
        bool scaled;
        int number;
        int displacement;
    } cases[] = {{"ld2b", false, 1, 256},    {"st4b", false, -1, -512},  {"ld3w", false, 1, 384},
                 {"ld2h", false, 7, 1792},   {"ld3h", false, -8, -3072}, {"ld2d", false, 1, 256},
                 {"ld4d", false, -8, -4096}, {"st3d", false, 7, 2688},   {"st2b", false, -8, -2048},
                 {"ld3h", true, 5, 10},      {"ld4b", true, -3, -3},     {"ld2w", true, 7, 28},
                 {"st3d", true, -2, -16},    {"st2h", true, 9, 18},      {"ld4d", true, 3, 24}};
    constexpr int middle = 4096;
    std::vector<std::uint8_t> memory(8192);
    for (const auto& one : cases) {
        const structured_form& form = *std::find_if(std::begin(forms), std::end(forms), [&](const auto& f) {
            return f.name == std::string(one.name);
        });
        cpu_state state = random_state(1);
        set_predicate<std::uint8_t>(state.p[0], predicate_shape::only_first, 0);
        state.x[5] = reinterpret_cast<std::uint64_t>(memory.data()) + middle;
        state.x[6] = static_cast<std::uint64_t>(std::int64_t{one.number});
        state.z[3][0] = 42;
        std::fill(memory.begin(), memory.end(), std::uint8_t{0});
        std::uint8_t& place = memory[static_cast<std::size_t>(middle + one.displacement)];
        place = form.is_store ? 0 : 43;
        if (one.scaled)
            form.scaled(&state, data_register(3), governing_register(0), base_register(5), i_operand(6));
        else
            form.immediate(&state, data_register(3), governing_register(0), base_register(5), one.number);
        if (form.is_store)
            EXPECT_EQ(place, 42) << one.name << " " << one.number;
        else
            EXPECT_EQ(state.z[3][0], 43) << one.name << " " << one.number;
    }
}

TEST(StructuredMemory, RegistersWrapAround) {
    std::uint32_t memory[128];
    for (std::uint32_t i = 0; i < 128; ++i)
        memory[i] = i;
    cpu_state state = random_state(5);
    const cpu_state before = state;
    set_predicate<std::uint32_t>(state.p[1], predicate_shape::all_true, 0);
    state.x[9] = reinterpret_cast<std::uint64_t>(memory);
    sve_ld4w_zpri(&state, data_register(30), governing_register(1), base_register(9), 0);
    const int loaded[] = {30, 31, 0, 1};
    for (std::uint32_t k = 0; k < 4; ++k)
        for (std::uint32_t i = 0; i < 32; ++i)
            EXPECT_EQ(element<std::uint32_t>(state.z[loaded[k]], static_cast<int>(i)), 4 * i + k);
    EXPECT_EQ(std::memcmp(state.z[2], before.z[2], vector_bytes), 0);
    EXPECT_EQ(std::memcmp(state.z[29], before.z[29], vector_bytes), 0);

    sve_st3w_zpri(&state, data_register(31), governing_register(1), base_register(9), 0);
    const int stored[] = {31, 0, 1};
    for (int k = 0; k < 3; ++k)
        for (int i = 0; i < 32; ++i)
            EXPECT_EQ(memory[3 * i + k], element<std::uint32_t>(state.z[stored[k]], i));
}

TEST(StructuredMemory, NothingActiveAccessesNothingWhateverTheAddress) {
    for (const std::uint64_t base : {std::uint64_t{0}, std::uint64_t{1} << 63, ~std::uint64_t{0} - 3}) {
        for (const structured_form& form : forms) {
            cpu_state state = random_state(3);
            set_predicate_of_size(form.element_bytes, state.p[2], predicate_shape::all_false, 4);
            state.x[9] = base;
            cpu_state expected = state;
            for (int k = 0; k < form.registers && !form.is_store; ++k)
                std::fill_n(expected.z[(30 + k) % 32], vector_bytes, std::uint8_t{0});
            EXPECT_FALSE(faults([&] {
                form.immediate(&state, data_register(30), governing_register(2), base_register(9), 0);
            })) << form.name;
            EXPECT_TRUE(same_state(state, expected)) << form.name;
        }
    }
}

} // namespace
