// Scrambles messages: the letter at place i goes to place key[i]. Who knows the key fetches it from there.
// The same with wider elements, with keys of either width, and with a key that has places twice.
//
// Shows: scatter stores and gather loads of 8, 16, 32 and 64 bits at a base plus a vector of indexes, scaled
// and not, of 32 bits with and without sign and of 64 bits.
#include "example.h"
#include <stdio.h>
#include <string.h>

enum { length = 1000 };

// Indexes are relative to the middle of the box, so that half of them are negative.
#define SCRAMBLE(name, element, index)                                                                       \
    KERNEL scramble_##name(element* restrict box, const index* restrict key,                                 \
                           const element* restrict message, long n) {                                        \
        for (long i = 0; i < n; ++i)                                                                         \
            box[key[i]] = message[i];                                                                        \
    }                                                                                                        \
    KERNEL restore_##name(element* restrict message, const index* restrict key, const element* restrict box, \
                          long n) {                                                                          \
        for (long i = 0; i < n; ++i)                                                                         \
            message[i] = box[key[i]];                                                                        \
    }
SCRAMBLE(bytes, uint8_t, int32_t)
SCRAMBLE(halfwords, uint16_t, int32_t)
SCRAMBLE(words, uint32_t, int32_t)
SCRAMBLE(words_unsigned, uint32_t, uint32_t)
SCRAMBLE(words_far, uint32_t, int64_t)
SCRAMBLE(doublewords, uint64_t, int64_t)
SCRAMBLE(doublewords_near, uint64_t, int32_t)

static int32_t key[length];
static uint32_t key_unsigned[length];
static int64_t key_far[length];
static union {
    uint8_t bytes[length];
    uint16_t halfwords[length];
    uint32_t words[length];
    uint64_t doublewords[length];
} message, box, restored;

// A random order of the places around the middle.
SCALAR static void make_key(void) {
    uint64_t random = 99;
    for (int i = 0; i < length; ++i)
        key[i] = i - length / 2;
    for (int i = length - 1; i > 0; --i) {
        int other = (int)(next_random(&random) % (unsigned)(i + 1));
        int32_t place = key[i];
        key[i] = key[other];
        key[other] = place;
    }
    for (int i = 0; i < length; ++i) {
        key_far[i] = key[i];
        key_unsigned[i] = (uint32_t)(key[i] + length / 2);
    }
}

SCALAR static void report(const char* name, size_t size) {
    printf("%-17s scrambled %08x, %s\n", name, checksum(&box, length * size),
           memcmp(&message, &restored, length * size) == 0 ? "restored" : "NOT restored");
    memset(&box, 0, sizeof box);
    memset(&restored, 0, sizeof restored);
}

#define SEND(name, elements, key, middle)                                                                    \
    do {                                                                                                     \
        scramble_##name(box.elements + (middle), key, message.elements, length);                             \
        restore_##name(restored.elements, key, box.elements + (middle), length);                             \
        report(#name, sizeof *box.elements);                                                                 \
    } while (0)

SCALAR static void send_text(void) {
    static const char text[] = "Meet me at the old harbour at midnight, and bring the map and the two lamps.";
    enum { letters = sizeof text - 1 };
    static int32_t short_key[letters];
    uint8_t scrambled[letters], back[letters];
    int used = 0;
    for (int i = 0; i < length; ++i) // the places of the text only, in the same order
        if (key[i] >= 0 && key[i] < letters)
            short_key[used++] = key[i];
    scramble_bytes(scrambled, short_key, (const uint8_t*)text, letters);
    restore_bytes(back, short_key, scrambled, letters);
    printf("sent:  %.*s\nread:  %.*s\n", letters, (const char*)scrambled, letters, (const char*)back);
}

SCALAR int main(void) {
    uint64_t random = 7;
    for (int i = 0; i < length; ++i)
        message.doublewords[i] = next_random(&random);
    make_key();
    send_text();
    SEND(bytes, bytes, key, length / 2);
    SEND(halfwords, halfwords, key, length / 2);
    SEND(words, words, key, length / 2);
    SEND(words_unsigned, words, key_unsigned, 0);
    SEND(words_far, words, key_far, length / 2);
    SEND(doublewords, doublewords, key_far, length / 2);
    SEND(doublewords_near, doublewords, key, length / 2);

    // Many letters to few places: the last one stays.
    for (int i = 0; i < length; ++i)
        key[i] %= 10;
    scramble_words(box.words + 9, key, message.words, length);
    printf("last letters:");
    for (int i = 0; i < 19; ++i)
        printf(" %x", box.words[i] >> 16);
    putchar('\n');
    return 0;
}
