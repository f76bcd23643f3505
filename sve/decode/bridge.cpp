#include "sve/decode/bridge.h"

#include "sve/handlers/elements.h"
#include "sve/handlers/result_flags.h"

namespace {

using bytes = chunk<std::uint8_t>;

constexpr bytes bit_of_byte = {1, 2, 4, 8, 16, 32, 64, 128, 1, 2, 4, 8, 16, 32, 64, 128};

// Every byte twice, in twice as many chunks.
template <std::size_t count>
[[gnu::always_inline]] inline std::array<bytes, 2 * count>
double_bytes(const std::array<bytes, count>& chunks) {
    std::array<bytes, 2 * count> result;
#pragma GCC unroll 8
    for (std::size_t i = 0; i < count; ++i) {
        result[2 * i] = interleave<0>(chunks[i], chunks[i], chunk_indices<std::uint8_t>());
        result[2 * i + 1] = interleave<1>(chunks[i], chunks[i], chunk_indices<std::uint8_t>());
    }
    return result;
}

// The bytes of a predicate row reduced to their lowest bits.
[[gnu::always_inline]] inline chunk_array<chunks_per_row> lowest_bits(const std::uint8_t* row) {
    chunk_array<chunks_per_row> lanes;
#pragma GCC unroll 8
    for (int i = 0; i < chunks_per_row; ++i)
        lanes[i] = (chunk<std::uint64_t>)(load_chunk<std::uint8_t>(row, i) & 1);
    return lanes;
}

[[gnu::always_inline]] inline PredV pack(const chunk_array<chunks_per_row>& lanes) {
    const chunk_array<1> packed = pack_lanes<std::uint8_t, 1>(lanes);
    return {{packed[0][0], packed[0][1], 0, 0}};
}

} // namespace

PredV pack_predicate(const std::uint8_t* row) { return pack(lowest_bits(row)); }

void unpack_predicate(std::uint8_t* row, const PredV& predicate) {
    std::array<bytes, 1> packed;
    std::memcpy(packed.data(), predicate.words, sizeof packed);
    const std::array<bytes, chunks_per_row> spread = double_bytes(double_bytes(double_bytes(packed)));
#pragma GCC unroll 8
    for (int i = 0; i < chunks_per_row; ++i) {
        const bytes result = (bytes)((spread[i] & bit_of_byte) != 0) & 1;
        std::memcpy(row + i * chunk_bytes, &result, chunk_bytes);
    }
}

void read_context(const cpu_state* state, CpuContext* context) {
    context->nzcv = static_cast<std::uint32_t>(state->nzcv);
    context->fpsr = state->fpsr;
    context->fpcr = state->fpcr | state->fpcr_extra;
    context->vl = vector_bytes / 8;
    context->ffr = pack(lowest_bits(state->ffr));
}

void write_context(cpu_state* state, const CpuContext* context, const PredV& old_ffr) {
    state->nzcv = context->nzcv;
    state->fpsr = context->fpsr;
    state->fpcr = context->fpcr;
    if (context->ffr.words[0] != old_ffr.words[0] || context->ffr.words[1] != old_ffr.words[1]) {
        unpack_predicate(state->ffr, context->ffr);
        return;
    }
    const chunk_array<chunks_per_row> lanes = lowest_bits(state->ffr);
#pragma GCC unroll 8
    for (int i = 0; i < chunks_per_row; ++i)
        std::memcpy(state->ffr + i * chunk_bytes, &lanes[i], chunk_bytes);
}
