// The floating-point handlers: each instruction on rows whose active elements give exact results and whose
// inactive ones would raise an exception if they were computed.
#include "sve/decode/decoder.h"
#include "sve/fp/fp_formats.h"
#include "tests/unit/application_status.h"
#include "tests/unit/state_tools.h"

#include <array>
#include <bit>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace {

void execute(cpu_state& state, unsigned int word) {
    const opcode_stub stub = is_sve(word);
    ASSERT_NE(stub, nullptr);
    as_application(state, [&] { EXPECT_EQ(stub(&state, word), aarch64_emulated); });
}

constexpr std::uint32_t QC = 1u << 27; // an integer instruction's flag, which is to stay

template <class Bits> using float_of = std::conditional_t<sizeof(Bits) == 4, float, double>;
template <class Bits> Bits bits_of(double value) {
    return std::bit_cast<Bits>(static_cast<float_of<Bits>>(value));
}
template <class Bits> constexpr Bits signalling_nan = FPFormat<Bits>::infinity | 0x15;

template <class Bits> constexpr int row_elements = vector_bytes / static_cast<int>(sizeof(Bits));

// What makes the form for double precision out of that for single precision.
template <class Bits> constexpr unsigned int size_bit = sizeof(Bits) == 8 ? 1u << 22 : 0;
constexpr unsigned int with_field(unsigned int word, int low, unsigned int reg) {
    return (word & ~(31u << low)) | reg << low;
}

// The instructions name Z3, or P1, as destination, P2, and Z4 and Z5 as sources. `word` is the form for
// single precision. `expected` is what an active element becomes: from the old one and those of Z4 and Z5.
struct arithmetic_case {
    const char* assembly;
    unsigned int word;
    int sources; // how many of Z4 and Z5 there are
    bool predicated;
    double (*expected)(double old, double n, double m);
};

const arithmetic_case arithmetic_cases[] = {
    {"fadd z3, p2/m, z3, z4", 0x65808883, 1, true, [](double d, double n, double) { return d + n; }},
    {"fsub z3, p2/m, z3, z4", 0x65818883, 1, true, [](double d, double n, double) { return d - n; }},
    {"fsubr z3, p2/m, z3, z4", 0x65838883, 1, true, [](double d, double n, double) { return n - d; }},
    {"fmul z3, p2/m, z3, z4", 0x65828883, 1, true, [](double d, double n, double) { return d * n; }},
    {"fdiv z3, p2/m, z3, z4", 0x658d8883, 1, true, [](double d, double n, double) { return d / n; }},
    {"fdivr z3, p2/m, z3, z4", 0x658c8883, 1, true, [](double d, double n, double) { return n / d; }},
    {"fmax z3, p2/m, z3, z4", 0x65868883, 1, true, [](double d, double n, double) { return std::max(d, n); }},
    {"fmaxnm z3, p2/m, z3, z4", 0x65848883, 1, true,
     [](double d, double n, double) { return std::max(d, n); }},
    {"fminnm z3, p2/m, z3, z4", 0x65858883, 1, true,
     [](double d, double n, double) { return std::min(d, n); }},
    {"fadd z3, p2/m, z3, #0.5", 0x65988803, 0, true, [](double d, double, double) { return d + 0.5; }},
    {"fadd z3, p2/m, z3, #1.0", 0x65988823, 0, true, [](double d, double, double) { return d + 1; }},
    {"fsub z3, p2/m, z3, #0.5", 0x65998803, 0, true, [](double d, double, double) { return d - 0.5; }},
    {"fsub z3, p2/m, z3, #1.0", 0x65998823, 0, true, [](double d, double, double) { return d - 1; }},
    {"fsubr z3, p2/m, z3, #0.5", 0x659b8803, 0, true, [](double d, double, double) { return 0.5 - d; }},
    {"fsubr z3, p2/m, z3, #1.0", 0x659b8823, 0, true, [](double d, double, double) { return 1 - d; }},
    {"fmul z3, p2/m, z3, #0.5", 0x659a8803, 0, true, [](double d, double, double) { return d * 0.5; }},
    {"fmul z3, p2/m, z3, #2.0", 0x659a8823, 0, true, [](double d, double, double) { return d * 2; }},
    {"fneg z3, p2/m, z4", 0x049da883, 1, true, [](double, double n, double) { return -n; }},
    {"fsqrt z3, p2/m, z4", 0x658da883, 1, true, [](double, double n, double) { return std::sqrt(n); }},
    {"frinta z3, p2/m, z4", 0x6584a883, 1, true, [](double, double n, double) { return std::round(n); }},
    {"fnmla z3, p2/m, z4, z5", 0x65a54883, 2, true, [](double d, double n, double m) { return -d - n * m; }},
    {"fadd z3, z4, z5", 0x65850083, 2, false, [](double, double n, double m) { return n + m; }},
    {"fsub z3, z4, z5", 0x65850483, 2, false, [](double, double n, double m) { return n - m; }},
    {"fmul z3, z4, z5", 0x65850883, 2, false, [](double, double n, double m) { return n * m; }},
    {"frecps z3, z4, z5", 0x65851883, 2, false, [](double, double n, double m) { return 2 - n * m; }},
    // The estimate of 1 is the middle of the 256th of a binade below it.
    {"frecpe z3, z4", 0x658e3083, 1, false, [](double, double n, double) { return 511.0 / 512 / n; }},
};

