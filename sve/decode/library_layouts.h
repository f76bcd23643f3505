// Operand layouts of the opcodes that a library primitive carries out: the kind of result, then the operands
// in the order of the primitive's arguments. A merging form passes the old destination first and the
// governing predicate second. Names list the fields of the word as those of handler_layouts.h do, in the
// order of the arguments.
#pragma once

#include "sve/decode/bridge.h"
#include "sve/decode/integer_types.h"

namespace library_layouts {

using namespace operands;

using Zdn = VectorValue<4, 0>;
using Zn = VectorValue<9, 5>;
using Zm = VectorValue<20, 16>;
using Pg = PredicateValue<12, 10>;
using WidePg = PredicateValue<13, 10>;
using Pn = PredicateValue<8, 5>;
using Pm = PredicateValue<19, 16>;
using Pdn = PredicateValue<3, 0>;
using Rdn = RegisterValue<4, 0>;
using Rn = RegisterValue<9, 5>;
using Rm = RegisterValue<20, 16>;

template <class... Operands> using to_vector = library_layout<results::Vector, Operands...>;
template <class... Operands> using to_predicate = library_layout<results::Predicate, Operands...>;
template <class... Operands> using to_register = library_layout<results::Register, Operands...>;
template <class... Operands> using to_scalar = library_layout<results::Scalar, Operands...>;
template <class... Operands> using to_nothing = library_layout<results::None, Operands...>;

// The unsigned type of an element, by its size code.
template <int size> using element_bits = unsigned_integer<1 << size>;

// Vector arithmetic. Predicated unary forms share the layout of binary ones: the old destination comes first.
using LibraryZdnPgZm = to_vector<Zdn, Pg, Zn>;
using LibraryZdZnZm = to_vector<Zn, Zm>;
using LibraryZdZn = to_vector<Zn>;
using LibraryZdPgZn = to_vector<Pg, Zn>;
using LibraryPgZdnZm = to_vector<Pg, Zdn, Zn>;
using LibraryZdaPgZnZm = to_vector<Zdn, Pg, Zn, Zm>;
using LibraryZdaZnZm = to_vector<Zdn, Zn, Zm>;
template <int size>
using LibraryZdaZnZmIndex = to_vector<Zdn, Zn, IndexedVectorValue<size>, ElementIndex<size>>;
template <int size> using LibraryZdZnZmIndex = to_vector<Zn, IndexedVectorValue<size>, ElementIndex<size>>;
using LibraryZdnPgZmRotation = to_vector<Zdn, Pg, Zn, Unsigned<16, 16>>;
using LibraryZdaPgZnZmRotation = to_vector<Zdn, Pg, Zn, Zm, Unsigned<14, 13>>;
template <int size>
using LibraryZdaZnZmRotationIndex =
    to_vector<Zdn, Zn, IndexedPairVectorValue<size>, Unsigned<11, 10>, PairIndex<size>>;

// Vector and immediate or scalar.
template <int size> using LibraryZdnShiftedUnsigned = to_vector<Zdn, ShiftedUnsigned8Value<size>>;
using LibraryZdnSigned8 = to_vector<Zdn, Signed<12, 5>>;
using LibraryZdnUnsigned8 = to_vector<Zdn, Unsigned<12, 5>>;
using LibraryZdnZmUnsigned3 = to_vector<Zdn, Zn, Unsigned<18, 16>>;
template <int size> using LibraryZdnPgRightShift = to_vector<Zdn, Pg, RightShift<size, 5>>;
template <int size> using LibraryZdZnRightShift = to_vector<Zn, RightShift<size, 16>>;
using LibraryZdnPgImmediateFlag = to_vector<Zdn, Pg, ImmediateFlagValue>;
template <int size>
using LibraryZdPgFpImmediate = to_vector<Zdn, PredicateValue<19, 16>, FpImmediateValue<size>>;
using LibraryZdnPattern = to_vector<Zdn, PatternValue, MultiplierValue>;
using LibraryZdnPm = to_vector<Zdn, Pn>;
using LibraryZdnRm = to_vector<Zdn, Rn>;
template <int size> using LibraryZdnVm = to_vector<Zdn, ScalarValue<9, 5, element_bits<size>>>;

// Scalar results.
using LibraryVdPgZn = to_scalar<Pg, Zn>;
template <int size> using LibraryVdnPgZm = to_scalar<Pg, ScalarValue<4, 0, element_bits<size>>, Zn>;
using LibraryRdPgZn = to_register<Pg, Zn>;
using LibraryRdnPgZm = to_register<Pg, Rdn, Zn>;
using LibraryRdPattern = to_register<PatternValue, MultiplierValue>;
using LibraryRdnPattern = to_register<Rdn, PatternValue, MultiplierValue>;
using LibraryRdnPm = to_register<Rdn, Pn>;

// Predicate results, and flags alone.
using LibraryPdPgZnZm = to_predicate<Pg, Zn, Zm>;
using LibraryPdPgZnSigned5 = to_predicate<Pg, Zn, Signed<20, 16>>;
using LibraryPdPgZnUnsigned7 = to_predicate<Pg, Zn, Unsigned<20, 14>>;
using LibraryPdPgZn = to_predicate<Pg, Zn>;
using LibraryPdPgPnPm = to_predicate<WidePg, Pn, Pm>;
using LibraryPdPgPn = to_predicate<WidePg, Pn>;
using LibraryPdPnPm = to_predicate<Pn, Pm>;
using LibraryPdnPg = to_predicate<Pdn, Pn>;
using LibraryPdPg = to_predicate<Pn>;
using LibraryPdPattern = to_predicate<PatternValue>;
template <int width>
using register_value =
    std::conditional_t<width == doubleword_elements, RegisterValue<9, 5>, WordRegisterValue<9, 5>>;
template <int width>
using limit_value =
    std::conditional_t<width == doubleword_elements, RegisterValue<20, 16>, WordRegisterValue<20, 16>>;
template <int width> using LibraryPdRnRm = to_predicate<register_value<width>, limit_value<width>>;
template <int width> using LibraryRnRm = to_nothing<register_value<width>, limit_value<width>>;

// Memory: the predicate, then the address, scalar base before vector offsets; a store passes its data first.
using LibraryLoadRnSigned4 = to_vector<Pg, BaseValue, Signed<19, 16>>;
using LibraryLoadRnRm = to_vector<Pg, BaseValue, Rm>;
using LibraryLoadRnZm = to_vector<Pg, BaseValue, Zm>;
using LibraryLoadZnUnsigned5 = to_vector<Pg, Zn, Unsigned<20, 16>>;
using LibraryStoreRnZm = to_nothing<Zdn, Pg, BaseValue, Zm>;
using LibraryStoreZnUnsigned5 = to_nothing<Zdn, Pg, Zn, Unsigned<20, 16>>;

} // namespace library_layouts
