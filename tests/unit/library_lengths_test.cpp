// The library at vector lengths other than the machine's own. What a primitive computes is compared with a
// processor, at 16 units of 64 bits; of any other length it has to make the same from a window of up to 16
// units, if nothing outside of the window is active or, without a predicate, if the vectors are zero there.
#include "sve/library/dot_products.h"
#include "sve/library/element_moves.h"
#include "sve/library/first_fault_register.h"
#include "sve/library/fp_arithmetic.h"
#include "sve/library/fp_compares.h"
#include "sve/library/fp_complex.h"
#include "sve/library/fp_conversions.h"
#include "sve/library/fp_multiply_add.h"
#include "sve/library/fp_reductions.h"
#include "sve/library/gather_scatter.h"
#include "sve/library/integer_arithmetic.h"
#include "sve/library/integer_compares.h"
#include "sve/library/integer_reductions.h"
#include "sve/library/permutes.h"
#include "sve/library/predicate_counts.h"
#include "sve/library/predicate_generation.h"
#include "sve/library/predicate_logic.h"
#include "sve/library/replicating_loads.h"
#include "sve/library/saturating_arithmetic.h"
#include "sve/library/shifts.h"
#include "sve/library/unary_integer.h"

#include "tests/unit/fp_operands.h"
#include "tests/unit/library_operands.h"

#include <bit>

