// Permutes and element moves of the library at vector lengths other than the machine's own.
#include "sve/library/element_moves.h"
#include "sve/library/permutes.h"

#include "tests/unit/library_operands.h"

namespace {

// Every element of the result that is expected, and no more: what the definition leaves open is not compared.
template <class Element>
void expect_elements(const VecV& result, const std::vector<Element>& expected, const CpuContext& context) {
    std::vector<Element> actual = elements_of<Element>(result, context);
    ASSERT_LE(expected.size(), actual.size());
    actual.resize(expected.size());
    EXPECT_EQ(actual, expected);
}

template <class Element>
void check_vector_permutes(transpose_primitive* transpose, splice_primitive* splice) {
    for_random_operands([&](primitive_operands& values) {
        CpuContext* context = &values.context;
        const auto zn = elements_of<Element>(values.zn, *context),
                   zm = elements_of<Element>(values.zm, *context);
        const auto pg = bits_of(values.pg, *context);

        std::vector<Element> transposed;
        for (std::size_t k = 0; k + 1 < zn.size(); k += 2) {
            transposed.push_back(zn[k]);
            transposed.push_back(zm[k]);
        }
        expect_elements(transpose(values.zn, values.zm, context), transposed, *context);

        std::vector<Element> spliced, between;
        for (std::size_t i = 0; i < zn.size(); ++i) {
            const bool active = active_at<Element>(pg, i);
            if (active || !between.empty())
                between.push_back(zn[i]);
            if (active)
                spliced = between;
        }
        spliced.insert(spliced.end(), zm.begin(), zm.end());
        spliced.resize(zn.size());
        expect_elements(splice(values.pg, values.zn, values.zm, context), spliced, *context);
    });
}

TEST(LibraryPermutes, TransposeAndSplice) {
    check_vector_permutes<std::uint8_t>(VecU8Trn1VV, VecU8SpliceVV);
    check_vector_permutes<std::uint16_t>(VecU16Trn1VV, VecU16SpliceVV);
    check_vector_permutes<std::uint32_t>(VecU32Trn1VV, VecU32SpliceVV);
    check_vector_permutes<std::uint64_t>(VecU64Trn1VV, VecU64SpliceVV);
}

template <class Element> void check_compress(compress_primitive* compress) {
    for_random_operands([&](primitive_operands& values) {
        const auto zn = elements_of<Element>(values.zn, values.context);
        const auto pg = bits_of(values.pg, values.context);
        std::vector<Element> expected;
        for (std::size_t i = 0; i < zn.size(); ++i)
            if (active_at<Element>(pg, i))
                expected.push_back(zn[i]);
        expected.resize(zn.size());
        expect_elements(compress(values.pg, values.zn, &values.context), expected, values.context);
    });
}

template <class Narrow, class Element> void check_unpack(unpack_primitive* low, unpack_primitive* high) {
    for_random_operands([&](primitive_operands& values) {
        const auto source = elements_of<Narrow>(values.zn, values.context);
        const auto middle = source.begin() + static_cast<std::ptrdiff_t>(source.size() / 2);
        expect_elements(low(values.zn, &values.context), std::vector<Element>(source.begin(), middle),
                        values.context);
        expect_elements(high(values.zn, &values.context), std::vector<Element>(middle, source.end()),
                        values.context);
    });
}

TEST(LibraryPermutes, CompressAndUnpack) {
    check_compress<std::uint32_t>(VecU32CompressVV);
    check_compress<std::uint64_t>(VecU64CompressVV);
    check_unpack<std::int8_t, std::int16_t>(VecS16UnpackLoV, VecS16UnpackHiV);
    check_unpack<std::int16_t, std::int32_t>(VecS32UnpackLoV, VecS32UnpackHiV);
}

template <class Element>
void check_moves(std::array<last_primitive<Element>*, 2> after_last,
                 std::array<conditional_last_primitive<Element>*, 2> conditional_after,
                 conditional_last_primitive<Element>* conditional_last,
                 conditional_vector_primitive* vector_after, conditional_vector_primitive* vector_last,
                 std::array<insert_primitive<Element>*, 2> insert) {
    for_random_operands([&](primitive_operands& values) {
        CpuContext* context = &values.context;
        const auto zn = elements_of<Element>(values.zn, *context),
                   zm = elements_of<Element>(values.zm, *context);
        const auto pg = bits_of(values.pg, *context);
        const auto scalar = static_cast<Element>(values.seed);

        std::vector<Element> inserted = zn;
        if (!inserted.empty()) {
            inserted.pop_back();
            inserted.insert(inserted.begin(), scalar);
        }
        for (const auto primitive : insert)
            expect_elements(primitive(values.zn, scalar, context), inserted, *context);

        if (zm.empty()) { // nothing is active, and there is no element that LASTA could take
            EXPECT_EQ(conditional_after[0](values.pg, scalar, values.zm, context), scalar);
            EXPECT_EQ(conditional_last(values.pg, scalar, values.zm, context), scalar);
            return;
        }
        std::size_t last = zm.size();
        for (std::size_t i = 0; i < zm.size(); ++i)
            if (active_at<Element>(pg, i))
                last = i;
        const bool none = last == zm.size();
        const Element following = none ? zm[0] : zm[(last + 1) % zm.size()];
        for (const auto primitive : after_last)
            EXPECT_EQ(primitive(values.pg, values.zm, context), following);
        for (const auto primitive : conditional_after)
            EXPECT_EQ(primitive(values.pg, scalar, values.zm, context), none ? scalar : following);
        EXPECT_EQ(conditional_last(values.pg, scalar, values.zm, context), none ? scalar : zm[last]);
        expect_elements(vector_after(values.pg, values.zn, values.zm, context),
                        none ? zn : std::vector<Element>(zn.size(), following), *context);
        expect_elements(vector_last(values.pg, values.zn, values.zm, context),
                        none ? zn : std::vector<Element>(zn.size(), zm[last]), *context);
    });
}

TEST(LibraryElementMoves, AtEveryLength) {
    check_moves<std::uint8_t>({VecU8LastAV, VecB8LastAV}, {VecU8CondXASV, VecB8CondXASV}, VecB8CondXBSV,
                              VecU8VCondXAVV, VecU8VCondXBVV, {VecU8InsertS, VecB8InsertS});
    check_moves<std::uint16_t>({VecU16LastAV, VecH16LastAV}, {VecU16CondXASV, VecH16CondXASV}, VecH16CondXBSV,
                               VecU16VCondXAVV, VecU16VCondXBVV, {VecU16InsertS, VecH16InsertS});
    check_moves<std::uint32_t>({VecU32LastAV, VecF32LastAV}, {VecU32CondXASV, VecF32CondXASV}, VecF32CondXBSV,
                               VecU32VCondXAVV, VecU32VCondXBVV, {VecU32InsertS, VecF32InsertS});
    check_moves<std::uint64_t>({VecU64LastAV, VecD64LastAV}, {VecU64CondXASV, VecD64CondXASV}, VecD64CondXBSV,
                               VecU64VCondXAVV, VecU64VCondXBVV, {VecU64InsertS, VecD64InsertS});
}

} // namespace
