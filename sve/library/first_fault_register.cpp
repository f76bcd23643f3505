#include "sve/library/first_fault_register.h"

#include "sve/library/predicate_flags.h"
#include "sve/library/predicate_words.h"

PredV VecPActualFlgP(const PredV& pg, CpuContext* context) {
    const PredV result = predicate_of_words(predicate_length(context),
                                            [&](int w) { return context->ffr.words[w] & pg.words[w]; });
    PredSetNZCV(pg, result, 8, context);
    return result;
}
