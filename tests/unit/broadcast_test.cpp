#include "sve/handlers/broadcast.h"

#include "sve/decode/bitmask_immediate.h"
#include "tests/unit/state_tools.h"

#include <functional>

namespace {

template <class Body> void for_every_size(Body body) {
    body(std::uint8_t{});
    body(std::uint16_t{});
    body(std::uint32_t{});
    body(std::uint64_t{});
}

template <class Element> constexpr int count = vector_bytes / static_cast<int>(sizeof(Element));

// Sets element i of the row to value(i), for all i.
template <class Element, class Value> void fill(std::uint8_t* row_bytes, Value value) {
    for (int i = 0; i < count<Element>; ++i)
        set_element(row_bytes, i, static_cast<Element>(value(i)));
}

// Runs the handler on a random state and compares the whole state with what `expect` makes of it.
void check(const std::function<aarch64_decode_rc(cpu_state*)>& handler,
           const std::function<void(cpu_state*)>& expect, cpu_state state = random_state(1)) {
    cpu_state expected = state;
    expect(&expected);
    EXPECT_EQ(handler(&state), aarch64_emulated);
    EXPECT_TRUE(same_state(state, expected));
}

TEST(Broadcast, Immediate) {
    for (const int immediate : {0, 1, -1, 127, -128, 0x7F00, -256, -32768, 256}) {
        for_every_size([&](auto zero) {
            using Element = decltype(zero);
            SCOPED_TRACE(testing::Message() << sizeof(Element) << "-byte elements, " << immediate);
            check(
                [&](cpu_state* s) { return sve_dup_zi(s, z_operand(31, size_code_of<Element>), immediate); },
                [&](cpu_state* s) { fill<Element>(s->z[31], [&](int) { return immediate; }); });
        });
    }
    // By hand: a shifted immediate leaves nothing in a byte, and is sign-extended to a doubleword.
    cpu_state state = random_state(2);
    sve_dup_zi(&state, z_operand(0, byte_elements), 1 << 8);
    EXPECT_EQ(state.z[0][127], 0);
    sve_dup_zi(&state, z_operand(0, doubleword_elements), -256);
    EXPECT_EQ(element<std::uint64_t>(state.z[0], 15), 0xFFFFFFFFFFFFFF00);
}

TEST(Broadcast, GeneralRegister) {
    for (const int reg : {0, 30, 31}) { // 31 is the stack pointer
        for_every_size([&](auto zero) {
            using Element = decltype(zero);
            check(
                [&](cpu_state* s) {
                    return sve_dup_zr(s, z_operand(7, size_code_of<Element>), {reg, doubleword_elements});
                },
                [&](cpu_state* s) { fill<Element>(s->z[7], [&](int) { return s->x[reg]; }); });
        });
    }
}

TEST(Broadcast, IndexedElement) {
    for (const int zn : {12, 4}) { // 4 is the destination too
        for (const unsigned index : {0u, 1u, 7u, 8u, 15u, 16u, 31u, 32u, 63u, 64u, 127u, 128u, 0x10000000u}) {
            for_every_size([&](auto zero) {
                using Element = decltype(zero);
                SCOPED_TRACE(testing::Message() << sizeof(Element) << "-byte elements, index " << index);
                check(
                    [&](cpu_state* s) {
                        return sve_dup_zzi(s, z_operand(4, size_code_of<Element>),
                                           z_operand(zn, size_code_of<Element>), index);
                    },
                    [&](cpu_state* s) {
                        const bool inside = std::uint64_t{index} * sizeof(Element) < vector_bytes;
                        const Element value =
                            inside ? element<Element>(s->z[zn], static_cast<int>(index)) : Element{0};
                        fill<Element>(s->z[4], [&](int) { return value; });
                    });
            });
            SCOPED_TRACE(testing::Message() << "quadwords, index " << index);
            check(
                [&](cpu_state* s) {
                    return sve_dup_zzi(s, z_operand(4, quadword_elements), z_operand(zn, quadword_elements),
                                       index);
                },
                [&](cpu_state* s) {
                    std::uint8_t quadword[16] = {};
                    if (index < 8)
                        std::memcpy(quadword, s->z[zn] + index * 16, 16);
                    for (int i = 0; i < 8; ++i)
                        std::memcpy(s->z[4] + i * 16, quadword, 16);
                });
        }
    }
}

TEST(Broadcast, Mask) {
    check(
        [](cpu_state* s) { return sve_dupm_zi(s, z_operand(3, doubleword_elements), {0x8001FF0000FFFFFE}); },
        [](cpu_state* s) { fill<std::uint64_t>(s->z[3], [](int) { return 0x8001FF0000FFFFFE; }); });
}

// The handler with the predicate p11, of each shape and size, and the value that active elements get.
template <class Handler, class Value> void check_copies(Handler handler, Value value_of, bool zeroing) {
    for (const predicate_shape shape : predicate_shapes) {
        for_every_size([&](auto zero) {
            using Element = decltype(zero);
            SCOPED_TRACE(testing::Message() << sizeof(Element) << "-byte elements, predicate "
                                            << static_cast<int>(shape) << (zeroing ? ", /z" : ", /m"));
            cpu_state state = random_state(3);
            set_predicate<Element>(state.p[11], shape, 4);
            const cpu_state before = state;
            check(
                [&](cpu_state* s) {
                    return handler(s, size_code_of<Element>,
                                   p_operand(11, zeroing ? aarch64_p_reg::zeroing : aarch64_p_reg::merging));
                },
                [&](cpu_state* s) {
                    fill<Element>(s->z[5], [&](int i) -> Element {
                        if (element_is_active<Element>(before.p[11], i))
                            return static_cast<Element>(value_of(before, Element{}, i));
                        return zeroing ? Element{0} : element<Element>(before.z[5], i);
                    });
                },
                state);
        });
    }
}

TEST(Broadcast, CopyImmediate) {
    for (const bool zeroing : {false, true}) {
        for (const int immediate : {5, -1, -32768, 0x7F00}) {
            check_copies([&](cpu_state* s, int code,
                             aarch64_p_reg pg) { return sve_cpy_zpi(s, z_operand(5, code), pg, immediate); },
                         [&](const cpu_state&, auto, int) { return immediate; }, zeroing);
        }
    }
}

TEST(Broadcast, CopyRegister) {
    for (const int reg : {3, 31}) { // 31 is the stack pointer
        check_copies(
            [&](cpu_state* s, int code, aarch64_p_reg pg) {
                return sve_cpy_zpr(s, z_operand(5, code), pg, {reg, doubleword_elements});
            },
            [&](const cpu_state& before, auto, int) { return before.x[reg]; }, false);
    }
}

TEST(Broadcast, CopySimdScalar) {
    for (const int vn : {18, 5}) { // 5 is the destination too
        check_copies(
            [&](cpu_state* s, int code, aarch64_p_reg pg) {
                return sve_cpy_zpv(s, z_operand(5, code), pg, z_operand(vn, code));
            },
            [&](const cpu_state& before, auto zero, int) { return element<decltype(zero)>(before.z[vn], 0); },
            false);
    }
}

TEST(Broadcast, MovePrefix) {
    for (const bool zeroing : {false, true}) {
        for (const int zn : {18, 5}) {
            check_copies(
                [&](cpu_state* s, int code, aarch64_p_reg pg) {
                    return sve_movprfx_zpz(s, z_operand(5, code), pg, z_operand(zn, code));
                },
                [&](const cpu_state& before, auto zero, int i) {
                    return element<decltype(zero)>(before.z[zn], i);
                },
                zeroing);
        }
    }
    check([](cpu_state* s) { return sve_movprfx_zz(s, z_operand(0, 2), z_operand(31, 2)); },
          [](cpu_state* s) { std::memcpy(s->z[0], s->z[31], vector_bytes); });
}

TEST(Broadcast, Select) {
    struct {
        int zd, zn, zm;
    } const registers[] = {{1, 2, 3}, {1, 1, 3}, {1, 2, 1}, {1, 2, 2}};
    for (const auto& r : registers) {
        for (const predicate_shape shape : predicate_shapes) {
            for_every_size([&](auto zero) {
                using Element = decltype(zero);
                SCOPED_TRACE(testing::Message() << sizeof(Element) << "-byte elements, z" << r.zd << ", z"
                                                << r.zn << ", z" << r.zm);
                cpu_state state = random_state(8);
                set_predicate<Element>(state.p[15], shape, 9);
                const cpu_state before = state;
                const int code = size_code_of<Element>;
                check(
                    [&](cpu_state* s) {
                        return sve_sel_zpzz(s, z_operand(r.zd, code), p_operand(15, aarch64_p_reg::plain),
                                            z_operand(r.zn, code), z_operand(r.zm, code));
                    },
                    [&](cpu_state* s) {
                        fill<Element>(s->z[r.zd], [&](int i) {
                            const bool active = element_is_active<Element>(before.p[15], i);
                            return element<Element>(before.z[active ? r.zn : r.zm], i);
                        });
                    },
                    state);
            });
        }
    }
}

TEST(Broadcast, Index) {
    const cpu_state registers = random_state(10);
    for (const int reg : {9, 31}) { // 31 is zero
        const std::uint64_t value = reg == 31 ? 0 : registers.x[reg];
        for (const int immediate : {0, 1, 3, 15, -1, -16}) {
            for_every_size([&](auto zero) {
                using Element = decltype(zero);
                SCOPED_TRACE(testing::Message()
                             << sizeof(Element) << "-byte elements, " << immediate << ", x" << reg);
                const aarch64_z_reg zd = z_operand(30, size_code_of<Element>);
                const std::uint64_t extended = static_cast<std::uint64_t>(static_cast<long>(immediate));
                const auto row_of = [&](std::uint64_t base, std::uint64_t step) {
                    return [=](cpu_state* s) {
                        fill<Element>(s->z[30],
                                      [&](int i) { return base + static_cast<std::uint64_t>(i) * step; });
                    };
                };
                check([&](cpu_state* s) { return sve_index_zii(s, zd, immediate, 7); }, row_of(extended, 7),
                      registers);
                check([&](cpu_state* s) { return sve_index_zii(s, zd, -16, immediate); },
                      row_of(static_cast<std::uint64_t>(-16L), extended), registers);
                check([&](cpu_state* s) { return sve_index_zir(s, zd, immediate, i_operand(reg)); },
                      row_of(extended, value), registers);
                check([&](cpu_state* s) { return sve_index_zri(s, zd, i_operand(reg), immediate); },
                      row_of(value, extended), registers);
                check([&](cpu_state* s) { return sve_index_zrr(s, zd, i_operand(reg), i_operand(4)); },
                      row_of(value, registers.x[4]), registers);
                check([&](cpu_state* s) { return sve_index_zrr(s, zd, i_operand(4), i_operand(reg)); },
                      row_of(registers.x[4], value), registers);
            });
        }
    }
}

TEST(Broadcast, LogicalMask) {
    constexpr std::uint64_t mask = 0x00FF00FFF0F0AAAA;
    struct {
        decltype(&sve_and_zi) handler;
        std::uint64_t (*reference)(std::uint64_t);
    } const cases[] = {{sve_and_zi, [](std::uint64_t a) { return a & mask; }},
                       {sve_orr_zi, [](std::uint64_t a) { return a | mask; }},
                       {sve_eor_zi, [](std::uint64_t a) { return a ^ mask; }}};
    for (const auto& c : cases) {
        check([&](cpu_state* s) { return c.handler(s, z_destructive(14, doubleword_elements), {mask}); },
              [&](cpu_state* s) {
                  fill<std::uint64_t>(
                      s->z[14], [&](int i) { return c.reference(element<std::uint64_t>(s->z[14], i)); });
              });
    }
}

constexpr unsigned int bitmask_word(unsigned int n, unsigned int immr, unsigned int imms) {
    return n << 17 | immr << 11 | imms << 5;
}

TEST(BitmaskImmediate, Known) {
    struct {
        unsigned int n, immr, imms;
        std::uint64_t mask;
    } const cases[] = {
        {1, 0, 0, 1},
        {0, 0, 0b111100, 0x5555555555555555},
        {0, 1, 0b111100, 0xAAAAAAAAAAAAAAAA},
        {0, 0, 0b110000, 0x0101010101010101},
        {0, 0, 0b000000, 0x0000000100000001},
        {1, 8, 7, 0xFF00000000000000},
        {1, 4, 7, 0xF00000000000000F},
        {0, 3, 0b100111, 0xE01FE01FE01FE01F},
        // Reserved encodings: a run as long as its element, and no element size.
        {0, 0, 0b111101, ~std::uint64_t{0}},
        {0, 5, 0b111110, ~std::uint64_t{0}},
        {0, 9, 0b011111, ~std::uint64_t{0}},
        {1, 3, 0b111111, 0},
        {0, 7, 0b111111, 0},
    };
    for (const auto& c : cases)
        EXPECT_EQ(decode_bitmask_immediate(bitmask_word(c.n, c.immr, c.imms)), c.mask)
            << c.n << " " << c.immr << " " << c.imms;
}

// All masks that have an encoding, each built from its description.
TEST(BitmaskImmediate, EveryMask) {
    int masks = 0;
    for (unsigned int size = 2; size <= 64; size *= 2) {
        for (unsigned int ones = 1; ones < size; ++ones) {
            for (unsigned int rotation = 0; rotation < size; ++rotation) {
                std::uint64_t mask = 0;
                for (unsigned int bit = 0; bit < 64; ++bit)
                    mask |= std::uint64_t{(bit + rotation) % size < ones} << bit;
                const unsigned int n = size == 64;
                const unsigned int imms = (~(size * 2 - 1) & 0x3F) | (ones - 1);
                const unsigned int ignored_rotation_bits = ~(size - 1) & 0x3F;
                const unsigned int rest_of_word = ~bitmask_word(1, 0x3F, 0x3F);
                EXPECT_EQ(decode_bitmask_immediate(bitmask_word(n, rotation, imms)), mask);
                EXPECT_EQ(decode_bitmask_immediate(bitmask_word(n, rotation | ignored_rotation_bits, imms) |
                                                   rest_of_word),
                          mask);
                ++masks;
            }
        }
    }
    EXPECT_EQ(masks, 5334);
}

} // namespace
