// Shows what the program is told about SVE.
#include <stdio.h>
#include <sys/auxv.h>
#include <sys/prctl.h>

int main(void) {
    unsigned long processor, features;
    __asm__("mrs %0, S3_0_C0_C4_0" : "=r"(processor)); // ID_AA64PFR0_EL1
    __asm__("mrs %0, S3_0_C0_C4_4" : "=r"(features));  // ID_AA64ZFR0_EL1
    printf("capability %lu, field %lu, features %lu, length %d\n", getauxval(AT_HWCAP) >> 22 & 1,
           processor >> 32 & 15, features, prctl(PR_SVE_GET_VL));
    printf("set 128: %d, set 256: %d, set 64: %d, set 17: %d\n",
           prctl(PR_SVE_SET_VL, 128 | PR_SVE_VL_INHERIT), prctl(PR_SVE_SET_VL, 256), prctl(PR_SVE_SET_VL, 64),
           prctl(PR_SVE_SET_VL, 17));
    return 0;
}