// Powers of four with few enough bits for exact sums, products, quotients and roots.
double exact_operand(std::mt19937_64& random) {
    return std::ldexp(1, 2 * (static_cast<int>(random() % 9) - 4));
}

template <class Bits> class FpHandlers : public testing::Test {};
using element_types = testing::Types<std::uint32_t, std::uint64_t>;
TYPED_TEST_SUITE(FpHandlers, element_types);

TYPED_TEST(FpHandlers, ComputeActiveElementsAlone) {
    using Bits = TypeParam;
    std::mt19937_64 random(5);
    for (const arithmetic_case& row : arithmetic_cases) {
        for (const predicate_shape shape : predicate_shapes) {
            for (const bool aliased : {false, true}) {
                cpu_state state = random_state(static_cast<unsigned>(random()));
                state.fpcr = 0;
                state.fpsr = QC | FPFlag_DZC;
                set_predicate<Bits>(state.p[2], shape, static_cast<unsigned>(random()));
                unsigned int word = row.word | size_bit<Bits>;
                const unsigned int n = aliased ? 3 : 4, m = aliased ? 3 : 5;
                if (row.sources > 0)
                    word = with_field(word, 5, n);
                if (row.sources > 1)
                    word = with_field(word, 16, m);
                cpu_state expected = state;
                for (int i = 0; i < row_elements<Bits>; ++i) {
                    const bool active = !row.predicated || element_is_active<Bits>(state.p[2], i);
                    double value[3];
                    for (int z = 3; z <= 5; ++z) {
                        value[z - 3] = exact_operand(random);
                        const Bits bits = active ? bits_of<Bits>(value[z - 3]) : signalling_nan<Bits>;
                        set_element(state.z[z], i, bits);
                        set_element(expected.z[z], i, bits);
                    }
                    if (active)
                        set_element(expected.z[3], i,
                                    bits_of<Bits>(row.expected(value[0], value[n - 3], value[m - 3])));
                }
                expected.instr_word = word;
                execute(state, word);
                EXPECT_TRUE(same_state(state, expected)) << row.assembly << ", word 0x" << std::hex << word;
            }
        }
    }
}

