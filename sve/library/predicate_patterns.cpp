#include "sve/library/predicate_patterns.h"

int VecTrueILength(unsigned long pattern, int n) { return predicate_pattern_length(pattern, n); }
