// The three kinds of loads that do not fault everywhere, each against its own definition, at every distance
// from a page boundary with each side readable or not.
#include "sve/handlers/first_fault_loads.h"

#include "sve/decode/decoder.h"
#include "sve/library/first_fault_loads.h"
#include "tests/unit/fault_tools.h"
#include "tests/unit/library_operands.h"
#include "tests/unit/memory_tools.h"

namespace {

struct load_sizes {
    int element_bytes;
    int memory_bytes;
    bool sign_extends;

    int count() const { return vector_bytes / element_bytes; }
};

const struct non_fault_form {
    const char* name;
    contiguous_immediate_handler* handler;
    load_sizes sizes;
} non_fault_forms[] = {
    {"ldnf1b", sve_ldnf1b_zpri, {1, 1, false}},      {"ldnf1b_h", sve_ldnf1b_h_zpri, {2, 1, false}},
    {"ldnf1b_s", sve_ldnf1b_s_zpri, {4, 1, false}},  {"ldnf1b_d", sve_ldnf1b_d_zpri, {8, 1, false}},
    {"ldnf1sb_h", sve_ldnf1sb_h_zpri, {2, 1, true}}, {"ldnf1sb_s", sve_ldnf1sb_s_zpri, {4, 1, true}},
    {"ldnf1sb_d", sve_ldnf1sb_d_zpri, {8, 1, true}}, {"ldnf1h", sve_ldnf1h_zpri, {2, 2, false}},
    {"ldnf1h_s", sve_ldnf1h_s_zpri, {4, 2, false}},  {"ldnf1h_d", sve_ldnf1h_d_zpri, {8, 2, false}},
    {"ldnf1sh_s", sve_ldnf1sh_s_zpri, {4, 2, true}}, {"ldnf1sh_d", sve_ldnf1sh_d_zpri, {8, 2, true}},
    {"ldnf1w", sve_ldnf1w_zpri, {4, 4, false}},      {"ldnf1w_d", sve_ldnf1w_d_zpri, {8, 4, false}},
    {"ldnf1sw_d", sve_ldnf1sw_d_zpri, {8, 4, true}}, {"ldnf1d", sve_ldnf1d_zpri, {8, 8, false}},
};

const struct first_fault_form {
    const char* name;
    contiguous_scaled_handler* handler;
    load_sizes sizes;
} first_fault_forms[] = {
    {"ldff1b", sve_ldff1b_scaled_zprr, {1, 1, false}},
    {"ldff1b_h", sve_ldff1b_h_scaled_zprr, {2, 1, false}},
    {"ldff1b_s", sve_ldff1b_s_scaled_zprr, {4, 1, false}},
    {"ldff1b_d", sve_ldff1b_d_scaled_zprr, {8, 1, false}},
    {"ldff1w", sve_ldff1w_scaled_zprr, {4, 4, false}},
    {"ldff1w_d", sve_ldff1w_d_scaled_zprr, {8, 4, false}},
    {"ldff1d", sve_ldff1d_scaled_zprr, {8, 8, false}},
};

const struct library_form {
    const char* name;
    first_fault_contiguous* primitive;
    load_sizes sizes;
} library_forms[] = {
    {"S16 from 1", VecS16CLoadFF1LSSZ, {2, 1, true}},  {"U16 from 2", VecU16CLoadFF2LSSZ, {2, 2, false}},
    {"S32 from 1", VecS32CLoadFF1LSSZ, {4, 1, true}},  {"S32 from 2", VecS32CLoadFF2LSSZ, {4, 2, true}},
    {"U32 from 2", VecU32CLoadFF2LSSZ, {4, 2, false}}, {"S64 from 1", VecS64CLoadFF1LSSZ, {8, 1, true}},
    {"S64 from 2", VecS64CLoadFF2LSSZ, {8, 2, true}},  {"U64 from 2", VecU64CLoadFF2LSSZ, {8, 2, false}},
    {"S64 from 4", VecS64CLoadFF4LSSZ, {8, 4, true}},
};

void store_number(std::uint8_t* bytes, std::uint64_t number, int size) {
    std::memcpy(bytes, &number, static_cast<std::size_t>(size));
}

constexpr int zt = 31, pg = 5, rn = 31, rm = 30;

// Loads element i if it is active, and 0 if not; false if that faults.
bool load_element(const load_sizes& sizes, const page_pair& pages, cpu_state& state, int i,
                  std::uint64_t address) {
    std::uint8_t* const element_bytes = state.z[zt] + i * sizes.element_bytes;
    if (!(state.p[pg][i * sizes.element_bytes] & 1)) {
        store_number(element_bytes, 0, sizes.element_bytes);
        return true;
    }
    if (!pages.readable(address, static_cast<std::uint64_t>(sizes.memory_bytes)))
        return false;
    store_number(element_bytes, pages.number_at(address, sizes.memory_bytes, sizes.sign_extends),
                 sizes.element_bytes);
    return true;
}

std::uint64_t address_of(const load_sizes& sizes, std::uint64_t start, int i) {
    return start + static_cast<std::uint64_t>(i * sizes.memory_bytes);
}

// What a non-fault load does; false if it faults nevertheless.
bool define_non_fault(const load_sizes& sizes, const page_pair& pages, cpu_state& state,
                      std::uint64_t start) {
    for (int i = 0; i < sizes.count(); ++i) {
        const std::uint64_t address = address_of(sizes, start, i);
        const bool active = state.p[pg][i * sizes.element_bytes] & 1;
        if (active && !pages.readable(address))
            store_number(state.ffr + i * sizes.element_bytes, 0, sizes.element_bytes);
        else if (!load_element(sizes, pages, state, i, address))
            return false;
    }
    return true;
}

// What a first-fault load does; false if it faults nevertheless.
bool define_first_fault(const load_sizes& sizes, const page_pair& pages, cpu_state& state,
                        std::uint64_t start) {
    const int left_in_page = static_cast<int>(pages.page() - start % pages.page());
    const bool stops = left_in_page <= vector_bytes && !pages.readable(start + pages.page());
    const int limit = stops ? left_in_page / sizes.element_bytes : sizes.count();
    for (int i = 0; i < limit; ++i)
        if (!load_element(sizes, pages, state, i, address_of(sizes, start, i)))
            return false;
    std::fill(state.ffr + limit * sizes.element_bytes, state.ffr + vector_bytes, std::uint8_t{0});
    return true;
}

// Calls check(form, start, seed) for loads around the boundary, with each page readable or not.
template <class Forms, class Check> void sweep(page_pair& pages, const Forms& forms, Check check) {
    unsigned seed = 0;
    for (const int readable : {0b11, 0b01, 0b10, 0b00}) {
        pages.set_readable(readable & 1, readable & 2);
        for (const auto& form : forms) {
            for (int distance = -9; distance <= vector_bytes + 9; ++distance) {
                SCOPED_TRACE(testing::Message() << form.name << ", " << distance
                                                << " bytes before the boundary, readable: " << readable);
                check(form, pages.boundary() - static_cast<std::uint64_t>(distance), ++seed);
                if (testing::Test::HasFailure())
                    return;
            }
        }
    }
}

// Executes the handler on a random state that `set_address` has changed, and compares.
template <class Define, class SetAddress, class Execute>
void check_handler(const page_pair& pages, const load_sizes& sizes, std::uint64_t start, unsigned seed,
                   Define define, SetAddress set_address, Execute execute) {
    static const cpu_state random = random_state(3);
    for (const predicate_shape shape : predicate_shapes) {
        SCOPED_TRACE(testing::Message() << "shape " << static_cast<int>(shape));
        cpu_state state = random;
        set_predicate_of_size(sizes.element_bytes, state.p[pg], shape, seed);
        set_address(state);
        cpu_state expected = state;
        const bool survives = define(sizes, pages, expected, start);
        EXPECT_EQ(faults([&] { EXPECT_EQ(execute(&state), aarch64_emulated); }), !survives);
        EXPECT_TRUE(same_state(state, expected));
    }
}

TEST(NonFaultLoads, AroundAPageBoundary) {
    page_pair pages;
    sweep(pages, non_fault_forms, [&](const non_fault_form& form, std::uint64_t start, unsigned seed) {
        const int imm4 = static_cast<int>(seed % 16) - 8;
        const auto set_address = [&](cpu_state& state) {
            state.x[rn] =
                start - static_cast<std::uint64_t>(imm4 * form.sizes.count() * form.sizes.memory_bytes);
        };
        check_handler(pages, form.sizes, start, seed, define_non_fault, set_address, [&](cpu_state* state) {
            return form.handler(state, data_register(zt), governing_register(pg), base_register(rn), imm4);
        });
    });
}

TEST(FirstFaultLoads, AroundAPageBoundary) {
    page_pair pages;
    sweep(pages, first_fault_forms, [&](const first_fault_form& form, std::uint64_t start, unsigned seed) {
        const int index = seed % 3 == 0 ? 31 : rm;
        const auto set_address = [&](cpu_state& state) {
            const auto scale = static_cast<std::uint64_t>(form.sizes.memory_bytes);
            state.x[rn] = index == 31 ? start : start - state.x[rm] * scale;
        };
        check_handler(pages, form.sizes, start, seed, define_first_fault, set_address, [&](cpu_state* state) {
            return form.handler(state, data_register(zt), governing_register(pg), base_register(rn),
                                i_operand(index));
        });
    });
}

// How many elements are loaded, and where FFR is cut, by hand.
TEST(FirstFaultLoads, CountsByTheRegistersElementSize) {
    const struct {
        contiguous_scaled_handler* handler;
        int element_bytes;
        int bytes_left;
        int loaded;
    } cases[] = {
        {sve_ldff1b_scaled_zprr, 1, 10, 10},    {sve_ldff1w_scaled_zprr, 4, 10, 2},
        {sve_ldff1d_scaled_zprr, 8, 4, 0},      {sve_ldff1b_h_scaled_zprr, 2, 32, 16},
        {sve_ldff1b_d_scaled_zprr, 8, 32, 4},   {sve_ldff1b_d_scaled_zprr, 8, 127, 15},
        {sve_ldff1b_d_scaled_zprr, 8, 128, 16}, {sve_ldff1b_scaled_zprr, 1, 128, 128},
        {sve_ldff1w_d_scaled_zprr, 8, 100, 12},
    };
    page_pair pages;
    pages.set_readable(true, false);
    for (const auto& [handler, element_bytes, bytes_left, loaded] : cases) {
        cpu_state state = random_state(1);
        std::fill_n(state.ffr, vector_bytes, std::uint8_t{1});
        std::fill_n(state.p[pg], vector_bytes, std::uint8_t{1});
        state.x[7] = pages.boundary() - static_cast<std::uint64_t>(bytes_left);
        const cpu_state before = state;
        handler(&state, data_register(2), governing_register(pg), base_register(7), i_operand(31));
        for (int k = 0; k < vector_bytes; ++k)
            EXPECT_EQ(state.ffr[k], k < loaded * element_bytes) << bytes_left << " left, byte " << k;
        const int kept_from = loaded * element_bytes;
        EXPECT_TRUE(std::equal(state.z[2] + kept_from, state.z[3], before.z[2] + kept_from));
    }
}

TEST(NonFaultLoads, GoOnBehindAnUnreadablePage) {
    page_pair pages;
    pages.set_readable(false, true);
    cpu_state state = random_state(1);
    std::fill_n(state.ffr, vector_bytes, std::uint8_t{1});
    std::fill_n(state.p[pg], vector_bytes, std::uint8_t{1});
    state.p[pg][3] = 0;
    state.x[7] = pages.boundary() - 10;
    const cpu_state before = state;
    sve_ldnf1b_zpri(&state, data_register(2), governing_register(pg), base_register(7), 0);
    for (int k = 0; k < vector_bytes; ++k) {
        const bool readable = k >= 10;
        const std::uint64_t in_memory = pages.number_at(state.x[7] + static_cast<std::uint64_t>(k), 1, false);
        EXPECT_EQ(state.ffr[k], readable || k == 3) << k;
        EXPECT_EQ(state.z[2][k], readable ? in_memory : k == 3 ? 0 : before.z[2][k]) << k;
    }
}

bool predicate_bit(const PredV& predicate, int k) { return predicate.words[k / 64] >> (k % 64) & 1; }

// What a library load makes of FFR and of the elements at the addresses.
struct library_result {
    std::vector<std::uint8_t> bytes;
    PredV ffr;
};
library_result define_library(const load_sizes& sizes, const page_pair& pages, const PredV& predicate,
                              const CpuContext& context, const std::vector<std::uint64_t>& addresses) {
    library_result result = {
        std::vector<std::uint8_t>(addresses.size() * static_cast<std::size_t>(sizes.element_bytes)),
        context.ffr};
    bool fault = false;
    for (std::size_t i = 0; i < addresses.size(); ++i) {
        const int first_byte = static_cast<int>(i) * sizes.element_bytes;
        const bool active = predicate_bit(predicate, first_byte);
        const bool readable = pages.readable(addresses[i], static_cast<std::uint64_t>(sizes.memory_bytes));
        fault = fault || (active && !readable);
        for (int k = first_byte; fault && k < first_byte + sizes.element_bytes; ++k)
            result.ffr.words[k / 64] &= ~(std::uint64_t{1} << (k % 64));
        if (active && !fault)
            store_number(&result.bytes[static_cast<std::size_t>(first_byte)],
                         pages.number_at(addresses[i], sizes.memory_bytes, sizes.sign_extends),
                         sizes.element_bytes);
    }
    return result;
}

void expect_library_result(const library_result& expected, const VecV& actual, const CpuContext& context,
                           const CpuContext& before) {
    EXPECT_TRUE(std::equal(expected.bytes.begin(), expected.bytes.end(), actual.bytes));
    EXPECT_EQ(std::memcmp(&context.ffr, &expected.ffr, sizeof(PredV)), 0);
    EXPECT_EQ(context.nzcv, before.nzcv);
    EXPECT_EQ(context.fpsr, before.fpsr);
    EXPECT_EQ(context.vl, before.vl);
}

std::size_t element_count_of(const load_sizes& sizes, const CpuContext& context) {
    return (context.vl & 0x3FFFFFF) * 8 / static_cast<std::size_t>(sizes.element_bytes);
}

TEST(LibraryFirstFaultLoads, AroundAPageBoundary) {
    page_pair pages;
    std::mt19937_64 generator(5);
    sweep(pages, library_forms, [&](const library_form& form, std::uint64_t start, unsigned seed) {
        const std::uint32_t length = seed % 4 == 0 ? some_vector_lengths[seed / 4 % 12] : 16;
        const PredV predicate = random_predicate(generator, static_cast<int>(length) * 8);
        CpuContext context = {1, 2, 3, length, random_predicate(generator, 256)};
        const CpuContext before = context;
        std::vector<std::uint64_t> addresses(element_count_of(form.sizes, context));
        for (std::size_t i = 0; i < addresses.size(); ++i)
            addresses[i] = address_of(form.sizes, start, static_cast<int>(i));
        const library_result expected = define_library(form.sizes, pages, predicate, context, addresses);
        const std::uint64_t index = generator();
        const VecV actual = form.primitive(
            predicate, start - index * static_cast<std::uint64_t>(form.sizes.memory_bytes), index, &context);
        expect_library_result(expected, actual, context, before);
    });
}

const struct gather_form {
    const char* name;
    gather_from_base* with_offsets; // or null, and then
    gather_from_bases* with_bases;
    load_sizes sizes;
    bool scaled;
} gather_forms[] = {
    {"VecS32LoadFF1VSZ", VecS32LoadFF1VSZ, nullptr, {4, 1, true}, false},
    {"VecU32LoadFF2SVZ", VecU32LoadFF2SVZ, nullptr, {4, 2, false}, true},
    {"VecU32LoadFF4XVSZ", VecU32LoadFF4XVSZ, nullptr, {4, 4, false}, false},
    {"VecS64LoadFF2XSVZ", VecS64LoadFF2XSVZ, nullptr, {8, 2, true}, true},
    {"VecS64LoadFF4YVSZ", VecS64LoadFF4YVSZ, nullptr, {8, 4, true}, false},
    {"VecU64LoadFF4YSVZ", VecU64LoadFF4YSVZ, nullptr, {8, 4, false}, true},
    {"VecU64LoadFF8SVZ", VecU64LoadFF8SVZ, nullptr, {8, 8, false}, true},
    {"VecS64LoadFF1VIZ", nullptr, VecS64LoadFF1VIZ, {8, 1, true}, false},
    {"VecU64LoadFF8VIZ", nullptr, VecU64LoadFF8VIZ, {8, 8, false}, false},
};

// Elements anywhere in the pages, some of them unreadable or over an edge.
TEST(LibraryFirstFaultLoads, Gathers) {
    page_pair pages;
    for (const gather_form& form : gather_forms) {
        for_random_operands([&](const primitive_operands& values) {
            SCOPED_TRACE(form.name);
            std::mt19937_64 generator(values.seed);
            pages.set_readable(generator() % 4 != 0, generator() % 2 != 0);
            const std::uint64_t scale = form.scaled ? static_cast<std::uint64_t>(form.sizes.memory_bytes) : 1;
            const unsigned int imm5 = generator() % 32;
            const std::uint64_t base =
                form.with_offsets ? pages.begin() - 64 * scale + generator() % scale : 0;
            CpuContext context = values.context;
            std::vector<std::uint64_t> addresses(element_count_of(form.sizes, context));
            VecV operand = values.zm;
            for (std::size_t i = 0; i < addresses.size(); ++i) {
                const std::uint64_t wanted = generator() % 8 == 0
                                                 ? pages.boundary() - generator() % 9
                                                 : pages.begin() + generator() % (pages.page() - 8);
                std::uint64_t number = (wanted - base) / scale;
                addresses[i] = base + number * scale;
                if (form.with_bases)
                    number = wanted - imm5 * static_cast<std::uint64_t>(form.sizes.memory_bytes);
                store_number(operand.bytes + i * static_cast<std::size_t>(form.sizes.element_bytes), number,
                             form.sizes.element_bytes);
            }
            const library_result expected = define_library(form.sizes, pages, values.pg, context, addresses);
            const VecV actual = form.with_offsets ? form.with_offsets(values.pg, base, operand, &context)
                                                  : form.with_bases(values.pg, operand, imm5, &context);
            expect_library_result(expected, actual, context, values.context);
        });
    }
}

// As an instruction: LDFF1H { z1.s }, p2/z, [x3, x4, lsl #1].
TEST(LibraryFirstFaultLoads, FaultAtElementFive) {
    page_pair pages;
    pages.set_readable(true, false);
    cpu_state state = random_state(4);
    std::fill_n(state.ffr, vector_bytes, std::uint8_t{1});
    std::fill_n(state.p[2], vector_bytes, std::uint8_t{1});
    state.p[2][3 * 4] = state.p[2][7 * 4] = 0;
    state.x[3] = pages.boundary() - 5 * 2 - 2000;
    state.x[4] = 1000;
    const unsigned int word = 0xA4C06000 | 4 << 16 | 2 << 10 | 3 << 5 | 1;
    ASSERT_STREQ(opcode_name(is_sve(word)), "VecU32CLoadFF2LSSZ");
    EXPECT_EQ(is_sve(word)(&state, word), aarch64_emulated);
    for (int i = 0; i < 32; ++i) {
        const bool loaded = i < 5 && i != 3;
        const std::uint64_t number =
            loaded ? pages.number_at(pages.boundary() - 10 + static_cast<std::uint64_t>(i) * 2, 2, false) : 0;
        EXPECT_EQ(element<std::uint32_t>(state.z[1], i), number) << i;
        EXPECT_EQ(element<std::uint32_t>(state.ffr, i), i < 5 ? 0x01010101u : 0u) << i;
    }
    // From an address where nothing is: all 0, and not a word about it.
    state.x[3] = 0;
    state.x[4] = 8;
    std::fill_n(state.ffr, vector_bytes, std::uint8_t{1});
    testing::internal::CaptureStderr();
    is_sve(word)(&state, word);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_TRUE(std::all_of(state.z[1], state.z[2], [](std::uint8_t byte) { return byte == 0; }));
    EXPECT_TRUE(
        std::all_of(state.ffr, state.ffr + vector_bytes, [](std::uint8_t byte) { return byte == 0; }));
}

} // namespace
