// The host's floating-point operations in both makings: that the kernels, which stand in on other hosts, give
// what the processor's instructions give, which a comparison of all of SVE checks. Under FPCR, and into FPSR.
#include "sve/fp/host_fp.h"
#include "sve/fp/host_fp_kernels.h"
#include "tests/unit/application_status.h"
#include "tests/unit/fp_operands.h"

#include <gtest/gtest.h>

namespace {

#if defined(__aarch64__)

template <class Fp, class Bits> struct operation {
    const char* text;
    std::uint64_t (*run)(Fp fp, Bits a, Bits b, Bits c);
};

#define OPERATION(...)                                                                                       \
    {                                                                                                        \
#__VA_ARGS__, [](Fp fp, [[maybe_unused]] Bits a, [[maybe_unused]] Bits b,                            \
                         [[maybe_unused]] Bits c) -> std::uint64_t { return fp.template __VA_ARGS__; }       \
    }

template <class Fp, class Bits>
const operation<Fp, Bits> operations[] = {
    OPERATION(fadd<Bits>(a, b)),
    OPERATION(fsub<Bits>(a, b)),
    OPERATION(fmul<Bits>(a, b)),
    OPERATION(fdiv<Bits>(a, b)),
    OPERATION(fmax<Bits>(a, b)),
    OPERATION(fmaxnm<Bits>(a, b)),
    OPERATION(fminnm<Bits>(a, b)),
    OPERATION(frecps<Bits>(a, b)),
    OPERATION(fsqrt<Bits>(a)),
    OPERATION(frinta<Bits>(a)),
    OPERATION(frecpe<Bits>(a)),
    OPERATION(fnmadd<Bits>(a, b, c)),
    OPERATION(fcmeq<Bits>(a, b)),
    OPERATION(fcmge<Bits>(a, b)),
    OPERATION(fcmgt<Bits>(a, b)),
    OPERATION(fcmuo<Bits>(a, b)),
    OPERATION(scvtf<Bits>(static_cast<std::int64_t>(std::uint64_t{a} * b))),
    OPERATION(ucvtf<Bits>(std::uint64_t{a} * b)),
};

template <class Fp, class Bits>
std::uint64_t run(const operation<Fp, Bits>& operation, cpu_state& state, Bits a, Bits b, Bits c) {
    std::uint64_t result = 0;
    as_application(state, [&] {
        result = operation.run(Fp(&state), a, b, c);
        Fp::read_status(&state);
    });
    return result;
}

template <class Bits> void check_makings() {
    std::mt19937_64 generator(1);
    for (std::size_t i = 0; i < std::size(operations<kernel_fp, Bits>); ++i) {
        const auto& by_kernel = operations<kernel_fp, Bits>[i];
        for (int round = 0; round < 10000; ++round) {
            cpu_state kernel = {};
            kernel.fpcr = generator() & (FPSCR::RMode | FPSCR::FZ | FPSCR::DN);
            kernel.fpsr = generator() & (1u << 27 | 0x9F);
            cpu_state processor = kernel;
            const Bits a = fp_random_value<Bits>(generator()), b = fp_random_value<Bits>(generator()),
                       c = fp_random_value<Bits>(generator());
            const std::uint64_t expected = run(operations<processor_fp, Bits>[i], processor, a, b, c);
            const std::uint64_t actual = run(by_kernel, kernel, a, b, c);
            ASSERT_TRUE(actual == expected && kernel.fpsr == processor.fpsr && kernel.fpcr == processor.fpcr)
                << by_kernel.text << std::hex << " of " << a << ", " << b << ", " << c << " under FPCR "
                << kernel.fpcr << ": " << actual << ", not " << expected << ", and FPSR " << kernel.fpsr
                << ", not " << processor.fpsr;
        }
    }
}

TEST(HostFp, KernelsAgreeWithInstructions) {
    check_makings<std::uint32_t>();
    check_makings<std::uint64_t>();
}

#endif

} // namespace
