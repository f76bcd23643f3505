// Operand layouts of the opcodes that a handler carries out. A layout lists the operands in the order of the
// handler's arguments, which is that of the assembler; its name lists them in the same order. The template
// arguments are element sizes, then the qualifier of the governing predicate.
#pragma once

#include "sve/decode/operands.h"

template <class... Operands> struct handler_layout {
    // Calls the handler with the state and the operands cut from the word.
    template <class Handler>
    static aarch64_decode_rc call(Handler handler, cpu_state* state, [[maybe_unused]] unsigned int word) {
        return handler(state, Operands::cut(state, word)...);
    }
};

namespace handler_layouts {

using namespace operands;

inline constexpr int B = byte_elements;
inline constexpr int H = halfword_elements;
inline constexpr int S = word_elements;
inline constexpr int D = doubleword_elements;
inline constexpr int Q = quadword_elements;

inline constexpr int merging = aarch64_p_reg::merging;
inline constexpr int zeroing = aarch64_p_reg::zeroing;
inline constexpr int plain = aarch64_p_reg::plain;

// The width of the general register that goes with an element: W registers serve all but doublewords.
constexpr int register_width(int size) { return size == D ? D : S; }

template <int qualifier> using Pg = P<12, 10, qualifier>;
template <int qualifier> using WidePg = P<13, 10, qualifier>;

using NoOperands = handler_layout<>;

// Vector arithmetic.
template <int size> using ZdnPgZm = handler_layout<DestructiveZ<size>, Pg<merging>, Z<9, 5, size>>;
template <int size, int source_size = size, int qualifier = merging>
using ZdPgZn = handler_layout<Z<4, 0, size>, Pg<qualifier>, Z<9, 5, source_size>>;
template <int size> using ZdZnZm = handler_layout<Z<4, 0, size>, Z<9, 5, size>, Z<20, 16, size>>;
template <int size, int source_size = size> using ZdZn = handler_layout<Z<4, 0, size>, Z<9, 5, source_size>>;
template <int size>
using ZdaPgZnZm = handler_layout<DestructiveZ<size>, Pg<merging>, Z<9, 5, size>, Z<20, 16, size>>;
template <int size>
using ZdnPgZmZa = handler_layout<DestructiveZ<size>, Pg<merging>, Z<20, 16, size>, Z<9, 5, size>>;
template <int size>
using ZdPg4ZnZm = handler_layout<Z<4, 0, size>, WidePg<plain>, Z<9, 5, size>, Z<20, 16, size>>;

// Vector and immediate.
template <int size> using ZdnShiftedUnsigned = handler_layout<DestructiveZ<size>, ShiftedUnsigned8>;
template <int size> using ZdnSigned8 = handler_layout<DestructiveZ<size>, Signed<12, 5>>;
using ZdnBitmask = handler_layout<DestructiveZ<D>, Bitmask>;
using ZdBitmask = handler_layout<Z<4, 0, D>, Bitmask>;
template <int size>
using ZdnPgLeftShift = handler_layout<DestructiveZ<size>, Pg<merging>, LeftShift<size, 5>>;
template <int size>
using ZdnPgRightShift = handler_layout<DestructiveZ<size>, Pg<merging>, RightShift<size, 5>>;
template <int size> using ZdZnLeftShift = handler_layout<Z<4, 0, size>, Z<9, 5, size>, LeftShift<size, 16>>;
template <int size> using ZdZnRightShift = handler_layout<Z<4, 0, size>, Z<9, 5, size>, RightShift<size, 16>>;
template <int size> using ZdnPgFpImmediate = handler_layout<DestructiveZ<size>, Pg<merging>, ImmediateFlag>;
using ZdnZmBytePosition = handler_layout<DestructiveZ<B>, Z<9, 5, B>, BytePosition>;
template <int size> using ZdnPatternMultiplier = handler_layout<DestructiveZ<size>, Pattern, Multiplier>;

// Broadcasts and index vectors.
template <int size> using ZdShiftedSigned = handler_layout<Z<4, 0, size>, ShiftedSigned8>;
template <int size, int qualifier>
using ZdPgShiftedSigned = handler_layout<Z<4, 0, size>, P<19, 16, qualifier>, ShiftedSigned8>;
template <int size> using ZdFpImmediate = handler_layout<Z<4, 0, size>, FpImmediate>;
template <int size> using ZdZnIndex = handler_layout<Z<4, 0, size>, Z<9, 5, size>, DupIndex<size>>;
template <int size> using ZdRnSp = handler_layout<Z<4, 0, size>, RSp<9, 5, register_width(size)>>;
template <int size>
using ZdPgRnSp = handler_layout<Z<4, 0, size>, Pg<merging>, RSp<9, 5, register_width(size)>>;
template <int size> using ZdSigned5Signed5 = handler_layout<Z<4, 0, size>, Signed<9, 5>, Signed<20, 16>>;
template <int size>
using ZdSigned5Rm = handler_layout<Z<4, 0, size>, Signed<9, 5>, R<20, 16, register_width(size)>>;
template <int size>
using ZdRnSigned5 = handler_layout<Z<4, 0, size>, R<9, 5, register_width(size)>, Signed<20, 16>>;
template <int size>
using ZdRnRm = handler_layout<Z<4, 0, size>, R<9, 5, register_width(size)>, R<20, 16, register_width(size)>>;

// Scalar results.
template <int size> using VdPgZn = handler_layout<V, Pg<plain>, Z<9, 5, size>>;
template <int size> using RdPgZn = handler_layout<R<4, 0, register_width(size)>, Pg<plain>, Z<9, 5, size>>;
template <int size>
using RdnPgZm = handler_layout<DestructiveR<register_width(size)>, Pg<plain>, Z<9, 5, size>>;
template <int size> using RdPgPn = handler_layout<R<4, 0, D>, WidePg<plain>, P<8, 5, size>>;
template <int size> using RdnPm = handler_layout<DestructiveR<D>, P<8, 5, size>>;
template <int width> using RdnPatternMultiplier = handler_layout<DestructiveR<width>, Pattern, Multiplier>;
using RdSpRnSpSigned6 = handler_layout<RSp<4, 0, D>, RSp<20, 16, D>, Signed<10, 5>>;
using RdSigned6 = handler_layout<R<4, 0, D>, Signed<10, 5>>;

// Predicate results.
template <int size>
using PdPgZnZm = handler_layout<P<3, 0, size>, Pg<zeroing>, Z<9, 5, size>, Z<20, 16, size>>;
template <int size>
using PdPgZnSigned5 = handler_layout<P<3, 0, size>, Pg<zeroing>, Z<9, 5, size>, Signed<20, 16>>;
template <int size>
using PdPgZnUnsigned7 = handler_layout<P<3, 0, size>, Pg<zeroing>, Z<9, 5, size>, Unsigned<20, 14>>;
template <int size> using PdPgZn = handler_layout<P<3, 0, size>, Pg<zeroing>, Z<9, 5, size>>;
template <int qualifier>
using PdPgPnPm = handler_layout<P<3, 0, B>, WidePg<qualifier>, P<8, 5, B>, P<19, 16, B>>;
template <int qualifier> using PdPgPn = handler_layout<P<3, 0, B>, WidePg<qualifier>, P<8, 5, B>>;
using PdmPgPn = handler_layout<DestructiveP<B>, WidePg<zeroing>, P<8, 5, B>>;
template <int size> using PdPnPm = handler_layout<P<3, 0, size>, P<8, 5, size>, P<19, 16, size>>;
template <int size, int source_size = size> using PdPn = handler_layout<P<3, 0, size>, P<8, 5, source_size>>;
template <int size> using PdnPg = handler_layout<DestructiveP<size>, P<8, 5, plain>>;
using PdPg = handler_layout<P<3, 0, B>, P<8, 5, zeroing>>;
template <int size> using PdPattern = handler_layout<P<3, 0, size>, Pattern>;
template <int size, int width> using PdRnRm = handler_layout<P<3, 0, size>, R<9, 5, width>, R<20, 16, width>>;
using Pd = handler_layout<P<3, 0, B>>;
using Pn = handler_layout<P<8, 5, B>>;
using PgPn = handler_layout<WidePg<plain>, P<8, 5, B>>;

// Memory. Loads zero inactive elements; the governing predicate of a store has no qualifier.
using Base = RSp<9, 5, D>;
using Index = R<20, 16, D>;

template <int size, int qualifier, class... Address>
using memory = handler_layout<Z<4, 0, size>, Pg<qualifier>, Address...>;

template <int size> using LoadRnSigned4 = memory<size, zeroing, Base, Signed<19, 16>>;
template <int size> using LoadRnUnsigned6 = memory<size, zeroing, Base, Unsigned<21, 16>>;
template <int size> using LoadRnRm = memory<size, zeroing, Base, Index>;
template <int size> using LoadZnUnsigned5 = memory<size, zeroing, Z<9, 5, size>, Unsigned<20, 16>>;
template <int size> using LoadZmRn = memory<size, zeroing, Z<20, 16, size>, Base>;
template <int size> using LoadRnZm = memory<size, zeroing, Base, Z<20, 16, size>>;

template <int size> using StoreRnSigned4 = memory<size, plain, Base, Signed<19, 16>>;
template <int size> using StoreRnRm = memory<size, plain, Base, Index>;
template <int size> using StoreZnUnsigned5 = memory<size, plain, Z<9, 5, size>, Unsigned<20, 16>>;
template <int size> using StoreZmRn = memory<size, plain, Z<20, 16, size>, Base>;
template <int size> using StoreRnZm = memory<size, plain, Base, Z<20, 16, size>>;

using ZtRnSigned9 = handler_layout<Z<4, 0, no_size>, Base, Signed9>;
using PtRnSigned9 = handler_layout<P<3, 0, plain>, Base, Signed9>;

} // namespace handler_layouts
