#include "sve/library/element_moves.h"

#include "sve/library/chunk_loops.h"
#include "sve/library/predicate_flags.h"

namespace {

enum class chosen { last_active, after_last_active };

template <class Element> int last_active(const PredV& pg, CpuContext* context) {
    return FindLastActive(pg, width_of<Element>, context);
}

// The chosen element, given the index of the last active one. -1 stands for none, and element 0 follows it.
template <class Element, chosen which> Element choose(const VecV& vector, int last, CpuContext* context) {
    if (which == chosen::last_active)
        return get_element<Element>(vector, last);
    const int next = last + 1;
    return get_element<Element>(vector, next < element_count<Element>(context) ? next : 0);
}

template <class Element> Element after_last(const PredV& pg, const VecV& zn, CpuContext* context) {
    return choose<Element, chosen::after_last_active>(zn, last_active<Element>(pg, context), context);
}

template <chosen which, class Element>
Element conditional_last(const PredV& pg, Element default_value, const VecV& zm, CpuContext* context) {
    const int last = last_active<Element>(pg, context);
    return last < 0 ? default_value : choose<Element, which>(zm, last, context);
}

template <class Element, chosen which>
VecV conditional_vector(const PredV& pg, const VecV& zdn, const VecV& zm, CpuContext* context) {
    const int last = last_active<Element>(pg, context);
    if (last < 0)
        return zdn;
    const auto element = choose<Element, which>(zm, last, context);
    return for_each_chunk<Element>(context, [=](int) { return broadcast(element); });
}

template <class Element> VecV insert(const VecV& zdn, Element scalar, CpuContext* context) {
    const int count = element_count<Element>(context);
    VecV result = {};
    if (count > 0) {
        std::memcpy(result.bytes + sizeof(Element), zdn.bytes,
                    static_cast<std::size_t>(count - 1) * sizeof(Element));
        set_element(result, 0, scalar);
    }
    return result;
}

} // namespace

// A primitive a line. Macros, since only they can make the names.
#define AFTER_LAST(name, element)                                                                            \
    element name(const PredV& pg, const VecV& zn, CpuContext* context) {                                     \
        return after_last<element>(pg, zn, context);                                                         \
    }

AFTER_LAST(VecU8LastAV, std::uint8_t)
AFTER_LAST(VecU16LastAV, std::uint16_t)
AFTER_LAST(VecU32LastAV, std::uint32_t)
AFTER_LAST(VecU64LastAV, std::uint64_t)
AFTER_LAST(VecB8LastAV, std::uint8_t)
AFTER_LAST(VecH16LastAV, std::uint16_t)
AFTER_LAST(VecF32LastAV, std::uint32_t)
AFTER_LAST(VecD64LastAV, std::uint64_t)
#undef AFTER_LAST

#define CONDITIONAL_LAST(name, element, which)                                                               \
    element name(const PredV& pg, element default_value, const VecV& zm, CpuContext* context) {              \
        return conditional_last<chosen::which>(pg, default_value, zm, context);                              \
    }

CONDITIONAL_LAST(VecU8CondXASV, std::uint8_t, after_last_active)
CONDITIONAL_LAST(VecU16CondXASV, std::uint16_t, after_last_active)
CONDITIONAL_LAST(VecU32CondXASV, std::uint32_t, after_last_active)
CONDITIONAL_LAST(VecU64CondXASV, std::uint64_t, after_last_active)
CONDITIONAL_LAST(VecB8CondXASV, std::uint8_t, after_last_active)
CONDITIONAL_LAST(VecH16CondXASV, std::uint16_t, after_last_active)
CONDITIONAL_LAST(VecF32CondXASV, std::uint32_t, after_last_active)
CONDITIONAL_LAST(VecD64CondXASV, std::uint64_t, after_last_active)
CONDITIONAL_LAST(VecB8CondXBSV, std::uint8_t, last_active)
CONDITIONAL_LAST(VecH16CondXBSV, std::uint16_t, last_active)
CONDITIONAL_LAST(VecF32CondXBSV, std::uint32_t, last_active)
CONDITIONAL_LAST(VecD64CondXBSV, std::uint64_t, last_active)
#undef CONDITIONAL_LAST

#define CONDITIONAL_VECTOR(name, element, which)                                                             \
    VecV name(const PredV& pg, const VecV& zdn, const VecV& zm, CpuContext* context) {                       \
        return conditional_vector<element, chosen::which>(pg, zdn, zm, context);                             \
    }

CONDITIONAL_VECTOR(VecU8VCondXAVV, std::uint8_t, after_last_active)
CONDITIONAL_VECTOR(VecU16VCondXAVV, std::uint16_t, after_last_active)
CONDITIONAL_VECTOR(VecU32VCondXAVV, std::uint32_t, after_last_active)
CONDITIONAL_VECTOR(VecU64VCondXAVV, std::uint64_t, after_last_active)
CONDITIONAL_VECTOR(VecU8VCondXBVV, std::uint8_t, last_active)
CONDITIONAL_VECTOR(VecU16VCondXBVV, std::uint16_t, last_active)
CONDITIONAL_VECTOR(VecU32VCondXBVV, std::uint32_t, last_active)
CONDITIONAL_VECTOR(VecU64VCondXBVV, std::uint64_t, last_active)
#undef CONDITIONAL_VECTOR

#define INSERT(name, element)                                                                                \
    VecV name(const VecV& zdn, element scalar, CpuContext* context) { return insert(zdn, scalar, context); }

INSERT(VecU8InsertS, std::uint8_t)
INSERT(VecU16InsertS, std::uint16_t)
INSERT(VecU32InsertS, std::uint32_t)
INSERT(VecU64InsertS, std::uint64_t)
INSERT(VecB8InsertS, std::uint8_t)
INSERT(VecH16InsertS, std::uint16_t)
INSERT(VecF32InsertS, std::uint32_t)
INSERT(VecD64InsertS, std::uint64_t)
#undef INSERT
