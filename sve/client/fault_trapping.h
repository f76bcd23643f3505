// Surviving memory faults. There are two ways: the guard, by which a fault in a section of code comes back to
// where the section began, and the probe, which asks whether an address can be read. A fault outside of both
// ends the process.
//
// What both set up serves the whole process: the flag, the return point, and the action for SIGSEGV, which
// the probe changes while it runs. So there is a mutex.
#pragma once

#include "sve/client/inline_mutex.h"
#include "sve/decode/library_values.h"

#include <csetjmp>
#include <csignal>
#include <cstdint>

// Held while a guarded section or a probe runs. A fork waits for it.
extern inline_mutex fault_trapping_mutex;

// Non-zero while a guarded section runs. A section is: take the mutex; record the return point by sigsetjmp
// on sveFaultJB, saving the signal mask; set the region to 1; access memory; set it to 0. When sigsetjmp
// returns a second time, the access has faulted and the region is 0 again.
extern volatile std::uint32_t SVEFaultRegion;
extern sigjmp_buf sveFaultJB;

// A context for callers of the library that have none of their own: 128 bits, and where it stands.
extern CpuContext cpu_ctxt;
extern CpuContext* ctxt;

// Installs SVESigHandler for SIGSEGV and SIGBUS and sets up cpu_ctxt, the first time it is called. Returns 1.
std::uint32_t SVEInitialize();

// The action for SIGSEGV and SIGBUS. Resumes a guarded section after its access has failed; otherwise puts
// the default actions back, writes one line to standard error and returns, to the fault that then ends the
// process. The application's own handlers are not called.
void SVESigHandler(int signal, siginfo_t* info, void* context);

// Whether one byte can be read at the address, whatever address it is. A fault of another thread meanwhile
// has the effect that it would have without the probe. A bus error, as beyond the end of a mapped file, is
// not covered: it goes to the action for SIGBUS.
template <class Byte> bool addr_is_readable(volatile Byte* address);
template <> bool addr_is_readable<char>(volatile char* address);
