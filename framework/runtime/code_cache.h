// A thread's code cache: the memory that translated blocks run from, the map from application addresses to
// blocks, and the exits by which blocks leave or are linked to each other. No other thread runs from it, and
// its own thread changes it only from the dispatcher, so that any word of it may be patched: there is no
// concurrent execution, and the cache maintenance after each change makes it visible to the fetches that
// follow.
#pragma once

#include <atomic>
#include <unordered_map>

#include "framework/aarch64/classify.h"
#include "framework/runtime/address_table.h"
#include "framework/runtime/call_paths.h"
#include "framework/runtime/code_map.h"
#include "framework/runtime/gates.h"

enum class exit_kind : std::uint8_t {
    direct,          // to `target`; becomes a branch to the target's block
    system_call,     // SVC, then to `target`
    invalidate_code, // IC IVAU of the address in register `detail`, then to `target`
    interrupted,     // by a signal; to where the context's `pc` says
};

inline constexpr std::size_t counter_words = 12;

struct block;

// One exit of a block. Freed with the block.
struct exit_record {
    exit_kind kind;
    std::uint8_t detail;
    bool in_place;     // the target's code stands in place of the branch
    bool keeps_branch; // the branch is all that its block has, and where an exit that leads there is unlinked
    std::uint64_t target;    // application address where execution goes on
    a64::word* branch;       // the transfer that goes to the stub until it is linked, null if there is none
    a64::word* stub;         // the code that leaves the cache
    exit_record* untaken;    // of the taken side of a conditional transfer: the other side, which follows it
    const call_path* path;   // by which a copy of the target would be reached, null if none is to be made
    bool in_copy;            // it leaves a copy
    a64::word* counter;      // the code that counts the executions of the link, null if there is none
    std::uint32_t countdown; // of executions until the target is copied
    const block* linked_to;  // where the branch goes, null while that is the stub
    exit_record* next_link;  // further links to that block
    exit_record* previous_link;
    exit_record* next; // the other exits of the block, and of a free record the next one
};

// The taken side of a test of X28, which X28 is to get its value back on.
struct restoring_exit {
    a64::word* branch; // goes there
    std::uint64_t target;
};

// Application code, from its first byte to behind its last.
struct code_range {
    std::uint64_t start;
    std::uint64_t end;
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

struct read_instruction {
    a64::word word;
    a64::kind kind;
};

// A block is entered with the application's registers in place, or by its landing with the hand-over
// registers saved.
struct block {
    a64::word* entry; // null once it has been dropped
    a64::word* landing;
    std::uint64_t start, end;   // the application code that it is made from
    exit_record* exits;         // out of it, and those of all its trace for the trace's first
    mutable exit_record* links; // to it
    block* together;            // the next one in the ring of blocks of one trace, null if it is alone
    std::uint32_t words;        // of the cache, stubs and literals included; of a trace, the first has all
    std::uint32_t first_instruction; // its place in the cache's `instructions`
    std::uint16_t instructions;      // the number of them
    bool copyable;                   // the client has left it as it was
    std::uint8_t copies;
};

// A copy of a block is made for the path of calls that leads to it; the path of the block itself is null.
struct block_key {
    std::uint64_t application_pc;
    const call_path* path;
    std::uint64_t mixed() const { return reinterpret_cast<std::uintptr_t>(path) * 0x9E3779B97F4A7C15; }
    bool operator==(const block_key&) const = default;
};

inline constexpr std::size_t noted_pages_kept = 64;

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
    std::vector<restoring_exit> unplaced_restores;
    std::vector<look_up_miss> unplaced_misses;
    std::vector<side_exit> unplaced_side_exits;
    std::vector<a64::word*> unplaced_return_misses; // CBNZ of X28, which is the context's address no longer

    address_table<block_key, block> blocks;
    std::vector<read_instruction> instructions; // of the application, as they were read
    call_paths paths;
    const call_path* exit_path; // of the exits being emitted
    stable_pool<exit_record> exits;
    exit_record* free_exits;
    exit_record* new_exits; // of the code under construction
    std::size_t placed_words, dropped_words;
    std::vector<code_range> changed_code; // by other threads; see translated_code.h

