#include "sve/handlers/fp_arithmetic.h"

#include "sve/fp/fp_formats.h"
#include "sve/handlers/fp_elements.h"
#include "sve/handlers/handler_definitions.h"

namespace {

// Operations on elements or chunks.
constexpr auto add = [](host_fp fp, auto a, auto b) { return fp.fadd(a, b); };
constexpr auto subtract = [](host_fp fp, auto a, auto b) { return fp.fsub(a, b); };
constexpr auto subtract_reversed = [](host_fp fp, auto a, auto b) { return fp.fsub(b, a); };
constexpr auto multiply = [](host_fp fp, auto a, auto b) { return fp.fmul(a, b); };
constexpr auto divide = [](host_fp fp, auto a, auto b) { return fp.fdiv(a, b); };
constexpr auto divide_reversed = [](host_fp fp, auto a, auto b) { return fp.fdiv(b, a); };
constexpr auto maximum = [](host_fp fp, auto a, auto b) { return fp.fmax(a, b); };
constexpr auto maximum_number = [](host_fp fp, auto a, auto b) { return fp.fmaxnm(a, b); };
constexpr auto minimum_number = [](host_fp fp, auto a, auto b) { return fp.fminnm(a, b); };
constexpr auto square_root = [](host_fp fp, auto a) { return fp.fsqrt(a); };

constexpr auto negate = []<class Chunk>(Chunk value) {
    return value ^ FPFormat<std::remove_cvref_t<decltype(value[0])>>::sign_bit;
};

template <auto operation, idle_operands idle = idle_operands::zero>
aarch64_decode_rc predicated(cpu_state* state, aarch64_z_reg zdn, aarch64_p_reg pg, aarch64_z_reg zm) {
    return dispatch_fp_elements(zdn.dest_kind, [&](auto zero) {
        std::uint8_t* const row_bytes = vector_row(state, zdn.reg);
        return compute_active_fp<decltype(zero), idle>(
            row_bytes, predicate_row(state, pg.reg),
            [fp = host_fp(state)](auto a, auto b) { return operation(fp, a, b); }, row_bytes,
            vector_row(state, zm.reg));
    });
}

// The constant is 2^clear or 2^set, as i1 is.
template <auto operation, int clear, int set>
aarch64_decode_rc with_constant(cpu_state* state, aarch64_z_reg zdn, aarch64_p_reg pg,
                                aarch64_sve_fp_arith_imm imm) {
    return dispatch_fp_elements(zdn.dest_kind, [&](auto zero) {
        using element = decltype(zero);
        const element constant = FPFormat<element>::power_of_two(imm.i1 ? set : clear);
        std::uint8_t* const row_bytes = vector_row(state, zdn.reg);
        return compute_active_fp<element>(
            row_bytes, predicate_row(state, pg.reg),
            [fp = host_fp(state), constant](auto a) { return operation(fp, a, decltype(a){} + constant); },
            row_bytes);
    });
}

} // namespace

MERGING_HANDLER(sve_fadd_zpz, predicated<add>)
MERGING_HANDLER(sve_fsub_zpz, predicated<subtract>)
MERGING_HANDLER(sve_fsubr_zpz, predicated<subtract_reversed>)
MERGING_HANDLER(sve_fmul_zpz, predicated<multiply>)
MERGING_HANDLER(sve_fdiv_zpz, predicated<divide, idle_operands::one>)
MERGING_HANDLER(sve_fdivr_zpz, predicated<divide_reversed, idle_operands::one>)
MERGING_HANDLER(sve_fmax_zpz, predicated<maximum>)
MERGING_HANDLER(sve_fmaxnm_zpz, predicated<maximum_number>)
MERGING_HANDLER(sve_fminnm_zpz, predicated<minimum_number>)

// A handler a line. Macros, since only they can make the names.
#define CONSTANT_HANDLER(name, ...)                                                                          \
    aarch64_decode_rc name(cpu_state* state, aarch64_z_reg zdn, aarch64_p_reg pg,                            \
                           aarch64_sve_fp_arith_imm imm) {                                                   \
        return __VA_ARGS__(state, zdn, pg, imm);                                                             \
    }

CONSTANT_HANDLER(sve_fadd_zpi, with_constant<add, -1, 0>)
CONSTANT_HANDLER(sve_fsub_zpi, with_constant<subtract, -1, 0>)
CONSTANT_HANDLER(sve_fsubr_zpi, with_constant<subtract_reversed, -1, 0>)
CONSTANT_HANDLER(sve_fmul_zpi, with_constant<multiply, -1, 1>)
#undef CONSTANT_HANDLER

VECTOR_HANDLER(sve_fadd_zzz, map_fp<add>)
VECTOR_HANDLER(sve_fsub_zzz, map_fp<subtract>)
VECTOR_HANDLER(sve_fmul_zzz, map_fp<multiply>)

MERGING_HANDLER(sve_fsqrt_zpz, merge_fp<square_root>)

aarch64_decode_rc sve_fneg_zpz(cpu_state* state, aarch64_z_reg zd, aarch64_p_reg pg, aarch64_z_reg zn) {
    return dispatch_fp_elements(
        zd.kind, [&](auto zero) { return merge_unary<decltype(zero), negate>(state, zd, pg, zn); });
}

aarch64_decode_rc sve_fdup_zi(cpu_state* state, aarch64_z_reg zd, aarch64_sve_fp_dup_imm imm) {
    const auto fill = [row = vector_row(state, zd.reg)](auto value) {
        return compute_row<decltype(value)>(row, [&](int) { return broadcast(value); });
    };
    switch (zd.kind) {
    case doubleword_elements:
        return fill(imm.double_precision);
    case halfword_elements:
        return fill(imm.half);
    default:
        return fill(imm.single_precision);
    }
}