TYPED_TEST(FpHandlers, AddWhatActiveElementsRaise) {
    using Bits = TypeParam;
    for (const arithmetic_case& row : arithmetic_cases) {
        cpu_state state = random_state(9);
        state.fpcr = 0;
        state.fpsr = QC | FPFlag_DZC;
        set_predicate<Bits>(state.p[2], predicate_shape::only_last, 3);
        for (int z = 3; z <= 5; ++z) {
            for (int i = 0; i < row_elements<Bits>; ++i)
                set_element(state.z[z], i, bits_of<Bits>(1));
        }
        const int changed = row.sources == 0 ? 3 : 4;
        set_element(state.z[changed], row_elements<Bits> - 1, signalling_nan<Bits>);
        const bool negates = std::string(row.assembly).starts_with("fneg");
        execute(state, row.word | size_bit<Bits>);
        EXPECT_EQ(state.fpsr, QC | FPFlag_DZC | (negates ? 0 : FPFlag_IOC)) << row.assembly;
        const Bits result = element<Bits>(state.z[3], row_elements<Bits> - 1);
        EXPECT_EQ(result & FPFormat<Bits>::magnitude_mask,
                  signalling_nan<Bits> | (negates ? 0 : FPFormat<Bits>::quiet_bit))
            << row.assembly;
    }
}

struct compare_case {
    const char* assembly;
    unsigned int word;
    bool (*holds)(double n, double m); // m is 0 in the forms with a zero
    bool vectors;
    bool quiet; // raises nothing for a quiet NaN
};

const compare_case compare_cases[] = {
    {"fcmge p1, p2/z, z4, z5", 0x65854881, [](double n, double m) { return n >= m; }, true, false},
    {"fcmgt p1, p2/z, z4, z5", 0x65854891, [](double n, double m) { return n > m; }, true, false},
    {"fcmeq p1, p2/z, z4, z5", 0x65856881, [](double n, double m) { return n == m; }, true, true},
    {"fcmne p1, p2/z, z4, z5", 0x65856891, [](double n, double m) { return n != m; }, true, true},
    {"fcmuo p1, p2/z, z4, z5", 0x6585c881, [](double n, double m) { return std::isnan(n) || std::isnan(m); },
     true, true},
    {"fcmge p1, p2/z, z4, #0.0", 0x65902881, [](double n, double) { return n >= 0; }, false, false},
    {"fcmgt p1, p2/z, z4, #0.0", 0x65902891, [](double n, double) { return n > 0; }, false, false},
    {"fcmeq p1, p2/z, z4, #0.0", 0x65922881, [](double n, double) { return n == 0; }, false, true},
    {"fcmle p1, p2/z, z4, #0.0", 0x65912891, [](double n, double) { return n <= 0; }, false, false},
    {"fcmlt p1, p2/z, z4, #0.0", 0x65912881, [](double n, double) { return n < 0; }, false, false},
};

TYPED_TEST(FpHandlers, CompareActiveElementsAlone) {
    using Bits = TypeParam;
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    constexpr double values[] = {-1, -0.0, 0, 1, nan};
    std::mt19937_64 random(6);
    for (const compare_case& row : compare_cases) {
        for (const predicate_shape shape : predicate_shapes) {
            for (const bool aliased : {false, true}) {
                cpu_state state = random_state(static_cast<unsigned>(random()));
                state.fpcr = 0;
                state.fpsr = QC | FPFlag_OFC;
                set_predicate<Bits>(state.p[2], shape, static_cast<unsigned>(random()));
                const unsigned int pd = aliased ? 2 : 1;
                const unsigned int word = (row.word & ~15u) | size_bit<Bits> | pd;
                std::array<std::uint8_t, vector_bytes> result = {};
                for (int i = 0; i < row_elements<Bits>; ++i) {
                    const bool active = element_is_active<Bits>(state.p[2], i);
                    const double n = values[random() % (row.quiet ? 5 : 4)];
                    const double m = values[random() % (row.quiet ? 5 : 4)];
                    set_element(state.z[4], i, active ? bits_of<Bits>(n) : signalling_nan<Bits>);
                    set_element(state.z[5], i, active ? bits_of<Bits>(m) : signalling_nan<Bits>);
                    result[static_cast<unsigned>(i) * sizeof(Bits)] = active && row.holds(n, m);
                }
                cpu_state expected = state;
                std::copy(result.begin(), result.end(), expected.p[pd]);
                expected.instr_word = word;
                execute(state, word);
                EXPECT_TRUE(same_state(state, expected)) << row.assembly << ", word 0x" << std::hex << word;
            }
        }
    }
}

