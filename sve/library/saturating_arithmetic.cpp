#include "sve/library/saturating_arithmetic.h"

#include "sve/library/saturation.h"

// `combine` is SatAdd or SatSub.
template <class Element, auto combine>
static VecV saturate_vectors(const VecV& zn, const VecV& zm, const CpuContext* context) {
    return map_elements<Element>(zn, zm, context, [](Element a, Element b) {
        return combine(static_cast<std::uint64_t>(a), static_cast<std::uint64_t>(b), width_of<Element>,
                       std::is_unsigned_v<Element>)
            .value;
    });
}

// `combine` is AddInt or SubInt.
template <class Element, auto combine>
static VecV saturate_immediate(const VecV& zdn, unsigned int immediate, const CpuContext* context) {
    return map_elements<Element>(zdn, context, [=](Element a) {
        return SatQ(combine(widen(a), immediate), width_of<Element>, std::is_unsigned_v<Element>).value;
    });
}

VecV VecS8QAddVVX(const VecV& zn, const VecV& zm, CpuContext* context) {
    return saturate_vectors<std::int8_t, SatAdd>(zn, zm, context);
}
VecV VecS16QAddVVX(const VecV& zn, const VecV& zm, CpuContext* context) {
    return saturate_vectors<std::int16_t, SatAdd>(zn, zm, context);
}
VecV VecS32QAddVVX(const VecV& zn, const VecV& zm, CpuContext* context) {
    return saturate_vectors<std::int32_t, SatAdd>(zn, zm, context);
}
VecV VecS64QAddVVX(const VecV& zn, const VecV& zm, CpuContext* context) {
    return saturate_vectors<std::int64_t, SatAdd>(zn, zm, context);
}
VecV VecU8QAddVVX(const VecV& zn, const VecV& zm, CpuContext* context) {
    return saturate_vectors<std::uint8_t, SatAdd>(zn, zm, context);
}
VecV VecU16QAddVVX(const VecV& zn, const VecV& zm, CpuContext* context) {
    return saturate_vectors<std::uint16_t, SatAdd>(zn, zm, context);
}
VecV VecU32QAddVVX(const VecV& zn, const VecV& zm, CpuContext* context) {
    return saturate_vectors<std::uint32_t, SatAdd>(zn, zm, context);
}
VecV VecU64QAddVVX(const VecV& zn, const VecV& zm, CpuContext* context) {
    return saturate_vectors<std::uint64_t, SatAdd>(zn, zm, context);
}

VecV VecS8QSubVVX(const VecV& zn, const VecV& zm, CpuContext* context) {
    return saturate_vectors<std::int8_t, SatSub>(zn, zm, context);
}
VecV VecS16QSubVVX(const VecV& zn, const VecV& zm, CpuContext* context) {
    return saturate_vectors<std::int16_t, SatSub>(zn, zm, context);
}
VecV VecS32QSubVVX(const VecV& zn, const VecV& zm, CpuContext* context) {
    return saturate_vectors<std::int32_t, SatSub>(zn, zm, context);
}
VecV VecS64QSubVVX(const VecV& zn, const VecV& zm, CpuContext* context) {
    return saturate_vectors<std::int64_t, SatSub>(zn, zm, context);
}
VecV VecU8QSubVVX(const VecV& zn, const VecV& zm, CpuContext* context) {
    return saturate_vectors<std::uint8_t, SatSub>(zn, zm, context);
}
VecV VecU16QSubVVX(const VecV& zn, const VecV& zm, CpuContext* context) {
    return saturate_vectors<std::uint16_t, SatSub>(zn, zm, context);
}
VecV VecU32QSubVVX(const VecV& zn, const VecV& zm, CpuContext* context) {
    return saturate_vectors<std::uint32_t, SatSub>(zn, zm, context);
}
VecV VecU64QSubVVX(const VecV& zn, const VecV& zm, CpuContext* context) {
    return saturate_vectors<std::uint64_t, SatSub>(zn, zm, context);
}

VecV VecS8QAddVIX(const VecV& zdn, unsigned int immediate, CpuContext* context) {
    return saturate_immediate<std::int8_t, AddInt>(zdn, immediate, context);
}
VecV VecS16QAddVIX(const VecV& zdn, unsigned int immediate, CpuContext* context) {
    return saturate_immediate<std::int16_t, AddInt>(zdn, immediate, context);
}
VecV VecS32QAddVIX(const VecV& zdn, unsigned int immediate, CpuContext* context) {
    return saturate_immediate<std::int32_t, AddInt>(zdn, immediate, context);
}
VecV VecS64QAddVIX(const VecV& zdn, unsigned int immediate, CpuContext* context) {
    return saturate_immediate<std::int64_t, AddInt>(zdn, immediate, context);
}
VecV VecU8QAddVIX(const VecV& zdn, unsigned int immediate, CpuContext* context) {
    return saturate_immediate<std::uint8_t, AddInt>(zdn, immediate, context);
}
VecV VecU16QAddVIX(const VecV& zdn, unsigned int immediate, CpuContext* context) {
    return saturate_immediate<std::uint16_t, AddInt>(zdn, immediate, context);
}
VecV VecU32QAddVIX(const VecV& zdn, unsigned int immediate, CpuContext* context) {
    return saturate_immediate<std::uint32_t, AddInt>(zdn, immediate, context);
}
VecV VecU64QAddVIX(const VecV& zdn, unsigned int immediate, CpuContext* context) {
    return saturate_immediate<std::uint64_t, AddInt>(zdn, immediate, context);
}

VecV VecS8QSubVIX(const VecV& zdn, unsigned int immediate, CpuContext* context) {
    return saturate_immediate<std::int8_t, SubInt>(zdn, immediate, context);
}
VecV VecS16QSubVIX(const VecV& zdn, unsigned int immediate, CpuContext* context) {
    return saturate_immediate<std::int16_t, SubInt>(zdn, immediate, context);
}
VecV VecS32QSubVIX(const VecV& zdn, unsigned int immediate, CpuContext* context) {
    return saturate_immediate<std::int32_t, SubInt>(zdn, immediate, context);
}
VecV VecS64QSubVIX(const VecV& zdn, unsigned int immediate, CpuContext* context) {
    return saturate_immediate<std::int64_t, SubInt>(zdn, immediate, context);
}
VecV VecU8QSubVIX(const VecV& zdn, unsigned int immediate, CpuContext* context) {
    return saturate_immediate<std::uint8_t, SubInt>(zdn, immediate, context);
}
VecV VecU16QSubVIX(const VecV& zdn, unsigned int immediate, CpuContext* context) {
    return saturate_immediate<std::uint16_t, SubInt>(zdn, immediate, context);
}
VecV VecU32QSubVIX(const VecV& zdn, unsigned int immediate, CpuContext* context) {
    return saturate_immediate<std::uint32_t, SubInt>(zdn, immediate, context);
}
VecV VecU64QSubVIX(const VecV& zdn, unsigned int immediate, CpuContext* context) {
    return saturate_immediate<std::uint64_t, SubInt>(zdn, immediate, context);
}
