// Time of the floating-point kernels, for each format: throughput over operands that are ordinary numbers,
// with the record of controls and exceptions made for each call, as a primitive does.
#include "sve/fp/fp_arithmetic.h"
#include "sve/fp/fp_convert.h"
#include "sve/fp/fp_divide_sqrt.h"
#include "sve/fp/fp_multiply_add.h"

#include <array>
#include <benchmark/benchmark.h>
#include <random>

namespace {

// More than a branch predictor learns by heart.
constexpr int operand_count = 1 << 14;

// Numbers between 2^-8 and 2^8 with random fractions; of either sign unless `positive`.
template <class Bits> std::array<Bits, operand_count> make_operands(bool positive) {
    using Format = FPFormat<Bits>;
    std::array<Bits, operand_count> operands;
    std::mt19937_64 random(1);
    for (Bits& operand : operands) {
        const int exponent = static_cast<int>(random() % 16) - 8;
        const Bits sign = positive ? Bits{0} : Format::sign_bit;
        operand =
            Format::power_of_two(exponent) | (static_cast<Bits>(random()) & (sign | Format::fraction_mask));
    }
    return operands;
}

// Calls kernel(x, y, z, fpscr) with three of the operands.
template <class Bits, class Kernel>
void measure(benchmark::State& state, Kernel kernel, bool positive = false) {
    const std::array<Bits, operand_count> operands = make_operands<Bits>(positive);
    unsigned i = 0;
    for (auto _ : state) {
        FPSCR fpscr;
        const Bits x = operands[i % operand_count];
        const Bits y = operands[(i + 7) % operand_count];
        const Bits z = operands[(i + 300) % operand_count];
        benchmark::DoNotOptimize(kernel(x, y, z, fpscr));
        benchmark::DoNotOptimize(fpscr.bits);
        ++i;
    }
}

template <class Bits> void add(benchmark::State& state) {
    measure<Bits>(state, [](Bits x, Bits y, Bits, FPSCR& fpscr) { return FPAdd(x, y, fpscr); });
}
template <class Bits> void multiply(benchmark::State& state) {
    measure<Bits>(state, [](Bits x, Bits y, Bits, FPSCR& fpscr) { return FPMul(x, y, fpscr); });
}
template <class Bits> void fused_multiply_add(benchmark::State& state) {
    measure<Bits>(state, [](Bits x, Bits y, Bits z, FPSCR& fpscr) { return FPMulAdd(x, y, z, fpscr); });
}
template <class Bits> void divide(benchmark::State& state) {
    measure<Bits>(state, [](Bits x, Bits y, Bits, FPSCR& fpscr) { return FPDiv(x, y, fpscr); });
}
template <class Bits> void square_root(benchmark::State& state) {
    measure<Bits>(
        state, [](Bits x, Bits, Bits, FPSCR& fpscr) { return FPSqrt(x, fpscr); }, true);
}
template <class Bits> void round_to_integral(benchmark::State& state) {
    measure<Bits>(state, [](Bits x, Bits, Bits, FPSCR& fpscr) {
        return FPRoundInt(x, FPRounding_TIEEVEN, true, fpscr);
    });
}
template <class Bits> void to_integer(benchmark::State& state) {
    measure<Bits>(state, [](Bits x, Bits, Bits, FPSCR& fpscr) {
        return fplibFPToFixed<Bits, std::uint64_t>(x, 0, false, FPRounding_ZERO, fpscr);
    });
}
template <class Bits> void from_integer(benchmark::State& state) {
    measure<Bits>(state, [](Bits x, Bits, Bits, FPSCR& fpscr) {
        return fplibFixedToFP<Bits>(x, 0, true, FPRounding_TIEEVEN, fpscr);
    });
}
template <class From, class To> void convert(benchmark::State& state) {
    measure<From>(state, [](From x, From, From, FPSCR& fpscr) {
        return FPConvert<From, To>(x, FPRounding_TIEEVEN, fpscr);
    });
}

using half = std::uint16_t;
using single = std::uint32_t;
using double_bits = std::uint64_t;

#define THREE_FORMATS(function)                                                                              \
    BENCHMARK(function<half>)->Name(#function "/half");                                                      \
    BENCHMARK(function<single>)->Name(#function "/single");                                                  \
    BENCHMARK(function<double_bits>)->Name(#function "/double")

THREE_FORMATS(add);
THREE_FORMATS(multiply);
THREE_FORMATS(fused_multiply_add);
THREE_FORMATS(divide);
THREE_FORMATS(square_root);
THREE_FORMATS(round_to_integral);
THREE_FORMATS(to_integer);
THREE_FORMATS(from_integer);
BENCHMARK(convert<half, single>)->Name("convert/half_to_single");
BENCHMARK(convert<single, double_bits>)->Name("convert/single_to_double");
BENCHMARK(convert<double_bits, single>)->Name("convert/double_to_single");
BENCHMARK(convert<single, half>)->Name("convert/single_to_half");

} // namespace

BENCHMARK_MAIN();
