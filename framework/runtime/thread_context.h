// The record that X28 points at while application code runs from the code cache. Emitted code addresses its
// fields with immediate offsets, so the fields that emitted code uses stand first and the layout is checked.
// A `void* drcontext` of the published interface is a pointer to this record.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

#include "framework/runtime/thread_signals.h"

struct code_cache; // framework/runtime/code_cache.h

// The look-up table of indirect branches lies right below the record, so that X28 addresses it too: the entry
// of index i, a pair of {application PC, cache PC}, stands (i + 1) * 16 bytes below. The index is the low
// bits of the application PC's word number; see code_cache.h for what an empty entry holds.
inline constexpr unsigned lookup_index_bits = 16;
struct lookup_entry {
    std::uint64_t application_pc;
    std::uint64_t cache_pc;
};

inline constexpr int client_spill_slots = 9; // SPILL_SLOT_1 to SPILL_SLOT_9
inline constexpr int client_tls_fields = 64; // fields handed out by drmgr_register_tls_field

struct thread_context {
    // Addressed by emitted code.
    std::uint64_t app_x28;   // the application's X28
    std::uint64_t app_tpidr; // the application's TPIDR_EL0; the hardware's is the engine's
    std::uint64_t client_slot[client_spill_slots]; // dr_save_reg and its kin
    std::uint64_t scratch[6];                      // mangled instructions, exits and look-ups
    std::uint64_t call_app_pc;                     // application address of the client call under way
    std::uint64_t client_call_entry;               // code that changes stack, calls X11, and comes back
    std::uint64_t exit_entry;    // code that saves the application's state and enters the dispatcher
    std::uint64_t engine_sp;     // the engine's stack pointer while application code runs
    std::uint64_t enter_target;  // where the cache is entered next
    std::uint64_t client_return; // in the cache, of the client call under way; 0 if there is none

    // The application's registers while the engine's own code runs.
    std::uint64_t x[31]; // element 28 is unused: see app_x28
    std::uint64_t sp;
    std::uint64_t pc;
    std::uint64_t nzcv;
    std::uint64_t fpcr;
    std::uint64_t fpsr;
    alignas(16) std::uint8_t q[32][16];

    // Not addressed by emitted code.
    std::uint64_t engine_stack_top; // where engine_sp starts from
    void* tls_field[client_tls_fields];
    code_cache* cache;

    // What the kernel would keep for the application's thread.
    std::uint64_t clear_child_tid; // address to be cleared and woken at the thread's end, or 0
    std::uint64_t robust_list;     // address of the list's head, or 0
    bool vector_length_inherited;  // as prctl(PR_SVE_SET_VL) has said
    bool ended;                    // the application's thread has made its last system call
    bool borrowed;                 // by a child process that shares the memory, while the thread waits for it

    // Between threads.
    std::atomic<int> number;               // the thread's number in the kernel, 0 until it runs
    std::atomic<bool> code_change_pending; // the dispatcher is to drop blocks
    std::atomic<bool> in_system_call;      // the thread may be waiting in a system call of the application
    std::atomic<bool> in_cache; // the thread runs code of its cache, or of a client called from there
    std::atomic<bool> stopped;  // the thread has stopped for good, since the process ends

    thread_signals signals;

    void* signal_stack; // for the engine's own handlers
    void* mapping;      // all memory of the record
    std::size_t mapping_bytes;
};

inline constexpr std::size_t signal_stack_bytes = 65536;

inline lookup_entry& lookup_entry_of(thread_context* context, std::uint64_t application_pc) {
    const std::uint64_t index = (application_pc >> 2) & ((std::uint64_t{1} << lookup_index_bits) - 1);
    return reinterpret_cast<lookup_entry*>(context)[-1 - static_cast<std::int64_t>(index)];
}

// The application's general register by number, 31 being the zero register.
inline std::uint64_t read_register(const thread_context* context, unsigned number) {
    return number == 31 ? 0 : number == 28 ? context->app_x28 : context->x[number];
}

// Maps a zeroed context with its look-up table below it and the engine's stack, of which the lowest page is a
// guard. Null if there is no memory.
thread_context* create_thread_context();

// Frees the record, its stack and its code cache.
void destroy_thread_context(thread_context* context);

// Frees the memory mapped for them alone. For the copy of a context whose thread was in the middle of
// something when the process was forked: what it has allocated may be in pieces.
void abandon_thread_context(thread_context* context);

// Copies the application's registers, X28 and the thread pointer among them.
void copy_application_state(thread_context* to, const thread_context* from);

static_assert(offsetof(thread_context, app_x28) == 0);
static_assert(offsetof(thread_context, x) < 504, "STP offsets reach the general registers");
