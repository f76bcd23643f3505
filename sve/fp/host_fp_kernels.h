// The operations of host_fp.h by the kernels, for a host whose instructions aren't those of AArch64. Each
// operation adds what it raises to the state's FPSR.
#pragma once

#include "sve/decode/cpu_state.h"
#include "sve/fp/fp_arithmetic.h"
#include "sve/fp/fp_compare.h"
#include "sve/fp/fp_convert.h"
#include "sve/fp/fp_divide_sqrt.h"
#include "sve/fp/fp_element.h"
#include "sve/fp/fp_estimates.h"
#include "sve/fp/fp_multiply_add.h"

class kernel_fp {
public:
    explicit kernel_fp(cpu_state* state) : state(state) {}

    static constexpr bool takes_vectors = false;

    template <class Bits> Bits fadd(Bits a, Bits b) const { return call_fp_kernel(state, FPAdd<Bits>, a, b); }
    template <class Bits> Bits fsub(Bits a, Bits b) const { return call_fp_kernel(state, FPSub<Bits>, a, b); }
    template <class Bits> Bits fmul(Bits a, Bits b) const { return call_fp_kernel(state, FPMul<Bits>, a, b); }
    template <class Bits> Bits fdiv(Bits a, Bits b) const { return call_fp_kernel(state, FPDiv<Bits>, a, b); }
    template <class Bits> Bits fmax(Bits a, Bits b) const { return call_fp_kernel(state, FPMax<Bits>, a, b); }
    template <class Bits> Bits fmaxnm(Bits a, Bits b) const {
        return call_fp_kernel(state, FPMaxNum<Bits>, a, b);
    }
    template <class Bits> Bits fminnm(Bits a, Bits b) const {
        return call_fp_kernel(state, FPMinNum<Bits>, a, b);
    }
    template <class Bits> Bits frecps(Bits a, Bits b) const {
        return call_fp_kernel(state, FPRecipStepFused<Bits>, a, b);
    }
    template <class Bits> Bits fsqrt(Bits a) const { return call_fp_kernel(state, FPSqrt<Bits>, a); }
    template <class Bits> Bits frinta(Bits a) const {
        return call_fp_kernel(state, FPRoundInt<Bits>, a, FPRounding_TIEAWAY, false);
    }
    template <class Bits> Bits frecpe(Bits a) const {
        return call_fp_kernel(state, FPRecipEstimate<Bits>, a);
    }
    template <class Bits> Bits fnmadd(Bits addend, Bits a, Bits b) const {
        return call_fp_kernel(state, FPMulAdd<Bits>, FPNeg(addend), FPNeg(a), b);
    }
    template <class Bits> Bits scvtf(std::int64_t value) const {
        return from_integer<Bits>(static_cast<std::uint64_t>(value), false);
    }
    template <class Bits> Bits ucvtf(std::uint64_t value) const { return from_integer<Bits>(value, true); }

    template <class Bits> bool fcmeq(Bits a, Bits b) const {
        return call_fp_kernel(state, FPCompareEQ<Bits>, a, b);
    }
    template <class Bits> bool fcmge(Bits a, Bits b) const {
        return call_fp_kernel(state, FPCompareGE<Bits>, a, b);
    }
    template <class Bits> bool fcmgt(Bits a, Bits b) const {
        return call_fp_kernel(state, FPCompareGT<Bits>, a, b);
    }
    template <class Bits> bool fcmuo(Bits a, Bits b) const {
        return call_fp_kernel(state, FPCompareUN<Bits>, a, b);
    }

    static void read_status(cpu_state*) {} // each operation has brought it up to date

private:
    template <class Bits> Bits from_integer(std::uint64_t value, bool is_unsigned) const {
        return with_fpscr(state, [&](FPSCR& fpscr) {
            return fplibFixedToFP<Bits>(value, 0, is_unsigned, fpscr.rounding(), fpscr);
        });
    }

    cpu_state* state;
};
