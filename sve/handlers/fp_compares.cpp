#include "sve/handlers/fp_compares.h"

#include "sve/handlers/fp_elements.h"

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

template <class Compare>
aarch64_decode_rc compare_vectors(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_z_reg zn,
                                  aarch64_z_reg zm, Compare compare) {
    return dispatch_fp_elements(pd.kind, [&](auto zero) {
        using element = decltype(zero);
        return compare_active_fp<element>(
            predicate_row(state, pd.reg), predicate_row(state, pg.reg),
            [fp = host_fp(state), compare](auto a, auto b) { return compare(fp, a, b); },
            vector_row(state, zn.reg), vector_row(state, zm.reg));
    });
}

template <class Compare>
aarch64_decode_rc compare_with_zero(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_z_reg zn,
                                    Compare compare) {
    return dispatch_fp_elements(pd.kind, [&](auto zero) {
        using element = decltype(zero);
        return compare_active_fp<element>(
            predicate_row(state, pd.reg), predicate_row(state, pg.reg),
            [fp = host_fp(state), compare](auto a) { return compare(fp, a, decltype(a){}); },
            vector_row(state, zn.reg));
    });
}

} // namespace

aarch64_decode_rc sve_fcmeq_ppzz(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_z_reg zn,
                                 aarch64_z_reg zm) {
    return compare_vectors(state, pd, pg, zn, zm, equal);
}
aarch64_decode_rc sve_fcmne_ppzz(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_z_reg zn,
                                 aarch64_z_reg zm) {
    return compare_vectors(state, pd, pg, zn, zm, not_equal);
}
aarch64_decode_rc sve_fcmge_ppzz(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_z_reg zn,
                                 aarch64_z_reg zm) {
    return compare_vectors(state, pd, pg, zn, zm, greater_or_equal);
}
aarch64_decode_rc sve_fcmgt_ppzz(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_z_reg zn,
                                 aarch64_z_reg zm) {
    return compare_vectors(state, pd, pg, zn, zm, greater);
}
aarch64_decode_rc sve_fcmuo_ppzz(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_z_reg zn,
                                 aarch64_z_reg zm) {
    return compare_vectors(state, pd, pg, zn, zm, unordered);
}

aarch64_decode_rc sve_fcmeq_ppz(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_z_reg zn) {
    return compare_with_zero(state, pd, pg, zn, equal);
}
aarch64_decode_rc sve_fcmge_ppz(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_z_reg zn) {
    return compare_with_zero(state, pd, pg, zn, greater_or_equal);
}
aarch64_decode_rc sve_fcmgt_ppz(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_z_reg zn) {
    return compare_with_zero(state, pd, pg, zn, greater);
}
aarch64_decode_rc sve_fcmle_ppz(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_z_reg zn) {
    return compare_with_zero(state, pd, pg, zn, less_or_equal);
}
aarch64_decode_rc sve_fcmlt_ppz(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_z_reg zn) {
    return compare_with_zero(state, pd, pg, zn, less);
}
