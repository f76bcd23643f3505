#include "sve/library/fp_rounding.h"

#include "sve/fp/fp_convert.h"
#include "sve/library/primitive_definitions.h"

// Rounds to integral by a mode of the instruction's own.
template <class Bits, FPRounding rounding> static Bits round_by(Bits value, FPSCR& fpscr) {
    return FPRoundInt(value, rounding, false, fpscr);
}

// Rounds to integral by RMode; the exact form raises IXC when that changes the value.
template <class Bits, bool exact> static Bits round_by_mode(Bits value, FPSCR& fpscr) {
    return FPRoundInt(value, fpscr.rounding(), exact, fpscr);
}

MERGING_PRIMITIVE(VecF16FRIntNVM, fp_merge_unary<half_bits, round_by<half_bits, FPRounding_TIEEVEN>>)
MERGING_PRIMITIVE(VecF32FRIntNVM, fp_merge_unary<single_bits, round_by<single_bits, FPRounding_TIEEVEN>>)
MERGING_PRIMITIVE(VecD64FRIntNVM, fp_merge_unary<double_bits, round_by<double_bits, FPRounding_TIEEVEN>>)

MERGING_PRIMITIVE(VecF16FRIntPVM, fp_merge_unary<half_bits, round_by<half_bits, FPRounding_POSINF>>)
MERGING_PRIMITIVE(VecF32FRIntPVM, fp_merge_unary<single_bits, round_by<single_bits, FPRounding_POSINF>>)
MERGING_PRIMITIVE(VecD64FRIntPVM, fp_merge_unary<double_bits, round_by<double_bits, FPRounding_POSINF>>)

MERGING_PRIMITIVE(VecF16FRIntMVM, fp_merge_unary<half_bits, round_by<half_bits, FPRounding_NEGINF>>)
MERGING_PRIMITIVE(VecF32FRIntMVM, fp_merge_unary<single_bits, round_by<single_bits, FPRounding_NEGINF>>)
MERGING_PRIMITIVE(VecD64FRIntMVM, fp_merge_unary<double_bits, round_by<double_bits, FPRounding_NEGINF>>)

MERGING_PRIMITIVE(VecF16FRIntZVM, fp_merge_unary<half_bits, round_by<half_bits, FPRounding_ZERO>>)
MERGING_PRIMITIVE(VecF32FRIntZVM, fp_merge_unary<single_bits, round_by<single_bits, FPRounding_ZERO>>)
MERGING_PRIMITIVE(VecD64FRIntZVM, fp_merge_unary<double_bits, round_by<double_bits, FPRounding_ZERO>>)

MERGING_PRIMITIVE(VecF16FRIntAVM, fp_merge_unary<half_bits, round_by<half_bits, FPRounding_TIEAWAY>>)

MERGING_PRIMITIVE(VecF16FRIntIVM, fp_merge_unary<half_bits, round_by_mode<half_bits, false>>)
MERGING_PRIMITIVE(VecF32FRIntIVM, fp_merge_unary<single_bits, round_by_mode<single_bits, false>>)
MERGING_PRIMITIVE(VecD64FRIntIVM, fp_merge_unary<double_bits, round_by_mode<double_bits, false>>)

MERGING_PRIMITIVE(VecF16FRIntXVM, fp_merge_unary<half_bits, round_by_mode<half_bits, true>>)
MERGING_PRIMITIVE(VecF32FRIntXVM, fp_merge_unary<single_bits, round_by_mode<single_bits, true>>)
MERGING_PRIMITIVE(VecD64FRIntXVM, fp_merge_unary<double_bits, round_by_mode<double_bits, true>>)
