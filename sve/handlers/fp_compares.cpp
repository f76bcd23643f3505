#include "sve/handlers/fp_compares.h"

#include "sve/handlers/fp_elements.h"
#include "sve/handlers/handler_definitions.h"

namespace {

constexpr auto complement = []<class Result>(Result holds) {
    if constexpr (std::is_same_v<Result, bool>)
        return !holds;
    else
        return ~holds;
};

// Comparisons of elements or chunks.
constexpr auto equal = [](host_fp fp, auto a, auto b) { return fp.fcmeq(a, b); };
constexpr auto not_equal = [](host_fp fp, auto a, auto b) { return complement(fp.fcmeq(a, b)); };
constexpr auto greater_or_equal = [](host_fp fp, auto a, auto b) { return fp.fcmge(a, b); };
constexpr auto greater = [](host_fp fp, auto a, auto b) { return fp.fcmgt(a, b); };
constexpr auto unordered = [](host_fp fp, auto a, auto b) { return fp.fcmuo(a, b); };
constexpr auto less_or_equal = [](host_fp fp, auto a, auto b) { return fp.fcmge(b, a); };
constexpr auto less = [](host_fp fp, auto a, auto b) { return fp.fcmgt(b, a); };

template <auto compare>
aarch64_decode_rc compare_vectors(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_z_reg zn,
                                  aarch64_z_reg zm) {
    return dispatch_fp_elements(pd.kind, [&](auto zero) {
        using element = decltype(zero);
        return compare_active_fp<element>(
            predicate_row(state, pd.reg), predicate_row(state, pg.reg),
            [fp = host_fp(state)](auto a, auto b) { return compare(fp, a, b); }, vector_row(state, zn.reg),
            vector_row(state, zm.reg));
    });
}

template <auto compare>
aarch64_decode_rc compare_with_zero(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_z_reg zn) {
    return dispatch_fp_elements(pd.kind, [&](auto zero) {
        using element = decltype(zero);
        return compare_active_fp<element>(
            predicate_row(state, pd.reg), predicate_row(state, pg.reg),
            [fp = host_fp(state)](auto a) { return compare(fp, a, decltype(a){}); },
            vector_row(state, zn.reg));
    });
}

} // namespace

COMPARING_HANDLER(sve_fcmeq_ppzz, compare_vectors<equal>)
COMPARING_HANDLER(sve_fcmne_ppzz, compare_vectors<not_equal>)
COMPARING_HANDLER(sve_fcmge_ppzz, compare_vectors<greater_or_equal>)
COMPARING_HANDLER(sve_fcmgt_ppzz, compare_vectors<greater>)
COMPARING_HANDLER(sve_fcmuo_ppzz, compare_vectors<unordered>)

// A handler a line. Macros, since only they can make the names.
#define COMPARE_WITH_ZERO(name, compare)                                                                     \
    aarch64_decode_rc name(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_z_reg zn) {         \
        return compare_with_zero<compare>(state, pd, pg, zn);                                                \
    }

COMPARE_WITH_ZERO(sve_fcmeq_ppz, equal)
COMPARE_WITH_ZERO(sve_fcmge_ppz, greater_or_equal)
COMPARE_WITH_ZERO(sve_fcmgt_ppz, greater)
COMPARE_WITH_ZERO(sve_fcmle_ppz, less_or_equal)
COMPARE_WITH_ZERO(sve_fcmlt_ppz, less)
#undef COMPARE_WITH_ZERO
