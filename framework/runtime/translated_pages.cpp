#include "framework/runtime/translated_pages.h"

#include <unordered_set>
#include <vector>

#include "framework/runtime/code_cache.h"
#include "framework/runtime/process_lock.h"
#include "framework/runtime/signals.h"
#include "framework/runtime/threads.h"

namespace {

std::unordered_set<std::uint64_t> translated_pages; // numbers of pages

// Takes the pages of the range out of the set and returns them.
std::vector<std::uint64_t> take_pages(std::uint64_t first, std::uint64_t last) {
    std::vector<std::uint64_t> taken;
    if (last - first < translated_pages.size()) {
        for (std::uint64_t page = first; page <= last; ++page)
            if (translated_pages.erase(page))
                taken.push_back(page);
    } else {
        std::erase_if(translated_pages, [&](std::uint64_t page) {
            const bool inside = page >= first && page <= last;
            if (inside)
                taken.push_back(page);
            return inside;
        });
    }
    return taken;
}

} // namespace

bool note_translated_pages(std::uint64_t start, std::uint64_t end) {
    const std::lock_guard lock(process_mutex);
    bool any_new = false;
    for (std::uint64_t page = start / translated_page_bytes; page <= (end - 1) / translated_page_bytes;
         ++page)
        any_new |= translated_pages.insert(page).second;
    return any_new;
}

void code_changed(thread_context* context, std::uint64_t start, std::uint64_t end) {
    if (start >= end)
        return;
    const std::lock_guard lock(process_mutex);
    const std::vector<std::uint64_t> pages =
        take_pages(start / translated_page_bytes, (end - 1) / translated_page_bytes);
    if (pages.empty())
        return;
    flush_code_cache(*context->cache);
    for (thread_context* const thread : application_threads()) {
        if (thread == context)
            continue;
        // The request comes first: a thread that has just entered a block of such a page looks for it again
        // afterwards.
        thread->flush_requested.store(true);
        for (const std::uint64_t page : pages)
            clear_lookup_entries(thread, page * translated_page_bytes, translated_page_bytes);
        if (thread->in_cache.load())
            interrupt_thread(thread);
    }
}