namespace {

using operands = primitive_operands;

// A vector or a predicate is 32 units, of eight bytes or of one.
template <class Value> inline constexpr std::size_t unit_bytes = sizeof(Value) / 32;
template <class Value> std::uint8_t* bytes_of(Value& value) {
    return reinterpret_cast<std::uint8_t*>(&value);
}

// Moves so many units, from `start` on, to the front, with zeros behind them.
template <class Value> void keep_window(Value& value, std::size_t start, std::size_t units) {
    std::memmove(&value, bytes_of(value) + start * unit_bytes<Value>, units * unit_bytes<Value>);
    std::memset(bytes_of(value) + units * unit_bytes<Value>, 0, (32 - units) * unit_bytes<Value>);
}

// The operand that a merging primitive keeps.
const VecV& kept_operand(const operands& values, const VecV&) { return values.zn; }
const PredV& kept_operand(const operands& values, const PredV&) { return values.pn; }

// What the result holds outside of the window: zeros, the first operand, or anything.
enum class outside { zero, kept, open };

// Compares what the primitive makes of operands at many lengths with what it makes of the window. A result
// counts in whole granules of so many units, which a primitive that combines neighbours needs.
template <class Bits = std::uint8_t, class Primitive>
void check(const char* name, outside rest, Primitive primitive, std::size_t granule = 1) {
    SCOPED_TRACE(name);
    for_random_operands([&](operands& values) {
        const std::size_t length = values.context.vl & 63;
        values.context.fpsr &= fpsr_written_bits;
        values.context.fpcr &= 0x07C80000; // the modes
        std::mt19937_64 generator(values.seed);
        if constexpr (sizeof(Bits) > 1) {
            for (int i = 0; i < static_cast<int>(sizeof(VecV) / sizeof(Bits)); ++i) {
                set_element(values.zn, i, fp_random_value<Bits>(generator()));
                set_element(values.zm, i, fp_random_value<Bits>(generator()));
            }
        }
        const std::size_t start = generator() % (length / 2 + 1) * 2;
        const std::size_t units = std::min<std::size_t>(length - start, 16), end = start + units;
        for (std::size_t k = 0; k < length; ++k) {
            if (k >= start && k < end)
                continue;
            bytes_of(values.pg)[k] = 0;
            for (VecV* vector : {&values.zn, &values.zm})
                if (rest == outside::open)
                    std::memset(vector->bytes + 8 * k, 0, 8);
        }
        operands window = values;
        for (VecV* vector : {&window.zn, &window.zm})
            keep_window(*vector, start, units);
        for (PredV* predicate : {&window.pg, &window.pn, &window.pm, &window.context.ffr})
            keep_window(*predicate, start, units);
        window.context.vl = 16;

        const CpuContext before = values.context;
        const auto expected = primitive(window);
        auto actual = primitive(values);
        if constexpr (std::is_integral_v<decltype(actual)>) {
            EXPECT_EQ(actual, expected);
        } else {
            using Result = decltype(actual);
            constexpr std::size_t unit = unit_bytes<Result>;
            std::uint8_t* const found = bytes_of(actual) + start * unit;
            EXPECT_EQ(std::memcmp(found, &expected, units / granule * granule * unit), 0);
            Result whole = rest == outside::kept ? kept_operand(values, actual) : Result{};
            std::memcpy(bytes_of(whole) + start * unit, found, units * unit);
            EXPECT_TRUE(rest == outside::open || std::memcmp(&actual, &whole, length * unit) == 0);
        }
        EXPECT_EQ(values.context.nzcv, window.context.nzcv);
        if (units % granule == 0) {
            EXPECT_EQ(values.context.fpsr, window.context.fpsr);
        }
        EXPECT_EQ(values.context.fpcr, before.fpcr);
        EXPECT_EQ(std::memcmp(&values.context.ffr, &before.ffr, sizeof before.ffr), 0);
    });
}

TEST(LibraryLengths, Integers) {
    const auto kept = outside::kept, open = outside::open;
    check("subr", kept, [](operands& v) { return VecU16SubRVVM(v.zn, v.pg, v.zm, &v.context); });
    check("sabd", kept, [](operands& v) { return VecS8AbdVVM(v.zn, v.pg, v.zm, &v.context); });
    check("umulh", kept, [](operands& v) { return VecU32MulHVVM(v.zn, v.pg, v.zm, &v.context); });
    check("revb", kept, [](operands& v) { return VecU64Rev1V(v.zn, v.pg, v.zm, &v.context); });
    check("lsr", kept, [](operands& v) { return VecU32ShrVIM(v.zn, v.pg, 32, &v.context); });
    check("asrd", kept, [](operands& v) { return VecS16ShrDVIM(v.zn, v.pg, 3, &v.context); });
    check("asrr", kept, [](operands& v) { return VecS8ShrRVVM(v.zn, v.pg, v.zm, &v.context); });
    check("lsl wide", kept, [](operands& v) { return VecU16ShlVWM(v.zn, v.pg, v.zm, &v.context); });
    check("asr wide", open, [](operands& v) { return VecS8ShrVWX(v.zn, v.zm, &v.context); });
    check("uqadd", open, [](operands& v) { return VecU8QAddVVX(v.zn, v.zm, &v.context); });
    check("sqsub", open, [](operands& v) { return VecS16QSubVVX(v.zn, v.zm, &v.context); });
    check("sqsub 200", open, [](operands& v) { return VecS8QSubVIX(v.zn, 200, &v.context); });
    check("smax -5", open, [](operands& v) { return VecS16MaxVIX(v.zn, -5, &v.context); });
    check("subr 3", open, [](operands& v) { return VecU8SubRVIX(v.zn, 3, &v.context); });
    check("sdot", open, [](operands& v) { return VecS32DotVVVX(v.zm, v.zn, v.zm, &v.context); });
    check("udot", open, [](operands& v) { return VecU64DotVVVX(v.zm, v.zn, v.zm, &v.context); });
    const auto indexed_dot = [](operands& v) { return VecS32DotVVVIX(v.zm, v.zn, v.zm, 3, &v.context); };
    check("indexed sdot", open, indexed_dot, 2);
    check("trn1 halfwords", open, [](operands& v) { return VecU16Trn1VV(v.zn, v.zm, &v.context); });
    check(
        "trn1 doublewords", open, [](operands& v) { return VecU64Trn1VV(v.zn, v.zm, &v.context); }, 2);
}

TEST(LibraryLengths, FloatingPoint) {
    const auto kept = outside::kept, open = outside::open, zero = outside::zero;
    using half = half_bits;
    using single = single_bits;
    check<half>("fadd", kept, [](operands& v) { return VecF16AddVVM(v.zn, v.pg, v.zm, &v.context); });
    check<double_bits>("fabd", kept, [](operands& v) { return VecD64AbdVVM(v.zn, v.pg, v.zm, &v.context); });
    check<half>("fmul", open, [](operands& v) { return VecF16MulVVX(v.zn, v.zm, &v.context); });
    check<single>("fmls", kept,
                  [](operands& v) { return VecF32FMSVVVM(v.zn, v.pg, v.zn, v.zm, &v.context); });
    check<double_bits>(
        "indexed fmul", open, [](operands& v) { return VecD64MulVVIX(v.zn, v.zm, 1, &v.context); }, 2);
    check<single>("fcadd", kept, [](operands& v) { return VecF32FCADDVVM(v.zn, v.pg, v.zm, 1, &v.context); });
    check<single>("fcvt", kept, [](operands& v) { return VecD64ExtndFVM(v.zn, v.pg, v.zm, &v.context); });
    check<double_bits>("fcvtzs", kept,
                       [](operands& v) { return VecS64_4FromDVM(v.zn, v.pg, v.zm, &v.context); });
    check("ucvtf", kept, [](operands& v) { return VecF16FromU4VM(v.zn, v.pg, v.zm, &v.context); });
    check<half>("fcmne", zero, [](operands& v) { return VecF16CmpNEVVZ(v.pg, v.zn, v.zm, &v.context); });
    check<single>("facge", zero, [](operands& v) { return VecF32AcGEVVZ(v.pg, v.zn, v.zm, &v.context); });
    check<double_bits>("fadda", open,
                       [](operands& v) { return VecD64AddReduceAV(v.pg, 1, v.zn, &v.context); });
}

TEST(LibraryLengths, Predicates) {
    const auto kept = outside::kept, open = outside::open, zero = outside::zero;
    check("cmpge", zero, [](operands& v) { return VecS8CmpFlgGEVIZ(v.pg, v.zn, -1, &v.context); });
    check("cmpls", zero, [](operands& v) { return VecU64CmpFlgLEVIZ(v.pg, v.zn, 1, &v.context); });
    check("cmpeq wide", zero, [](operands& v) { return VecS8CmpFlgEQVWZ(v.pg, v.zn, v.zm, &v.context); });
    check("cmpgt wide", zero, [](operands& v) { return VecS32CmpFlgGTVWZ(v.pg, v.zn, v.zm, &v.context); });
    check("cmphs wide", zero, [](operands& v) { return VecU16CmpFlgGEVWZ(v.pg, v.zn, v.zm, &v.context); });
    check("nand", zero, [](operands& v) { return VecPNandPPZ(v.pg, v.pn, v.pm, &v.context); });
    check("orns", zero, [](operands& v) { return VecPOrNFlgPPZ(v.pg, v.pn, v.pm, &v.context); });
    check("rdffrs", zero, [](operands& v) { return VecPActualFlgP(v.pg, &v.context); });
    check("pfirst", kept, [](operands& v) { return VecPSetFirstActiveP(v.pn, v.pg, &v.context); });
    check("brkas", zero, [](operands& v) { return VecPBreakAFlgPZ(v.pg, v.pn, &v.context); });
    check("brkbs", zero, [](operands& v) { return VecPBreakBFlgPZ(v.pg, v.pn, &v.context); });
    check("brkpa", zero, [](operands& v) { return VecPBreakPrevAPZ(v.pg, v.pn, v.pm, &v.context); });
    check("brkpas", zero, [](operands& v) { return VecPBreakPrevAFlgPZ(v.pg, v.pn, v.pm, &v.context); });
    check("trn1", open, [](operands& v) { return VecP8Trn1PP(v.pn, v.pm, &v.context); });
    check("trn2", open, [](operands& v) { return VecP32Trn2PP(v.pn, v.pm, &v.context); });
}

TEST(LibraryLengths, Scalars) {
    const auto open = outside::open;
    check("saddv bytes", open, [](operands& v) { return VecS8AddReduceV(v.pg, v.zn, &v.context); });
    check("saddv halfwords", open, [](operands& v) { return VecS16AddReduceV(v.pg, v.zn, &v.context); });
    check("saddv words", open, [](operands& v) { return VecS32AddReduceV(v.pg, v.zn, &v.context); });
    check("decp bytes", open, [](operands& v) { return VecU8DecrSCountPS(1000, v.pg, &v.context); });
    check("decp halfwords", open, [](operands& v) { return VecU16DecrSCountPS(0, v.pg, &v.context); });
    check("sqincp", open, [](operands& v) { return VecS8QIncrSCount4PS(0x7FFFFFF0, v.pg, &v.context); });
    check("uqdecp", open, [](operands& v) { return VecU32QDecrSCount4PS(5, v.pg, &v.context); });
    check("incp", open, [](operands& v) { return VecU16IncrCountPV(v.zn, v.pg, &v.context); });
    check("uqdecp vector", open, [](operands& v) { return VecU64QDecrCountPV(v.zn, v.pg, &v.context); });
    check("clastb", open, [](operands& v) { return VecB8CondXBSV(v.pg, 1, v.zm, &v.context); });
    check("clastb vector", open, [](operands& v) { return VecU16VCondXBVV(v.pg, v.zn, v.zm, &v.context); });
}

// A scatter leaves the last of the elements that fall together, and a gather finds it again.
TEST(LibraryLengths, Memory) {
    check("scatter and gather", outside::zero, [](operands& v) {
        std::uint8_t memory[256] = {};
        VecV offsets = v.zm;
        for (int i = 0; i < 64; ++i)
            set_element<std::uint32_t>(offsets, i, offsets.bytes[4 * i]);
        const auto base = reinterpret_cast<std::uint64_t>(memory);
        VecU32Store1VSZ(v.zn, v.pg, base, offsets, &v.context);
        return VecS32Load1VSZ(v.pg, base, offsets, &v.context);
    });
    const std::uint64_t block[] = {0x0123456789ABCDEF, 0xFEDCBA9876543210};
    for_random_operands([&](const operands& v) {
        CpuContext context = v.context;
        const VecV loaded =
            VecU64LoadDup8QSIZ(v.pg, reinterpret_cast<std::uint64_t>(block) + 128, -8, &context);
        std::vector<std::uint64_t> expected;
        for (std::size_t i = 0; i < (context.vl & 63); ++i)
            expected.push_back(v.pg.words[0] >> 8 * (i % 2) & 1 ? block[i % 2] : 0);
        EXPECT_EQ(elements_of<std::uint64_t>(loaded, context), expected);
    });
}

// The sum of the values in [first, first + size), where those from the end of `values` on are +0.
float tree_sum(const std::vector<float>& values, std::size_t first, std::size_t size) {
    if (size == 1)
        return first < values.size() ? values[first] : 0;
    return tree_sum(values, first, size / 2) + tree_sum(values, first + size / 2, size / 2);
}

// The host adds in the same format, rounding to nearest as FPCR says here.
TEST(LibraryLengths, SumsFillUpToAPowerOfTwo) {
    for_random_operands([](operands& values) {
        std::mt19937_64 generator(values.seed);
        values.context.fpcr = 0;
        const auto pg = bits_of(values.pg, values.context);
        std::vector<float> elements;
        for (std::size_t i = 0; i < pg.size() / 4; ++i) {
            const auto value = static_cast<float>(static_cast<std::int64_t>(generator()) >> generator() % 64);
            set_element(values.zn, static_cast<int>(i), std::bit_cast<single_bits>(value));
            elements.push_back(active_at<single_bits>(pg, i) ? value : 0);
        }
        EXPECT_EQ(VecF32AddReduceFV(values.pg, values.zn, &values.context),
                  std::bit_cast<single_bits>(tree_sum(elements, 0, std::bit_ceil(elements.size()))));
    });
}

// And what fills up is +0, which makes a sum of negative zeros positive.
TEST(LibraryLengths, SumsOfNegativeZeros) {
    const PredV all = {{~0ul, ~0ul, ~0ul, ~0ul}};
    VecV zeros;
    for (int i = 0; i < 64; ++i)
        set_element<single_bits>(zeros, i, 0x80000000);
    for (const std::uint32_t length : some_vector_lengths) {
        CpuContext context = {};
        context.vl = length;
        EXPECT_EQ(VecF32AddReduceFV(all, zeros, &context), std::has_single_bit(length) ? 0x80000000 : 0)
            << length;
        EXPECT_EQ(VecF32MaxReduceFV({}, zeros, &context), 0xFF800000) << length;
    }
}

// FPSR loses the bits that no instruction sets as soon as an element is active, and only then.
TEST(LibraryLengths, NothingIsRaisedWhereNothingIsActive) {
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
