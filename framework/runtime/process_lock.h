// The locks of what all threads of the application share. They are leaves but for one order: a system call on
// mappings holds the first while it takes the second. A child made by fork gets both free.
#pragma once

#include <mutex>

// Held from a system call that changes mappings until what the engine knows of them is right again.
inline std::mutex mappings_mutex;

// Guards the executable ranges, the modules, the pages of translated code, and the list of threads.
inline std::mutex process_mutex;
