// Tools for tests of handlers: random machine states, elements of register rows, predicates with garbage in
// the bits that must not matter, and comparison of whole states.
#pragma once

#include "sve/decode/cpu_state.h"

#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>
#include <random>
#include <sstream>
#include <string>

// A state with random bytes everywhere but in `pc` (null) and `fpcr_extra` (0, as in the product).
inline cpu_state random_state(unsigned seed) {
    cpu_state state;
    std::mt19937_64 generator(seed);
    auto* bytes = reinterpret_cast<unsigned char*>(&state);
    for (std::size_t i = 0; i < sizeof state; i += 8) {
        const std::uint64_t word = generator();
        std::memcpy(bytes + i, &word, std::min<std::size_t>(8, sizeof state - i));
    }
    state.pc = nullptr;
    state.fpcr_extra = 0;
    return state;
}

// Element `index` of a register or predicate row.
template <class Element> Element element(const std::uint8_t* row_bytes, int index) {
    Element value;
    std::memcpy(&value, row_bytes + index * sizeof(Element), sizeof value);
    return value;
}
template <class Element> void set_element(std::uint8_t* row_bytes, int index, Element value) {
    std::memcpy(row_bytes + index * sizeof(Element), &value, sizeof value);
}

enum class predicate_shape { all_true, all_false, alternating, only_first, only_last, sparse };
inline constexpr predicate_shape predicate_shapes[] = {
    predicate_shape::all_true,   predicate_shape::all_false, predicate_shape::alternating,
    predicate_shape::only_first, predicate_shape::only_last, predicate_shape::sparse};

// Gives the elements of so many bytes in a predicate row the shape; every bit that must not matter becomes
// random.
inline void set_predicate(int element_bytes, std::uint8_t* predicate, predicate_shape shape, unsigned seed) {
    const int count = vector_bytes / element_bytes;
    std::mt19937 generator(seed);
    for (int k = 0; k < vector_bytes; ++k)
        predicate[k] = static_cast<std::uint8_t>(generator());
    for (int i = 0; i < count; ++i) {
        const bool by_shape[] = {true, false, i % 2 == 0, i == 0, i == count - 1, generator() % 5 == 0};
        std::uint8_t& byte = predicate[i * element_bytes];
        byte = static_cast<std::uint8_t>((byte & 0xFE) | by_shape[static_cast<int>(shape)]);
    }
}

// Operand records as opcode stubs pack them, for what is only read or only written.
inline aarch64_z_reg z_operand(int reg, int code) {
    return {reg, code, aarch64_z_reg::no_kind, aarch64_z_reg::no_kind};
}
inline aarch64_p_reg p_operand(int reg, int code) {
    return {reg, code, aarch64_p_reg::no_kind, aarch64_p_reg::no_kind};
}

// Whether two states are equal in every field; names the first byte of each register that differs.
inline testing::AssertionResult same_state(const cpu_state& actual, const cpu_state& expected) {
    if (std::memcmp(&actual, &expected, sizeof actual) == 0)
        return testing::AssertionSuccess(); // which it nearly always is
    std::ostringstream differences;
    differences << std::hex;
    const auto compare = [&](const std::string& name, std::uint64_t a, std::uint64_t e) {
        if (a != e)
            differences << "  " << name << " is 0x" << a << ", expected 0x" << e << "\n";
    };
    const auto compare_row = [&](const std::string& name, const std::uint8_t* a, const std::uint8_t* e) {
        for (int k = 0; k < vector_bytes; ++k) {
            if (a[k] != e[k]) {
                compare(name + " byte " + std::to_string(k), a[k], e[k]);
                break;
            }
        }
    };
    for (int i = 0; i < 32; ++i)
        compare("x" + std::to_string(i), actual.x[i], expected.x[i]);
    compare("pc", reinterpret_cast<std::uintptr_t>(actual.pc), reinterpret_cast<std::uintptr_t>(expected.pc));
    compare("nzcv", actual.nzcv, expected.nzcv);
    compare("fpsr", actual.fpsr, expected.fpsr);
    compare("fpcr", actual.fpcr, expected.fpcr);
    compare("fpcr_extra", actual.fpcr_extra, expected.fpcr_extra);
    for (int i = 0; i < 32; ++i)
        compare_row("z" + std::to_string(i), actual.z[i], expected.z[i]);
    for (int i = 0; i < 16; ++i)
        compare_row("p" + std::to_string(i), actual.p[i], expected.p[i]);
    compare_row("ffr", actual.ffr, expected.ffr);
    compare("instr_word", actual.instr_word, expected.instr_word);
    const std::string text = differences.str();
    return text.empty() ? testing::AssertionSuccess() : testing::AssertionFailure() << "\n" << text;
}
