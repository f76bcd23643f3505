// Floating-point primitives of the library at vector lengths other than the machine's own, and what they
// leave in the context: one of each shape, against the kernels called element by element, and against
// arithmetic of the host where that is the same.
#include "sve/fp/fp_arithmetic.h"
#include "sve/fp/fp_compare.h"
#include "sve/fp/fp_convert.h"
#include "sve/fp/fp_multiply_add.h"
#include "sve/library/fp_arithmetic.h"
#include "sve/library/fp_compares.h"
#include "sve/library/fp_complex.h"
#include "sve/library/fp_conversions.h"
#include "sve/library/fp_multiply_add.h"
#include "sve/library/fp_reductions.h"

#include "tests/unit/fp_operands.h"
#include "tests/unit/library_operands.h"

#include <bit>
#include <limits>

namespace {

// The record for one element, merged when it ends: the status of an instruction element by element.
struct element_status {
    explicit element_status(CpuContext& context, std::uint32_t cleared = 0)
        : context(context), fpscr{context.fpcr & ~cleared} {}
    ~element_status() { context.fpsr = (context.fpsr | fpscr.bits) & 0xF800009F; }
    CpuContext& context;
    FPSCR fpscr;
};

void expect_equal_status(const CpuContext& actual, const CpuContext& expected) {
    EXPECT_EQ(actual.fpsr, expected.fpsr);
    EXPECT_EQ(actual.fpcr, expected.fpcr);
    EXPECT_EQ(actual.nzcv, expected.nzcv);
    EXPECT_EQ(std::memcmp(&actual.ffr, &expected.ffr, sizeof actual.ffr), 0);
}

template <class Bits> VecV fp_vector(std::mt19937_64& generator) {
    VecV result;
    for (int i = 0; i < static_cast<int>(sizeof result / sizeof(Bits)); ++i)
        set_element(result, i, fp_random_value<Bits>(generator()));
    return result;
}

// Compares primitive(values), a vector of Elements, with what expected(values, i, fpscr) gives for the active
// elements, or for all of them, with the control bits `cleared`; inactive ones keep zn[i].
template <class Element, class Primitive, class Expected>
void check(const char* name, bool predicated, Primitive primitive, Expected expected,
           std::uint32_t cleared = 0) {
    SCOPED_TRACE(name);
    for_random_operands([&](primitive_operands& values) {
        std::mt19937_64 generator(values.seed);
        values.zn = fp_vector<Element>(generator);
        values.zm = fp_vector<Element>(generator);
        CpuContext context = values.context;
        const auto pg = bits_of(values.pg, context);
        auto elements = elements_of<Element>(values.zn, context);
        for (std::size_t i = 0; i < elements.size(); ++i) {
            if (!predicated || active_at<Element>(pg, i)) {
                element_status status(context, cleared);
                elements[i] = static_cast<Element>(expected(values, static_cast<int>(i), status.fpscr));
            }
        }
        EXPECT_EQ(elements_of<Element>(primitive(values), values.context), elements);
        expect_equal_status(values.context, context);
    });
}

template <class Bits> Bits zn(const primitive_operands& values, int i) {
    return get_element<Bits>(values.zn, i);
}
template <class Bits> Bits zm(const primitive_operands& values, int i) {
    return get_element<Bits>(values.zm, i);
}

TEST(FpLibrary, ElementsAndStatusAtEveryLength) {
    check<half_bits>(
        "fadd", true, [](auto& v) { return VecF16AddVVM(v.zn, v.pg, v.zm, &v.context); },
        [](auto& v, int i, FPSCR& fpscr) { return FPAdd(zn<half_bits>(v, i), zm<half_bits>(v, i), fpscr); });
    check<double_bits>(
        "fabd", true, [](auto& v) { return VecD64AbdVVM(v.zn, v.pg, v.zm, &v.context); },
        [](auto& v, int i, FPSCR& fpscr) {
            return FPAbs(FPSub(zn<double_bits>(v, i), zm<double_bits>(v, i), fpscr));
        });
    check<half_bits>(
        "fmul, unpredicated", false, [](auto& v) { return VecF16MulVVX(v.zn, v.zm, &v.context); },
        [](auto& v, int i, FPSCR& fpscr) { return FPMul(zn<half_bits>(v, i), zm<half_bits>(v, i), fpscr); });
    check<single_bits>(
        "fmls", true, [](auto& v) { return VecF32FMSVVVM(v.zn, v.pg, v.zn, v.zm, &v.context); },
        [](auto& v, int i, FPSCR& fpscr) {
            return FPMulAdd(zn<single_bits>(v, i), FPNeg(zn<single_bits>(v, i)), zm<single_bits>(v, i),
                            fpscr);
        });
    check<double_bits>(
        "fmul by element 1", false, [](auto& v) { return VecD64MulVVIX(v.zn, v.zm, 1, &v.context); },
        [](auto& v, int i, FPSCR& fpscr) {
            return FPMul(zn<double_bits>(v, i), zm<double_bits>(v, i | 1), fpscr);
        });
    check<single_bits>(
        "fcadd, 270 degrees", true, [](auto& v) { return VecF32FCADDVVM(v.zn, v.pg, v.zm, 1, &v.context); },
        [](auto& v, int i, FPSCR& fpscr) {
            const single_bits other = zm<single_bits>(v, i ^ 1);
            return FPAdd(zn<single_bits>(v, i), i % 2 == 0 ? other : FPNeg(other), fpscr);
        });
}

// Containers are full of random bits, so that there is something above a narrow source.
TEST(FpLibrary, ContainersAtEveryLength) {
    check<double_bits>(
        "fcvt, single to double", true, [](auto& v) { return VecD64ExtndFVM(v.zn, v.pg, v.zm, &v.context); },
        [](auto& v, int i, FPSCR& fpscr) {
            const auto low = static_cast<single_bits>(zm<double_bits>(v, i));
            return FPConvert<single_bits, double_bits>(low, fpscr.rounding(), fpscr);
        },
        FPSCR::AHP | FPSCR::FZ16);
    check<double_bits>(
        "fcvtzs, double to word", true, [](auto& v) { return VecS64_4FromDVM(v.zn, v.pg, v.zm, &v.context); },
        [](auto& v, int i, FPSCR& fpscr) {
            return static_cast<std::int32_t>(fplibFPToFixed<double_bits, std::uint32_t>(
                zm<double_bits>(v, i), 0, false, FPRounding_ZERO, fpscr));
        });
    check<single_bits>(
        "ucvtf, word to half", true, [](auto& v) { return VecF16FromU4VM(v.zn, v.pg, v.zm, &v.context); },
        [](auto& v, int i, FPSCR& fpscr) {
            return fplibFixedToFP<half_bits>(zm<single_bits>(v, i), 0, true, fpscr.rounding(), fpscr);
        });
}

TEST(FpLibrary, ComparesAtEveryLength) {
    for_random_operands([](primitive_operands& values) {
        std::mt19937_64 generator(values.seed);
        values.zn = fp_vector<half_bits>(generator);
        values.zm = generator() % 2 ? values.zn : fp_vector<half_bits>(generator);
        CpuContext context = values.context;
        const auto pg = bits_of(values.pg, context);
        std::vector<bool> expected(pg.size());
        for (std::size_t i = 0; i < pg.size() / 2; ++i) {
            if (active_at<half_bits>(pg, i)) {
                element_status status(context);
                const int element = static_cast<int>(i);
                expected[2 * i] = !FPCompareEQ(zn<half_bits>(values, element), zm<half_bits>(values, element),
                                               status.fpscr);
            }
        }
        const PredV result = VecF16CmpNEVVZ(values.pg, values.zn, values.zm, &values.context);
        EXPECT_EQ(bits_of(result, values.context), expected);
        expect_equal_status(values.context, context);
    });
}

// The sum of the values in [first, first + size), where those from the end of `values` on are +0.
template <class Float> Float tree_sum(const std::vector<Float>& values, std::size_t first, std::size_t size) {
    if (size == 1)
        return first < values.size() ? values[first] : 0;
    return tree_sum(values, first, size / 2) + tree_sum(values, first + size / 2, size / 2);
}

// The host adds in the same format, rounding to nearest as FPCR says here.
template <class Float, class Bits, class Tree, class Ordered> void check_sums(Tree tree, Ordered ordered) {
    for_random_operands([&](primitive_operands& values) {
        std::mt19937_64 generator(values.seed);
        values.context.fpcr = 0;
        const bool all_negative_zeros = generator() % 8 == 0;
        for (int i = 0; i < static_cast<int>(sizeof(VecV) / sizeof(Bits)); ++i) {
            const Float value =
                static_cast<Float>(static_cast<std::int64_t>(generator()) >> generator() % 64);
            set_element(values.zn, i, std::bit_cast<Bits>(all_negative_zeros ? Float{-0.0} : value));
        }
        const auto pg = bits_of(values.pg, values.context);
        const Float initial = Float(0.1);
        Float in_order = initial;
        std::vector<Float> elements;
        for (const Bits bits : elements_of<Bits>(values.zn, values.context)) {
            const Float value = std::bit_cast<Float>(bits);
            const bool active = active_at<Bits>(pg, elements.size());
            elements.push_back(active ? value : 0);
            in_order = active ? in_order + value : in_order;
        }
        std::size_t size = 1;
        while (size < elements.size())
            size *= 2;
        EXPECT_EQ(tree(values.pg, values.zn, &values.context),
                  std::bit_cast<Bits>(tree_sum(elements, 0, size)));
        EXPECT_EQ(ordered(values.pg, std::bit_cast<Bits>(initial), values.zn, &values.context),
                  std::bit_cast<Bits>(in_order));
    });
}

TEST(FpLibrary, SumsFillUpToAPowerOfTwo) {
    check_sums<float, single_bits>(VecF32AddReduceFV, VecF32AddReduceAV);
    check_sums<double, double_bits>(VecD64AddReduceFV, VecD64AddReduceAV);
}

TEST(FpLibrary, ReductionsFillUpWithTheirIdentity) {
    constexpr single_bits minus_two = 0xC0000000, minus_zero = 0x80000000;
    constexpr half_bits one = 0x3C00, quiet_nan = 0x7E01;
    const PredV none = {}, all = {{~0ul, ~0ul, ~0ul, ~0ul}};
    VecV singles, zeros, halves;
    for (int i = 0; i < 64; ++i) {
        set_element(singles, i, minus_two);
        set_element(zeros, i, minus_zero);
    }
    for (int i = 0; i < 128; ++i)
        set_element(halves, i, i % 4 == 2 ? one : quiet_nan);
    for (const std::uint32_t length : some_vector_lengths) {
        SCOPED_TRACE(length);
        CpuContext context = {};
        context.vl = length;
        EXPECT_EQ(VecF32AddReduceFV(none, singles, &context), 0u);
        EXPECT_EQ(VecF32MaxReduceFV(none, singles, &context), 0xFF800000);
        EXPECT_EQ(VecF32MinReduceFV(none, singles, &context), 0x7F800000u);
        EXPECT_EQ(VecF16MaxNumReduceFV(none, halves, &context), 0x7E00u);
        if (length == 0)
            continue;
        EXPECT_EQ(VecF32MaxReduceFV(all, singles, &context), minus_two);
        EXPECT_EQ(VecF32MinReduceFV(all, singles, &context), minus_two);
        EXPECT_EQ(VecF16MinNumReduceFV(all, halves, &context), one);
        // A zero that fills up is positive, and makes the sum so.
        EXPECT_EQ(VecF32AddReduceFV(all, zeros, &context), std::has_single_bit(length) ? minus_zero : 0u);
        EXPECT_EQ(context.fpsr, 0u);
    }
}

TEST(FpLibrary, ConversionsDontKnowTheAlternativeHalf) {
    struct {
        const char* name;
        merging_primitive* primitive;
        std::uint64_t operand, result;
        std::uint32_t fpsr;
    } const cases[] = {
        {"single to half", VecH32TruncFVM, 0x47800000, 0x7C00, 0x14}, // 65536: infinity, OFC and IXC
        {"double to half", VecH64TruncDVM, 0x40F0000000000000, 0x7C00, 0x14},
        {"NaN to half", VecH64TruncDVM, 0x7FF8000000000000, 0x7E00, 0},
        {"half infinity", VecF32ExtndHVM, 0x7C00, 0x7F800000, 0},
        {"half NaN", VecD64ExtndHVM, 0x7E01, 0x7FF8040000000000, 0},
        {"half denormal", VecF32ExtndHVM, 0x0001, 0x33800000, 0},
        {"to half denormal", VecH32TruncFVM, 0x33800000, 0x0001, 0},
    };
    constexpr std::uint32_t fpcr = FPSCR::AHP | FPSCR::FZ16;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const PredV first = {{1, 0, 0, 0}};
        VecV source = {};
        set_element(source, 0, c.operand);
        CpuContext context = {};
        context.vl = 1;
        context.fpcr = fpcr;
        const VecV result = c.primitive(VecV{}, first, source, &context);
        EXPECT_EQ(get_element<std::uint64_t>(result, 0), c.result);
        EXPECT_EQ(context.fpsr, c.fpsr);
        EXPECT_EQ(context.fpcr, fpcr);
    }
}

