// A small table in columns, each stored in the narrowest type that holds it, as column stores do. The columns
// are widened to what the calculation needs and narrowed again.
//
// Shows: loads that extend, signed and unsigned, from every size to every larger one; stores that truncate;
// addition, subtraction and multiplication in 16, 32 and 64-bit elements.
#include "example.h"
#include <stdio.h>

enum { rows = 1003 };

static uint8_t quantity[rows];  // pieces
static int8_t correction[rows]; // pieces
static uint16_t price[rows];    // cents
static int16_t discount[rows];  // cents a piece, negative for a surcharge
static uint32_t opened[rows];   // seconds since some day
static int32_t delay[rows];     // seconds
static uint16_t pieces[rows];
static int32_t total[rows];    // cents
static int64_t closed[rows];   // seconds
static int64_t balance[rows];  // cents
static int32_t adjusted[rows]; // cents
static uint8_t low_pieces[rows], low_byte[rows];
static uint16_t low_half[rows];
static uint32_t low_word[rows];

// One kernel for each pair of types: what is read, what is computed, what is stored.

KERNEL count_pieces(uint16_t* restrict result, const uint8_t* restrict plain, const int8_t* restrict change,
                    int n) {
    for (int i = 0; i < n; ++i)
        result[i] = (uint16_t)(plain[i] + change[i]);
}

KERNEL multiply_prices(int32_t* restrict result, const uint16_t* restrict count,
                       const uint16_t* restrict each, const int16_t* restrict less, int n) {
    for (int i = 0; i < n; ++i)
        result[i] = (each[i] - less[i]) * count[i];
}

KERNEL add_times(int64_t* restrict result, const uint32_t* restrict start, const int32_t* restrict length,
                 int n) {
    for (int i = 0; i < n; ++i)
        result[i] = (int64_t)start[i] + length[i];
}

KERNEL book(int64_t* restrict result, const int32_t* restrict amount, const uint8_t* restrict count,
            const uint16_t* restrict fee, int n) {
    for (int i = 0; i < n; ++i)
        result[i] = ((int64_t)amount[i] - count[i]) * fee[i];
}

KERNEL correct(int64_t* restrict value, const int8_t* restrict change, const int16_t* restrict less, int n) {
    for (int i = 0; i < n; ++i)
        value[i] = value[i] - change[i] - less[i];
}

KERNEL adjust(int32_t* restrict result, const int32_t* restrict amount, const int8_t* restrict change,
              int n) {
    for (int i = 0; i < n; ++i)
        result[i] = amount[i] - change[i];
}

KERNEL narrow_to_word(uint32_t* restrict result, const int64_t* restrict value, int n) {
    for (int i = 0; i < n; ++i)
        result[i] = (uint32_t)value[i];
}

KERNEL narrow_to_half(uint16_t* restrict result, const int64_t* restrict value, int64_t offset, int n) {
    for (int i = 0; i < n; ++i)
        result[i] = (uint16_t)(value[i] + offset);
}

KERNEL narrow_to_byte(uint8_t* restrict result, const int64_t* restrict value, int64_t offset, int n) {
    for (int i = 0; i < n; ++i)
        result[i] = (uint8_t)(value[i] - offset);
}

KERNEL narrow_half_to_byte(uint8_t* restrict result, const uint16_t* restrict value, int n) {
    for (int i = 0; i < n; ++i)
        result[i] = (uint8_t)value[i];
}

SCALAR int main(void) {
    uint64_t random = 0x9e3779b97f4a7c15u;
    for (int i = 0; i < rows; ++i) {
        uint64_t a = next_random(&random), b = next_random(&random);
        quantity[i] = (uint8_t)a;
        correction[i] = (int8_t)(a >> 8);
        price[i] = (uint16_t)(a >> 16);
        discount[i] = (int16_t)(a >> 32);
        opened[i] = (uint32_t)b;
        delay[i] = (int32_t)(b >> 32);
    }

    for (int round = 0; round < 20; ++round) {
        count_pieces(pieces, quantity, correction, rows);
        multiply_prices(total, pieces, price, discount, rows);
        add_times(closed, opened, delay, rows);
        book(balance, total, quantity, price, rows);
        adjust(adjusted, total, correction, rows);
        correct(balance, correction, discount, rows);
    }
    narrow_to_word(low_word, balance, rows);
    narrow_to_half(low_half, balance, 1 << 20, rows);
    narrow_to_byte(low_byte, closed, 1 << 20, rows);
    narrow_half_to_byte(low_pieces, pieces, rows);

    printf("row  pieces       total        closed             balance\n");
    for (int i = 0; i < rows; i += 167)
        printf("%4d %6u %11d %13lld %19lld\n", i, pieces[i], total[i], (long long)closed[i],
               (long long)balance[i]);
    printf("checksums: %08x %08x %08x %08x %08x\n", checksum(pieces, sizeof pieces),
           checksum(total, sizeof total), checksum(adjusted, sizeof adjusted),
           checksum(closed, sizeof closed), checksum(balance, sizeof balance));
    printf("narrowed:  %08x %08x %08x %08x\n", checksum(low_word, sizeof low_word),
           checksum(low_half, sizeof low_half), checksum(low_pieces, sizeof low_pieces),
           checksum(low_byte, sizeof low_byte));
    return 0;
}
