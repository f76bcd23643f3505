#include "sve/decode/cpu_state.h"

#include <gtest/gtest.h>
#include <string>

namespace {

// Row n of the table is prefix, n, suffix, but for the last one where that has a name of its own.
template <std::size_t count>
void check_names(const char* const (&table)[count], const std::string& prefix, const std::string& suffix,
                 const char* last = nullptr) {
    for (std::size_t n = 0; n < count; ++n) {
        const bool special = last != nullptr && n + 1 == count;
        EXPECT_EQ(table[n], special ? last : prefix + std::to_string(n) + suffix);
    }
}

TEST(RegisterNames, Tables) {
    check_names(aarch64_i_reg::wname, "w", "", "wzr");
    check_names(aarch64_i_reg::xname, "x", "", "xzr");
    check_names(aarch64_i_rsp_reg::wname, "w", "", "illegal");
    check_names(aarch64_i_rsp_reg::xname, "x", "", "sp");
    check_names(aarch64_p_reg::pname, "p", "");
    check_names(aarch64_p_reg::pname_m, "p", "/m");
    check_names(aarch64_p_reg::pname_z, "p", "/z");
    check_names(aarch64_p_reg::pname_b, "p", ".b");
    check_names(aarch64_p_reg::pname_h, "p", ".h");
    check_names(aarch64_p_reg::pname_s, "p", ".s");
    check_names(aarch64_p_reg::pname_d, "p", ".d");
    check_names(aarch64_z_reg::zname, "z", "");
    check_names(aarch64_z_reg::zname_b, "z", ".b");
    check_names(aarch64_z_reg::zname_h, "z", ".h");
    check_names(aarch64_z_reg::zname_s, "z", ".s");
    check_names(aarch64_z_reg::zname_d, "z", ".d");
}

} // namespace
