#include "sve/library/saturating_arithmetic.h"

#include "sve/library/primitive_definitions.h"
#include "sve/library/saturating_chunks.h"

template <class Element> static VecV add(const VecV& zn, const VecV& zm, const CpuContext* context) {
    return map_chunks<Element>(zn, zm, context, add_saturated<Element>);
}
template <class Element> static VecV subtract(const VecV& zn, const VecV& zm, const CpuContext* context) {
    return map_chunks<Element>(zn, zm, context, subtract_saturated<Element>);
}

VECTOR_PRIMITIVE(VecS8QAddVVX, add<std::int8_t>)
VECTOR_PRIMITIVE(VecS16QAddVVX, add<std::int16_t>)
VECTOR_PRIMITIVE(VecS32QAddVVX, add<std::int32_t>)
VECTOR_PRIMITIVE(VecS64QAddVVX, add<std::int64_t>)
VECTOR_PRIMITIVE(VecU8QAddVVX, add<std::uint8_t>)
VECTOR_PRIMITIVE(VecU16QAddVVX, add<std::uint16_t>)
VECTOR_PRIMITIVE(VecU32QAddVVX, add<std::uint32_t>)
VECTOR_PRIMITIVE(VecU64QAddVVX, add<std::uint64_t>)

VECTOR_PRIMITIVE(VecS8QSubVVX, subtract<std::int8_t>)
VECTOR_PRIMITIVE(VecS16QSubVVX, subtract<std::int16_t>)
VECTOR_PRIMITIVE(VecS32QSubVVX, subtract<std::int32_t>)
VECTOR_PRIMITIVE(VecS64QSubVVX, subtract<std::int64_t>)
VECTOR_PRIMITIVE(VecU8QSubVVX, subtract<std::uint8_t>)
VECTOR_PRIMITIVE(VecU16QSubVVX, subtract<std::uint16_t>)
VECTOR_PRIMITIVE(VecU32QSubVVX, subtract<std::uint32_t>)
VECTOR_PRIMITIVE(VecU64QSubVVX, subtract<std::uint64_t>)

// A primitive a line. Macros, since only they can make the names.
#define IMMEDIATE_PRIMITIVE(name, ...)                                                                       \
    VecV name(const VecV& zdn, unsigned int immediate, CpuContext* context) {                                \
        return __VA_ARGS__(zdn, immediate, context);                                                         \
    }

IMMEDIATE_PRIMITIVE(VecS8QAddVIX, add_to_elements<std::int8_t>)
IMMEDIATE_PRIMITIVE(VecS16QAddVIX, add_to_elements<std::int16_t>)
IMMEDIATE_PRIMITIVE(VecS32QAddVIX, add_to_elements<std::int32_t>)
IMMEDIATE_PRIMITIVE(VecS64QAddVIX, add_to_elements<std::int64_t>)
IMMEDIATE_PRIMITIVE(VecU8QAddVIX, add_to_elements<std::uint8_t>)
IMMEDIATE_PRIMITIVE(VecU16QAddVIX, add_to_elements<std::uint16_t>)
IMMEDIATE_PRIMITIVE(VecU32QAddVIX, add_to_elements<std::uint32_t>)
IMMEDIATE_PRIMITIVE(VecU64QAddVIX, add_to_elements<std::uint64_t>)

IMMEDIATE_PRIMITIVE(VecS8QSubVIX, subtract_from_elements<std::int8_t>)
IMMEDIATE_PRIMITIVE(VecS16QSubVIX, subtract_from_elements<std::int16_t>)
IMMEDIATE_PRIMITIVE(VecS32QSubVIX, subtract_from_elements<std::int32_t>)
IMMEDIATE_PRIMITIVE(VecS64QSubVIX, subtract_from_elements<std::int64_t>)
IMMEDIATE_PRIMITIVE(VecU8QSubVIX, subtract_from_elements<std::uint8_t>)
IMMEDIATE_PRIMITIVE(VecU16QSubVIX, subtract_from_elements<std::uint16_t>)
IMMEDIATE_PRIMITIVE(VecU32QSubVIX, subtract_from_elements<std::uint32_t>)
IMMEDIATE_PRIMITIVE(VecU64QSubVIX, subtract_from_elements<std::uint64_t>)
#undef IMMEDIATE_PRIMITIVE
