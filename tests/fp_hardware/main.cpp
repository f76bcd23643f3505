// fp_hardware [DEPTH [SEED]]: compares the floating-point kernels with the processor that runs it, in results
// and exceptions. Operations on one half run over all 65,536 operands in every mode, operations on two over a
// grid, and everything else over all combinations of special values and over random operands, of which DEPTH
// gives the number in units of a thousand for each operation.
#include "tests/fp_hardware/operations.h"
#include "tests/unit/fp_operands.h"

#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <sys/auxv.h>

namespace {

constexpr std::uint32_t exception_bits = 0x9F;
constexpr std::uint32_t control_bits[] = {1u << 22, 2u << 22, FPSCR::FZ16, FPSCR::FZ, FPSCR::DN, FPSCR::AHP};
constexpr unsigned mode_count = 1u << 6;

// The FPCR of each of the modes, of which there are 64.
std::uint32_t fpcr_of(unsigned mode) {
    std::uint32_t fpcr = 0;
    for (unsigned bit = 0; bit < 6; ++bit)
        fpcr |= mode >> bit & 1 ? control_bits[bit] : 0;
    return fpcr;
}

class comparison {
public:
    explicit comparison(const fp_operation& compared) : operation(compared) {}

    void set_mode(unsigned mode) {
        fpcr = fpcr_of(mode);
        set_fpcr(fpcr);
    }

    void compare(std::uint64_t a, std::uint64_t b, std::uint64_t c) {
        const fp_outcome processor = operation.processor(a, b, c);
        FPSCR fpscr{fpcr & ~operation.not_for_kernel};
        const std::uint64_t kernel = operation.kernel(a, b, c, fpscr);
        ++compared;
        const std::uint64_t processor_result = processor.result & operation.result_mask;
        const auto processor_exceptions = static_cast<std::uint32_t>(processor.exceptions) & exception_bits;
        if (kernel == processor_result && (fpscr.bits & exception_bits) == processor_exceptions)
            return;
        if (++differences > shown_differences)
            return;
        set_fpcr(0);
        std::printf("%s, FPCR %08" PRIx32 ", operands %" PRIx64 " %" PRIx64 " %" PRIx64
                    ": the processor gives %" PRIx64 " and exceptions %02" PRIx32 ", the kernel %" PRIx64
                    " and %02" PRIx32 "\n",
                    operation.name, fpcr, a, b, c, processor_result, processor_exceptions, kernel,
                    fpscr.bits & exception_bits);
        set_fpcr(fpcr);
    }

