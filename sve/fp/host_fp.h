// Scalar floating-point operations of the host, for the handlers. `host_fp` is one of two classes with the
// same members: on AArch64 each operation is one instruction of the processor (processor_fp), elsewhere it
// calls a kernel with the state's FPCR and FPSR (kernel_fp).
//
// Operands and results are elements' bits, in std::uint32_t or std::uint64_t. A host_fp is made from the
// state whose instruction is carried out, and is passed by value. Its members bear the mnemonics of the
// instructions that they are:
//
//     fadd fsub fmul fdiv fmax fmaxnm fminnm frecps (a, b)
//     fsqrt frinta frecpe (a)
//     fnmadd(addend, a, b)             -addend - a * b, rounded once
//     fcmeq fcmge fcmgt fcmuo (a, b)   bool; fcmuo is whether an operand is a NaN. fcmge and fcmgt raise
//                                      IOC for every NaN, the others for signalling ones only
//     scvtf<Bits> ucvtf<Bits> (value)  a 64-bit integer as a number
//     host_fp::takes_vectors           whether all but the conversions of integers take vectors of 16
//                                      bytes too; a comparison then gives lanes with all bits or none set
//     host_fp::read_status(state)      brings what the operations have raised into the state's FPSR
//
// Results and exceptions are those of the application's FPCR. A stub is called with that in the processor's
// FPCR and with the application's exceptions so far in its FPSR, and both stay there while the stub runs.
#pragma once

#if defined(__aarch64__)
#include "sve/fp/host_fp_aarch64.h"
using host_fp = processor_fp;
#else
#include "sve/fp/host_fp_kernels.h"
using host_fp = kernel_fp;
#endif
