#include "sve/library/integer_reductions.h"

#include "sve/library/chunk_loops.h"

template <class Element>
static std::uint64_t add_reduce(const PredV& pg, const VecV& zn, const CpuContext* context) {
    using Wide = twice_as_wide<Element>; // wide enough for the sum of a longest vector
    constexpr int width = width_of<Element>;
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
    return add_reduce<std::int8_t>(pg, zn, context);
}
std::uint64_t VecS16AddReduceV(const PredV& pg, const VecV& zn, CpuContext* context) {
    return add_reduce<std::int16_t>(pg, zn, context);
}
std::uint64_t VecS32AddReduceV(const PredV& pg, const VecV& zn, CpuContext* context) {
    return add_reduce<std::int32_t>(pg, zn, context);
}