// FPSR loses the bits that no instruction sets as soon as an element is active, and only then.
TEST(FpLibrary, NothingIsRaisedWhereNothingIsActive) {
    constexpr std::uint32_t before = 0x0FFF0060;
    VecV signalling;
    for (int i = 0; i < 64; ++i)
        set_element<single_bits>(signalling, i, 0x7F800001);
    for (const bool active : {false, true}) {
        SCOPED_TRACE(active);
        const PredV pg = {{active ? std::uint64_t{0x10} : 0xEEE, 0, 0, ~std::uint64_t{0}}};
        const std::uint32_t after = active ? 0x08000001 : before;
        CpuContext context = {};
        context.vl = 16;
        context.fpsr = before;
        VecF32MulXVVM(signalling, pg, signalling, &context);
        EXPECT_EQ(context.fpsr, after);
        context.fpsr = before;
        VecF32AcGEVVZ(pg, signalling, signalling, &context);
        EXPECT_EQ(context.fpsr, after);
        context.fpsr = before;
        VecF32AddReduceAV(pg, 0, signalling, &context);
        EXPECT_EQ(context.fpsr, after);
        context.fpsr = before;
        VecF32AbsVM(signalling, pg, signalling, &context);
        EXPECT_EQ(context.fpsr, before);
    }
}

} // namespace