    std::uint64_t compared = 0;
    std::uint64_t differences = 0;

private:
    static constexpr std::uint64_t shown_differences = 5;
    const fp_operation& operation;
    std::uint32_t fpcr = 0;
};

std::mt19937_64 random_numbers;

std::uint64_t random_operand(operand_kind kind) {
    const std::uint64_t random = random_numbers();
    switch (kind) {
    case operand_kind::half:
        return fp_random_value<std::uint16_t>(random);
    case operand_kind::single:
        return fp_random_value<std::uint32_t>(random);
    case operand_kind::double_precision:
        return fp_random_value<std::uint64_t>(random);
    case operand_kind::integer:
        break;
    }
    // Of any length, with either sign.
    return static_cast<std::uint64_t>(static_cast<std::int64_t>(random) >> (random & 63));
}

std::vector<std::uint64_t> special_operands(operand_kind kind) {
    const auto widened = [](const auto& values) {
        return std::vector<std::uint64_t>(values.begin(), values.end());
    };
    switch (kind) {
    case operand_kind::half:
        return widened(fp_special_values<std::uint16_t>());
    case operand_kind::single:
        return widened(fp_special_values<std::uint32_t>());
    case operand_kind::double_precision:
        return widened(fp_special_values<std::uint64_t>());
    case operand_kind::integer:
        break;
    }
    return {};
}

// Halves with every exponent and a few fractions: the ends, the middle, and one in between.
std::vector<std::uint64_t> half_grid() {
    std::vector<std::uint64_t> grid;
    for (std::uint64_t sign_and_exponent = 0; sign_and_exponent < 64; ++sign_and_exponent)
        for (const std::uint64_t fraction : {0x000, 0x001, 0x15B, 0x200, 0x3FF})
            grid.push_back(sign_and_exponent << 10 | fraction);
    return grid;
}

void compare_random(comparison& with, const fp_operation& operation, std::uint64_t count) {
    constexpr std::uint64_t operands_of_a_mode = 64;
    for (std::uint64_t i = 0; i < count; ++i) {
        if (i % operands_of_a_mode == 0)
            with.set_mode(static_cast<unsigned>(i / operands_of_a_mode) % mode_count);
        const std::uint64_t a = random_operand(operation.kind);
        const std::uint64_t b = operation.operands > 1 ? random_operand(operation.kind) : 0;
        const std::uint64_t c = operation.operands > 2 ? random_operand(operation.kind) : 0;
        with.compare(a, b, c);
    }
}

// Special values with each other, of three operands in eight modes that differ in every bit.
void compare_specials(comparison& with, const fp_operation& operation) {
    const std::vector<std::uint64_t> values = special_operands(operation.kind);
    const std::vector<std::uint64_t> none = {0};
    for (unsigned mode = 0; mode<mode_count; mode += operation.operands> 2 ? 9 : 1) {
        with.set_mode(mode);
        for (const std::uint64_t a : values)
            for (const std::uint64_t b : operation.operands > 1 ? values : none)
                for (const std::uint64_t c : operation.operands > 2 ? values : none)
                    with.compare(a, b, c);
    }
}

void compare_all_halves(comparison& with) {
    for (unsigned mode = 0; mode < mode_count; ++mode) {
        with.set_mode(mode);
        for (std::uint64_t a = 0; a < 0x10000; ++a)
            with.compare(a, 0, 0);
    }
}

void compare_half_grid(comparison& with) {
    static const std::vector<std::uint64_t> grid = half_grid();
    for (unsigned mode = 0; mode < mode_count; mode += 1) {
        // AHP and FZ don't count in arithmetic: half of the modes, each pair of them once.
        if (((mode >> 3 ^ mode >> 5) & 1) != 0)
            continue;
        with.set_mode(mode);
        for (const std::uint64_t a : grid)
            for (const std::uint64_t b : grid)
                with.compare(a, b, 0);
    }
}

} // namespace

int main(int count, char** arguments) {
    const std::uint64_t depth = count > 1 ? std::strtoull(arguments[1], nullptr, 10) : 20;
    if (depth == 0) {
        std::fprintf(stderr, "usage: fp_hardware [DEPTH [SEED]]\n");
        return 2;
    }
    if (count > 2)
        random_numbers.seed(std::strtoull(arguments[2], nullptr, 10));
    std::vector<fp_operation> operations;
    const auto add = [&operations](const std::vector<fp_operation>& more) {
        operations.insert(operations.end(), more.begin(), more.end());
    };
    constexpr unsigned long needed = HWCAP_FPHP | HWCAP_ASIMDHP;
    if ((getauxval(AT_HWCAP) & needed) != needed) {
        std::printf("this processor has no half precision: nothing to compare with\n");
        return 77;
    }
    add(arithmetic_operations());
    add(estimate_operations());
    add(comparison_operations());
    add(conversion_operations());
    if (getauxval(AT_HWCAP) & HWCAP_SVE)
        add(vector_operations());
    else
        std::printf("this processor has no SVE: its vector instructions are left out\n");

    std::uint64_t compared = 0, differing = 0;
    for (const fp_operation& operation : operations) {
        comparison with(operation);
        if (operation.kind == operand_kind::half && operation.operands == 1) {
            compare_all_halves(with);
        } else {
            if (operation.kind == operand_kind::half && operation.operands == 2)
                compare_half_grid(with);
            compare_specials(with, operation);
            compare_random(with, operation, depth * 1000);
        }
        set_fpcr(0);
        compared += with.compared;
        if (with.differences != 0) {
            ++differing;
            std::printf("%s: %" PRIu64 " of %" PRIu64 " differ\n", operation.name, with.differences,
                        with.compared);
        }
    }
    std::printf("%zu operations, %" PRIu64 " comparisons, %" PRIu64 " operations differ\n", operations.size(),
                compared, differing);
    return differing != 0;
}
