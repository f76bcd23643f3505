#include "framework/runtime/call_paths.h"

const call_path* outermost_path(const call_paths& paths) { return &paths.outermost; }

const call_path* path_of_call(call_paths& paths, const call_path* caller, std::uint64_t return_address) {
    if (caller->depth == call_depth_limit)
        return nullptr;
    // Behind the call X30 is written anyway, so that it need not be known whether it was intact before.
    if (caller->link_changed)
        caller = caller->link_changed;
    const call_path*& known = paths.calls[{caller, return_address}];
    if (!known) {
        call_path& changed =
            paths.all.emplace_back(call_path{caller, return_address, false, caller->depth + 1, nullptr});
        known = &paths.all.emplace_back(call_path{caller, return_address, true, caller->depth + 1, &changed});
    }
    return known;
}

void clear_call_paths(call_paths& paths) {
    paths.all.clear();
    paths.calls.clear();
}
