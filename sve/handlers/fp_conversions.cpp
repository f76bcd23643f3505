#include "sve/handlers/fp_conversions.h"

#include "sve/handlers/fp_elements.h"
#include "sve/handlers/handler_definitions.h"

namespace {

constexpr auto round_to_integral = [](host_fp fp, auto a) { return fp.frinta(a); };

// Converts Integer to the number whose bits are Bits.
template <class Integer, class Bits>
aarch64_decode_rc convert(cpu_state* state, aarch64_z_reg zd, aarch64_p_reg pg, aarch64_z_reg zn) {
    using element = std::conditional_t<sizeof(Integer) == 4, Bits, std::make_unsigned_t<Integer>>;
    return compute_active_elements<element>(
        vector_row(state, zd.reg), predicate_row(state, pg.reg),
        [fp = host_fp(state)](element value) -> element {
            const auto integer = static_cast<Integer>(value);
            if constexpr (std::is_signed_v<Integer>)
                return fp.template scvtf<Bits>(integer);
            else
                return fp.template ucvtf<Bits>(integer);
        },
        vector_row(state, zn.reg));
}

} // namespace

MERGING_HANDLER(sve_frinta_zpz, merge_fp<round_to_integral>)

MERGING_HANDLER(sve_scvtf_s2s_zpz, convert<std::int32_t, std::uint32_t>)
MERGING_HANDLER(sve_scvtf_s2d_zpz, convert<std::int32_t, std::uint64_t>)
MERGING_HANDLER(sve_scvtf_d2s_zpz, convert<std::int64_t, std::uint32_t>)
MERGING_HANDLER(sve_scvtf_d2d_zpz, convert<std::int64_t, std::uint64_t>)
MERGING_HANDLER(sve_ucvtf_s2s_zpz, convert<std::uint32_t, std::uint32_t>)
MERGING_HANDLER(sve_ucvtf_s2d_zpz, convert<std::uint32_t, std::uint64_t>)
MERGING_HANDLER(sve_ucvtf_d2d_zpz, convert<std::uint64_t, std::uint64_t>)
