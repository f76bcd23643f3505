// The state of the emulated registers across the application's signal handlers. The framework saves the
// processor's registers in the handler's frame; this adds those that the client keeps, in the record that the
// kernel of a processor with SVE puts there.
#pragma once

// Registers the record with the framework.
void register_signal_state();
