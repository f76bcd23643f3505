#include "sve/library/fp_estimates.h"

#include "sve/fp/fp_estimates.h"
#include "sve/library/primitive_definitions.h"

UNARY_PRIMITIVE(VecF16RecpEV, fp_map<half_bits, FPRecipEstimate<half_bits>>)

UNARY_PRIMITIVE(VecF16RSqrtEV, fp_map<half_bits, FPRSqrtEstimate<half_bits>>)
UNARY_PRIMITIVE(VecF32RSqrtEV, fp_map<single_bits, FPRSqrtEstimate<single_bits>>)
UNARY_PRIMITIVE(VecD64RSqrtEV, fp_map<double_bits, FPRSqrtEstimate<double_bits>>)

VECTOR_PRIMITIVE(VecF16RecpSVV, fp_map<half_bits, FPRecipStepFused<half_bits>>)

VECTOR_PRIMITIVE(VecF16RSqrtSVV, fp_map<half_bits, FPRSqrtStepFused<half_bits>>)
VECTOR_PRIMITIVE(VecF32RSqrtSVV, fp_map<single_bits, FPRSqrtStepFused<single_bits>>)
VECTOR_PRIMITIVE(VecD64RSqrtSVV, fp_map<double_bits, FPRSqrtStepFused<double_bits>>)

MERGING_PRIMITIVE(VecF16RecpXVM, fp_merge_unary<half_bits, FPRecpX<half_bits>>)
MERGING_PRIMITIVE(VecF32RecpXVM, fp_merge_unary<single_bits, FPRecpX<single_bits>>)
MERGING_PRIMITIVE(VecD64RecpXVM, fp_merge_unary<double_bits, FPRecpX<double_bits>>)
