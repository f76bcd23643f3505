// What the published interface has no means for: a client that keeps registers of the application has them
// saved in the frames of its signal handlers, as the kernel saves those of the processor.
#pragma once

#include <cstddef>
#include <cstdint>

// One record, in the form in which the kernel lays records out in a frame: behind eight bytes with the magic
// number and the size, which the framework writes.
struct signal_frame_record {
    std::uint32_t magic;
    std::uint32_t bytes; // of the whole record, a multiple of 16

    // Fills a zeroed record from the thread's state; returns false if there is nothing to be saved.
    bool (*save)(void* drcontext, std::uint8_t* record);

    // Takes the state from the record of a frame that the application returns from; null if it has none.
    void (*restore)(void* drcontext, const std::uint8_t* record);
};

// The client's record; there is at most one.
void register_signal_frame_record(const signal_frame_record& record);
