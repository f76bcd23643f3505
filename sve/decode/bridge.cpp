#include "sve/decode/bridge.h"

#include "sve/handlers/elements.h"

namespace {

using bytes = chunk<std::uint8_t>;

constexpr bytes bit_of_byte = {1, 2, 4, 8, 16, 32, 64, 128, 1, 2, 4, 8, 16, 32, 64, 128};

// The sums of adjacent bytes of `low`, then those of `high`.
bytes add_pairs(bytes low, bytes high) {
    return __builtin_shufflevector(low, high, 0, 2, 4, 6, 8, 10, 12, 14, 16, 18, 20, 22, 24, 26, 28, 30) +
           __builtin_shufflevector(low, high, 1, 3, 5, 7, 9, 11, 13, 15, 17, 19, 21, 23, 25, 27, 29, 31);
}

// Each byte of chunk `index` reduced to its predicate bit, moved to its place in a packed byte.
bytes weighted(const std::uint8_t* row, int index) {
    return active_lanes<std::uint8_t>(row, index) & bit_of_byte;
}

// Chunk `index` of the row that the 16 packed bytes stand for.
template <int index> void unpack_chunk(std::uint8_t* row, bytes packed) {
    constexpr int a = 2 * index;
    constexpr int b = a + 1;
    const bytes spread =
        __builtin_shufflevector(packed, packed, a, a, a, a, a, a, a, a, b, b, b, b, b, b, b, b);
    const bytes result = (bytes)((spread & bit_of_byte) != 0) & 1;
    std::memcpy(row + index * chunk_bytes, &result, chunk_bytes);
}

} // namespace

// Three rounds of pairwise sums turn 128 weighted bytes into 16 packed ones.
PredV pack_predicate(const std::uint8_t* row) {
    const bytes quarter0 = add_pairs(weighted(row, 0), weighted(row, 1));
    const bytes quarter1 = add_pairs(weighted(row, 2), weighted(row, 3));
    const bytes quarter2 = add_pairs(weighted(row, 4), weighted(row, 5));
    const bytes quarter3 = add_pairs(weighted(row, 6), weighted(row, 7));
    const bytes packed = add_pairs(add_pairs(quarter0, quarter1), add_pairs(quarter2, quarter3));
    PredV result = {};
    std::memcpy(result.words, &packed, sizeof packed);
    return result;
}

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

void read_context(const cpu_state* state, CpuContext* context) {
    context->nzcv = static_cast<std::uint32_t>(state->nzcv);
    context->fpsr = state->fpsr;
    context->fpcr = state->fpcr | state->fpcr_extra;
    context->vl = vector_bytes / 8;
    context->ffr = pack_predicate(state->ffr);
}

void write_context(cpu_state* state, const CpuContext* context) {
    state->nzcv = context->nzcv;
    state->fpsr = context->fpsr;
    state->fpcr = context->fpcr;
    unpack_predicate(state->ffr, context->ffr);
}
