// How a floating-point kernel is called for one active element, on the status words of a CpuContext or of a
// cpu_state: `status` is either.
#pragma once

#include "sve/decode/library_values.h"
#include "sve/fp/fp_control.h"

// The bits of FPSR that a primitive writes: QC and the flags of the other instruction set, and the six
// cumulative exceptions.
inline constexpr std::uint32_t fpsr_written_bits = 0xF800009F;

// Calls kernel(fpscr) with the control bits in a record of its own, and merges the exceptions that it raised
// into FPSR. `cleared` names control bits that the kernel isn't to see. Not to be called for an inactive
// element, which raises nothing.
template <class Status, class Kernel>
inline auto with_fpscr(Status* status, Kernel&& kernel, std::uint32_t cleared = 0) {
    FPSCR fpscr{status->fpcr & ~cleared};
    const auto result = kernel(fpscr);
    status->fpsr = (status->fpsr | fpscr.bits) & fpsr_written_bits;
    return result;
}

// The same for a kernel that takes its operands first and the record last: call_fp_kernel(context,
// FPAdd<Bits>, a, b).
template <class Status, class Kernel, class... Operands>
inline auto call_fp_kernel(Status* status, Kernel kernel, Operands... operands) {
    return with_fpscr(status, [&](FPSCR& fpscr) { return kernel(operands..., fpscr); });
}
