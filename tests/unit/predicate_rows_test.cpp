// Operations that take predicate rows byte by byte: what they do with all eight bits, which no processor has.
#include "sve/handlers/first_fault_register.h"
#include "sve/handlers/permutes.h"
#include "sve/handlers/predicate_logic.h"
#include "sve/handlers/predicate_permutes.h"

#include "tests/unit/state_tools.h"

namespace {

struct register_numbers {
    int pd, pg, pn, pm;
};
constexpr register_numbers aliasings[] = {
    {1, 2, 3, 4}, {2, 2, 3, 4}, {3, 2, 3, 4}, {4, 2, 3, 4}, {5, 5, 5, 5}};

TEST(PredicateRows, LogicCombinesWholeBytes) {
    const struct {
        const char* name;
        predicate_logic_handler* handler;
        unsigned int (*define)(unsigned int n, unsigned int m);
    } operations[] = {
        {"and", sve_and_pppp, [](unsigned int n, unsigned int m) { return n & m; }},
        {"bic", sve_bic_pppp, [](unsigned int n, unsigned int m) { return n & ~m; }},
        {"eor", sve_eor_pppp, [](unsigned int n, unsigned int m) { return n ^ m; }},
        {"orr", sve_orr_pppp, [](unsigned int n, unsigned int m) { return n | m; }},
        {"nor", sve_nor_pppp, [](unsigned int n, unsigned int m) { return n == 0 && m == 0 ? 1u : 0u; }},
        {"sel", sve_sel_pppp, nullptr},
    };
    for (const auto& operation : operations) {
        for (const register_numbers r : aliasings) {
            for (const int qualifier : {aarch64_p_reg::zeroing, aarch64_p_reg::merging}) {
                cpu_state state = random_state(11);
                for (int k = 0; k < vector_bytes;
                     k += 2) // zeros, and bytes of which bit 0 is not the only one
                    state.p[r.pn][k] = state.p[r.pm][k] = static_cast<std::uint8_t>(k % 3 == 0 ? 0 : 0x82);
                cpu_state expected = state;
                for (int k = 0; k < vector_bytes; ++k) {
                    const std::uint8_t n = state.p[r.pn][k], m = state.p[r.pm][k];
                    std::uint8_t& result = expected.p[r.pd][k];
                    const bool active = state.p[r.pg][k] & 1;
                    if (operation.define == nullptr)
                        result = active ? n : m;
                    else if (active)
                        result = static_cast<std::uint8_t>(operation.define(n, m));
                    else if (qualifier == aarch64_p_reg::zeroing)
                        result = 0;
                }
                operation.handler(&state, p_operand(r.pd, byte_elements), p_operand(r.pg, qualifier),
                                  p_operand(r.pn, byte_elements), p_operand(r.pm, byte_elements));
                EXPECT_TRUE(same_state(state, expected)) << operation.name << " into p" << r.pd;
            }
        }
    }
}

TEST(PredicateRows, FirstFaultRegisterMovesWholeBytes) {
    const aarch64_p_reg p6 = p_operand(6, byte_elements), p7 = p_operand(7, aarch64_p_reg::zeroing);
    cpu_state state = random_state(13), expected = state;
    std::copy_n(state.ffr, vector_bytes, expected.p[6]);
    for (int k = 0; k < vector_bytes; ++k)
        expected.p[7][k] = state.ffr[k] & state.p[7][k];
    sve_rdffr_p(&state, p6);
    sve_rdffr_pp(&state, p7, p7);
    EXPECT_TRUE(same_state(state, expected));
    sve_wrffr_p(&state, p7);
    std::copy_n(state.p[7], vector_bytes, expected.ffr);
    EXPECT_TRUE(same_state(state, expected));
    sve_setffr(&state);
    std::fill_n(expected.ffr, vector_bytes, std::uint8_t{1});
    EXPECT_TRUE(same_state(state, expected));
}

// Where an element of the result comes from: an index into both sources put end to end.
struct permute_case {
    const char* name;
    void (*rows)(char* destination, const char* first, const char* second, int element_size);
    aarch64_decode_rc (*predicates)(cpu_state*, aarch64_p_reg, aarch64_p_reg, aarch64_p_reg);
    int (*source)(int i, int elements);
};
const permute_case permute_cases[] = {
    {"zip1", sve_zip1, sve_zip1_ppp, [](int i, int n) { return i / 2 + (i % 2) * n; }},
    {"zip2", sve_zip2, sve_zip2_ppp, [](int i, int n) { return n / 2 + i / 2 + (i % 2) * n; }},
    {"uzp1", sve_uzp1, sve_uzp1_ppp, [](int i, int) { return 2 * i; }},
    {"trn1", nullptr, sve_trn1_ppp, [](int i, int n) { return i / 2 * 2 + (i % 2) * n; }},
};

// Lanes move whole. The helpers for rows see addresses only, at any alignment; the destination may be a
// source.
TEST(PredicateRows, Permutes) {
    for (const permute_case& c : permute_cases) {
        for (int code = byte_elements; code <= doubleword_elements; ++code) {
            SCOPED_TRACE(testing::Message() << c.name << ", size code " << code);
            const auto define = [&](std::uint8_t* destination, const std::uint8_t* first,
                                    const std::uint8_t* second) {
                std::uint8_t joined[2 * vector_bytes];
                std::copy_n(first, vector_bytes, joined);
                std::copy_n(second, vector_bytes, joined + vector_bytes);
                for (int k = 0, size = 1 << code; k < vector_bytes; ++k)
                    destination[k] = joined[c.source(k / size, vector_bytes / size) * size + k % size];
            };
            for (const register_numbers r : aliasings) {
                cpu_state state = random_state(14), expected = state;
                define(expected.p[r.pd], state.p[r.pn], state.p[r.pm]);
                c.predicates(&state, p_operand(r.pd, code), p_operand(r.pn, code), p_operand(r.pm, code));
                EXPECT_TRUE(same_state(state, expected)) << "into p" << r.pd;
            }
            for (const int destination : {1, 131, 263}) {
                std::uint8_t memory[400], expected[400];
                for (int k = 0; k < 400; ++k)
                    memory[k] = expected[k] = static_cast<std::uint8_t>(k * 7 + k / 256);
                define(expected + destination, memory + 1, memory + 131);
                char* const chars = reinterpret_cast<char*>(memory);
                if (c.rows != nullptr) {
                    c.rows(chars + destination, chars + 1, chars + 131, code);
                    EXPECT_TRUE(std::equal(memory, memory + 400, expected)) << destination;
                }
            }
        }
    }
}

} // namespace
