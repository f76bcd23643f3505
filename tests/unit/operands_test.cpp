// The operand layouts against words made by an assembler: each case is an instruction's text, its encoding,
// and the operands that a handler or a primitive has to receive, in their order.
#include "sve/decode/decoder.h"
#include "sve/decode/handler_layouts.h"
#include "sve/decode/library_layouts.h"
#include "tests/unit/state_tools.h"

#include <concepts>
#include <gtest/gtest.h>
#include <sstream>
#include <string>

namespace {

using handler_layouts::B;
using handler_layouts::D;
using handler_layouts::H;
using handler_layouts::merging;
using handler_layouts::plain;
using handler_layouts::S;
using handler_layouts::zeroing;

std::string hexadecimal(std::uint64_t value) {
    std::ostringstream text;
    text << "0x" << std::hex << value;
    return text.str();
}

// Operand records as text: register and suffix as the assembler has them, "!" after an operand that is source
// and destination at once, "?" if the kind words break the rule of one or the other.
std::string with_suffix(std::string name, const char* const* suffixes, int no_kind, int kind, int dest_kind,
                        int dest_kind2) {
    if (kind == no_kind && dest_kind == no_kind && dest_kind2 == no_kind)
        return name;
    if (kind == no_kind && dest_kind == dest_kind2)
        return name + suffixes[dest_kind] + "!";
    return name + suffixes[kind] + (dest_kind == no_kind && dest_kind2 == no_kind ? "" : "?");
}
std::string text(aarch64_z_reg z) {
    static const char* const suffixes[] = {".b", ".h", ".s", ".d", ".q"};
    return with_suffix(aarch64_z_reg::zname[z.reg], suffixes, 5, z.kind, z.dest_kind, z.dest_kind2);
}
std::string text(aarch64_p_reg p) {
    static const char* const suffixes[] = {".b", ".h", ".s", ".d", "/m", "/z", ""};
    return with_suffix(aarch64_p_reg::pname[p.reg], suffixes, 7, p.kind, p.dest_kind, p.dest_kind2);
}
std::string text(aarch64_i_reg r) {
    static const char* const suffixes[] = {".8", ".16", ".32", ".64"};
    return with_suffix(aarch64_i_reg::xname[r.reg], suffixes, 4, r.kind, r.dest_kind, r.dest_kind2);
}
std::string text(aarch64_i_rsp_reg r) {
    return aarch64_i_rsp_reg::xname[r.reg] + std::string(r.kind == doubleword_elements ? ".64" : ".32");
}
std::string text(aarch64_sve_logical64_imm mask) { return hexadecimal(mask.value); }
std::string text(aarch64_sve_fp_arith_imm flag) { return "i1=" + std::to_string(flag.i1); }
std::string text(aarch64_sve_fp_dup_imm value) {
    return hexadecimal(value.half) + "/" + hexadecimal(value.single_precision) + "/" +
           hexadecimal(value.double_precision);
}
std::string text(int value) { return "#" + std::to_string(value); }
std::string text(unsigned int value) { return "#" + std::to_string(value); }

template <class Layout> std::string handler_operands(unsigned int word) {
    std::string result;
    cpu_state state = random_state(1);
    Layout::call(
        [&](cpu_state*, auto... operands) {
            ((result += (result.empty() ? "" : ", ") + text(operands)), ...);
            return aarch64_emulated;
        },
        &state, word);
    return result;
}

struct layout_case {
    const char* assembly;
    unsigned int word;
    const char* stub;
    std::string (*operands)(unsigned int word);
    const char* expected;
};

using namespace handler_layouts;

const layout_case handler_cases[] = {
    {"lsl z1.h, p2/m, z1.h, z3.h", 0x04538861, "VecU16ShlVVM", handler_operands<ZdnPgZm<H>>,
     "z1.h!, p2/m, z3.h"},
    {"sxtb z4.s, p5/m, z6.s", 0x0490b4c4, "VecS32Extnd14VM", handler_operands<ZdPgZn<S>>, "z4.s, p5/m, z6.s"},
    {"scvtf z7.d, p1/m, z8.s", 0x65d0a507, "VecD64FromS4VM", handler_operands<ZdPgZn<D, S>>,
     "z7.d, p1/m, z8.s"},
    {"movprfx z14.s, p2/z, z15.s", 0x049029ee, "VecU32MovePrefix1VZ", handler_operands<ZdPgZn<S, S, zeroing>>,
     "z14.s, p2/z, z15.s"},
    {"tbl z1.b, {z2.b}, z3.b", 0x05233041, "VecU8TblVV", handler_operands<ZdZnZm<B>>, "z1.b, z2.b, z3.b"},
    {"rev z9.h, z31.h", 0x05783be9, "VecU16ReverseV", handler_operands<ZdZn<H>>, "z9.h, z31.h"},
    {"uunpkhi z3.s, z17.h", 0x05b33a23, "VecU32UnpackHiV", handler_operands<ZdZn<S, H>>, "z3.s, z17.h"},
    {"movprfx z14, z15", 0x0420bdee, "VecU32SpecialMoveV", handler_operands<ZdZn<operands::no_size>>,
     "z14, z15"},
    {"mla z1.h, p3/m, z20.h, z31.h", 0x045f4e81, "VecS16MLAVVVM", handler_operands<ZdaPgZnZm<H>>,
     "z1.h!, p3/m, z20.h, z31.h"},
    {"mad z2.d, p4/m, z21.d, z30.d", 0x04d5d3c2, "VecS64MADDVVVM", handler_operands<ZdnPgZmZa<D>>,
     "z2.d!, p4/m, z21.d, z30.d"},
    {"sel z10.b, p13, z11.b, z12.b", 0x052cf56a, "VecU8SelVV", handler_operands<ZdPg4ZnZm<B>>,
     "z10.b, p13, z11.b, z12.b"},
    {"add z4.h, z4.h, #200, lsl #8", 0x2560f904, "VecU16AddVIX", handler_operands<ZdnShiftedUnsigned<H>>,
     "z4.h!, #51200"},
    {"mul z9.s, z9.s, #-3", 0x25b0dfa9, "VecS32MulVIX", handler_operands<ZdnSigned8<S>>, "z9.s!, #-3"},
    {"and z16.b, z16.b, #0x55", 0x05800790, "VecU64AndVIX", handler_operands<ZdnBitmask>,
     "z16.d!, 0x5555555555555555"},
    {"dupm z17.d, #0xff", 0x05c200f1, "VecS64DupMaskI", handler_operands<ZdBitmask>, "z17.d, 0xff"},
    {"lsl z3.b, p1/m, z3.b, #7", 0x040385e3, "VecU8ShlVIM", handler_operands<ZdnPgLeftShift<B>>,
     "z3.b!, p1/m, #7"},
    {"lsl z3.d, p1/m, z3.d, #63", 0x04c387e3, "VecU64ShlVIM", handler_operands<ZdnPgLeftShift<D>>,
     "z3.d!, p1/m, #63"},
    {"asr z3.h, p1/m, z3.h, #16", 0x04008603, "VecS16ShrVIM", handler_operands<ZdnPgRightShift<H>>,
     "z3.h!, p1/m, #16"},
    {"asr z3.d, p1/m, z3.d, #1", 0x04c087e3, "VecS64ShrVIM", handler_operands<ZdnPgRightShift<D>>,
     "z3.d!, p1/m, #1"},
    {"lsl z5.s, z6.s, #31", 0x047f9cc5, "VecU32ShlVIX", handler_operands<ZdZnLeftShift<S>>,
     "z5.s, z6.s, #31"},
    {"lsl z5.d, z6.d, #40", 0x04e89cc5, "VecU64ShlVIX", handler_operands<ZdZnLeftShift<D>>,
     "z5.d, z6.d, #40"},
    {"asr z5.b, z6.b, #3", 0x042d90c5, "VecS8ShrVIX", handler_operands<ZdZnRightShift<B>>, "z5.b, z6.b, #3"},
    {"fsub z7.s, p6/m, z7.s, #1.0", 0x65999827, "VecF32SubVIM", handler_operands<ZdnPgFpImmediate<S>>,
     "z7.s!, p6/m, i1=1"},
    {"ext z8.b, z8.b, z9.b, #173", 0x05351528, "VecU8SlideVI", handler_operands<ZdnZmBytePosition>,
     "z8.b!, z9.b, #173"},
    {"incw z10.s, vl5, mul #7", 0x04b6c0aa, "VecU32IncrVLVI", handler_operands<ZdnPatternMultiplier<S>>,
     "z10.s!, #5, #7"},
    {"dup z5.s, #-7, lsl #8", 0x25b8ff25, "VecS32DupI", handler_operands<ZdShiftedSigned<S>>, "z5.s, #-1792"},
    {"cpy z8.h, p14/m, #-2, lsl #8", 0x055e7fc8, "VecS16DupIM",
     handler_operands<ZdPgShiftedSigned<H, merging>>, "z8.h, p14/m, #-512"},
    {"fdup z9.d, #-1.5", 0x25f9df09, "VecD64DupI", handler_operands<ZdFpImmediate<D>>,
     "z9.d, 0xbe00/0xbfc00000/0xbff8000000000000"},
    {"fdup z9.h, #0.125", 0x2579c809, "VecF16DupI", handler_operands<ZdFpImmediate<H>>,
     "z9.h, 0x3000/0x3e000000/0x3fc0000000000000"},
    {"dup z6.b, z7.b[63]", 0x05ff20e6, "VecU8ExtDupVI", handler_operands<ZdZnIndex<B>>, "z6.b, z7.b, #63"},
    {"dup z6.h, z7.h[31]", 0x05fe20e6, "VecU16ExtDupVI", handler_operands<ZdZnIndex<H>>, "z6.h, z7.h, #31"},
    {"dup z6.d, z7.d[7]", 0x05f820e6, "VecU64ExtDupVI", handler_operands<ZdZnIndex<D>>, "z6.d, z7.d, #7"},
    {"dup z6.q, z7.q[3]", 0x05f020e6, "VecU128ExtDupVI", handler_operands<ZdZnIndex<handler_layouts::Q>>,
     "z6.q, z7.q, #3"},
    {"dup z5.d, sp", 0x05e03be5, "VecU64DupS", handler_operands<ZdRnSp<D>>, "z5.d, sp.64"},
    {"cpy z9.s, p3/m, w30", 0x05a8afc9, "VecU32DupSM", handler_operands<ZdPgRnSp<S>>, "z9.s, p3/m, x30.32"},
    {"index z13.s, #-16, #15", 0x04af420d, "VecS32IndexII", handler_operands<ZdSigned5Signed5<S>>,
     "z13.s, #-16, #15"},
    {"index z13.d, #7, x30", 0x04fe48ed, "VecS64IndexIS", handler_operands<ZdSigned5Rm<D>>,
     "z13.d, #7, x30.64"},
    {"index z13.h, w1, #-1", 0x047f442d, "VecS16IndexSI", handler_operands<ZdRnSigned5<H>>,
     "z13.h, x1.32, #-1"},
    {"index z13.b, w4, w2", 0x04224c8d, "VecS8IndexSS", handler_operands<ZdRnRm<B>>, "z13.b, x4.32, x2.32"},
    {"umaxv h3, p7, z4.h", 0x04493c83, "VecU16MaxReduceV", handler_operands<VdPgZn<H>>, "#3, p7, z4.h"},
    {"lastb w5, p6, z7.s", 0x05a1b8e5, "VecU32LastBV", handler_operands<RdPgZn<S>>, "x5.32, p6, z7.s"},
    {"clastb x8, p5, x8, z9.d", 0x05f1b528, "VecU64CondXBSV", handler_operands<RdnPgZm<D>>,
     "x8.64!, p5, z9.d"},
    {"cntp x14, p9, p8.d", 0x25e0a50e, "VecU64SCountP", handler_operands<RdPgPn<D>>, "x14.64, p9, p8.d"},
    {"incp x13, p10.s", 0x25ac894d, "VecU32IncrSCountPS", handler_operands<RdnPm<S>>, "x13.64!, p10.s"},
    {"uqdecb w18, vl256, mul #9", 0x0428fdb2, "VecU8QDecrVL4SI", handler_operands<RdnPatternMultiplier<S>>,
     "x18.32!, #13, #9"},
    {"addvl sp, x15, #-32", 0x042f541f, "VecS64AddVLX", handler_operands<RdSpRnSpSigned6>,
     "sp.64, x15.64, #-32"},
    {"rdvl x17, #-1", 0x04bf57f1, "VecS64VLX", handler_operands<RdSigned6>, "x17.64, #-1"},
    {"cmphi p1.b, p2/z, z3.b, z4.b", 0x24040871, "VecU8CmpFlgGTVVZ", handler_operands<PdPgZnZm<B>>,
     "p1.b, p2/z, z3.b, z4.b"},
    {"cmplt p3.d, p4/z, z5.d, #-16", 0x25d030a3, "VecS64CmpFlgLTVIZ", handler_operands<PdPgZnSigned5<D>>,
     "p3.d, p4/z, z5.d, #-16"},
    {"cmplo p5.h, p6/z, z7.h, #100", 0x247938e5, "VecU16CmpFlgLTVIZ", handler_operands<PdPgZnUnsigned7<H>>,
     "p5.h, p6/z, z7.h, #100"},
    {"fcmge p8.s, p1/z, z9.s, #0.0", 0x65902528, "VecF32CmpGEV0Z",
     handler_operands<handler_layouts::PdPgZn<S>>, "p8.s, p1/z, z9.s"},
    {"bic p1.b, p11/z, p12.b, p13.b", 0x250d6d91, "VecPBicPPZ", handler_operands<PdPgPnPm<zeroing>>,
     "p1.b, p11/z, p12.b, p13.b"},
    {"sel p1.b, p11, p12.b, p13.b", 0x250d6f91, "VecPSelPP", handler_operands<PdPgPnPm<plain>>,
     "p1.b, p11, p12.b, p13.b"},
    {"brka p3.b, p14/m, p15.b", 0x251079f3, "VecPBreakAPM", handler_operands<PdPgPn<merging>>,
     "p3.b, p14/m, p15.b"},
    {"brkn p4.b, p13/z, p12.b, p4.b", 0x25187584, "VecPBreakNextPZ", handler_operands<PdmPgPn>,
     "p4.b!, p13/z, p12.b"},
    {"zip2 p5.s, p6.s, p7.s", 0x05a744c5, "VecP32Zip2PP", handler_operands<PdPnPm<S>>, "p5.s, p6.s, p7.s"},
    {"rev p8.d, p9.d", 0x05f44128, "VecP64ReverseP", handler_operands<PdPn<D>>, "p8.d, p9.d"},
    {"punpkhi p10.h, p11.b", 0x0531416a, "VecPUnpackHiP", handler_operands<PdPn<H, B>>, "p10.h, p11.b"},
    {"pnext p12.s, p13, p12.s", 0x2599c5ac, "VecP32GenNextP", handler_operands<PdnPg<S>>, "p12.s!, p13"},
    {"rdffr p1.b, p2/z", 0x2518f041, "VecPActualP", handler_operands<PdPg>, "p1.b, p2/z"},
    {"ptrue p4.h, vl32", 0x2558e144, "VecP16TrueI", handler_operands<PdPattern<H>>, "p4.h, #10"},
    {"whilels p1.b, w3, w4", 0x25240c71, "VecU8While4LESS", handler_operands<PdRnRm<B, S>>,
     "p1.b, x3.32, x4.32"},
    {"whilelt p15.d, x5, xzr", 0x25ff14af, "VecS64While8LTSS", handler_operands<PdRnRm<D, D>>,
     "p15.d, x5.64, xzr.64"},
    {"pfalse p9.b", 0x2518e409, "VecPFalse", handler_operands<Pd>, "p9.b"},
    {"wrffr p7.b", 0x252890e0, "VecPWriteFFSRP", handler_operands<handler_layouts::Pn>, "p7.b"},
    {"setffr", 0x252c9000, "VecPClearFFSR", handler_operands<NoOperands>, ""},
    {"ptest p12, p11.b", 0x2550f160, "VecPTestPZ", handler_operands<PgPn>, "p12, p11.b"},
    {"ld1w {z20.s}, p6/z, [sp, #-8, mul vl]", 0xa548bbf4, "VecU32CLoad4SIZ",
     handler_operands<LoadRnSigned4<S>>, "z20.s, p6/z, sp.64, #-8"},
    {"ld1rsh {z21.d}, p5/z, [x3, #126]", 0x857f9475, "VecS64LoadDup2SIZ",
     handler_operands<LoadRnUnsigned6<D>>, "z21.d, p5/z, x3.64, #63"},
    {"ld1sb {z20.d}, p6/z, [x7, x8]", 0xa58858f4, "VecS64CLoad1LSSZ", handler_operands<LoadRnRm<D>>,
     "z20.d, p6/z, x7.64, x8.64"},
    {"ld1h {z22.d}, p4/z, [z23.d, #62]", 0xc4bfd2f6, "VecU64Load2VIZ", handler_operands<LoadZnUnsigned5<D>>,
     "z22.d, p4/z, z23.d, #31"},
    {"ld1d {z24.d}, p3/z, [x25, z26.d]", 0xc5dacf38, "VecU64Load8VSZ", handler_operands<LoadZmRn<D>>,
     "z24.d, p3/z, z26.d, x25.64"},
    {"ld1d {z24.d}, p3/z, [sp, z26.d, lsl #3]", 0xc5facff8, "VecU64Load8SVZ", handler_operands<LoadRnZm<D>>,
     "z24.d, p3/z, sp.64, z26.d"},
    {"st1b {z1.b}, p7, [x2, #7, mul vl]", 0xe407fc41, "VecU8CStore1SIZ", handler_operands<StoreRnSigned4<B>>,
     "z1.b, p7, x2.64, #7"},
    {"st1h {z21.s}, p0, [x9, x10, lsl #1]", 0xe4ca4135, "VecU32CStore2LSSZ", handler_operands<StoreRnRm<S>>,
     "z21.s, p0, x9.64, x10.64"},
    {"st1w {z3.d}, p2, [z4.d, #124]", 0xe55fa883, "VecU64Store4VIZ", handler_operands<StoreZnUnsigned5<D>>,
     "z3.d, p2, z4.d, #31"},
    {"st1b {z5.d}, p1, [x6, z7.d]", 0xe407a4c5, "VecU64Store1VSZ", handler_operands<StoreZmRn<D>>,
     "z5.d, p1, z7.d, x6.64"},
    {"st1h {z8.d}, p7, [sp, z9.d, sxtw #1]", 0xe4a9dfe8, "VecU64Store2XSVZ", handler_operands<StoreRnZm<D>>,
     "z8.d, p7, sp.64, z9.d"},
    {"ldr z13, [x14, #-256, mul vl]", 0x85a041cd, "VecU64FillSI", handler_operands<ZtRnSigned9>,
     "z13, x14.64, #-256"},
    {"str p15, [sp, #255, mul vl]", 0xe59f1fef, "VecPSpillSI", handler_operands<PtRnSigned9>,
     "p15, sp.64, #255"},
};

TEST(HandlerLayouts, CutTheOperandsThatTheAssemblerEncoded) {
    for (const layout_case& c : handler_cases) {
        SCOPED_TRACE(c.assembly);
        ASSERT_NE(is_sve(c.word), nullptr);
        EXPECT_STREQ(opcode_name(is_sve(c.word)), c.stub);
        EXPECT_EQ(c.operands(c.word), c.expected);
    }
}

// Library values are told by the register whose contents they hold.
struct library_text {
    const cpu_state& state;

