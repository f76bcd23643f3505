// Start and end of register reservation. Registers are not reserved through it here, so it has no slots to
// give.
#pragma once

#include "drmgr.h"

typedef enum {
    DRREG_SUCCESS = 0,
    DRREG_ERROR,
    DRREG_ERROR_INVALID_PARAMETER,
    DRREG_ERROR_FEATURE_NOT_AVAILABLE,
    DRREG_ERROR_REG_CONFLICT,
    DRREG_ERROR_IN_USE,
    DRREG_ERROR_OUT_OF_SLOTS,
    DRREG_ERROR_NO_APP_VALUE,
} drreg_status_t;

typedef struct _drreg_options_t {
    size_t struct_size;
    uint num_spill_slots;
    bool conservative;
    bool (*error_callback)(drreg_status_t status);
    bool do_not_sum_slots;
} drreg_options_t;

extern "C" {

// Counted pairs; each starts and ends a use of drmgr too. A request for spill slots is
// DRREG_ERROR_OUT_OF_SLOTS.
drreg_status_t drreg_init(drreg_options_t* ops);
drreg_status_t drreg_exit(void);

} // extern "C"
