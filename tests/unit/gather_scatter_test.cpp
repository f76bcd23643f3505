// Gather loads and scatter stores against an element-by-element definition, in memory between unreadable
// pages; address generation against scalar arithmetic.
#include "sve/handlers/gather_scatter.h"

#include "tests/unit/memory_tools.h"

#include <variant>

namespace {

enum class extension { none, sign, zero };

// Which operands there are, and whether an offset is scaled, is said by the handler's type.
const struct vector_form {
    const char* name;
    std::variant<vector_base_handler*, vector_offset_handler*, scaled_vector_offset_handler*> handler;
    transfer_kind kind;
    extension extends;

    bool has_vector_base() const { return handler.index() == 0; }
    std::uint64_t scale() const {
        return handler.index() == 2 ? static_cast<std::uint64_t>(kind.memory_bytes) : 1;
    }

    aarch64_decode_rc call(cpu_state* state, int zt, int pg, int vector, int rn, unsigned int imm5) const {
        const aarch64_z_reg data = data_register(zt), z = data_register(vector);
        const aarch64_p_reg governing = governing_register(pg);
        switch (handler.index()) {
        case 0:
            return std::get<0>(handler)(state, data, governing, z, imm5);
        case 1:
            return std::get<1>(handler)(state, data, governing, z, base_register(rn));
        default:
            return std::get<2>(handler)(state, data, governing, base_register(rn), z);
        }
    }
} forms[] = {
    {"ld1b_d_zpzi", sve_ld1b_d_zpzi, {8, 1, false, false}, extension::none},
    {"ld1sb_d_zpzi", sve_ld1sb_d_zpzi, {8, 1, true, false}, extension::none},
    {"ld1h_d_zpzi", sve_ld1h_d_zpzi, {8, 2, false, false}, extension::none},
    {"ld1sh_d_zpzi", sve_ld1sh_d_zpzi, {8, 2, true, false}, extension::none},
    {"ld1w_d_zpzi", sve_ld1w_d_zpzi, {8, 4, false, false}, extension::none},
    {"ld1sw_d_zpzi", sve_ld1sw_d_zpzi, {8, 4, true, false}, extension::none},
    {"ld1d_zpzi", sve_ld1d_zpzi, {8, 8, false, false}, extension::none},
    {"st1b_d_zpzi", sve_st1b_d_zpzi, {8, 1, false, true}, extension::none},
    {"st1h_d_zpzi", sve_st1h_d_zpzi, {8, 2, false, true}, extension::none},
    {"st1w_d_zpzi", sve_st1w_d_zpzi, {8, 4, false, true}, extension::none},
    {"st1d_zpzi", sve_st1d_zpzi, {8, 8, false, true}, extension::none},
    {"ld1b_d_zpzr", sve_ld1b_d_zpzr, {8, 1, false, false}, extension::none},
    {"ld1sb_d_zpzr", sve_ld1sb_d_zpzr, {8, 1, true, false}, extension::none},
    {"ld1h_d_zpzr", sve_ld1h_d_zpzr, {8, 2, false, false}, extension::none},
    {"ld1sh_d_zpzr", sve_ld1sh_d_zpzr, {8, 2, true, false}, extension::none},
    {"ld1w_d_zpzr", sve_ld1w_d_zpzr, {8, 4, false, false}, extension::none},
    {"ld1sw_d_zpzr", sve_ld1sw_d_zpzr, {8, 4, true, false}, extension::none},
    {"ld1d_zpzr", sve_ld1d_zpzr, {8, 8, false, false}, extension::none},
    {"st1b_d_zpzr", sve_st1b_d_zpzr, {8, 1, false, true}, extension::none},
    {"st1h_d_zpzr", sve_st1h_d_zpzr, {8, 2, false, true}, extension::none},
    {"st1w_d_zpzr", sve_st1w_d_zpzr, {8, 4, false, true}, extension::none},
    {"st1d_zpzr", sve_st1d_zpzr, {8, 8, false, true}, extension::none},
    {"ld1b_s_sxtw_zpzr", sve_ld1b_s_sxtw_zpzr, {4, 1, false, false}, extension::sign},
    {"ld1sb_s_sxtw_zpzr", sve_ld1sb_s_sxtw_zpzr, {4, 1, true, false}, extension::sign},
    {"ld1h_s_sxtw_zpzr", sve_ld1h_s_sxtw_zpzr, {4, 2, false, false}, extension::sign},
    {"ld1sh_s_sxtw_zpzr", sve_ld1sh_s_sxtw_zpzr, {4, 2, true, false}, extension::sign},
    {"ld1w_sxtw_zpzr", sve_ld1w_sxtw_zpzr, {4, 4, false, false}, extension::sign},
    {"ld1b_d_sxtw_zpzr", sve_ld1b_d_sxtw_zpzr, {8, 1, false, false}, extension::sign},
    {"ld1sb_d_sxtw_zpzr", sve_ld1sb_d_sxtw_zpzr, {8, 1, true, false}, extension::sign},
    {"ld1sb_d_uxtw_zpzr", sve_ld1sb_d_uxtw_zpzr, {8, 1, true, false}, extension::zero},
    {"st1b_s_sxtw_zpzr", sve_st1b_s_sxtw_zpzr, {4, 1, false, true}, extension::sign},
    {"st1h_s_sxtw_zpzr", sve_st1h_s_sxtw_zpzr, {4, 2, false, true}, extension::sign},
    {"st1w_sxtw_zpzr", sve_st1w_sxtw_zpzr, {4, 4, false, true}, extension::sign},
    {"st1b_d_sxtw_zpzr", sve_st1b_d_sxtw_zpzr, {8, 1, false, true}, extension::sign},
    {"ld1h_d_scaled_zprz", sve_ld1h_d_scaled_zprz, {8, 2, false, false}, extension::none},
    {"ld1sh_d_scaled_zprz", sve_ld1sh_d_scaled_zprz, {8, 2, true, false}, extension::none},
    {"ld1w_d_scaled_zprz", sve_ld1w_d_scaled_zprz, {8, 4, false, false}, extension::none},
    {"ld1sw_d_scaled_zprz", sve_ld1sw_d_scaled_zprz, {8, 4, true, false}, extension::none},
    {"ld1d_scaled_zprz", sve_ld1d_scaled_zprz, {8, 8, false, false}, extension::none},
    {"st1h_d_scaled_zprz", sve_st1h_d_scaled_zprz, {8, 2, false, true}, extension::none},
    {"st1w_d_scaled_zprz", sve_st1w_d_scaled_zprz, {8, 4, false, true}, extension::none},
    {"st1d_scaled_zprz", sve_st1d_scaled_zprz, {8, 8, false, true}, extension::none},
    {"ld1h_s_sxtw_scaled_zprz", sve_ld1h_s_sxtw_scaled_zprz, {4, 2, false, false}, extension::sign},
    {"ld1sh_s_sxtw_scaled_zprz", sve_ld1sh_s_sxtw_scaled_zprz, {4, 2, true, false}, extension::sign},
    {"ld1w_sxtw_scaled_zprz", sve_ld1w_sxtw_scaled_zprz, {4, 4, false, false}, extension::sign},
    {"ld1h_d_sxtw_scaled_zprz", sve_ld1h_d_sxtw_scaled_zprz, {8, 2, false, false}, extension::sign},
    {"ld1sh_d_sxtw_scaled_zprz", sve_ld1sh_d_sxtw_scaled_zprz, {8, 2, true, false}, extension::sign},
    {"ld1w_d_sxtw_scaled_zprz", sve_ld1w_d_sxtw_scaled_zprz, {8, 4, false, false}, extension::sign},
    {"ld1sw_d_sxtw_scaled_zprz", sve_ld1sw_d_sxtw_scaled_zprz, {8, 4, true, false}, extension::sign},
    {"ld1d_sxtw_scaled_zprz", sve_ld1d_sxtw_scaled_zprz, {8, 8, false, false}, extension::sign},
    {"ld1sh_d_uxtw_scaled_zprz", sve_ld1sh_d_uxtw_scaled_zprz, {8, 2, true, false}, extension::zero},
    {"ld1d_uxtw_scaled_zprz", sve_ld1d_uxtw_scaled_zprz, {8, 8, false, false}, extension::zero},
    {"st1h_s_sxtw_scaled_zprz", sve_st1h_s_sxtw_scaled_zprz, {4, 2, false, true}, extension::sign},
    {"st1w_sxtw_scaled_zprz", sve_st1w_sxtw_scaled_zprz, {4, 4, false, true}, extension::sign},
    {"st1h_d_sxtw_scaled_zprz", sve_st1h_d_sxtw_scaled_zprz, {8, 2, false, true}, extension::sign},
    {"st1w_d_sxtw_scaled_zprz", sve_st1w_d_sxtw_scaled_zprz, {8, 4, false, true}, extension::sign},
    {"st1d_sxtw_scaled_zprz", sve_st1d_sxtw_scaled_zprz, {8, 8, false, true}, extension::sign},
    {"st1w_d_uxtw_scaled_zprz", sve_st1w_d_uxtw_scaled_zprz, {8, 4, false, true}, extension::zero},
    {"st1d_uxtw_scaled_zprz", sve_st1d_uxtw_scaled_zprz, {8, 8, false, true}, extension::zero},
};

const vector_form& form_named(const std::string& name) {
    return *std::find_if(std::begin(forms), std::end(forms), [&](const auto& f) { return f.name == name; });
}

void set_sized(std::uint8_t* row, int index, int element_bytes, std::uint64_t value) {
    std::memcpy(row + index * element_bytes, &value, static_cast<std::size_t>(element_bytes));
}

// A random offset such that `room` more units can be expressed, too.
std::uint64_t random_offset(extension extends, std::uint64_t room, std::mt19937_64& generator) {
    const std::uint64_t value = generator();
    switch (extends) {
    case extension::sign:
        return value % (0x100000000 - room) - 0x80000000;
    case extension::zero:
        return value % (0x100000000 - room);
    default:
        return value;
    }
}

// What the targets of the elements are: all of the memory, its two ends, or few places, which overlap.
enum class spread { anywhere, ends, few };

std::uint64_t target_offset(spread targets, std::uint64_t memory_size, std::uint64_t element_size,
                            std::mt19937_64& generator) {
    const std::uint64_t last = memory_size - element_size;
    switch (targets) {
    case spread::anywhere:
        return generator() % (last + 1);
    case spread::ends:
        return generator() % 2 ? generator() % 16 : last - generator() % 16;
    default:
        return 100 + generator() % (2 * element_size);
    }
}

// Executes the form with everything drawn from the seed. `outside` says how many elements of a hundred have
// an address out of reach, of which the inactive ones must not be noticed.
void check(const vector_form& form, predicate_shape shape, spread targets, unsigned outside,
           const fenced_memory& memory, const cpu_state& random, unsigned seed) {
    std::mt19937_64 generator(seed);
    const auto size = static_cast<std::uint64_t>(form.kind.memory_bytes);
    const int zt = static_cast<int>(generator() % 32);
    const int vector = generator() % 3 == 0 ? zt : static_cast<int>(generator() % 32);
    const int pg = static_cast<int>(generator() % 8);
    const int rn = generator() % 4 == 0 ? 31 : static_cast<int>(generator() % 31);
    const auto imm5 = static_cast<unsigned int>(generator() % 32);

    cpu_state state = random;
    set_predicate_of_size(form.kind.element_bytes, state.p[pg], shape, seed);
    const std::uint64_t room = memory.size() / form.scale() + 2;
    const std::uint64_t first = random_offset(form.extends, room, generator);
    const std::uint64_t base = memory.address() + generator() % form.scale() - first * form.scale();
    if (!form.has_vector_base())
        state.x[rn] = base;
    std::vector<transfer> transfers;
    for (int i = 0; i < form.kind.element_count(); ++i) {
        std::uint64_t address = memory.address() + target_offset(targets, memory.size(), size, generator);
        if (generator() % 100 < outside)
            address = memory.address() + memory.size() - generator() % size;
        std::uint64_t stored = address - imm5 * size;
        if (!form.has_vector_base()) {
            const std::uint64_t units = (address - memory.address()) / form.scale();
            stored = first + units;
            address = base + stored * form.scale();
            if (form.extends != extension::none) // the upper half is not to count
                stored = (stored & 0xFFFFFFFF) | generator() << 32;
        }
        set_sized(state.z[vector], i, form.kind.element_bytes, stored);
        transfers.push_back({zt, i, address});
    }
    expect_transfers(form.kind, transfers, pg, state, memory,
                     [&](cpu_state* actual) { return form.call(actual, zt, pg, vector, rn, imm5); });
}

TEST(GatherScatter, AnyAddresses) {
    fenced_memory memory(1);
    const cpu_state random = random_state(5);
    unsigned seed = 0;
    for (const vector_form& form : forms) {
        for (const predicate_shape shape : predicate_shapes) {
            for (const spread targets : {spread::anywhere, spread::ends, spread::few}) {
                for (const unsigned outside : {0u, 4u, 50u}) {
                    for (int repeat = 0; repeat < 5; ++repeat) {
                        SCOPED_TRACE(testing::Message() << form.name << ", shape " << static_cast<int>(shape)
                                                        << ", seed " << ++seed);
                        memory.fill(seed);
                        check(form, shape, targets, outside, memory, random, seed);
                        if (testing::Test::HasFailure())
                            return;
                    }
                }
            }
        }
    }
}

// The address of the last element, with the offset, base or immediate at the end of its range.
TEST(GatherScatter, ExtremeOffsets) {
    const struct {
        const char* name;
        std::uint64_t vector; // offset or base
        unsigned int imm5;
        std::uint64_t displacement; // of the address from rn, or from 0 with a vector base
    } cases[] = {
        {"ld1b_d_sxtw_zpzr", 0x12345678FFFFFFFF, 0, ~std::uint64_t{0}},
        {"ld1sb_d_sxtw_zpzr", 0x80000000, 0, 0xFFFFFFFF80000000},
        {"ld1sb_d_uxtw_zpzr", 0x12345678FFFFFFFF, 0, 0xFFFFFFFF},
        {"ld1b_d_zpzr", 0x12345678FFFFFFFF, 0, 0x12345678FFFFFFFF},
        {"ld1h_d_zpzr", ~std::uint64_t{0}, 0, ~std::uint64_t{0}},
        {"ld1d_scaled_zprz", 0x2000000000000003, 0, 24},
        {"ld1w_d_scaled_zprz", 0x00000000FFFFFFFF, 0, 0x3FFFFFFFC},
        {"ld1h_s_sxtw_scaled_zprz", 0x80000000, 0, 0xFFFFFFFF00000000},
        {"ld1w_sxtw_zpzr", 0xFFFFFFFF, 0, ~std::uint64_t{0}},
        {"ld1d_sxtw_scaled_zprz", 0xABCDEF007FFFFFFF, 0, 0x3FFFFFFF8},
        {"ld1d_uxtw_scaled_zprz", 0xABCDEF0080000001, 0, 0x400000008},
        {"ld1sh_d_uxtw_scaled_zprz", 0xFFFFFFFF, 0, 0x1FFFFFFFE},
        {"st1w_d_uxtw_scaled_zprz", 0xFFFFFFFFFFFFFFFF, 0, 0x3FFFFFFFC},
        {"st1d_uxtw_scaled_zprz", 0x80000000, 0, 0x400000000},
        {"st1w_sxtw_scaled_zprz", 0x80000000, 0, 0xFFFFFFFE00000000},
        {"st1b_d_sxtw_zpzr", 0xFFFFFFFF, 0, ~std::uint64_t{0}},
        {"ld1d_zpzi", 0, 31, 248},
        {"ld1sb_d_zpzi", 0, 31, 31},
        {"ld1sh_d_zpzi", 0, 31, 62},
        {"st1w_d_zpzi", 0, 31, 124},
    };
    std::uint64_t place;
    for (const auto& one : cases) {
        const vector_form& form = form_named(one.name);
        cpu_state state = random_state(4);
        set_predicate_of_size(form.kind.element_bytes, state.p[3], predicate_shape::only_last, 5);
        const std::uint64_t base = reinterpret_cast<std::uint64_t>(&place) - one.displacement;
        state.x[31] = base;
        const int last = form.kind.element_count() - 1;
        set_sized(state.z[8], last, form.kind.element_bytes, form.has_vector_base() ? base : one.vector);
        set_sized(state.z[9], last, form.kind.element_bytes, 17);
        place = form.kind.is_store ? 0 : 16;
        ASSERT_FALSE(faults([&] { form.call(&state, 9, 3, 8, 31, one.imm5); })) << one.name;
        if (form.kind.is_store)
            EXPECT_EQ(place, 17u) << one.name;
        else
            EXPECT_EQ(state.z[9][last * form.kind.element_bytes], 16) << one.name;
    }
}

TEST(GatherScatter, LastElementAtAnAddressStays) {
    std::uint64_t memory[2];
    cpu_state state = random_state(6);
    set_predicate<std::uint64_t>(state.p[0], predicate_shape::all_true, 0);
    for (int i = 0; i < 16; ++i) {
        set_element<std::uint64_t>(state.z[1], i, static_cast<std::uint64_t>(i % 2));
        set_element<std::uint64_t>(state.z[2], i, static_cast<std::uint64_t>(100 + i));
    }
    set_active<std::uint64_t>(state.p[0], 15, false);
    state.x[0] = reinterpret_cast<std::uint64_t>(memory);
    sve_st1d_scaled_zprz(&state, data_register(2), governing_register(0), base_register(0), data_register(1));
    EXPECT_EQ(memory[0], 114u);
    EXPECT_EQ(memory[1], 113u);
}

template <class Element> void check_address_generation(std::uint64_t word) {
    for (unsigned int scale = 0; scale < 4; ++scale) {
        const struct { int zd, zn, zm; } registers[] = {{0, 1, 2}, {3, 3, 4}, {5, 6, 5}, {7, 7, 7}};
        for (const auto [zd, zn, zm] : registers) {
            cpu_state state = random_state(scale);
            state.instr_word = word | scale << 10;
            cpu_state expected = state;
            for (int i = 0; i < vector_bytes / static_cast<int>(sizeof(Element)); ++i) {
                const auto factor = static_cast<Element>(1 << scale);
                const Element sum = element<Element>(state.z[zn], i) +
                                    static_cast<Element>(element<Element>(state.z[zm], i) * factor);
                set_element<Element>(expected.z[zd], i, sum);
            }
            EXPECT_EQ(sve_adr_scaled_zzz(&state, data_register(zd), data_register(zn), data_register(zm)),
                      aarch64_emulated);
            EXPECT_TRUE(same_state(state, expected)) << "scale " << scale << ", zd " << zd;
        }
    }
}

TEST(AddressGeneration, AddsTheScaledIndex) {
    check_address_generation<std::uint64_t>(0x04E0A000);
    check_address_generation<std::uint32_t>(0x04A0A000);
}

} // namespace
