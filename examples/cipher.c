// Base64 with the alphabet as a table, and a substitution of all 256 byte values, done a vector of bytes at a
// time.
//
// Shows: byte table look-up (the two halves of a 256-byte table are two look-ups, and an index beyond one of
// them gives 0), shifts by immediates, and the permutes that part triples of bytes into quadruples of
// sextets.
#include "example.h"
#include <stdio.h>
#include <string.h>

static const char alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

#ifdef __ARM_FEATURE_SVE
#include <arm_sve.h>

// Encodes n triples of bytes to n quadruples of letters.
KERNEL encode(char* restrict out, const uint8_t* restrict in, size_t n) {
    const svuint8_t letters = svld1(svwhilelt_b8(0, 64), (const uint8_t*)alphabet);
    for (size_t i = 0; i < n; i += svcntb()) {
        const svbool_t active = svwhilelt_b8(i, n);
        const svuint8x3_t triple = svld3(active, in + 3 * i);
        const svuint8_t a = svget3(triple, 0), b = svget3(triple, 1), c = svget3(triple, 2);
        const svuint8_t second = svorr_x(active, svlsl_x(active, a, 4), svlsr_x(active, b, 4));
        const svuint8_t third = svorr_x(active, svlsl_x(active, b, 2), svlsr_x(active, c, 6));
        const svuint8x4_t sextets =
            svcreate4(svtbl(letters, svlsr_x(active, a, 2)), svtbl(letters, svand_x(active, second, 63)),
                      svtbl(letters, svand_x(active, third, 63)), svtbl(letters, svand_x(active, c, 63)));
        svst4(active, (uint8_t*)out + 4 * i, sextets);
    }
}

KERNEL substitute(uint8_t* restrict data, const uint8_t* restrict table, size_t n) {
    const size_t half = svcntb() < 128 ? svcntb() : 128;
    for (size_t i = 0; i < n; i += svcntb()) {
        const svbool_t active = svwhilelt_b8(i, n);
        const svuint8_t index = svld1(active, data + i);
        svuint8_t result = svdup_u8(0);
        for (size_t k = 0; k < 256; k += half) {
            const svuint8_t part = svld1(svwhilelt_b8(k, k + half), table + k);
            const svuint8_t in_part = svsub_x(active, index, (uint8_t)k);
            // Indices beyond the part give 0, unless the vector is longer than the part.
            result = svorr_m(svcmplt(active, in_part, (uint8_t)half), result, svtbl(part, in_part));
        }
        svst1(active, data + i, result);
    }
}
#else
KERNEL encode(char* restrict out, const uint8_t* restrict in, size_t n) {
    for (size_t i = 0; i < n; ++i, in += 3, out += 4) {
        out[0] = alphabet[in[0] >> 2];
        out[1] = alphabet[(in[0] << 4 | in[1] >> 4) & 63];
        out[2] = alphabet[(in[1] << 2 | in[2] >> 6) & 63];
        out[3] = alphabet[in[2] & 63];
    }
}

KERNEL substitute(uint8_t* restrict data, const uint8_t* restrict table, size_t n) {
    for (size_t i = 0; i < n; ++i)
        data[i] = table[data[i]];
}
#endif

SCALAR int main(void) {
    static const char text[] = "A vector of a thousand and twenty-four bits holds this whole line.. ";
    static char letters[128];
    encode(letters, (const uint8_t*)text, strlen(text) / 3);
    printf("%s\n", letters);

    enum { bytes = 30000 };
    static uint8_t data[bytes], table[256], back[256];
    uint64_t random = 7;
    for (int i = 0; i < 256; ++i)
        table[i] = (uint8_t)i;
    for (int i = 255; i > 0; --i) {
        const int j = (int)(next_random(&random) >> 33) % (i + 1);
        const uint8_t swapped = table[i];
        table[i] = table[j];
        table[j] = swapped;
    }
    for (int i = 0; i < 256; ++i)
        back[table[i]] = (uint8_t)i;
    for (int i = 0; i < bytes; ++i)
        data[i] = (uint8_t)(next_random(&random) >> 40);

    const uint32_t before = checksum(data, bytes);
    for (int round = 0; round < 3; ++round)
        substitute(data, table, bytes);
    printf("substituted: checksum %08x\n", checksum(data, bytes));
    static char encoded[bytes / 3 * 4];
    encode(encoded, data, bytes / 3);
    printf("encoded: checksum %08x\n", checksum(encoded, sizeof encoded));
    for (int round = 0; round < 3; ++round)
        substitute(data, back, bytes);
    printf("substituted back: %s\n", checksum(data, bytes) == before ? "as it was" : "something else");
    return 0;
}
