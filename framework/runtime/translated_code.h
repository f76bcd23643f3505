// The lines of memory that any thread has translated code from, so that a change of others costs nothing.
#pragma once

#include "framework/runtime/thread_context.h"

// Notes that code of the page of that number (its address / source_page_bytes) is about to be read. All its
// lines count as read until they change.
void note_translated_page(std::uint64_t page);

// Drops the calling thread's blocks of the range, at once, and those of all other threads, as soon as they
// come to their dispatchers, to which they are called if they run blocks, if code has been read from a line
// of the range. Their indirect branches into it go to the dispatcher from now on. May only be called where no
// code of the calling thread's cache is being run.
void code_changed(thread_context* context, std::uint64_t start, std::uint64_t end);

// Does the same for the cache line of the address.
void code_line_changed(thread_context* context, std::uint64_t address);

// Drops the blocks that other threads' changes make stale; false if there has been no change.
bool drop_changed_code(thread_context* context);
