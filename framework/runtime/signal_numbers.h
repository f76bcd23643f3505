// The signals that C libraries reserve for talking to their own threads. The program's is not told that its
// handlers for them are never installed; the engine uses the first one itself.
#pragma once

inline constexpr int stop_signal = 32;
inline constexpr bool is_between_threads(unsigned long signal) { return signal == 32 || signal == 33; }
