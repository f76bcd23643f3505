#include "sve/client/signal_state.h"

#include "drmgr.h"
#include "signal_frame_record.h"
#include "sve/client/sve_client.h"
#include "sve/decode/bridge.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr int packed_predicate_bytes = vector_bytes / 8;
constexpr int simd_register_bytes = 16; // of each vector register, which the framework saves

// The kernel's struct sve_context, with the registers behind it: Z0 to Z31, P0 to P15, FFR.
struct saved_registers {
    std::uint32_t magic;
    std::uint32_t bytes;
    std::uint16_t vector_length; // in bytes
    std::uint16_t flags;
    std::uint16_t reserved[2];
    std::uint8_t z[32][vector_bytes];
    std::uint8_t p[16][packed_predicate_bytes];
    std::uint8_t ffr[packed_predicate_bytes];
};
static_assert(sizeof(saved_registers) % 16 == 0);

cpu_state* state_of(void* drcontext) {
    return static_cast<cpu_state*>(drmgr_get_tls_field(drcontext, tls_idx));
}

void pack(const std::uint8_t* row, std::uint8_t (&packed)[packed_predicate_bytes]) {
    std::memcpy(packed, pack_predicate(row).words, sizeof packed);
}

void unpack(const std::uint8_t (&packed)[packed_predicate_bytes], std::uint8_t* row) {
    PredV predicate = {};
    std::memcpy(predicate.words, packed, sizeof packed);
    unpack_predicate(row, predicate);
}

bool is_zero(const std::uint8_t* from, std::size_t bytes) {
    return std::all_of(from, from + bytes, [](std::uint8_t value) { return value == 0; });
}

// A program that has not used what is beyond the vector registers has nothing to be saved.
bool save(void* drcontext, std::uint8_t* record) {
    const cpu_state* const state = state_of(drcontext);
    bool in_use = !is_zero(state->p[0], sizeof state->p) || !is_zero(state->ffr, sizeof state->ffr);
    for (const auto& vector : state->z)
        in_use |= !is_zero(vector + simd_register_bytes, vector_bytes - simd_register_bytes);
    if (!in_use)
        return false;
    saved_registers saved{};
    saved.vector_length = vector_bytes;
    std::memcpy(saved.z, state->z, sizeof saved.z);
    for (int number = 0; number < 16; ++number)
        pack(state->p[number], saved.p[number]);
    pack(state->ffr, saved.ffr);
    std::memcpy(record, &saved, sizeof saved);
    return true;
}

// Without a record, or with one of another vector length, the registers are cleared beyond the vector
// registers, as the kernel leaves them.
void restore(void* drcontext, const std::uint8_t* record) {
    cpu_state* const state = state_of(drcontext);
    saved_registers saved{};
    if (record != nullptr)
        std::memcpy(&saved, record, sizeof saved);
    if (saved.vector_length != vector_bytes)
        saved = {};
    std::memcpy(state->z, saved.z, sizeof state->z);
    for (int number = 0; number < 16; ++number)
        unpack(saved.p[number], state->p[number]);
    unpack(saved.ffr, state->ffr);
}

} // namespace

void register_signal_state() {
    constexpr std::uint32_t magic = 0x53564501; // SVE_MAGIC
    register_signal_frame_record({magic, sizeof(saved_registers), save, restore});
}
