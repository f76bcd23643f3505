#include "sve/decode/cpu_state.h"

// Assembler names of 31 registers and whatever the encoding's last number means, or of predicates.
#define SIXTEEN_NAMES(prefix, suffix)                                                                        \
    prefix "0" suffix, prefix "1" suffix, prefix "2" suffix, prefix "3" suffix, prefix "4" suffix,           \
        prefix "5" suffix, prefix "6" suffix, prefix "7" suffix, prefix "8" suffix, prefix "9" suffix,       \
        prefix "10" suffix, prefix "11" suffix, prefix "12" suffix, prefix "13" suffix, prefix "14" suffix,  \
        prefix "15" suffix
#define REGISTER_NAMES(prefix, suffix, last)                                                                 \
    {                                                                                                        \
        SIXTEEN_NAMES(prefix, suffix), prefix "16" suffix, prefix "17" suffix, prefix "18" suffix,           \
            prefix "19" suffix, prefix "20" suffix, prefix "21" suffix, prefix "22" suffix,                  \
            prefix "23" suffix, prefix "24" suffix, prefix "25" suffix, prefix "26" suffix,                  \
            prefix "27" suffix, prefix "28" suffix, prefix "29" suffix, prefix "30" suffix, last             \
    }

const char* const aarch64_i_reg::wname[32] = REGISTER_NAMES("w", "", "wzr");
const char* const aarch64_i_reg::xname[32] = REGISTER_NAMES("x", "", "xzr");
const char* const aarch64_i_rsp_reg::wname[32] = REGISTER_NAMES("w", "", "illegal");
const char* const aarch64_i_rsp_reg::xname[32] = REGISTER_NAMES("x", "", "sp");

const char* const aarch64_p_reg::pname[16] = {SIXTEEN_NAMES("p", "")};
const char* const aarch64_p_reg::pname_m[16] = {SIXTEEN_NAMES("p", "/m")};
const char* const aarch64_p_reg::pname_z[16] = {SIXTEEN_NAMES("p", "/z")};
const char* const aarch64_p_reg::pname_b[16] = {SIXTEEN_NAMES("p", ".b")};
const char* const aarch64_p_reg::pname_h[16] = {SIXTEEN_NAMES("p", ".h")};
const char* const aarch64_p_reg::pname_s[16] = {SIXTEEN_NAMES("p", ".s")};
const char* const aarch64_p_reg::pname_d[16] = {SIXTEEN_NAMES("p", ".d")};

const char* const aarch64_z_reg::zname[32] = REGISTER_NAMES("z", "", "z31");
const char* const aarch64_z_reg::zname_b[32] = REGISTER_NAMES("z", ".b", "z31.b");
const char* const aarch64_z_reg::zname_h[32] = REGISTER_NAMES("z", ".h", "z31.h");
const char* const aarch64_z_reg::zname_s[32] = REGISTER_NAMES("z", ".s", "z31.s");
const char* const aarch64_z_reg::zname_d[32] = REGISTER_NAMES("z", ".d", "z31.d");