TYPED_TEST(FpHandlers, ReduceActiveElements) {
    using Bits = TypeParam;
    std::mt19937_64 random(7);
    for (const unsigned int form : {0x65842883u /* fmaxnmv s3, p2, z4 */, 0x65852883u /* fminnmv */}) {
        for (const predicate_shape shape : predicate_shapes) {
            for (const unsigned int zn : {3u, 4u}) {
                const unsigned int word = with_field(form | size_bit<Bits>, 5, zn);
                cpu_state state = random_state(static_cast<unsigned>(random()));
                state.fpcr = 0;
                state.fpsr = QC;
                set_predicate<Bits>(state.p[2], shape, static_cast<unsigned>(random()));
                double extreme = std::numeric_limits<double>::quiet_NaN();
                for (int i = 0; i < row_elements<Bits>; ++i) {
                    const double value = exact_operand(random) * (random() % 2 ? 1 : -1);
                    const bool active = element_is_active<Bits>(state.p[2], i);
                    set_element(state.z[zn], i, active ? bits_of<Bits>(value) : signalling_nan<Bits>);
                    if (active)
                        extreme = form == 0x65842883 ? std::fmax(extreme, value) : std::fmin(extreme, value);
                }
                cpu_state expected = state;
                std::fill(std::begin(expected.z[3]), std::end(expected.z[3]), 0);
                set_element(expected.z[3], 0,
                            std::isnan(extreme) ? FPFormat<Bits>::default_nan : bits_of<Bits>(extreme));
                expected.instr_word = word;
                execute(state, word);
                EXPECT_TRUE(same_state(state, expected)) << "word 0x" << std::hex << word;
            }
        }
    }
}

// Neighbours meet before numbers elsewhere do, and the NaN that comes first wins.
TEST(FpReductions, CombineAsATree) {
    cpu_state state = random_state(1);
    state.fpcr = state.fpsr = 0;
    set_predicate<std::uint32_t>(state.p[2], predicate_shape::all_true, 1);
    for (int i = 0; i < 32; ++i)
        set_element(state.z[4], i, bits_of<std::uint32_t>(-i));
    set_element(state.z[4], 2, 0x7FC00002u); // a missing value
    set_element(state.z[4], 7, 0xFF800003u); // quieted, and from there on a missing value
    execute(state, 0x65842883);
    EXPECT_EQ(element<std::uint32_t>(state.z[3], 0), 0u);
    EXPECT_EQ(state.fpsr, std::uint32_t{FPFlag_IOC});
    for (int i = 0; i < 32; ++i)
        set_element(state.z[4], i, 0x7FC00001u + static_cast<std::uint32_t>(i));
    execute(state, 0x65842883);
    EXPECT_EQ(element<std::uint32_t>(state.z[3], 0), 0x7FC00001u);
    set_active<std::uint32_t>(state.p[2], 0, false);
    execute(state, 0x65842883);
    EXPECT_EQ(element<std::uint32_t>(state.z[3], 0), 0x7FC00000u) << "an inactive element is a default NaN";
}

struct integer_case {
    const char* assembly;
    unsigned int word;
    int element_bytes, result_bytes;
    double (*value)(std::uint64_t element);
};

