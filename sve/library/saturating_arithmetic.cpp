#include "sve/library/saturating_arithmetic.h"

#include "sve/library/chunk_loops.h"
#include "sve/library/saturating_chunks.h"

template <class Element> static VecV add(const VecV& zn, const VecV& zm, const CpuContext* context) {
    return map_chunks<Element>(zn, zm, context, add_saturated<Element>);
}
template <class Element> static VecV subtract(const VecV& zn, const VecV& zm, const CpuContext* context) {
    return map_chunks<Element>(zn, zm, context, subtract_saturated<Element>);
}

template <class Element> static VecV add(const VecV& zdn, unsigned int immediate, const CpuContext* context) {
    return map_chunks<Element>(zdn, context, [step = uniform_step<Element>(immediate)](auto a) {
        return add_step<Element>(a, step);
    });
}
template <class Element>
static VecV subtract(const VecV& zdn, unsigned int immediate, const CpuContext* context) {
    return map_chunks<Element>(zdn, context, [step = uniform_step<Element>(immediate)](auto a) {
        return subtract_step<Element>(a, step);
    });
}

VecV VecS8QAddVVX(const VecV& zn, const VecV& zm, CpuContext* context) {
    return add<std::int8_t>(zn, zm, context);
}
VecV VecS16QAddVVX(const VecV& zn, const VecV& zm, CpuContext* context) {
    return add<std::int16_t>(zn, zm, context);
}
VecV VecS32QAddVVX(const VecV& zn, const VecV& zm, CpuContext* context) {
    return add<std::int32_t>(zn, zm, context);
}
VecV VecS64QAddVVX(const VecV& zn, const VecV& zm, CpuContext* context) {
    return add<std::int64_t>(zn, zm, context);
}
VecV VecU8QAddVVX(const VecV& zn, const VecV& zm, CpuContext* context) {
    return add<std::uint8_t>(zn, zm, context);
}
VecV VecU16QAddVVX(const VecV& zn, const VecV& zm, CpuContext* context) {
    return add<std::uint16_t>(zn, zm, context);
}
VecV VecU32QAddVVX(const VecV& zn, const VecV& zm, CpuContext* context) {
    return add<std::uint32_t>(zn, zm, context);
}
VecV VecU64QAddVVX(const VecV& zn, const VecV& zm, CpuContext* context) {
    return add<std::uint64_t>(zn, zm, context);
}

VecV VecS8QSubVVX(const VecV& zn, const VecV& zm, CpuContext* context) {
    return subtract<std::int8_t>(zn, zm, context);
}
VecV VecS16QSubVVX(const VecV& zn, const VecV& zm, CpuContext* context) {
    return subtract<std::int16_t>(zn, zm, context);
}
VecV VecS32QSubVVX(const VecV& zn, const VecV& zm, CpuContext* context) {
    return subtract<std::int32_t>(zn, zm, context);
}
VecV VecS64QSubVVX(const VecV& zn, const VecV& zm, CpuContext* context) {
    return subtract<std::int64_t>(zn, zm, context);
}
VecV VecU8QSubVVX(const VecV& zn, const VecV& zm, CpuContext* context) {
    return subtract<std::uint8_t>(zn, zm, context);
}
VecV VecU16QSubVVX(const VecV& zn, const VecV& zm, CpuContext* context) {
    return subtract<std::uint16_t>(zn, zm, context);
}
VecV VecU32QSubVVX(const VecV& zn, const VecV& zm, CpuContext* context) {
    return subtract<std::uint32_t>(zn, zm, context);
}
VecV VecU64QSubVVX(const VecV& zn, const VecV& zm, CpuContext* context) {
    return subtract<std::uint64_t>(zn, zm, context);
}

VecV VecS8QAddVIX(const VecV& zdn, unsigned int immediate, CpuContext* context) {
    return add<std::int8_t>(zdn, immediate, context);
}
VecV VecS16QAddVIX(const VecV& zdn, unsigned int immediate, CpuContext* context) {
    return add<std::int16_t>(zdn, immediate, context);
}
VecV VecS32QAddVIX(const VecV& zdn, unsigned int immediate, CpuContext* context) {
    return add<std::int32_t>(zdn, immediate, context);
}
VecV VecS64QAddVIX(const VecV& zdn, unsigned int immediate, CpuContext* context) {
    return add<std::int64_t>(zdn, immediate, context);
}
VecV VecU8QAddVIX(const VecV& zdn, unsigned int immediate, CpuContext* context) {
    return add<std::uint8_t>(zdn, immediate, context);
}
VecV VecU16QAddVIX(const VecV& zdn, unsigned int immediate, CpuContext* context) {
    return add<std::uint16_t>(zdn, immediate, context);
}
VecV VecU32QAddVIX(const VecV& zdn, unsigned int immediate, CpuContext* context) {
    return add<std::uint32_t>(zdn, immediate, context);
}
VecV VecU64QAddVIX(const VecV& zdn, unsigned int immediate, CpuContext* context) {
    return add<std::uint64_t>(zdn, immediate, context);
}

VecV VecS8QSubVIX(const VecV& zdn, unsigned int immediate, CpuContext* context) {
    return subtract<std::int8_t>(zdn, immediate, context);
}
VecV VecS16QSubVIX(const VecV& zdn, unsigned int immediate, CpuContext* context) {
    return subtract<std::int16_t>(zdn, immediate, context);
}
VecV VecS32QSubVIX(const VecV& zdn, unsigned int immediate, CpuContext* context) {
    return subtract<std::int32_t>(zdn, immediate, context);
}
VecV VecS64QSubVIX(const VecV& zdn, unsigned int immediate, CpuContext* context) {
    return subtract<std::int64_t>(zdn, immediate, context);
}
VecV VecU8QSubVIX(const VecV& zdn, unsigned int immediate, CpuContext* context) {
    return subtract<std::uint8_t>(zdn, immediate, context);
}
VecV VecU16QSubVIX(const VecV& zdn, unsigned int immediate, CpuContext* context) {
    return subtract<std::uint16_t>(zdn, immediate, context);
}
VecV VecU32QSubVIX(const VecV& zdn, unsigned int immediate, CpuContext* context) {
    return subtract<std::uint32_t>(zdn, immediate, context);
}
VecV VecU64QSubVIX(const VecV& zdn, unsigned int immediate, CpuContext* context) {
    return subtract<std::uint64_t>(zdn, immediate, context);
}
