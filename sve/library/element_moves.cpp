#include "sve/library/element_moves.h"

#include "sve/library/chunk_loops.h"
#include "sve/library/predicate_flags.h"

namespace {

enum class chosen { last_active, after_last_active };

template <class Element> int last_active(const PredV& pg, CpuContext* context) {
    return FindLastActive(pg, 8 * static_cast<int>(sizeof(Element)), context);
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

std::uint8_t VecU8LastAV(const PredV& pg, const VecV& zn, CpuContext* context) {
    return after_last<std::uint8_t>(pg, zn, context);
}
std::uint16_t VecU16LastAV(const PredV& pg, const VecV& zn, CpuContext* context) {
    return after_last<std::uint16_t>(pg, zn, context);
}
std::uint32_t VecU32LastAV(const PredV& pg, const VecV& zn, CpuContext* context) {
    return after_last<std::uint32_t>(pg, zn, context);
}
std::uint64_t VecU64LastAV(const PredV& pg, const VecV& zn, CpuContext* context) {
    return after_last<std::uint64_t>(pg, zn, context);
}
std::uint8_t VecB8LastAV(const PredV& pg, const VecV& zn, CpuContext* context) {
    return after_last<std::uint8_t>(pg, zn, context);
}
std::uint16_t VecH16LastAV(const PredV& pg, const VecV& zn, CpuContext* context) {
    return after_last<std::uint16_t>(pg, zn, context);
}
std::uint32_t VecF32LastAV(const PredV& pg, const VecV& zn, CpuContext* context) {
    return after_last<std::uint32_t>(pg, zn, context);
}
std::uint64_t VecD64LastAV(const PredV& pg, const VecV& zn, CpuContext* context) {
    return after_last<std::uint64_t>(pg, zn, context);
}

std::uint8_t VecU8CondXASV(const PredV& pg, std::uint8_t default_value, const VecV& zm, CpuContext* context) {
    return conditional_last<chosen::after_last_active>(pg, default_value, zm, context);
}
std::uint16_t VecU16CondXASV(const PredV& pg, std::uint16_t default_value, const VecV& zm,
                             CpuContext* context) {
    return conditional_last<chosen::after_last_active>(pg, default_value, zm, context);
}
std::uint32_t VecU32CondXASV(const PredV& pg, std::uint32_t default_value, const VecV& zm,
                             CpuContext* context) {
    return conditional_last<chosen::after_last_active>(pg, default_value, zm, context);
}
std::uint64_t VecU64CondXASV(const PredV& pg, std::uint64_t default_value, const VecV& zm,
                             CpuContext* context) {
    return conditional_last<chosen::after_last_active>(pg, default_value, zm, context);
}
std::uint8_t VecB8CondXASV(const PredV& pg, std::uint8_t default_value, const VecV& zm, CpuContext* context) {
    return conditional_last<chosen::after_last_active>(pg, default_value, zm, context);
}
std::uint16_t VecH16CondXASV(const PredV& pg, std::uint16_t default_value, const VecV& zm,
                             CpuContext* context) {
    return conditional_last<chosen::after_last_active>(pg, default_value, zm, context);
}
std::uint32_t VecF32CondXASV(const PredV& pg, std::uint32_t default_value, const VecV& zm,
                             CpuContext* context) {
    return conditional_last<chosen::after_last_active>(pg, default_value, zm, context);
}
std::uint64_t VecD64CondXASV(const PredV& pg, std::uint64_t default_value, const VecV& zm,
                             CpuContext* context) {
    return conditional_last<chosen::after_last_active>(pg, default_value, zm, context);
}
std::uint8_t VecB8CondXBSV(const PredV& pg, std::uint8_t default_value, const VecV& zm, CpuContext* context) {
    return conditional_last<chosen::last_active>(pg, default_value, zm, context);
}
std::uint16_t VecH16CondXBSV(const PredV& pg, std::uint16_t default_value, const VecV& zm,
                             CpuContext* context) {
    return conditional_last<chosen::last_active>(pg, default_value, zm, context);
}
std::uint32_t VecF32CondXBSV(const PredV& pg, std::uint32_t default_value, const VecV& zm,
                             CpuContext* context) {
    return conditional_last<chosen::last_active>(pg, default_value, zm, context);
}
std::uint64_t VecD64CondXBSV(const PredV& pg, std::uint64_t default_value, const VecV& zm,
                             CpuContext* context) {
    return conditional_last<chosen::last_active>(pg, default_value, zm, context);
}

VecV VecU8VCondXAVV(const PredV& pg, const VecV& zdn, const VecV& zm, CpuContext* context) {
    return conditional_vector<std::uint8_t, chosen::after_last_active>(pg, zdn, zm, context);
}
VecV VecU16VCondXAVV(const PredV& pg, const VecV& zdn, const VecV& zm, CpuContext* context) {
    return conditional_vector<std::uint16_t, chosen::after_last_active>(pg, zdn, zm, context);
}
VecV VecU32VCondXAVV(const PredV& pg, const VecV& zdn, const VecV& zm, CpuContext* context) {
    return conditional_vector<std::uint32_t, chosen::after_last_active>(pg, zdn, zm, context);
}
VecV VecU64VCondXAVV(const PredV& pg, const VecV& zdn, const VecV& zm, CpuContext* context) {
    return conditional_vector<std::uint64_t, chosen::after_last_active>(pg, zdn, zm, context);
}
VecV VecU8VCondXBVV(const PredV& pg, const VecV& zdn, const VecV& zm, CpuContext* context) {
    return conditional_vector<std::uint8_t, chosen::last_active>(pg, zdn, zm, context);
}
VecV VecU16VCondXBVV(const PredV& pg, const VecV& zdn, const VecV& zm, CpuContext* context) {
    return conditional_vector<std::uint16_t, chosen::last_active>(pg, zdn, zm, context);
}
VecV VecU32VCondXBVV(const PredV& pg, const VecV& zdn, const VecV& zm, CpuContext* context) {
    return conditional_vector<std::uint32_t, chosen::last_active>(pg, zdn, zm, context);
}
VecV VecU64VCondXBVV(const PredV& pg, const VecV& zdn, const VecV& zm, CpuContext* context) {
    return conditional_vector<std::uint64_t, chosen::last_active>(pg, zdn, zm, context);
}

VecV VecU8InsertS(const VecV& zdn, std::uint8_t scalar, CpuContext* context) {
    return insert(zdn, scalar, context);
}
VecV VecU16InsertS(const VecV& zdn, std::uint16_t scalar, CpuContext* context) {
    return insert(zdn, scalar, context);
}
VecV VecU32InsertS(const VecV& zdn, std::uint32_t scalar, CpuContext* context) {
    return insert(zdn, scalar, context);
}
VecV VecU64InsertS(const VecV& zdn, std::uint64_t scalar, CpuContext* context) {
    return insert(zdn, scalar, context);
}
VecV VecB8InsertS(const VecV& zdn, std::uint8_t scalar, CpuContext* context) {
    return insert(zdn, scalar, context);
}
VecV VecH16InsertS(const VecV& zdn, std::uint16_t scalar, CpuContext* context) {
    return insert(zdn, scalar, context);
}
VecV VecF32InsertS(const VecV& zdn, std::uint32_t scalar, CpuContext* context) {
    return insert(zdn, scalar, context);
}
VecV VecD64InsertS(const VecV& zdn, std::uint64_t scalar, CpuContext* context) {
    return insert(zdn, scalar, context);
}
