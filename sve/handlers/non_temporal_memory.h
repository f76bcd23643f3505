// Non-temporal loads and stores, LDNT1 and STNT1: other names of the contiguous ones, since the hint does not
// change what they do.
#pragma once

#include "sve/handlers/contiguous_memory.h"

inline constexpr contiguous_immediate_handler& sve_ldnt1b_zpri = sve_ld1b_zpri;
inline constexpr contiguous_immediate_handler& sve_ldnt1h_zpri = sve_ld1h_zpri;
inline constexpr contiguous_immediate_handler& sve_ldnt1w_zpri = sve_ld1w_zpri;
inline constexpr contiguous_immediate_handler& sve_ldnt1d_zpri = sve_ld1d_zpri;
inline constexpr contiguous_immediate_handler& sve_stnt1b_zpri = sve_st1b_zpri;
inline constexpr contiguous_immediate_handler& sve_stnt1h_zpri = sve_st1h_zpri;
inline constexpr contiguous_immediate_handler& sve_stnt1w_zpri = sve_st1w_zpri;
inline constexpr contiguous_immediate_handler& sve_stnt1d_zpri = sve_st1d_zpri;

inline constexpr contiguous_scaled_handler& sve_ldnt1b_scaled_zprr = sve_ld1b_scaled_zprr;
inline constexpr contiguous_scaled_handler& sve_ldnt1h_scaled_zprr = sve_ld1h_scaled_zprr;
inline constexpr contiguous_scaled_handler& sve_ldnt1w_scaled_zprr = sve_ld1w_scaled_zprr;
inline constexpr contiguous_scaled_handler& sve_ldnt1d_scaled_zprr = sve_ld1d_scaled_zprr;
inline constexpr contiguous_scaled_handler& sve_stnt1b_scaled_zprr = sve_st1b_scaled_zprr;
inline constexpr contiguous_scaled_handler& sve_stnt1h_scaled_zprr = sve_st1h_scaled_zprr;
inline constexpr contiguous_scaled_handler& sve_stnt1w_scaled_zprr = sve_st1w_scaled_zprr;
inline constexpr contiguous_scaled_handler& sve_stnt1d_scaled_zprr = sve_st1d_scaled_zprr;