const integer_case integer_cases[] = {
    {"scvtf z3.s, p2/m, z4.s", 0x6594a883, 4, 4,
     [](std::uint64_t e) -> double { return static_cast<std::int32_t>(e); }},
    {"ucvtf z3.s, p2/m, z4.s", 0x6595a883, 4, 4,
     [](std::uint64_t e) -> double { return static_cast<std::uint32_t>(e); }},
    {"scvtf z3.d, p2/m, z4.s", 0x65d0a883, 8, 8,
     [](std::uint64_t e) -> double { return static_cast<std::int32_t>(e); }},
    {"ucvtf z3.d, p2/m, z4.s", 0x65d1a883, 8, 8,
     [](std::uint64_t e) -> double { return static_cast<std::uint32_t>(e); }},
    {"scvtf z3.s, p2/m, z4.d", 0x65d4a883, 8, 4,
     [](std::uint64_t e) -> double { return static_cast<double>(static_cast<std::int64_t>(e)); }},
    {"scvtf z3.d, p2/m, z4.d", 0x65d6a883, 8, 8,
     [](std::uint64_t e) -> double { return static_cast<double>(static_cast<std::int64_t>(e)); }},
    {"ucvtf z3.d, p2/m, z4.d", 0x65d7a883, 8, 8,
     [](std::uint64_t e) -> double { return static_cast<double>(e); }},
};

template <class Element>
void check_integers(const integer_case& row, predicate_shape shape, unsigned int zn) {
    std::mt19937_64 random(8);
    const unsigned int word = with_field(row.word, 5, zn);
    cpu_state state = random_state(2);
    state.fpcr = 0;
    state.fpsr = QC;
    set_predicate<Element>(state.p[2], shape, 4);
    for (int i = 0; i < row_elements<Element>; ++i) {
        // Twenty bits are exact in every format. All but the top bit aren't, where the result is no wider.
        const Element bits = random() & 0xFFFFF;
        const Element value = random() % 2 ? bits : bits << (8 * sizeof(Element) - 20);
        const bool active = element_is_active<Element>(state.p[2], i);
        set_element(state.z[zn], i, active ? value : static_cast<Element>(~Element{0} >> 1));
    }
    cpu_state expected = state;
    for (int i = 0; i < row_elements<Element>; ++i) {
        if (!element_is_active<Element>(state.p[2], i))
            continue;
        const double value = row.value(element<Element>(state.z[zn], i));
        set_element<Element>(expected.z[3], i,
                             row.result_bytes == 4 ? static_cast<Element>(bits_of<std::uint32_t>(value))
                                                   : static_cast<Element>(bits_of<std::uint64_t>(value)));
    }
    expected.instr_word = word;
    execute(state, word);
    EXPECT_TRUE(same_state(state, expected)) << row.assembly << ", word 0x" << std::hex << word;
}

TEST(FpConversions, OfActiveIntegersAlone) {
    for (const integer_case& row : integer_cases) {
        for (const predicate_shape shape : predicate_shapes) {
            for (const unsigned int zn : {3u, 4u}) {
                if (row.element_bytes == 4)
                    check_integers<std::uint32_t>(row, shape, zn);
                else
                    check_integers<std::uint64_t>(row, shape, zn);
            }
        }
    }
}

TEST(FpBroadcast, StoresTheConstantInEveryFormat) {
    cpu_state state = random_state(3);
    const std::uint32_t fpsr = state.fpsr;
    execute(state, 0x2579db03); // fmov z3.h, #-0.375
    execute(state, 0x25b9db04); // fmov z4.s, #-0.375
    execute(state, 0x25f9db05); // fmov z5.d, #-0.375
    for (int i = 0; i < 64; ++i)
        ASSERT_EQ(element<std::uint16_t>(state.z[3], i), 0xB600u);
    for (int i = 0; i < 32; ++i)
        ASSERT_EQ(element<std::uint32_t>(state.z[4], i), bits_of<std::uint32_t>(-0.375));
    for (int i = 0; i < 16; ++i)
        ASSERT_EQ(element<std::uint64_t>(state.z[5], i), bits_of<std::uint64_t>(-0.375));
    EXPECT_EQ(state.fpsr, fpsr);
}

} // namespace
