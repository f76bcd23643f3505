#include "sve/library/integer_reductions.h"

#include "sve/library/chunk_loops.h"

// `Wide` is twice as wide as an element, which is enough for the sum of a longest vector.
template <class Element, class Wide>
static std::uint64_t add_reduce(const PredV& pg, const VecV& zn, const CpuContext* context) {
    constexpr int width = 8 * sizeof(Element);
    chunk<Wide> sums = {};
    visit_chunks(context, [&](int w, auto k) {
        const std::uint64_t active = pg.words[w] & bits_below(predicate_length(context), w);
        const auto pairs = (chunk<Wide>)(get_chunk<Element>(zn, chunks_per_word * w + k) &
                                         active_lanes_of_word<Element, k>(active));
        sums += (pairs >> width) + (pairs << width >> width);
    });
    std::uint64_t sum = 0;
    for (unsigned i = 0; i < sizeof sums / sizeof(Wide); ++i)
        sum += static_cast<std::uint64_t>(sums[i]);
    return sum;
}

std::uint64_t VecS8AddReduceV(const PredV& pg, const VecV& zn, CpuContext* context) {
    return add_reduce<std::int8_t, std::int16_t>(pg, zn, context);
}
std::uint64_t VecS16AddReduceV(const PredV& pg, const VecV& zn, CpuContext* context) {
    return add_reduce<std::int16_t, std::int32_t>(pg, zn, context);
}
std::uint64_t VecS32AddReduceV(const PredV& pg, const VecV& zn, CpuContext* context) {
    return add_reduce<std::int32_t, std::int64_t>(pg, zn, context);
}
