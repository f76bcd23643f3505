#include "framework/runtime/code_cache.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <new>
#include <sys/mman.h>
#include <unistd.h>
#include <utility>

#include "framework/aarch64/classify.h"

namespace {

constexpr std::size_t lookup_table_bytes = sizeof(lookup_entry) << lookup_index_bits;
constexpr std::size_t engine_stack_bytes = 1 << 20;
constexpr std::size_t waste_limit = 16 * chunk_words;

void synchronise_code(void* start, void* end) {
    __builtin___clear_cache(static_cast<char*>(start), static_cast<char*>(end));
}

// An empty entry must not match any address that is looked up in it. Address 0 is never looked up in an entry
// other than the first, so zeroed memory serves for these; the first holds an address that belongs to the
// second.
void clear_lookup_entry(thread_context* context, std::uint64_t application_pc) {
    lookup_entry& entry = lookup_entry_of(context, application_pc);
    const bool first = &entry == &lookup_entry_of(context, 0);
    entry = {first ? std::uint64_t{4} : 0, 0};
}

exit_record interruption_exit = [] {
    exit_record exit{};
    exit.kind = exit_kind::interrupted;
    return exit;
}();

// A program that keeps rewriting code is not to fill the memory with what has been dropped.
bool is_wasted(const code_cache& cache) {
    return cache.dropped_words > waste_limit && cache.dropped_words > cache.placed_words / 2;
}

std::uint8_t* map_cache(std::uint64_t near_address, std::size_t bytes) {
    constexpr int protection = PROT_READ | PROT_WRITE | PROT_EXEC;
    constexpr int flags = MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE;
    // Room for the program's heap comes first, then a few tries within reach of an ADRP.
    constexpr std::uint64_t step = std::uint64_t{1} << 29;
    const std::uint64_t aligned = near_address & ~(step - 1);
    for (unsigned tries = 2; tries <= 7; ++tries) {
        void* const hint = reinterpret_cast<void*>(aligned + tries * step);
        void* const mapped = mmap(hint, bytes, protection, flags | MAP_FIXED_NOREPLACE, -1, 0);
        if (mapped == hint)
            return static_cast<std::uint8_t*>(mapped);
        if (mapped != MAP_FAILED) // a kernel that does not know the flag
            munmap(mapped, bytes);
    }
    void* const anywhere = mmap(nullptr, bytes, protection, flags, -1, 0);
    return anywhere == MAP_FAILED ? nullptr : static_cast<std::uint8_t*>(anywhere);
}

} // namespace

