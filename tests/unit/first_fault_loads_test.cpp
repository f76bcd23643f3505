// First-fault and non-fault loads, each kind against its own definition, at every distance from a page
// boundary with each side readable or not.
#include "sve/library/first_fault_loads.h"

#include "sve/decode/decoder.h"
#include "tests/unit/fault_tools.h"
#include "tests/unit/library_operands.h"
#include "tests/unit/memory_forms.h"

namespace {

constexpr int zt = 31, pg = 5, rn = 31, rm = 30, zm = 29;

void store_number(std::uint8_t* bytes, std::uint64_t number, int size) {
    std::memcpy(bytes, &number, static_cast<std::size_t>(size));
}

bool is_active(const transfer_kind& kind, const cpu_state& state, int i) {
    return state.p[pg][i * kind.element_bytes] & 1;
}

bool is_readable(const transfer_kind& kind, const page_pair& pages, std::uint64_t address) {
    return pages.readable(address, static_cast<std::uint64_t>(kind.memory_bytes));
}

// Loads element i if it is active, and 0 if not; false if that faults.
bool load_element(const transfer_kind& kind, const page_pair& pages, cpu_state& state, int i,
                  std::uint64_t address) {
    const bool active = is_active(kind, state, i);
    if (active && !is_readable(kind, pages, address))
        return false;
    store_number(state.z[zt] + i * kind.element_bytes,
                 active ? pages.number_at(address, kind.memory_bytes, kind.sign_extends) : 0,
                 kind.element_bytes);
    return true;
}

// What a load of the elements at the addresses does; false if it faults nevertheless.
using definition = bool(const transfer_kind& kind, const page_pair& pages, cpu_state& state,
                        const std::vector<std::uint64_t>& addresses);

// An element whose first byte can't be read keeps its contents and loses its FFR lane.
bool define_non_fault(const transfer_kind& kind, const page_pair& pages, cpu_state& state,
                      const std::vector<std::uint64_t>& addresses) {
    for (int i = 0; i < kind.element_count(); ++i) {
        const std::uint64_t address = addresses[static_cast<std::size_t>(i)];
        if (is_active(kind, state, i) && !pages.readable(address))
            store_number(state.ffr + i * kind.element_bytes, 0, kind.element_bytes);
        else if (!load_element(kind, pages, state, i, address))
            return false;
    }
    return true;
}

// Before a page that can't be read, as many elements as registers have room for in the bytes that are left.
bool define_first_fault(const transfer_kind& kind, const page_pair& pages, cpu_state& state,
                        const std::vector<std::uint64_t>& addresses) {
    const int left_in_page = static_cast<int>(pages.page() - addresses[0] % pages.page());
    const bool stops = left_in_page <= vector_bytes && !pages.readable(addresses[0] + pages.page());
    const int limit = stops ? left_in_page / kind.element_bytes : kind.element_count();
    for (int i = 0; i < limit; ++i)
        if (!load_element(kind, pages, state, i, addresses[static_cast<std::size_t>(i)]))
            return false;
    std::fill(state.ffr + limit * kind.element_bytes, state.ffr + vector_bytes, std::uint8_t{0});
    return true;
}

// From the first element that can't be read, be it the first of all, zeros in the register and in FFR.
bool define_library(const transfer_kind& kind, const page_pair& pages, cpu_state& state,
                    const std::vector<std::uint64_t>& addresses) {
    int i = 0;
    while (i < kind.element_count() &&
           load_element(kind, pages, state, i, addresses[static_cast<std::size_t>(i)]))
        ++i;
    std::fill(state.z[zt] + i * kind.element_bytes, state.z[zt] + vector_bytes, std::uint8_t{0});
    std::fill(state.ffr + i * kind.element_bytes, state.ffr + vector_bytes, std::uint8_t{0});
    return true;
}

void check(const memory_form& form, const page_pair& pages, cpu_state& state, unsigned int word,
           const std::vector<std::uint64_t>& addresses) {
    definition* const define = form.variant == "NF"                      ? define_non_fault
                               : form.row.route == opcode_route::library ? define_library
                                                                         : define_first_fault;
    state.instr_word = word;
    cpu_state expected = state;
    const bool survives = define(form.kind, pages, expected, addresses);
    if (form.row.route == opcode_route::library) // which has the faults that it expects handled by itself
        form.row.stub(&state, word);
    else
        EXPECT_EQ(faults([&] { form.row.stub(&state, word); }), !survives);
    EXPECT_TRUE(same_state(state, expected));
}

TEST(FirstFaultLoads, AroundAPageBoundary) {
    page_pair pages;
    const cpu_state random = random_packed_state(3);
    unsigned seed = 0;
    for (const int readable : {0b11, 0b01, 0b10, 0b00}) {
        pages.set_readable(readable & 1, readable & 2);
        for (const memory_form& form : memory_forms()) {
            if (!form.is_contiguous || (form.variant != "FF" && form.variant != "NF"))
                continue;
            const auto size = static_cast<std::uint64_t>(form.kind.memory_bytes);
            for (int distance = -9; distance <= vector_bytes + 9; ++distance) {
                for (const predicate_shape shape : predicate_shapes) {
                    SCOPED_TRACE(testing::Message() << form.row.name << ", " << distance
                                                    << " bytes before the boundary, readable: " << readable
                                                    << ", shape " << static_cast<int>(shape));
                    ++seed;
                    const std::uint64_t start = pages.boundary() - static_cast<std::uint64_t>(distance);
                    const int index = seed % 3 == 0 ? 31 : rm, imm4 = static_cast<int>(seed % 16) - 8;
                    cpu_state state = random;
                    set_predicate(form.kind.element_bytes, state.p[pg], shape, seed);
                    if (form.has_index())
                        state.x[rn] = start - (index == 31 ? 0 : state.x[index] * size);
                    else
                        state.x[rn] = start - static_cast<std::uint64_t>(imm4 * form.bytes_in_memory());
                    std::vector<std::uint64_t> addresses;
                    for (int i = 0; i < form.kind.element_count(); ++i)
                        addresses.push_back(start + static_cast<std::uint64_t>(i) * size);
                    check(form, pages, state, form.word(zt, pg, rn, form.has_index() ? index : imm4 & 15),
                          addresses);
                    if (testing::Test::HasFailure())
                        return;
                }
            }
        }
    }
    EXPECT_GT(seed, 100000u);
}

// Elements anywhere in the pages, some of them unreadable or over an edge.
TEST(FirstFaultLoads, Gathers) {
    page_pair pages(true); // where 32-bit bases reach it
    const cpu_state random = random_packed_state(4);
    unsigned seed = 0;
    for (const memory_form& form : memory_forms()) {
        if (form.is_contiguous || form.variant != "FF")
            continue;
        for (int repeat = 0; repeat < 60; ++repeat) {
            SCOPED_TRACE(testing::Message() << form.row.name << ", seed " << ++seed);
            std::mt19937_64 generator(seed);
            pages.set_readable(generator() % 4 != 0, generator() % 2 != 0);
            const int imm5 = static_cast<int>(generator() % 32);
            const auto rare = 2 + generator() % 30;
            cpu_state state = random;
            set_predicate(form.kind.element_bytes, state.p[pg], predicate_shapes[seed % 6], seed);
            const std::vector<std::uint64_t> addresses = set_addresses(
                form, state, zm, rn, imm5, pages.begin(), 2 * pages.page(),
                [&] {
                    return generator() % rare == 0 ? pages.boundary() - generator() % 9
                                                   : pages.begin() + generator() % (pages.page() - 8);
                },
                generator);
            check(form, pages, state,
                  form.has_vector_bases() ? form.word(zt, pg, zm, imm5) : form.word(zt, pg, rn, zm),
                  addresses);
            if (testing::Test::HasFailure())
                return;
        }
    }
    EXPECT_GT(seed, 3000u);
}

// How many elements are loaded, by hand: as many as FFR says.
TEST(FirstFaultLoads, CountByTheRegistersElementSize) {
    const struct {
        unsigned int word; // LDFF1 { z2 }, p5/z, [x7, xzr]
        int bytes_left, loaded_bytes;
    } cases[] = {
        {0xA41F74E2, 10, 10},   // bytes
        {0xA41F74E2, 128, 128}, //
        {0xA43F74E2, 32, 32},   // halfwords from bytes
        {0xA47F74E2, 32, 32},   // doublewords from bytes
        {0xA47F74E2, 127, 120}, //
        {0xA55F74E2, 10, 8},    // words
        {0xA57F74E2, 100, 96},  // doublewords from words
        {0xA5FF74E2, 4, 0},     // doublewords
    };
    page_pair pages;
    pages.set_readable(true, false);
    for (const auto& c : cases) {
        cpu_state state = random_state(1);
        std::fill_n(state.ffr, vector_bytes, std::uint8_t{1});
        std::fill_n(state.p[pg], vector_bytes, std::uint8_t{1});
        state.x[7] = pages.boundary() - static_cast<std::uint64_t>(c.bytes_left);
        const cpu_state before = state;
        is_sve(c.word)(&state, c.word);
        EXPECT_EQ(std::count(state.ffr, state.ffr + c.loaded_bytes, 1), c.loaded_bytes) << std::hex << c.word;
        EXPECT_EQ(std::count(state.ffr, state.ffr + vector_bytes, 1), c.loaded_bytes) << std::hex << c.word;
        EXPECT_TRUE(std::equal(state.z[2] + c.loaded_bytes, state.z[3], before.z[2] + c.loaded_bytes));
    }
}

TEST(FirstFaultLoads, NothingIsSaidOfAFault) {
    const unsigned int word =
        0xA4C06000 | 4 << 16 | 2 << 10 | 3 << 5 | 1; // LDFF1H { z1.s }, p2/z, [x3, x4, lsl #1]
    ASSERT_STREQ(opcode_name(is_sve(word)), "VecU32CLoadFF2LSSZ");
    cpu_state state = random_packed_state(4);
    state.x[3] = 0;
    state.x[4] = 8;
    std::fill_n(state.p[2], vector_bytes, std::uint8_t{1});
    testing::internal::CaptureStderr();
    EXPECT_EQ(is_sve(word)(&state, word), aarch64_emulated);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

// Beyond the vector length, FFR stays.
TEST(FirstFaultLoads, OfTheLibraryAtEveryLength) {
    page_pair pages;
    pages.set_readable(true, false);
    for_random_operands([&](primitive_operands& values) {
        const std::uint64_t start = pages.boundary() - values.seed % 256;
        const PredV ffr_before = values.context.ffr;
        const auto pg_bits = bits_of(values.pg, values.context);
        const VecV result =
            VecS64CLoadFF2LSSZ(values.pg, start - 2 * values.seed, values.seed, &values.context);
        bool fault = false;
        std::vector<std::int64_t> expected;
        for (std::size_t i = 0; i < pg_bits.size() / 8; ++i) {
            const bool active = pg_bits[8 * i];
            fault = fault || (active && !pages.readable(start + 2 * i, 2));
            expected.push_back(
                active && !fault ? static_cast<std::int64_t>(pages.number_at(start + 2 * i, 2, true)) : 0);
            const auto lane = reinterpret_cast<const std::uint8_t*>(&values.context.ffr)[i];
            EXPECT_EQ(lane, fault ? 0 : reinterpret_cast<const std::uint8_t*>(&ffr_before)[i]) << i;
        }
        EXPECT_EQ(elements_of<std::int64_t>(result, values.context), expected);
        for (std::size_t i = expected.size(); i < 32; ++i)
            EXPECT_EQ(reinterpret_cast<const std::uint8_t*>(&values.context.ffr)[i],
                      reinterpret_cast<const std::uint8_t*>(&ffr_before)[i]);
    });
}

} // namespace
