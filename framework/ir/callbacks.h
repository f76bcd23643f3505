// The callbacks that the client has registered.
#pragma once

#include "drmgr.h"

// A list that needs neither heap nor destructor, so that it serves from the first registration to the last
// exit callback. Copies are made to run it, since a callback may change it.
template <typename Callback> struct callback_list {
    static constexpr int capacity = 16;

    Callback entry[capacity];
    int count;

    bool add(Callback callback) {
        if (callback == nullptr || count == capacity)
            return false;
        entry[count++] = callback;
        return true;
    }

    bool remove(Callback callback) {
        for (int index = 0; index < count; ++index) {
            if (entry[index] != callback)
                continue;
            for (--count; index < count; ++index)
                entry[index] = entry[index + 1];
            return true;
        }
        return false;
    }
};

struct client_callbacks {
    callback_list<void (*)(void* drcontext)> thread_init;
    callback_list<void (*)(void* drcontext)> thread_exit;
    callback_list<void (*)()> process_exit;
    callback_list<drmgr_xform_cb_t> block;
};

extern client_callbacks registered_callbacks;