    std::string operator()(const VecV& value) const {
        for (int i = 0; i < 32; ++i)
            if (std::memcmp(value.bytes, state.z[i], vector_bytes) == 0)
                return "z" + std::to_string(i);
        return "z?";
    }
    std::string operator()(const PredV& value) const {
        for (int i = 0; i < 16; ++i) {
            bool same = true;
            for (int k = 0; k < vector_bytes; ++k)
                same &= ((value.words[k / 64] >> (k % 64)) & 1) == (state.p[i][k] & 1u);
            if (same)
                return "p" + std::to_string(i);
        }
        return "p?";
    }
    std::string operator()(std::unsigned_integral auto scalar) const {
        const std::uint64_t value = scalar;
        for (int i = 0; i < 32; ++i) {
            if (value == state.x[i])
                return i == 31 ? "sp" : "x" + std::to_string(i);
            if (value == (state.x[i] & 0xFFFFFFFF))
                return "w" + std::to_string(i);
            std::uint64_t low;
            std::memcpy(&low, state.z[i], sizeof low);
            for (int bits : {8, 16, 32})
                if (value > 255 && value == (low & ((std::uint64_t{1} << bits) - 1)))
                    return "v" + std::to_string(i) + "." + std::to_string(bits);
        }
        return "#" + std::to_string(value);
    }
    std::string operator()(std::signed_integral auto value) const { return "#" + std::to_string(value); }
};

// The operands, then after an arrow the destination that the result of the given type reached.
template <class Layout, class Result> std::string library_operands(unsigned int word) {
    cpu_state state = random_state(2);
    const cpu_state before = state;
    std::string text;
    Layout::call(
        [&](const auto&... operands) -> Result {
            const auto append = [&](const auto& operand) {
                if constexpr (!std::is_pointer_v<std::remove_cvref_t<decltype(operand)>>)
                    text += (text.empty() ? "" : ", ") + library_text{before}(operand);
            };
            (append(operands), ...);
            if constexpr (!std::is_void_v<Result>)
                return Result{};
        },
        &state, word);
    text += " ->";
    for (int i = 0; i < 32; ++i)
        if (std::memcmp(state.z[i], before.z[i], vector_bytes) != 0)
            text += " z" + std::to_string(i);
    for (int i = 0; i < 16; ++i)
        if (std::memcmp(state.p[i], before.p[i], vector_bytes) != 0)
            text += " p" + std::to_string(i);
    for (int i = 0; i < 32; ++i)
        if (state.x[i] != before.x[i])
            text += " x" + std::to_string(i);
    return text;
}

using namespace library_layouts;

const layout_case library_cases[] = {
    {"subr z1.h, p2/m, z1.h, z3.h", 0x04430861, "VecU16SubRVVM", library_operands<LibraryZdnPgZm, VecV>,
     "z1, p2, z3 -> z1"},
    {"sqadd z4.s, z5.s, z6.s", 0x04a610a4, "VecS32QAddVVX", library_operands<LibraryZdZnZm, VecV>,
     "z5, z6 -> z4"},
    {"frsqrte z7.d, z8.d", 0x65cf3107, "VecD64RSqrtEV", library_operands<LibraryZdZn, VecV>, "z8 -> z7"},
    {"compact z9.s, p1, z10.s", 0x05a18549, "VecU32CompressVV", library_operands<LibraryZdPgZn, VecV>,
     "p1, z10 -> z9"},
    {"splice z11.b, p2, z11.b, z12.b", 0x052c898b, "VecU8SpliceVV", library_operands<LibraryPgZdnZm, VecV>,
     "p2, z11, z12 -> z11"},
    {"fmla z13.s, p3/m, z14.s, z15.s", 0x65af0dcd, "VecF32FMAVVVM", library_operands<LibraryZdaPgZnZm, VecV>,
     "z13, p3, z14, z15 -> z13"},
    {"fmsb z16.d, p4/m, z17.d, z18.d", 0x65f2b230, "VecD64FMSUBVVVM",
     library_operands<LibraryZdaPgZnZm, VecV>, "z16, p4, z17, z18 -> z16"},
    {"sdot z19.s, z20.b, z21.b", 0x44950293, "VecS32DotVVVX", library_operands<LibraryZdaZnZm, VecV>,
     "z19, z20, z21 -> z19"},
    {"sdot z22.s, z23.b, z7.b[3]", 0x44bf02f6, "VecS32DotVVVIX",
     library_operands<LibraryZdaZnZmIndex<S>, VecV>, "z22, z23, z7, #3 -> z22"},
    {"udot z24.d, z25.h, z15.h[1]", 0x44ff0738, "VecU64DotVVVIX",
     library_operands<LibraryZdaZnZmIndex<D>, VecV>, "z24, z25, z15, #1 -> z24"},
    {"fmla z26.h, z27.h, z6.h[5]", 0x646e037a, "VecF16FMAVVVIX",
     library_operands<LibraryZdaZnZmIndex<H>, VecV>, "z26, z27, z6, #5 -> z26"},
    {"fmul z28.s, z29.s, z5.s[2]", 0x64b523bc, "VecF32MulVVIX", library_operands<LibraryZdZnZmIndex<S>, VecV>,
     "z29, z5, #2 -> z28"},
    {"fmul z30.d, z31.d, z14.d[1]", 0x64fe23fe, "VecD64MulVVIX",
     library_operands<LibraryZdZnZmIndex<D>, VecV>, "z31, z14, #1 -> z30"},
    {"fcadd z1.s, p5/m, z1.s, z2.s, #270", 0x64819441, "VecF32FCADDVVM",
     library_operands<LibraryZdnPgZmRotation, VecV>, "z1, p5, z2, #1 -> z1"},
    {"fcmla z3.d, p6/m, z4.d, z5.d, #180", 0x64c55883, "VecD64FCMLAVVVM",
     library_operands<LibraryZdaPgZnZmRotation, VecV>, "z3, p6, z4, z5, #2 -> z3"},
    {"fcmla z6.h, z7.h, z3.h[2], #270", 0x64b31ce6, "VecF16FCMLAVVVIX",
     library_operands<LibraryZdaZnZmRotationIndex<H>, VecV>, "z6, z7, z3, #3, #2 -> z6"},
    {"fcmla z8.s, z9.s, z12.s[1], #90", 0x64fc1528, "VecF32FCMLAVVVIX",
     library_operands<LibraryZdaZnZmRotationIndex<S>, VecV>, "z8, z9, z12, #1, #1 -> z8"},
    {"uqsub z10.h, z10.h, #255, lsl #8", 0x2567ffea, "VecU16QSubVIX",
     library_operands<LibraryZdnShiftedUnsigned<H>, VecV>, "z10, #65280 -> z10"},
    {"uqsub z10.b, z10.b, #77", 0x2527c9aa, "VecU8QSubVIX",
     library_operands<LibraryZdnShiftedUnsigned<B>, VecV>, "z10, #77 -> z10"},
    {"smax z11.d, z11.d, #-128", 0x25e8d00b, "VecS64MaxVIX", library_operands<LibraryZdnSigned8, VecV>,
     "z11, #-128 -> z11"},
    {"umin z12.s, z12.s, #255", 0x25abdfec, "VecU32MinVIX", library_operands<LibraryZdnUnsigned8, VecV>,
     "z12, #255 -> z12"},
    {"ftmad z13.s, z13.s, z14.s, #6", 0x659681cd, "VecF32TRIMADDVVI",
     library_operands<LibraryZdnZmUnsigned3, VecV>, "z13, z14, #6 -> z13"},
    {"lsr z15.b, p7/m, z15.b, #8", 0x04019d0f, "VecU8ShrVIM",
     library_operands<LibraryZdnPgRightShift<B>, VecV>, "z15, p7, #8 -> z15"},
    {"asrd z16.d, p1/m, z16.d, #64", 0x04848410, "VecS64ShrDVIM",
     library_operands<LibraryZdnPgRightShift<D>, VecV>, "z16, p1, #64 -> z16"},
    {"lsr z17.h, z18.h, #5", 0x043b9651, "VecU16ShrVIX", library_operands<LibraryZdZnRightShift<H>, VecV>,
     "z18, #5 -> z17"},
    {"lsr z17.d, z18.d, #33", 0x04bf9651, "VecU64ShrVIX", library_operands<LibraryZdZnRightShift<D>, VecV>,
     "z18, #33 -> z17"},
    {"fmaxnm z19.d, p2/m, z19.d, #1.0", 0x65dc8833, "VecD64MaxNumVIM",
     library_operands<LibraryZdnPgImmediateFlag, VecV>, "z19, p2, #1 -> z19"},
    {"fmov z20.h, p12/m, #-31.0", 0x055cd7f4, "VecF16DupIM",
     library_operands<LibraryZdPgFpImmediate<H>, VecV>, "z20, p12, #53184 -> z20"},
    {"sqincw z21.s, vl3, mul #4", 0x04a3c075, "VecS32QIncrVLVI", library_operands<LibraryZdnPattern, VecV>,
     "z21, #3, #3 -> z21"},
    {"decp z22.h, p3", 0x256d8076, "VecU16DecrCountPV", library_operands<LibraryZdnPm, VecV>,
     "z22, p3 -> z22"},
    {"insr z23.b, w30", 0x05243bd7, "VecU8InsertS", library_operands<LibraryZdnRm, VecV>, "z23, x30 -> z23"},
    {"insr z23.d, xzr", 0x05e43bf7, "VecU64InsertS", library_operands<LibraryZdnRm, VecV>, "z23, #0 -> z23"},
    {"insr z24.h, h25", 0x05743b38, "VecH16InsertS", library_operands<LibraryZdnVm<H>, VecV>,
     "z24, v25.16 -> z24"},
    {"saddv d1, p3, z4.s", 0x04802c81, "VecS32AddReduceV", library_operands<LibraryVdPgZn, std::uint64_t>,
     "p3, z4 -> z1"},
    {"clasta s5, p6, s5, z7.s", 0x05aa98e5, "VecF32CondXASV",
     library_operands<LibraryVdnPgZm<S>, std::uint32_t>, "p6, v5.32, z7 -> z5"},
    {"lasta x8, p1, z9.d", 0x05e0a528, "VecU64LastAV", library_operands<LibraryRdPgZn, std::uint64_t>,
     "p1, z9 -> x8"},
    {"clasta w10, p2, w10, z11.h", 0x0570a96a, "VecU16CondXASV",
     library_operands<LibraryRdnPgZm, std::uint16_t>, "p2, x10, z11 -> x10"},
    {"cntb x12, vl16, mul #16", 0x042fe12c, "VecU8CountVLSI",
     library_operands<LibraryRdPattern, std::uint64_t>, "#9, #15 -> x12"},
    {"uqincd x13, all, mul #8", 0x04f7f7ed, "VecU64QIncrVL8SI",
     library_operands<LibraryRdnPattern, std::uint64_t>, "x13, #31, #7 -> x13"},
    {"sqdecp x14, p15.b", 0x252a8dee, "VecS8QDecrSCount8PS", library_operands<LibraryRdnPm, std::uint64_t>,
     "x14, p15 -> x14"},
    {"cmpgt p1.h, p2/z, z3.h, z4.d", 0x24444871, "VecS16CmpFlgGTVWZ",
     library_operands<LibraryPdPgZnZm, PredV>, "p2, z3, z4 -> p1"},
    {"cmpge p5.s, p6/z, z7.s, #-9", 0x259718e5, "VecS32CmpFlgGEVIZ",
     library_operands<LibraryPdPgZnSigned5, PredV>, "p6, z7, #-9 -> p5"},
    {"cmpls p8.d, p1/z, z9.d, #127", 0x24ffe538, "VecU64CmpFlgLEVIZ",
     library_operands<LibraryPdPgZnUnsigned7, PredV>, "p1, z9, #127 -> p8"},
    {"fcmne p10.d, p2/z, z11.d, #0.0", 0x65d3296a, "VecD64CmpNEV0Z", library_operands<LibraryPdPgZn, PredV>,
     "p2, z11 -> p10"},
    {"nands p12.b, p13/z, p14.b, p15.b", 0x25cf77dc, "VecPNandFlgPPZ",
     library_operands<LibraryPdPgPnPm, PredV>, "p13, p14, p15 -> p12"},
    {"brkas p1.b, p12/z, p13.b", 0x255071a1, "VecPBreakAFlgPZ", library_operands<LibraryPdPgPn, PredV>,
     "p12, p13 -> p1"},
    {"trn2 p2.s, p3.s, p4.s", 0x05a45462, "VecP32Trn2PP", library_operands<LibraryPdPnPm, PredV>,
     "p3, p4 -> p2"},
    {"pfirst p5.b, p14, p5.b", 0x2558c1c5, "VecPSetFirstActiveP", library_operands<LibraryPdnPg, PredV>,
     "p5, p14 -> p5"},
    {"rdffrs p6.b, p13/z", 0x2558f1a6, "VecPActualFlgP", library_operands<LibraryPdPg, PredV>, "p13 -> p6"},
    {"ptrues p7.s, mul3", 0x2599e3c7, "VecP32TrueFlgI", library_operands<LibraryPdPattern, PredV>,
     "#30 -> p7"},
    {"whilele p8.s, w9, w10", 0x25aa0538, "VecS32While4LESS", library_operands<LibraryPdRnRm<S>, PredV>,
     "w9, w10 -> p8"},
    {"whilele p8.s, x9, xzr", 0x25bf1538, "VecS32While8LESS", library_operands<LibraryPdRnRm<D>, PredV>,
     "x9, #0 -> p8"},
    {"ctermne w11, w12", 0x25ac2170, "VecU32CTermNE", library_operands<LibraryRnRm<S>, void>, "w11, w12 ->"},
    {"ctermeq x13, x14", 0x25ee21a0, "VecU64CTermEQ", library_operands<LibraryRnRm<D>, void>, "x13, x14 ->"},
    {"ld1rqb {z1.b}, p2/z, [sp, #-128]", 0xa4082be1, "VecU8LoadDup1QSIZ",
     library_operands<LibraryLoadRnSigned4, VecV>, "p2, sp, #-8 -> z1"},
    {"ldff1h {z3.s}, p4/z, [x5, x6, lsl #1]", 0xa4c670a3, "VecU32CLoadFF2LSSZ",
     library_operands<LibraryLoadRnRm, VecV>, "p4, x5, x6 -> z3"},
    {"ldff1w {z7.d}, p1/z, [x8, z9.d, sxtw]", 0xc5496507, "VecU64LoadFF4XVSZ",
     library_operands<LibraryLoadRnZm, VecV>, "p1, x8, z9 -> z7"},
    {"ldff1b {z10.s}, p2/z, [z11.s, #31]", 0x843fe96a, "VecU32LoadFF1VIZ",
     library_operands<LibraryLoadZnUnsigned5, VecV>, "p2, z11, #31 -> z10"},
    {"st1w {z12.d}, p3, [sp, z13.d, uxtw]", 0xe50d8fec, "VecU64Store4YVSZ",
     library_operands<LibraryStoreRnZm, void>, "z12, p3, sp, z13 ->"},
    {"st1h {z14.s}, p4, [z15.s, #62]", 0xe4ffb1ee, "VecU32Store2VIZ",
     library_operands<LibraryStoreZnUnsigned5, void>, "z14, p4, z15, #31 ->"},
};

TEST(LibraryLayouts, CutTheOperandsThatTheAssemblerEncoded) {
    for (const layout_case& c : library_cases) {
        SCOPED_TRACE(c.assembly);
        ASSERT_NE(is_sve(c.word), nullptr);
        EXPECT_STREQ(opcode_name(is_sve(c.word)), c.stub);
        EXPECT_EQ(c.operands(c.word), c.expected);
    }
}

TEST(LibraryLayouts, LeavesNothingOfAShiftedByteImmediate) {
    // Bit 13 of a byte form: the word of "uqsub z10.b, z10.b, #77" with the shift set.
    EXPECT_EQ((library_operands<LibraryZdnShiftedUnsigned<B>, VecV>(0x2527c9aa | 1u << 13)),
              "z10, #0 -> z10");
    EXPECT_EQ(handler_operands<ZdnShiftedUnsigned<B>>(0x2527c9aa | 1u << 13), "z10.b!, #19712");
}

} // namespace
