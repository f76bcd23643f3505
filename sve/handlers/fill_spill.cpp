#include "sve/handlers/fill_spill.h"

#include "sve/decode/bridge.h"
#include "sve/handlers/memory_access.h"

namespace {

constexpr int predicate_bytes = vector_bytes / 8;

} // namespace

aarch64_decode_rc sve_ldr_zri(cpu_state* state, aarch64_z_reg zt, aarch64_i_rsp_reg rn, int imm9) {
    const std::uint64_t address = immediate_address(state, rn, imm9, vector_bytes);
    const auto* const memory = reinterpret_cast<const std::uint8_t*>(address);
    return compute_row<std::uint8_t>(state->z[zt.reg],
                                     [memory](int i) { return load_chunk<std::uint8_t>(memory, i); });
}

aarch64_decode_rc sve_str_zri(cpu_state* state, aarch64_z_reg zt, aarch64_i_rsp_reg rn, int imm9) {
    const std::uint64_t address = immediate_address(state, rn, imm9, vector_bytes);
    const std::uint8_t* const data = state->z[zt.reg];
    return compute_row<std::uint8_t>(reinterpret_cast<std::uint8_t*>(address),
                                     [data](int i) { return load_chunk<std::uint8_t>(data, i); });
}

aarch64_decode_rc sve_ldr_pri(cpu_state* state, aarch64_p_reg pt, aarch64_i_rsp_reg rn, int imm9) {
    const std::uint64_t address = immediate_address(state, rn, imm9, predicate_bytes);
    PredV value = {};
    std::memcpy(value.words, reinterpret_cast<const void*>(address), predicate_bytes);
    unpack_predicate(state->p[pt.reg], value);
    return aarch64_emulated;
}

aarch64_decode_rc sve_str_pri(cpu_state* state, aarch64_p_reg pt, aarch64_i_rsp_reg rn, int imm9) {
    const std::uint64_t address = immediate_address(state, rn, imm9, predicate_bytes);
    const PredV value = pack_predicate(state->p[pt.reg]);
    std::memcpy(reinterpret_cast<void*>(address), value.words, predicate_bytes);
    return aarch64_emulated;
}
