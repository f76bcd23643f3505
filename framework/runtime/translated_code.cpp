#include "framework/runtime/translated_code.h"

#include <algorithm>
#include <iterator>
#include <unordered_map>
#include <utility>
#include <vector>

#include "framework/runtime/code_cache.h"
#include "framework/runtime/process_lock.h"
#include "framework/runtime/signals.h"
#include "framework/runtime/threads.h"

namespace {

// A bit of the page's word for each line.
constexpr std::uint64_t line_bytes = source_page_bytes / 64;
std::unordered_map<std::uint64_t, std::uint64_t> translated_lines; // by number of the page

// What a thread that does not come to its dispatcher for long has to drop is not noted range by range.
constexpr std::size_t ranges_limit = 256;

// The lines of the page that lie in the range.
std::uint64_t lines_of(std::uint64_t page, code_range range) {
    const std::uint64_t start = page * source_page_bytes;
    const std::uint64_t first = range.start > start ? (range.start - start) / line_bytes : 0;
    const std::uint64_t last = std::min((range.end - 1 - start) / line_bytes, std::uint64_t{63});
    return ~std::uint64_t{0} >> (63 - (last - first)) << first;
}

struct page_lines {
    std::uint64_t page;
    std::uint64_t lines;
};

// Takes the lines of the range out of the map and returns them.
std::vector<page_lines> take_lines(code_range range) {
    std::vector<page_lines> taken;
    const auto take = [&](auto entry) {
        const std::uint64_t lines = entry->second & lines_of(entry->first, range);
        if (lines)
            taken.push_back({entry->first, lines});
        entry->second &= ~lines;
        return entry->second ? std::next(entry) : translated_lines.erase(entry);
    };
    const std::uint64_t first = range.start / source_page_bytes, last = (range.end - 1) / source_page_bytes;
    if (last - first < translated_lines.size()) {
        for (std::uint64_t page = first; page <= last; ++page)
            if (const auto found = translated_lines.find(page); found != translated_lines.end())
                take(found);
    } else {
        for (auto entry = translated_lines.begin(); entry != translated_lines.end();)
            entry = entry->first >= first && entry->first <= last ? take(entry) : std::next(entry);
    }
    return taken;
}

void request_drop(thread_context* thread, code_range range, const std::vector<page_lines>& lines) {
    std::vector<code_range>& ranges = thread->cache->changed_code;
    if (ranges.size() == ranges_limit)
        ranges.assign(1, {0, ~std::uint64_t{0}});
    else
        ranges.push_back(range);
    // The request comes first: a thread that has just entered such a block looks for it again afterwards.
    thread->code_change_pending.store(true);
    for (const page_lines& page : lines)
        for (std::uint64_t line = 0; line < 64; ++line)
            if (page.lines >> line & 1)
                clear_lookup_entries(thread, page.page * source_page_bytes + line * line_bytes, line_bytes);
    if (thread->in_cache.load())
        interrupt_thread(thread);
}

// What IC IVAU invalidates.
std::uint64_t cache_line_bytes() {
    static const std::uint64_t bytes = [] {
        std::uint64_t cache_type;
        asm("mrs %0, ctr_el0" : "=r"(cache_type));
        return std::uint64_t{4} << (cache_type & 15);
    }();
    return bytes;
}

} // namespace

void note_translated_page(std::uint64_t page) {
    const std::lock_guard lock(process_mutex);
    translated_lines[page] = ~std::uint64_t{0};
}

void code_changed(thread_context* context, std::uint64_t start, std::uint64_t end) {
    if (start >= end)
        return;
    const std::lock_guard lock(process_mutex);
    // A line's note stands for all blocks that touch it.
    const code_range range{start & ~(line_bytes - 1), (end + line_bytes - 1) & ~(line_bytes - 1)};
    const std::vector<page_lines> lines = take_lines(range);
    if (lines.empty())
        return;
    drop_blocks(*context->cache, range);
    for (thread_context* const thread : application_threads())
        if (thread != context)
            request_drop(thread, range, lines);
}

void code_line_changed(thread_context* context, std::uint64_t address) {
    const std::uint64_t start = address & ~(cache_line_bytes() - 1);
    code_changed(context, start, start + cache_line_bytes());
}

bool drop_changed_code(thread_context* context) {
    if (!context->code_change_pending.load())
        return false;
    std::vector<code_range> ranges;
    {
        const std::lock_guard lock(process_mutex);
        context->code_change_pending.store(false);
        ranges = std::exchange(context->cache->changed_code, {});
    }
    for (const code_range range : ranges)
        drop_blocks(*context->cache, range);
    return true;
}
