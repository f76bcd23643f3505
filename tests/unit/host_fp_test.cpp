// The host's floating-point operations in both makings, the processor's instructions (on AArch64) and the
// kernels: which operation each is, the order of its operands, that it obeys FPCR, and that what it raises
// reaches the state's FPSR.
#include "sve/fp/host_fp.h"
#include "sve/fp/host_fp_kernels.h"
#include "tests/unit/application_status.h"

#include <gtest/gtest.h>

namespace {

using single_bits = std::uint32_t;
using double_bits = std::uint64_t;

constexpr std::uint32_t to_plus_infinity = 1u << 22, to_minus_infinity = 2u << 22, to_zero = 3u << 22;
constexpr std::uint32_t FZ = FPSCR::FZ, DN = FPSCR::DN;
constexpr std::uint32_t IOC = FPFlag_IOC, DZC = FPFlag_DZC, OFC = FPFlag_OFC, UFC = FPFlag_UFC,
                        IXC = FPFlag_IXC, IDC = FPFlag_IDC;

template <class Fp> struct operation_case {
    const char* text;
    std::uint64_t (*run)(Fp fp);
    std::uint32_t fpcr;
    std::uint64_t result;
    std::uint32_t raised;
};

#define OPERATION(...) #__VA_ARGS__, [](Fp fp) -> std::uint64_t { return fp.template __VA_ARGS__; }

template <class Fp>
const operation_case<Fp> operation_cases[] = {
    {OPERATION(fadd<single_bits>(0x3F800000, 0x33800000)), 0, 0x3F800000, IXC},
    {OPERATION(fadd<single_bits>(0x3F800000, 0x33800000)), to_plus_infinity, 0x3F800001, IXC},
    {OPERATION(fadd<double_bits>(0x3FF0000000000000, 0x3CA0000000000000)), to_plus_infinity,
     0x3FF0000000000001, IXC},
    {OPERATION(fsub<single_bits>(0x3F800000, 0x40400000)), 0, 0xC0000000, 0},
    {OPERATION(fsub<single_bits>(0x3F800000, 0x3F800000)), to_minus_infinity, 0x80000000, 0},
    {OPERATION(fsub<double_bits>(0x3FF0000000000000, 0x4008000000000000)), 0, 0xC000000000000000, 0},
    {OPERATION(fmul<single_bits>(0x7F7FFFFF, 0x40000000)), 0, 0x7F800000, OFC | IXC},
    {OPERATION(fmul<single_bits>(0x7F7FFFFF, 0x40000000)), to_zero, 0x7F7FFFFF, OFC | IXC},
    {OPERATION(fmul<single_bits>(0x00800000, 0x3F000000)), 0, 0x00400000, 0},
    {OPERATION(fmul<single_bits>(0x80800000, 0x3F000000)), FZ, 0x80000000, UFC},
    {OPERATION(fmul<double_bits>(0x4000000000000000, 0x4008000000000000)), 0, 0x4018000000000000, 0},
    {OPERATION(fdiv<single_bits>(0x40400000, 0x40000000)), 0, 0x3FC00000, 0},
    {OPERATION(fdiv<single_bits>(0x3F800000, 0x80000000)), 0, 0xFF800000, DZC},
    {OPERATION(fdiv<single_bits>(0x00000001, 0x3F800000)), FZ, 0, IDC},
    {OPERATION(fdiv<double_bits>(0x4008000000000000, 0x4000000000000000)), 0, 0x3FF8000000000000, 0},
    {OPERATION(fmax<single_bits>(0x80000000, 0x00000000)), 0, 0x00000000, 0},
    {OPERATION(fmax<single_bits>(0x3F800000, 0xC0000000)), 0, 0x3F800000, 0},
    {OPERATION(fmax<single_bits>(0x7FC00025, 0x3F800000)), 0, 0x7FC00025, 0},
    {OPERATION(fmax<single_bits>(0xFFC00025, 0x3F800000)), DN, 0x7FC00000, 0},
    {OPERATION(fmax<double_bits>(0x3FF0000000000000, 0xC000000000000000)), 0, 0x3FF0000000000000, 0},
    {OPERATION(fmaxnm<single_bits>(0x7FC00025, 0x3F800000)), 0, 0x3F800000, 0},
    {OPERATION(fmaxnm<single_bits>(0x3F800000, 0x40000000)), 0, 0x40000000, 0},
    {OPERATION(fmaxnm<single_bits>(0x7F800025, 0x3F800000)), 0, 0x7FC00025, IOC},
    {OPERATION(fmaxnm<double_bits>(0x7FF8000000000025, 0x3FF0000000000000)), 0, 0x3FF0000000000000, 0},
    {OPERATION(fminnm<single_bits>(0x7FC00025, 0x3F800000)), 0, 0x3F800000, 0},
    {OPERATION(fminnm<single_bits>(0x3F800000, 0x40000000)), 0, 0x3F800000, 0},
    {OPERATION(fminnm<double_bits>(0x3FF0000000000000, 0x4000000000000000)), 0, 0x3FF0000000000000, 0},
    {OPERATION(frecps<single_bits>(0x40400000, 0x3F000000)), 0, 0x3F000000, 0},
    {OPERATION(frecps<single_bits>(0x7F800000, 0x00000000)), 0, 0x40000000, 0},
    {OPERATION(frecps<single_bits>(0x7FC00025, 0xFFC00001)), 0, 0xFFC00025, 0},
    {OPERATION(frecps<double_bits>(0x4008000000000000, 0x3FE0000000000000)), 0, 0x3FE0000000000000, 0},
    {OPERATION(fsqrt<single_bits>(0x40800000)), 0, 0x40000000, 0},
    {OPERATION(fsqrt<single_bits>(0xBF800000)), 0, 0x7FC00000, IOC},
    {OPERATION(fsqrt<double_bits>(0x4000000000000000)), to_plus_infinity, 0x3FF6A09E667F3BCD, IXC},
    {OPERATION(fsqrt<double_bits>(0x4000000000000000)), to_zero, 0x3FF6A09E667F3BCC, IXC},
    {OPERATION(frinta<single_bits>(0x40200000)), 0, 0x40400000, 0},
    {OPERATION(frinta<single_bits>(0xBF000000)), to_plus_infinity, 0xBF800000, 0},
    {OPERATION(frinta<double_bits>(0x4004000000000000)), to_zero, 0x4008000000000000, 0},
    {OPERATION(frecpe<single_bits>(0x3F800000)), 0, 0x3F7F8000, 0},
    {OPERATION(frecpe<single_bits>(0x80000000)), 0, 0xFF800000, DZC},
    {OPERATION(frecpe<double_bits>(0x3FF0000000000000)), 0, 0x3FEFF00000000000, 0},
    {OPERATION(fnmadd<single_bits>(0x3F800000, 0x40000000, 0x40400000)), 0, 0xC0E00000, 0},
    {OPERATION(fnmadd<single_bits>(0x3F800000, 0xBF800000, 0x3F800000)), 0, 0x00000000, 0},
    {OPERATION(fnmadd<single_bits>(0x3F800000, 0xBF800000, 0x3F800000)), to_minus_infinity, 0x80000000, 0},
    // (1 + 2^-12) squared differs by 2^-24 from 1 + 2^-11, which a rounded product would be.
    {OPERATION(fnmadd<single_bits>(0xBF801000, 0x3F800800, 0x3F800800)), 0, 0xB3800000, 0},
    {OPERATION(fnmadd<single_bits>(0x3F800000, 0x7FC00025, 0x7FC00001)), 0, 0xFFC00025, 0},
    {OPERATION(fnmadd<double_bits>(0x3FF0000000000000, 0x4000000000000000, 0x4008000000000000)), 0,
     0xC01C000000000000, 0},
    {OPERATION(fcmeq<single_bits>(0x80000000, 0x00000000)), 0, 1, 0},
    {OPERATION(fcmeq<single_bits>(0x3F800000, 0x40000000)), 0, 0, 0},
    {OPERATION(fcmeq<single_bits>(0x00000001, 0x00000000)), FZ, 1, IDC},
    {OPERATION(fcmeq<single_bits>(0x7FC00000, 0x7FC00000)), 0, 0, 0},
    {OPERATION(fcmeq<single_bits>(0x3F800000, 0x7F800001)), 0, 0, IOC},
    {OPERATION(fcmeq<double_bits>(0x3FF0000000000000, 0x3FF0000000000000)), 0, 1, 0},
    {OPERATION(fcmge<single_bits>(0x3F800000, 0x3F800000)), 0, 1, 0},
    {OPERATION(fcmge<single_bits>(0x3F800000, 0x40000000)), 0, 0, 0},
    {OPERATION(fcmge<single_bits>(0x40000000, 0x3F800000)), 0, 1, 0},
    {OPERATION(fcmge<single_bits>(0x7FC00000, 0x3F800000)), 0, 0, IOC},
    {OPERATION(fcmge<double_bits>(0x4000000000000000, 0x3FF0000000000000)), 0, 1, 0},
    {OPERATION(fcmgt<single_bits>(0x3F800000, 0x3F800000)), 0, 0, 0},
    {OPERATION(fcmgt<single_bits>(0x40000000, 0x3F800000)), 0, 1, 0},
    {OPERATION(fcmgt<single_bits>(0x3F800000, 0x7FC00000)), 0, 0, IOC},
    {OPERATION(fcmgt<double_bits>(0xBFF0000000000000, 0x3FF0000000000000)), 0, 0, 0},
    {OPERATION(fcmuo<single_bits>(0x3F800000, 0x7FC00000)), 0, 1, 0},
    {OPERATION(fcmuo<single_bits>(0xFF800001, 0x3F800000)), 0, 1, IOC},
    {OPERATION(fcmuo<single_bits>(0x7F800000, 0x3F800000)), 0, 0, 0},
    {OPERATION(fcmuo<double_bits>(0x7FF8000000000000, 0x3FF0000000000000)), 0, 1, 0},
    {OPERATION(scvtf<single_bits>(-1)), 0, 0xBF800000, 0},
    {OPERATION(scvtf<single_bits>(16777217)), 0, 0x4B800000, IXC},
    {OPERATION(scvtf<single_bits>(16777217)), to_plus_infinity, 0x4B800001, IXC},
    {OPERATION(scvtf<double_bits>(-9007199254740993)), to_minus_infinity, 0xC340000000000001, IXC},
    {OPERATION(ucvtf<single_bits>(0xFFFFFFFFFFFFFFFF)), 0, 0x5F800000, IXC},
    {OPERATION(ucvtf<single_bits>(0xFFFFFFFFFFFFFFFF)), to_zero, 0x5F7FFFFF, IXC},
    {OPERATION(ucvtf<double_bits>(0x8000000000000000)), 0, 0x43E0000000000000, 0},
};

template <class Fp> class HostFp : public testing::Test {};
#if defined(__aarch64__)
using makings = testing::Types<processor_fp, kernel_fp>;
#else
using makings = testing::Types<kernel_fp>;
#endif
TYPED_TEST_SUITE(HostFp, makings);

TYPED_TEST(HostFp, ComputesUnderFpcrAndRaisesIntoFpsr) {
    for (const operation_case<TypeParam>& row : operation_cases<TypeParam>) {
        for (const std::uint32_t before : {0u, 1u << 27 | DZC}) {
            cpu_state state = {};
            state.fpcr = row.fpcr;
            state.fpsr = before;
            std::uint64_t result = 0;
            as_application(state, [&] {
                result = row.run(TypeParam(&state));
                TypeParam::read_status(&state);
            });
            EXPECT_EQ(result, row.result) << row.text << std::hex << ", FPCR " << row.fpcr << ": " << result;
            EXPECT_EQ(state.fpsr, before | row.raised) << row.text << ", FPCR " << std::hex << row.fpcr;
            EXPECT_EQ(state.fpcr, row.fpcr) << row.text;
        }
    }
}

} // namespace
