// Loads and stores where memory ends, against a definition element by element: where nothing faults it is the
// comparison with a processor that counts.
#include "sve/decode/decoder.h"
#include "tests/unit/memory_forms.h"

namespace {

// Executes the word and compares. A load of the library that faults leaves everything as it was.
void check_word(const memory_form& form, unsigned int word, const std::vector<transfer>& transfers, int pg,
                cpu_state& state, const fenced_memory& memory) {
    state.instr_word = word; // which only handlers' stubs do
    expect_transfers(form.kind, transfers, pg, state, memory,
                     form.row.route == opcode_route::library ? on_fault::keep : on_fault::stop,
                     [&](cpu_state* actual) { return form.row.stub(actual, word); });
}

void check_around(const memory_form& form, std::uint64_t boundary, const fenced_memory& memory,
                  predicate_shape shape, const cpu_state& random, unsigned seed) {
    std::mt19937_64 generator(seed);
    const int zt = static_cast<int>(generator() % 32), pg = static_cast<int>(generator() % 8);
    const int rn = generator() % 4 == 0 ? 31 : static_cast<int>(generator() % 31), rm = (rn + 1) % 31;
    const int last = form.bytes_in_memory() + 1;
    std::uint64_t address = boundary + 9 - generator() % static_cast<unsigned>(last + 10);
    if (generator() % 2 != 0) // with an element that ends at the boundary
        address -= (address - boundary) % static_cast<unsigned>(form.kind.memory_bytes);
    if (shape == predicate_shape::all_false && seed % 2 == 0)
        address = generator(); // what is not accessed may be anywhere
    cpu_state state = random;
    set_predicate(form.kind.element_bytes, state.p[pg], shape, seed);
    const auto size = static_cast<std::uint64_t>(form.kind.memory_bytes);
    state.x[rn] = address - (form.has_index() ? state.x[rm] * size : 0);

    std::vector<transfer> transfers;
    std::uint64_t place = address;
    for (int i = 0; i < form.kind.element_count(); ++i)
        for (int k = 0; k < form.registers; ++k, place += form.is_replicated ? 0 : size)
            transfers.push_back({(zt + k) % 32, i, place});
    check_word(form, form.word(zt, pg, rn, form.has_index() ? rm : 0), transfers, pg, state, memory);
}

TEST(MemoryFaults, OfConsecutiveElements) {
    const fenced_memory one_page(1), two_pages(2);
    const cpu_state random = random_packed_state(7);
    unsigned seed = 0;
    for (const memory_form& form : memory_forms()) {
        if ((!form.is_contiguous && !form.is_replicated) || form.variant == "FF" || form.variant == "NF")
            continue;
        for (const predicate_shape shape : predicate_shapes) {
            for (int repeat = 0; repeat < 12; ++repeat) {
                SCOPED_TRACE(testing::Message() << form.row.name << ", shape " << static_cast<int>(shape)
                                                << ", seed " << ++seed);
                const fenced_memory& memory = repeat % 3 == 0 ? two_pages : one_page;
                const std::uint8_t* const boundaries[] = {two_pages.middle(), one_page.begin(),
                                                          one_page.end()};
                memory.fill(seed);
                check_around(form, reinterpret_cast<std::uint64_t>(boundaries[repeat % 3]), memory, shape,
                             random, seed);
                if (testing::Test::HasFailure())
                    return;
            }
        }
    }
    EXPECT_GT(seed, 9000u);
}

// What the targets of the elements are: all of the memory, its two ends, or few places, which overlap.
enum class spread { anywhere, ends, few };

std::uint64_t target_offset(spread targets, std::uint64_t memory_size, std::uint64_t element_size,
                            std::mt19937_64& generator) {
    const std::uint64_t last = memory_size - element_size;
    switch (targets) {
    case spread::anywhere:
        return generator() % (last + 1);
    case spread::ends:
        return generator() % 2 ? generator() % 16 : last - generator() % 16;
    default:
        return 100 + generator() % (2 * element_size);
    }
}

// `outside` says how many elements of a hundred have an address out of reach, of which the inactive ones must
// not be noticed.
void check_vector(const memory_form& form, predicate_shape shape, spread targets, unsigned outside,
                  const fenced_memory& memory, const cpu_state& random, unsigned seed) {
    std::mt19937_64 generator(seed);
    const auto size = static_cast<std::uint64_t>(form.kind.memory_bytes);
    const int zt = static_cast<int>(generator() % 32), pg = static_cast<int>(generator() % 8);
    const int vector = generator() % 3 == 0 ? zt : static_cast<int>(generator() % 32);
    const int rn = generator() % 4 == 0 ? 31 : static_cast<int>(generator() % 31);
    const int imm5 = static_cast<int>(generator() % 32);
    cpu_state state = random;
    set_predicate(form.kind.element_bytes, state.p[pg], shape, seed);
    const std::vector<std::uint64_t> addresses = set_addresses(
        form, state, vector, rn, imm5, memory.address(), memory.size(),
        [&] {
            const bool is_outside = generator() % 100 < outside;
            return memory.address() + (is_outside ? memory.size() - generator() % size
                                                  : target_offset(targets, memory.size(), size, generator));
        },
        generator);
    std::vector<transfer> transfers;
    for (int i = 0; i < form.kind.element_count(); ++i)
        transfers.push_back({zt, i, addresses[static_cast<std::size_t>(i)]});
    const unsigned int word =
        form.has_vector_bases() ? form.word(zt, pg, vector, imm5) : form.word(zt, pg, rn, vector);
    check_word(form, word, transfers, pg, state, memory);
}

TEST(MemoryFaults, OfElementsAnywhere) {
    // Vectors of 32-bit bases reach it.
    const fenced_memory memory(1, true);
    const cpu_state random = random_packed_state(5);
    unsigned seed = 0;
    for (const memory_form& form : memory_forms()) {
        if (form.is_contiguous || form.is_replicated || form.variant == "FF")
            continue;
        for (const predicate_shape shape : predicate_shapes) {
            for (const spread targets : {spread::anywhere, spread::ends, spread::few}) {
                for (const unsigned outside : {0u, 4u, 50u}) {
                    SCOPED_TRACE(testing::Message() << form.row.name << ", shape " << static_cast<int>(shape)
                                                    << ", seed " << ++seed);
                    memory.fill(seed);
                    check_vector(form, shape, targets, outside, memory, random, seed);
                    if (testing::Test::HasFailure())
                        return;
                }
            }
        }
    }
    EXPECT_GT(seed, 4000u);
}

} // namespace
