#include "sve/library/predicate_logic.h"

#include "sve/library/predicate_flags.h"
#include "sve/library/predicate_words.h"

namespace {

using word = std::uint64_t;
constexpr auto and_words = [](word n, word m) { return n & m; };
constexpr auto bic_words = [](word n, word m) { return n & ~m; };
constexpr auto xor_words = [](word n, word m) { return n ^ m; };
constexpr auto or_words = [](word n, word m) { return n | m; };
constexpr auto nor_words = [](word n, word m) { return ~(n | m); };
constexpr auto nand_words = [](word n, word m) { return ~(n & m); };
constexpr auto orn_words = [](word n, word m) { return n | ~m; };

template <class Operation>
PredV combine(const PredV& pg, const PredV& pn, const PredV& pm, Operation operation, CpuContext* context) {
    return predicate_of_words(predicate_length(context),
                              [&](int w) { return operation(pn.words[w], pm.words[w]) & pg.words[w]; });
}

template <class Operation>
PredV combine_flags(const PredV& pg, const PredV& pn, const PredV& pm, Operation operation,
                    CpuContext* context) {
    const PredV result = combine(pg, pn, pm, operation, context);
    PredSetNZCV(pg, result, 8, context);
    return result;
}

} // namespace

PredV VecPNandPPZ(const PredV& pg, const PredV& pn, const PredV& pm, CpuContext* context) {
    return combine(pg, pn, pm, nand_words, context);
}
PredV VecPOrNPPZ(const PredV& pg, const PredV& pn, const PredV& pm, CpuContext* context) {
    return combine(pg, pn, pm, orn_words, context);
}

PredV VecPAndFlgPPZ(const PredV& pg, const PredV& pn, const PredV& pm, CpuContext* context) {
    return combine_flags(pg, pn, pm, and_words, context);
}
PredV VecPBicFlgPPZ(const PredV& pg, const PredV& pn, const PredV& pm, CpuContext* context) {
    return combine_flags(pg, pn, pm, bic_words, context);
}
PredV VecPXorFlgPPZ(const PredV& pg, const PredV& pn, const PredV& pm, CpuContext* context) {
    return combine_flags(pg, pn, pm, xor_words, context);
}
PredV VecPOrFlgPPZ(const PredV& pg, const PredV& pn, const PredV& pm, CpuContext* context) {
    return combine_flags(pg, pn, pm, or_words, context);
}
PredV VecPNorFlgPPZ(const PredV& pg, const PredV& pn, const PredV& pm, CpuContext* context) {
    return combine_flags(pg, pn, pm, nor_words, context);
}
PredV VecPNandFlgPPZ(const PredV& pg, const PredV& pn, const PredV& pm, CpuContext* context) {
    return combine_flags(pg, pn, pm, nand_words, context);
}
PredV VecPOrNFlgPPZ(const PredV& pg, const PredV& pn, const PredV& pm, CpuContext* context) {
    return combine_flags(pg, pn, pm, orn_words, context);
}
