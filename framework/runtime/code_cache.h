// A thread's code cache: the memory that translated blocks run from, the map from application addresses to
// blocks, and the exits by which blocks leave or are linked to each other. No other thread runs from it, and
// its own thread changes it only from the dispatcher, so that any word of it may be patched: there is no
// concurrent execution, and the cache maintenance after each change makes it visible to the fetches that
// follow.
#pragma once

#include <deque>
#include <unordered_map>

#include "framework/runtime/code_map.h"
#include "framework/runtime/gates.h"

enum class exit_kind : std::uint8_t {
    direct,          // to `target`; becomes a branch to the target's block
    system_call,     // SVC, then to `target`
    invalidate_code, // IC IVAU of the address in register `detail`, then to `target`
    interrupted,     // by a signal; to where the context's `pc` says
};

// One exit of a block. Freed when the cache is flushed.
struct exit_record {
    exit_kind kind;
    bool hand_over_saved; // the hand-over registers are saved, so that the target is entered at its landing
    bool linked;          // `branch` goes to the target
    std::uint8_t detail;
    std::uint64_t target; // application address where execution goes on
    a64::word* branch;    // the transfer that goes to the stub until it is linked, null if there is none
    a64::word* stub;      // the code that leaves the cache
    exit_record* untaken; // of the taken side of a conditional transfer: the other side, which follows it
};

// A look-up of an indirect branch, as far as the code for its failure needs to know it.
struct look_up_miss {
    a64::word* branch;        // CBNZ that goes there
    unsigned target_register; // holds the application address
    bool borrowed;            // a third register is to be restored
    bool links;               // X30 gets the return address
    std::uint64_t return_address;
};

// A transfer out of the middle of a block. The code, which gives borrowed registers back, comes before the
// exit.
struct side_exit {
    a64::word* branch;
    std::uint64_t target;
    std::vector<a64::word> code;
};

// Where a block is entered: with the application's registers in place, or by its landing with the hand-over
// registers saved.
struct block {
    a64::word* entry;
    a64::word* landing;
};

// The memory is filled in chunks. In a chunk, code grows upwards, and what is run seldom or never once blocks
// are linked, stubs and literals, downwards from the end: so the code of a block ends where the next one
// begins, and the block that is built right after another takes the place of its last branch.
struct code_cache {
    thread_context* context;
    a64::word* start; // first word behind the gates
    a64::word* limit;
    gates gate;

    emitter out;          // at the end of the code of the current chunk
    a64::word* cold;      // the start of its stubs and literals
    a64::word* chunk_end; // where the next chunk begins

    // What the block under construction still needs beside its code.
    std::vector<exit_record*> unplaced_stubs;
    std::vector<look_up_miss> unplaced_misses;
    std::vector<side_exit> unplaced_side_exits;

    std::unordered_map<std::uint64_t, block> blocks; // by application address
    std::deque<exit_record> exits;
    code_map map;
    unsigned generation; // counts flushes

    void* mapping; // all of the memory
    std::size_t mapping_bytes;
};

inline constexpr std::size_t code_cache_bytes = std::size_t{64} << 20; // plain branches reach all of it

// Caches are mapped near the program, as far as there is room: this is its address, set at the start.
inline std::uint64_t main_cache_place;

// A test-and-branch at the start of a chunk reaches a stub at its end.
inline constexpr std::size_t chunk_words = 32768 / sizeof(a64::word);

// Reserves a cache near the address if possible, emits the gates, and sets up the context's pointers to them.
// Null if there is no memory.
code_cache* create_code_cache(thread_context* context, std::uint64_t near_address,
                              std::size_t bytes = code_cache_bytes);

// Drops every block. May only be called while no code of the cache is being run, the gates excepted.
void flush_code_cache(code_cache& cache);

// Makes indirect branches of the thread, which may be running, to addresses of the range go to its
// dispatcher.
void clear_lookup_entries(thread_context* context, std::uint64_t start, std::uint64_t bytes);

// Makes room for that many words of code, stubs and literals in one chunk: the current one, or a new one, if
// need be after a flush.
void reserve_words(code_cache& cache, std::size_t words);

// Takes room for stubs and literals, once the code of the block stands.
a64::word* take_cold_words(code_cache& cache, std::size_t words);

// The block of that address, or null if there is none.
const block* find_block(const code_cache& cache, std::uint64_t application_pc);

// Makes the exit go straight to the block.
void link_exit(exit_record& exit, const block& target);

// Gives up the branch that ends the code of the current chunk, if the exit is a side of it that has not been
// linked yet, so that the exit's target can be built in its place. False if that cannot be.
bool continue_in_place(code_cache& cache, exit_record& exit);

// Makes indirect branches to the application address find the block.
void enter_in_lookup_table(code_cache& cache, std::uint64_t application_pc, const block& target);
