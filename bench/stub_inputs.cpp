#include "bench/stub_inputs.h"

#include <cctype>
#include <cstring>
#include <random>
#include <string_view>

namespace bench {

namespace {

// Pages of which only the middle one is used.
alignas(4096) unsigned char memory[5 * 4096];

std::uint64_t address_in_memory() { return reinterpret_cast<std::uint64_t>(memory + sizeof memory / 2); }

bool is_active(const std::string& predicates, int byte, unsigned random) {
    if (predicates == "tail")
        return byte < vector_bytes - 24;
    if (predicates == "mixed")
        return byte / 8 % 2;
    return predicates == "all" || random & 1;
}

// Makes every vector one of offsets or, for a row whose addresses are all in a vector, of addresses.
void set_address_vectors(cpu_state& state, std::string_view name) {
    const int element_bytes = name.find("64") != name.npos ? 8 : 4;
    const bool holds_bases = name.ends_with("VIZ");
    std::uint64_t value = holds_bases ? address_in_memory() : 0;
    for (auto& row : state.z) {
        for (int i = 0; i < vector_bytes; i += element_bytes) {
            const std::uint64_t element = value + static_cast<std::uint64_t>(i * 3 / 4);
            std::memcpy(row + i, &element, static_cast<std::size_t>(element_bytes));
        }
    }
}

bool has_address_vector(std::string_view name) {
    const std::size_t at = std::min(name.find("Load"), name.find("Store"));
    if (at == name.npos || name[at - 1] == 'C')
        return false;
    return name.ends_with("VIZ") || name.ends_with("VSZ") || name.ends_with("SVZ");
}

} // namespace

std::uint32_t word_of(const opcode_row& row) {
    const map_description& map = describe(row.map);
    const std::uint32_t key = map_value(map, row.key);
    const std::uint32_t free_bits = ~map_mask(map);
    std::minstd_rand generator;
    std::uint32_t fields = 1u << 16 | 1u << 10 | 4u << 5 | 2;
    while (is_sve(key | (fields & free_bits)) != row.stub)
        fields = static_cast<std::uint32_t>(generator() ^ generator() << 16);
    return key | (fields & free_bits);
}

void prepare(cpu_state& state, const opcode_row& row, const std::string& predicates) {
    std::minstd_rand generator;
    const auto random = [&] { return static_cast<unsigned char>(generator() >> 16); };
    auto* bytes = reinterpret_cast<unsigned char*>(&state);
    for (std::size_t i = 0; i < sizeof state; ++i)
        bytes[i] = random();
    for (std::uint64_t& x : state.x)
        x = address_in_memory() + 64;
    state.x[1] = 4; // an index
    state.fpcr = state.fpcr_extra = state.fpsr = 0;
    for (auto& predicate : state.p) {
        for (int k = 0; k < vector_bytes; ++k)
            predicate[k] = is_active(predicates, k, random());
    }
    if (has_address_vector(row.name))
        set_address_vectors(state, row.name);
}

} // namespace bench
