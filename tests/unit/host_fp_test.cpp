// The host's floating-point operations in both makings: the kernels, which stand in on other hosts, give what
// the processor's instructions give, under FPCR and into FPSR. What those do for SVE, a comparison with it
// says.
#include "sve/fp/host_fp.h"
#include "sve/fp/host_fp_kernels.h"
#include "tests/unit/fp_operands.h"

#include <gtest/gtest.h>

namespace {

#if defined(__aarch64__)

// Calls `body` with the state's FPCR and FPSR in the processor, as a stub is run. FPSR is clear afterwards.
template <class Body> void as_application(const cpu_state& state, Body body) {
    const std::uint64_t fpcr = state.fpcr, fpsr = state.fpsr;
    std::uint64_t own_fpcr;
    asm volatile("mrs %0, fpcr\n\tmsr fpcr, %1\n\tmsr fpsr, %2"
                 : "=&r"(own_fpcr)
                 : "r"(fpcr), "r"(fpsr)
                 : "memory");
    body();
    asm volatile("msr fpcr, %0\n\tmsr fpsr, xzr" : : "r"(own_fpcr) : "memory");
}

template <class Fp, class Bits> using operation = std::uint64_t (*)(Fp fp, Bits a, Bits b, Bits c);

#define OPERATION(...)                                                                                       \
    [](Fp fp, [[maybe_unused]] Bits a, [[maybe_unused]] Bits b, [[maybe_unused]] Bits c) -> std::uint64_t {  \
        return fp.template __VA_ARGS__;                                                                      \
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
std::uint64_t run(operation<Fp, Bits> compute, cpu_state& state, Bits a, Bits b, Bits c) {
    std::uint64_t result = 0;
    as_application(state, [&] {
        result = compute(Fp(&state), a, b, c);
        Fp::read_status(&state);
    });
    return result;
}

template <class Bits> void check_makings() {
    std::mt19937_64 generator(1);
    for (std::size_t i = 0; i < std::size(operations<kernel_fp, Bits>); ++i) {
        const operation<kernel_fp, Bits> by_kernel = operations<kernel_fp, Bits>[i];
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
                << "operation " << i << std::hex << " of " << a << ", " << b << ", " << c << " under FPCR "
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
