// Removal of single blocks from a code cache, with everything that leads to them.
#include <algorithm>
#include <utility>

#include "framework/aarch64/classify.h"
#include "framework/runtime/code_cache.h"

namespace {

constexpr a64::word save_hand_over_registers =
    a64::stp_x(hand_over_register, hand_over_register_2, a64::stolen_register, hand_over_slot);

void write_word(a64::word* place, a64::word value) {
    *place = value;
    __builtin___clear_cache(reinterpret_cast<char*>(place), reinterpret_cast<char*>(place + 1));
}

// Makes the exit go to its stub again.
void unlink(exit_record& exit) {
    if (exit.in_place) {
        // The block that is being dropped gives its first word for the branch.
        exit.branch = exit.linked_to->entry;
        write_word(exit.branch, a64::b((exit.stub - exit.branch) * 4));
        exit.in_place = false;
    } else {
        // A link may have replaced the first word of the stub.
        write_word(exit.stub, save_hand_over_registers);
        write_word(exit.branch, a64::with_offset(*exit.branch, (exit.stub - exit.branch) * 4));
        exit.counter = nullptr;
    }
    forget_link(exit);
}

void free_exits(code_cache& cache, block& owner) {
    while (exit_record* const exit = owner.exits) {
        owner.exits = exit->next;
        if (exit->linked_to)
            forget_link(*exit);
        exit->next = cache.free_exits;
        cache.free_exits = exit;
    }
}

template <typename Visitor> void for_each_page(const block& block, Visitor visit) {
    for (std::uint64_t page = block.start / source_page_bytes; page <= (block.end - 1) / source_page_bytes;
         ++page)
        visit(page);
}

void drop_block(code_cache& cache, block& dropped) {
    while (dropped.links)
        unlink(*dropped.links);
    free_exits(cache, dropped);
    for_each_page(dropped, [&](std::uint64_t page) {
        const auto found = cache.blocks_of_page.find(page);
        std::erase(found->second, &dropped);
        if (found->second.empty())
            cache.blocks_of_page.erase(found);
    });
    if (lookup_entry_of(cache.context, dropped.start).application_pc == dropped.start)
        clear_lookup_entries(cache.context, dropped.start, 4);
    block* const source = cache.blocks.find({dropped.start, nullptr});
    if (source != &dropped && source->copies > 0)
        --source->copies;
    cache.dropped_words += dropped.words;
    dropped.entry = nullptr;
}

// Blocks of a trace go on to each other without links.
void drop_trace(code_cache& cache, block& first) {
    block* dropped = &first;
    do {
        block* const next = std::exchange(dropped->together, nullptr);
        drop_block(cache, *dropped);
        dropped = next;
    } while (dropped && dropped != &first);
}

bool overlap(const block& block, code_range range) {
    return block.start < range.end && block.end > range.start;
}

void drop_blocks_of_page(code_cache& cache, std::uint64_t page, code_range range) {
    for (;;) {
        const auto found = cache.blocks_of_page.find(page);
        if (found == cache.blocks_of_page.end())
            return;
        const auto first =
            std::ranges::find_if(found->second, [&](const block* other) { return overlap(*other, range); });
        if (first == found->second.end())
            return;
        drop_trace(cache, **first);
    }
}

void index_all_blocks(code_cache& cache) {
    cache.indexed = true;
    cache.blocks.for_each([&](const block_key&, block& value) {
        if (value.entry)
            index_block(cache, value);
    });
}

} // namespace

void index_block(code_cache& cache, block& added) {
    for_each_page(added, [&](std::uint64_t page) { cache.blocks_of_page[page].push_back(&added); });
}

void drop_blocks(code_cache& cache, code_range range) {
    if (!cache.indexed)
        index_all_blocks(cache);
    // What is known to be noted as translated may be noted no more.
    std::ranges::fill(cache.noted_pages, 0);
    const std::uint64_t first = range.start / source_page_bytes, last = (range.end - 1) / source_page_bytes;
    if (last - first < cache.blocks_of_page.size()) {
        for (std::uint64_t page = first; page <= last; ++page)
            drop_blocks_of_page(cache, page, range);
        return;
    }
    std::vector<std::uint64_t> pages;
    for (const auto& [page, blocks] : cache.blocks_of_page)
        if (page >= first && page <= last)
            pages.push_back(page);
    for (const std::uint64_t page : pages)
        drop_blocks_of_page(cache, page, range);
}