    // By pages of the application's code, from the first time on that blocks are dropped.
    bool indexed;
    std::unordered_map<std::uint64_t, std::vector<block*>> blocks_of_page;
    code_map map;

    // What is known without a lock of the memory that blocks are read from: the executable range last used,
    // at a version of the ranges, and pages that have been noted as translated since the last flush.
    std::uint64_t ranges_version, range_start, range_end;
    std::uint64_t noted_pages[noted_pages_kept];

    unsigned generation; // counts flushes

    void* mapping; // all of the memory
    std::size_t mapping_bytes;
};

// Blocks are found by the pages that their application code lies in.
inline constexpr std::uint64_t source_page_bytes = 4096;

inline constexpr std::size_t code_cache_bytes = std::size_t{64} << 20; // plain branches reach all of it

// No cache gets more. At least 256 KiB, which the largest block fits in.
inline std::size_t code_cache_limit = code_cache_bytes;

// Caches are mapped near the program, as far as there is room: this is its address, set at the start.
inline std::uint64_t main_cache_place;

// A test-and-branch at the start of a chunk reaches a stub at its end.
inline constexpr std::size_t chunk_words = 32768 / sizeof(a64::word);

// Reserves a cache of that size, or of the limit, near the address if possible, emits the gates, and sets up
// the context's pointers to them. Null if there is no memory.
code_cache* create_code_cache(thread_context* context, std::uint64_t near_address,
                              std::size_t bytes = code_cache_bytes);

// Drops every block. May only be called while no code of the cache is being run, the gates excepted.
void flush_code_cache(code_cache& cache);

// Drops the blocks that are made from code of the range, and traces with such blocks in them. Their room is
// not used again before a flush. May only be called while no code of the cache is being run, the gates
// excepted.
void drop_blocks(code_cache& cache, code_range range);

// Makes indirect branches of the thread, which may be running, to addresses of the range go to its
// dispatcher.
void clear_lookup_entries(thread_context* context, std::uint64_t start, std::uint64_t bytes);

// Makes room for that many words of code, stubs and literals in one chunk: the current one, or a new one, if
// need be after a flush.
void reserve_words(code_cache& cache, std::size_t words);

// The words that are left for further code.
std::size_t free_words(const code_cache& cache);

// True if that much can be reserved without a flush.
bool has_room(const code_cache& cache, std::size_t words);

// Takes room for stubs and literals, once the code of the block stands.
a64::word* take_cold_words(code_cache& cache, std::size_t words);

// The block of that address, or its copy for a path. Null if there is none.
inline const block* find_block(const code_cache& cache, std::uint64_t application_pc,
                               const call_path* path = nullptr) {
    const block* const found = cache.blocks.find({application_pc, path});
    return found && found->entry ? found : nullptr;
}

// An exit for the code under construction.
exit_record* new_exit(code_cache& cache, exit_kind kind, std::uint64_t target);

// Enters the block, whose code stands.
block* add_block(code_cache& cache, const block_key& key, const block& built);

// Enters in the index by pages.
void index_block(code_cache& cache, block& added);

// Notes that the exit goes to the block, or to none any more.
void note_link(exit_record& exit, const block& target);
void forget_link(exit_record& exit);

// Makes the exit's branch go there, by way of its stub if it has to.
void branch_to(exit_record& exit, const a64::word* destination);

// Makes the exit go straight to the block.
void link_exit(exit_record& exit, const block& target);

// Gives up the branch that ends the code of the current chunk, if the exit is a side of it that has not been
// linked yet, so that the exit's target can be built in its place. False if that cannot be.
bool continue_in_place(code_cache& cache, exit_record& exit);

// Notes that the exit's target has been built in its place.
void note_in_place(exit_record& exit, const block& target);

// True if the exit's branch, or that of its other side, ends the code of the current chunk.
bool ends_code(const code_cache& cache, const exit_record& exit);

// Makes indirect branches to the application address find the block.
void enter_in_lookup_table(code_cache& cache, std::uint64_t application_pc, const block& target);
