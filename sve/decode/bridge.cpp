#include "sve/decode/bridge.h"

#include "sve/handlers/elements.h"
#include "sve/handlers/result_flags.h"

namespace {

using bytes = chunk<std::uint8_t>;

constexpr bytes bit_of_byte = {1, 2, 4, 8, 16, 32, 64, 128, 1, 2, 4, 8, 16, 32, 64, 128};

// Chunk `index` of the row that the 16 packed bytes stand for.
template <int index> void unpack_chunk(std::uint8_t* row, bytes packed) {
    constexpr int a = 2 * index;
    constexpr int b = a + 1;
    const bytes spread =
        __builtin_shufflevector(packed, packed, a, a, a, a, a, a, a, a, b, b, b, b, b, b, b, b);
    const bytes result = (bytes)((spread & bit_of_byte) != 0) & 1;
    std::memcpy(row + index * chunk_bytes, &result, chunk_bytes);
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
    bytes packed;
    std::memcpy(&packed, predicate.words, sizeof packed);
    unpack_chunk<0>(row, packed);
    unpack_chunk<1>(row, packed);
    unpack_chunk<2>(row, packed);
    unpack_chunk<3>(row, packed);
    unpack_chunk<4>(row, packed);
    unpack_chunk<5>(row, packed);
    unpack_chunk<6>(row, packed);
    unpack_chunk<7>(row, packed);
}

void read_context(cpu_state* state, CpuContext* context) {
    context->nzcv = static_cast<std::uint32_t>(state->nzcv);
    context->fpsr = state->fpsr;
    context->fpcr = state->fpcr | state->fpcr_extra;
    context->vl = vector_bytes / 8;
    const chunk_array<chunks_per_row> lanes = lowest_bits(state->ffr);
    context->ffr = pack(lanes);
#pragma GCC unroll 8
    for (int i = 0; i < chunks_per_row; ++i)
        std::memcpy(state->ffr + i * chunk_bytes, &lanes[i], chunk_bytes);
}

void write_context(cpu_state* state, const CpuContext* context, const PredV& old_ffr) {
    state->nzcv = context->nzcv;
    state->fpsr = context->fpsr;
    state->fpcr = context->fpcr;
    if (context->ffr.words[0] != old_ffr.words[0] || context->ffr.words[1] != old_ffr.words[1])
        unpack_predicate(state->ffr, context->ffr);
}
