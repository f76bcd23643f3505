// The calls that lead to a copy of a block. A return in the copy goes to the return address of the innermost
// one, which is known when the copy is made.
#pragma once

#include <cstdint>
#include <deque>
#include <unordered_map>

struct call_path {
    const call_path* caller; // null for the path without calls
    std::uint64_t return_address;
    bool link_intact; // X30 has not been written since the call
    unsigned depth;
    const call_path* link_changed; // the same path when X30 may have been written, null if this one says so
};

inline constexpr unsigned call_depth_limit = 12;

struct call_paths {
    std::deque<call_path> all;
    // By caller and return address, with X30 intact.
    struct key {
        const call_path* caller;
        std::uint64_t return_address;
        bool operator==(const key&) const = default;
    };
    struct hash {
        std::size_t operator()(const key& k) const {
            return reinterpret_cast<std::uintptr_t>(k.caller) / 8 ^ k.return_address / 4;
        }
    };
    std::unordered_map<key, const call_path*, hash> calls;
    call_path outermost;
};

// The path without calls.
const call_path* outermost_path(const call_paths& paths);

// The path behind a call, or null if it would be too long.
const call_path* path_of_call(call_paths& paths, const call_path* caller, std::uint64_t return_address);

void clear_call_paths(call_paths& paths);
