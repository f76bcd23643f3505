#include "tests/conformance/random_states.h"

#include "tests/conformance/native_execution.h"

#include <algorithm>
#include <cstring>
#include <string_view>

namespace conformance {

namespace {

constexpr std::uint32_t field_mask(int high, int low) { return (0xFFFFFFFFu >> (31 - high + low)) << low; }
constexpr std::uint32_t field(std::uint32_t word, int high, int low) {
    return (word & field_mask(high, low)) >> low;
}

struct bit_field {
    int high;
    int low;
};
// Where register numbers stand: vectors and general registers, then predicates.
constexpr bit_field register_fields[] = {{4, 0}, {9, 5}, {20, 16}, {19, 16}, {18, 16}};
constexpr bit_field predicate_fields[] = {{3, 0}, {8, 5}, {13, 10}, {19, 16}, {12, 10}};

// Sets a field if the row leaves all its bits free.
void set_field(std::uint32_t& word, std::uint32_t free_bits, bit_field at, std::uint32_t value) {
    const std::uint32_t mask = field_mask(at.high, at.low);
    if ((free_bits & mask) == mask)
        word = (word & ~mask) | (value << at.low & mask);
}

template <std::size_t count>
void alias_fields(std::uint32_t& word, std::uint32_t free_bits, const bit_field (&fields)[count],
                  random_source& random) {
    const bit_field from = fields[random.below(count)];
    const bit_field to = fields[random.below(count)];
    set_field(word, free_bits, to, field(word, from.high, from.low));
}

// What a row's name says of its elements: "VecF16AddVV" has halfwords of floating point.
struct element_hint {
    int bits;
    bool floating;
};
element_hint hint_of(std::string_view name) {
    element_hint hint = {8, false};
    if (name.size() < 5)
        return hint;
    hint.floating =
        name[3] == 'F' || name[3] == 'D' || name[3] == 'H' || name.find("From") != std::string_view::npos;
    int bits = 0;
    for (std::size_t i = 4; i < name.size() && name[i] >= '0' && name[i] <= '9'; ++i)
        bits = bits * 10 + name[i] - '0';
    if (bits == 8 || bits == 16 || bits == 32 || bits == 64)
        hint.bits = bits;
    return hint;
}

// Integers of a size: extremes, small ones, single bits, shift counts around the width.
std::uint64_t special_integer(int bits, random_source& random) {
    const std::uint64_t top = std::uint64_t{1} << (bits - 1);
    const auto count = random.below(static_cast<std::uint64_t>(2 * bits + 2));
    const std::uint64_t values[] = {0,
                                    1,
                                    ~std::uint64_t{0},
                                    top,
                                    top - 1,
                                    count,
                                    0 - count,
                                    std::uint64_t{1} << count % static_cast<unsigned>(bits),
                                    top + static_cast<std::uint64_t>(random.between(-3, 3)),
                                    random.next()};
    return values[random.below(std::size(values))];
}

// Numbers of a format, with a random sign: specials, both kinds of NaN with payloads, denormals, the edges of
// the exponent range, of the integers and of the other formats, and plain numbers near one.
std::uint64_t special_float(int bits, random_source& random) {
    const int exponent_bits = bits == 16 ? 5 : bits == 32 ? 8 : 11;
    const int fraction_bits = bits - 1 - exponent_bits;
    const std::uint64_t one = std::uint64_t{1} << fraction_bits;
    const std::uint64_t fraction = random.next() & (one - 1), quiet = one >> 1;
    const std::int64_t largest = (std::int64_t{1} << exponent_bits) - 1, bias = largest / 2;
    const auto power = [&](std::int64_t exponent) {
        return static_cast<std::uint64_t>(exponent & largest) * one;
    };
    const auto near = [&](std::int64_t distance) {
        return static_cast<std::uint64_t>(random.between(-distance, distance));
    };
    // The edges of integers and of the narrower formats.
    static constexpr std::int64_t edges[] = {15, 16, 31, 32, 63, 64, -14, -24, -126, -149, 127, 10, 23, 52};
    const std::int64_t edge = bias + edges[random.below(std::size(edges))];
    const std::uint64_t values[] = {
        0,
        1,
        one - 1,
        one,
        fraction,
        fraction >> random.below(static_cast<std::uint64_t>(fraction_bits)),
        power(largest), // infinity and NaN
        power(largest) | quiet,
        power(largest) | quiet | fraction,
        power(largest) | 1,
        power(largest) | (fraction & (quiet - 1)) | 1,
        power(largest) - 1,
        power(bias),
        power(bias) + near(2),
        power(bias + random.between(-2, 4)) | random.below(8) << (fraction_bits - 3), // exact results, ties
        power(bias + random.between(-4, 4)) | fraction,
        power(largest - random.between(1, 3)) | fraction,       // so that results overflow
        power(random.between(1, fraction_bits + 3)) | fraction, // so that results become denormal
        edge < 0 || edge >= largest ? power(bias) | fraction : power(edge) + near(3),
        random.next(),
    };
    return values[random.below(std::size(values))] ^ (random.next() & 1) << (bits - 1);
}

constexpr int pool_size = 32;

struct value_pool {
    int bits;
    std::uint64_t values[pool_size];
};

value_pool make_pool(int bits, bool floating, random_source& random) {
    value_pool pool = {bits, {}};
    const bool use_float = floating && bits != 8;
    for (std::uint64_t& value : pool.values)
        value = use_float ? special_float(bits, random) : special_integer(bits, random);
    return pool;
}

template <class Element>
void fill_elements(std::uint8_t* row, const value_pool& pool, bool mixed, random_source& random) {
    constexpr int count = vector_bytes / static_cast<int>(sizeof(Element));
    std::uint64_t choices = 0;
    for (int i = 0; i < count; ++i) {
        if (i % 8 == 0)
            choices = random.next();
        // A mixed register keeps half of the random elements that it has.
        if (!mixed || (choices & 0x80)) {
            const auto value = static_cast<Element>(pool.values[choices % pool_size]);
            std::memcpy(row + i * static_cast<int>(sizeof(Element)), &value, sizeof value);
        }
        choices >>= 8;
    }
}

void fill_register(std::uint8_t* row, const value_pool& pool, bool mixed, random_source& random) {
    const auto fill = pool.bits == 8    ? fill_elements<std::uint8_t>
                      : pool.bits == 16 ? fill_elements<std::uint16_t>
                      : pool.bits == 32 ? fill_elements<std::uint32_t>
                                        : fill_elements<std::uint64_t>;
    fill(row, pool, mixed, random);
}

void random_bytes(void* destination, std::size_t size, random_source& random) {
    auto* const bytes = static_cast<std::uint8_t*>(destination);
    for (std::size_t i = 0; i + 8 <= size; i += 8) {
        const std::uint64_t value = random.next();
        std::memcpy(bytes + i, &value, 8);
    }
}

// The registers at the usual fields, and those that follow the first, as structured loads and stores take
// them.
void set_vectors(cpu_state& state, std::uint32_t word, element_hint hint, random_source& random) {
    random_bytes(state.z, sizeof state.z, random);
    const value_pool main_pool = make_pool(hint.bits, hint.floating, random);
    const std::uint32_t first = field(word, 4, 0);
    const std::uint32_t named[] = {first,
                                   first + 1,
                                   first + 2,
                                   first + 3,
                                   field(word, 9, 5),
                                   field(word, 20, 16),
                                   field(word, 19, 16),
                                   field(word, 18, 16)};
    for (const std::uint32_t number : named) {
        std::uint8_t* const row = state.z[number % 32];
        const std::uint64_t choice = random.below(8);
        if (choice == 0) // all bits random
            continue;
        value_pool pool = main_pool;
        if (choice == 1) // another size of element, another kind
            pool = make_pool(8 << random.below(4), hint.floating != random.one_in(4), random);
        if (choice == 2) // one value throughout
            std::fill(std::begin(pool.values), std::end(pool.values), pool.values[0]);
        fill_register(row, pool, choice == 3, random);
    }
}

std::uint64_t low_bits(int count) {
    return count >= 64 ? ~std::uint64_t{0} : (std::uint64_t{1} << count) - 1;
}

// The first `count` of 128 bits.
void set_prefix(std::uint64_t (&bits)[2], int count) {
    bits[0] = low_bits(count);
    bits[1] = count > 64 ? low_bits(count - 64) : 0;
}

void set_predicate_bits(std::uint64_t (&bits)[2], int element_bytes, random_source& random) {
    const std::uint64_t elements = ~std::uint64_t{0} / low_bits(element_bytes);
    const auto count = static_cast<std::uint64_t>(vector_bytes / element_bytes);
    const auto position = static_cast<int>(random.below(count)) * element_bytes;
    const std::uint64_t any[] = {random.next(), random.next()};
    const auto bit = [](int at) { return at >= 0 && at < 64 ? std::uint64_t{1} << at : 0; };
    std::uint64_t below[2]; // the elements below one, as WHILE leaves them
    set_prefix(below, position);
    const std::uint64_t shapes[][2] = {
        {0, 0},
        {~std::uint64_t{0}, ~std::uint64_t{0}},
        {elements, elements},
        {any[0] & ~elements, any[1] & ~elements}, // no element, but other bits
        {any[0] & random.next() & random.next(), any[1] & random.next() & random.next()},
        {any[0] | random.next() | random.next(), any[1] | random.next() | random.next()},
        {1, 0}, // the first element only, then the last only, then one only
        {0, bit(64 - element_bytes)},
        {bit(position), bit(position - 64)},
        {below[0] & elements, below[1] & elements},
        {~below[0] & elements, ~below[1] & elements},
        {any[0], any[1]},
    };
    std::memcpy(bits, shapes[random.below(std::size(shapes))], sizeof bits);
}

// Bit 0 of each byte is the predicate bit; the others are random, or 0 as handlers leave them.
void set_predicate(std::uint8_t* row, const std::uint64_t (&bits)[2], random_source& random) {
    spread_predicate(bits, row);
    if (random.one_in(2))
        return;
    for (int i = 0; i < vector_bytes; i += 8) {
        std::uint64_t bytes;
        std::memcpy(&bytes, row + i, 8);
        bytes |= random.next() & 0xFEFEFEFEFEFEFEFE;
        std::memcpy(row + i, &bytes, 8);
    }
}

void set_predicates(cpu_state& state, std::uint32_t word, element_hint hint, bool monotonic,
                    random_source& random) {
    std::uint64_t bits[2];
    for (auto& row : state.p) {
        const int element_bytes = random.one_in(4) ? 1 << random.below(4) : hint.bits / 8;
        set_predicate_bits(bits, element_bytes, random);
        if (monotonic)
            set_prefix(bits, static_cast<int>(random.below(vector_bytes + 1)));
        set_predicate(row, bits, random);
    }
    // Now and then two operands are nearly the same.
    if (random.one_in(4) && !monotonic) {
        std::uint8_t* const row = state.p[field(word, 8, 5)];
        std::memcpy(row, state.p[field(word, 13, 10)], vector_bytes);
        row[random.below(vector_bytes)] ^= 1;
    }
    set_prefix(bits, random.one_in(2) ? vector_bytes : static_cast<int>(random.below(vector_bytes + 1)));
    set_predicate(state.ffr, bits, random);
}

// Half of the states hold values near each other, and mostly near where integers wrap: for loop bounds.
void set_general_registers(cpu_state& state, random_source& random) {
    const bool close = random.one_in(2);
    const int width = random.one_in(2) ? 64 : 32;
    const std::uint64_t top = std::uint64_t{1} << (width - 1);
    const std::uint64_t wraps[] = {0, ~std::uint64_t{0}, top, top - 1, special_integer(width, random)};
    const std::uint64_t near = wraps[random.below(std::size(wraps))];
    for (std::uint64_t& x : state.x) {
        static constexpr std::int64_t distances[] = {0, 2, 20, 140};
        const std::int64_t distance = distances[random.below(std::size(distances))];
        if (close && !random.one_in(8))
            x = near + static_cast<std::uint64_t>(random.between(-distance, distance));
        else
            x = special_integer(8 << random.below(4), random);
        if (random.one_in(4)) // what a W register does not see
            x = (x & 0xFFFFFFFF) | random.next() << 32;
    }
}

constexpr std::uint32_t cumulative_flags = 0x0800009F;
constexpr std::uint32_t rounding_mode = 3u << 22;
constexpr std::uint32_t flush_to_zero = 1u << 24;
constexpr std::uint32_t default_nan = 1u << 25;
constexpr std::uint32_t alternative_half = 1u << 26;
constexpr std::uint32_t flush_half_to_zero = 1u << 19;

} // namespace

std::uint32_t random_word(const opcode_row& row, random_source& random) {
    const map_description& map = describe(row.map);
    const std::uint32_t free_bits = ~map_mask(map);
    std::uint32_t word = map_value(map, row.key) | (static_cast<std::uint32_t>(random.next()) & free_bits);
    for (const bit_field at : register_fields) {
        if (random.one_in(6))
            set_field(word, free_bits, at, random.one_in(4) ? 0 : 31);
    }
    for (int i = 0; i < 2; ++i) {
        if (random.one_in(3))
            alias_fields(word, free_bits, register_fields, random);
        if (random.one_in(3))
            alias_fields(word, free_bits, predicate_fields, random);
    }
    return word;
}

cpu_state random_state(const opcode_row& row, std::uint32_t word, random_source& random) {
    const element_hint hint = hint_of(row.name);
    cpu_state state = {};
    set_vectors(state, word, hint, random);
    // The only value that an instruction may write to FFR is one that loads can leave.
    const bool writes_ffr = std::string_view(row.name) == "VecPWriteFFSRP";
    set_predicates(state, word, hint, writes_ffr, random);
    set_general_registers(state, random);
    state.nzcv = random.next() & 0xF0000000;
    if (!random.one_in(4))
        state.fpsr = static_cast<std::uint32_t>(random.next()) & cumulative_flags;
    if (!random.one_in(3))
        state.fpcr = static_cast<std::uint32_t>(random.next()) &
                     (rounding_mode | flush_to_zero | default_nan | alternative_half | flush_half_to_zero);
    state.instr_word = random.next();
    return state;
}

} // namespace conformance