thread_context* create_thread_context() {
    const std::size_t page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    const std::size_t record_bytes = (sizeof(thread_context) + page - 1) / page * page;
    const std::size_t total =
        page + engine_stack_bytes + lookup_table_bytes + record_bytes + signal_stack_bytes;
    void* const mapped =
        mmap(nullptr, total, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (mapped == MAP_FAILED || mprotect(mapped, page, PROT_NONE) != 0)
        return nullptr;
    std::uint8_t* const stack_top = static_cast<std::uint8_t*>(mapped) + page + engine_stack_bytes;
    auto* const context = new (stack_top + lookup_table_bytes) thread_context{};
    context->signals.alternate = {nullptr, SS_DISABLE, 0};
    context->engine_stack_top = reinterpret_cast<std::uint64_t>(stack_top);
    context->signal_stack = stack_top + lookup_table_bytes + record_bytes;
    context->mapping = mapped;
    context->mapping_bytes = total;
    clear_lookup_entry(context, 0);
    return context;
}

void destroy_thread_context(thread_context* context) {
    code_cache* const cache = context->cache;
    abandon_thread_context(context);
    delete cache;
}

void abandon_thread_context(thread_context* context) {
    if (context->cache)
        munmap(context->cache->mapping, context->cache->mapping_bytes);
    munmap(context->mapping, context->mapping_bytes);
}

void copy_application_state(thread_context* to, const thread_context* from) {
    to->app_x28 = from->app_x28;
    to->app_tpidr = from->app_tpidr;
    // From the general registers to the vector registers they stand in one piece.
    constexpr std::size_t start = offsetof(thread_context, x);
    constexpr std::size_t end = offsetof(thread_context, q) + sizeof(thread_context::q);
    std::memcpy(reinterpret_cast<char*>(to) + start, reinterpret_cast<const char*>(from) + start,
                end - start);
}

code_cache* create_code_cache(thread_context* context, std::uint64_t near_address, std::size_t bytes) {
    bytes = std::min(bytes, code_cache_limit);
    std::uint8_t* const memory = map_cache(near_address, bytes);
    if (!memory)
        return nullptr;
    auto* const cache = new code_cache{};
    auto* const first = reinterpret_cast<a64::word*>(memory);
    cache->context = context;
    cache->mapping = memory;
    cache->mapping_bytes = bytes;
    cache->limit = reinterpret_cast<a64::word*>(memory + bytes);
    cache->out.cursor = first;
    cache->out.context = reinterpret_cast<std::uint64_t>(context);
    cache->gate = emit_gates(cache->out, &interruption_exit);
    cache->start = cache->out.cursor;
    cache->cold = cache->chunk_end = cache->start;
    synchronise_code(first, cache->start);
    context->cache = cache;
    context->exit_entry = cache->gate.exit_entry;
    context->client_call_entry = cache->gate.client_call_entry;
    return cache;
}

void flush_code_cache(code_cache& cache) {
    cache.blocks.for_each(
        [&](const block_key& key, const block&) { clear_lookup_entry(cache.context, key.application_pc); });
    cache.blocks.clear();
    cache.instructions.clear();
    clear_call_paths(cache.paths);
    cache.exits.clear();
    cache.free_exits = cache.new_exits = nullptr;
    cache.placed_words = cache.dropped_words = 0;
    cache.indexed = false;
    cache.blocks_of_page.clear();
    std::fill_n(cache.noted_pages, noted_pages_kept, 0);
    clear_code_map(cache.map);
    cache.out.cursor = cache.cold = cache.chunk_end = cache.start;
    ++cache.generation;
}

void clear_lookup_entries(thread_context* context, std::uint64_t start, std::uint64_t bytes) {
    for (std::uint64_t pc = start; pc < start + bytes; pc += 4) {
        lookup_entry& entry = lookup_entry_of(context, pc);
        // Only the key, in one piece: the thread may be using the entry.
        const bool first = &entry == &lookup_entry_of(context, 0);
        std::atomic_ref(entry.application_pc).store(first ? 4 : 0);
    }
}

void reserve_words(code_cache& cache, std::size_t words) {
    if (static_cast<std::size_t>(cache.cold - cache.out.cursor) >= words)
        return;
    const bool full = static_cast<std::size_t>(cache.limit - cache.chunk_end) < words;
    if (full || is_wasted(cache))
        flush_code_cache(cache);
    const auto left = static_cast<std::size_t>(cache.limit - cache.chunk_end);
    assert(left >= words);
    cache.out.cursor = cache.chunk_end;
    cache.chunk_end += std::min(std::max(words, chunk_words), left);
    cache.cold = cache.chunk_end;
}

std::size_t free_words(const code_cache& cache) {
    return static_cast<std::size_t>(cache.limit - cache.chunk_end + (cache.cold - cache.out.cursor));
}

bool has_room(const code_cache& cache, std::size_t words) {
    return static_cast<std::size_t>(cache.cold - cache.out.cursor) >= words ||
           (static_cast<std::size_t>(cache.limit - cache.chunk_end) >= words && !is_wasted(cache));
}

a64::word* take_cold_words(code_cache& cache, std::size_t words) {
    words += words % 2; // literals are aligned
    // A chunk that is larger than usual holds one large block, whose branches may not reach its end: the rest
    // follows the code, and the chunk ends there.
    if (cache.chunk_end - cache.out.cursor > static_cast<std::ptrdiff_t>(chunk_words)) {
        a64::word* const behind = cache.out.cursor + (cache.chunk_end - cache.out.cursor) % 2;
        cache.chunk_end = behind + words;
        cache.cold = behind;
        return behind;
    }
    cache.cold -= words;
    assert(cache.cold >= cache.out.cursor);
    return cache.cold;
}

void branch_to(exit_record& exit, const a64::word* destination) {
    a64::word* place = exit.branch;
    if (a64::transfer_reaches(*place, (destination - place) * 4)) {
        *place = a64::with_offset(*place, (destination - place) * 4);
    } else { // a conditional branch has a short reach: it goes on by way of its stub
        *place = a64::with_offset(*place, (exit.stub - place) * 4);
        synchronise_code(place, place + 1);
        place = exit.stub;
        *place = a64::b((destination - place) * 4);
    }
    synchronise_code(place, place + 1);
}

exit_record* new_exit(code_cache& cache, exit_kind kind, std::uint64_t target) {
    exit_record* exit = cache.free_exits;
    if (exit)
        cache.free_exits = exit->next;
    else
        exit = &cache.exits.add({});
    *exit = {};
    exit->kind = kind;
    exit->target = target;
    exit->path = cache.exit_path;
    exit->in_copy = cache.exit_path != nullptr;
    exit->next = std::exchange(cache.new_exits, exit);
    return exit;
}

block* add_block(code_cache& cache, const block_key& key, const block& built) {
    block* added = cache.blocks.find(key); // one that has been dropped
    if (added)
        *added = built;
    else
        added = cache.blocks.add(key, built);
    added->exits = std::exchange(cache.new_exits, nullptr);
    cache.placed_words += built.words;
    if (cache.indexed)
        index_block(cache, *added);
    return added;
}

void note_link(exit_record& exit, const block& target) {
    if (exit.linked_to)
        forget_link(exit);
    exit.linked_to = &target;
    exit.previous_link = nullptr;
    exit.next_link = target.links;
    if (target.links)
        target.links->previous_link = &exit;
    target.links = &exit;
}

void forget_link(exit_record& exit) {
    (exit.previous_link ? exit.previous_link->next_link : exit.linked_to->links) = exit.next_link;
    if (exit.next_link)
        exit.next_link->previous_link = exit.previous_link;
    exit.linked_to = nullptr;
}

void link_exit(exit_record& exit, const block& target) {
    branch_to(exit, target.entry);
    note_link(exit, target);
}

bool continue_in_place(code_cache& cache, exit_record& exit) {
    if (exit.linked_to || exit.keeps_branch)
        return false;
    if (exit.branch + 1 == cache.out.cursor) {
        cache.out.cursor = exit.branch;
        exit.in_place = true;
        return true;
    }
    // The taken side of a conditional branch: its sides change places.
    exit_record* const untaken = exit.untaken;
    if (!untaken || untaken->linked_to || untaken->branch + 1 != cache.out.cursor ||
        exit.branch != untaken->branch - 1)
        return false;
    if (!a64::is_invertible(*exit.branch))
        return false;
    *exit.branch = a64::with_offset(a64::inverted(*exit.branch), (untaken->stub - exit.branch) * 4);
    cache.out.cursor = untaken->branch;
    untaken->branch = exit.branch;
    exit.in_place = true;
    return true;
}

void note_in_place(exit_record& exit, const block& target) {
    note_link(exit, target);
    for (exit_record* own = target.exits; own; own = own->next)
        own->keeps_branch = own->branch == target.entry && !own->untaken;
}

bool ends_code(const code_cache& cache, const exit_record& exit) {
    return exit.branch + 1 == cache.out.cursor ||
           (exit.untaken && exit.untaken->branch + 1 == cache.out.cursor);
}

void enter_in_lookup_table(code_cache& cache, std::uint64_t application_pc, const block& target) {
    lookup_entry_of(cache.context, application_pc) = {application_pc,
                                                      reinterpret_cast<std::uint64_t>(target.landing)};
}
