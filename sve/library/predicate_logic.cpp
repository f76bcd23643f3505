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

// A primitive a line. Macros, since only they can make the names.
#define LOGIC_PRIMITIVE(name, function, operation)                                                           \
    PredV name(const PredV& pg, const PredV& pn, const PredV& pm, CpuContext* context) {                     \
        return function(pg, pn, pm, operation, context);                                                     \
    }

LOGIC_PRIMITIVE(VecPNandPPZ, combine, nand_words)
LOGIC_PRIMITIVE(VecPOrNPPZ, combine, orn_words)

LOGIC_PRIMITIVE(VecPAndFlgPPZ, combine_flags, and_words)
LOGIC_PRIMITIVE(VecPBicFlgPPZ, combine_flags, bic_words)
LOGIC_PRIMITIVE(VecPXorFlgPPZ, combine_flags, xor_words)
LOGIC_PRIMITIVE(VecPOrFlgPPZ, combine_flags, or_words)
LOGIC_PRIMITIVE(VecPNorFlgPPZ, combine_flags, nor_words)
LOGIC_PRIMITIVE(VecPNandFlgPPZ, combine_flags, nand_words)
LOGIC_PRIMITIVE(VecPOrNFlgPPZ, combine_flags, orn_words)
#undef LOGIC_PRIMITIVE
