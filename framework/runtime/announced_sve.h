// What the program is told about SVE where it asks the processor or the kernel and not just uses it.
#pragma once

// Whether there is any. If not, a processor that has SVE is shown as one without.
inline bool sve_is_announced = false;

inline constexpr unsigned announced_vector_bytes = 128;
