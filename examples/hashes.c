// FNV-1a hashes of many words at once, 32 and 64 bits wide: vector lane i holds the hash of word i. The words
// stand in columns, so that the letters at one position are next to each other in memory.
//
// Shows: bytes loaded into words and doublewords, exclusive or, and multiplication by a number that is the
// same for all.
#include "example.h"
#include <stdio.h>
#include <string.h>

enum { words = 1500, letters = 12 };

static uint8_t column[letters][words];
static uint32_t hash32[words];
static uint64_t hash64[words];

KERNEL add_letters32(uint32_t* restrict hash, const uint8_t* restrict letter, uint32_t prime, int n) {
    for (int i = 0; i < n; ++i)
        hash[i] = (hash[i] ^ letter[i]) * prime;
}

KERNEL add_letters64(uint64_t* restrict hash, const uint8_t* restrict letter, uint64_t prime, int n) {
    for (int i = 0; i < n; ++i)
        hash[i] = (hash[i] ^ letter[i]) * prime;
}

SCALAR static void make_word(char* word, uint64_t* random) {
    static const char consonants[] = "bdfgklmnprst", vowels[] = "aeiou";
    for (int k = 0; k < letters; ++k) {
        uint64_t bits = next_random(random) >> 20;
        word[k] = k % 2 ? vowels[bits % 5] : consonants[bits % 12];
    }
    word[letters] = '\0';
}

SCALAR int main(void) {
    static char word[words][letters + 1];
    uint64_t random = 42;
    for (int i = 0; i < words; ++i) {
        make_word(word[i], &random);
        for (int k = 0; k < letters; ++k)
            column[k][i] = (uint8_t)word[i][k];
        hash32[i] = 2166136261u;
        hash64[i] = 14695981039346656037u;
    }
    for (int k = 0; k < letters; ++k) {
        add_letters32(hash32, column[k], 16777619u, words);
        add_letters64(hash64, column[k], 1099511628211u, words);
    }
    for (int i = 0; i < words; i += 150)
        printf("%s  %08x  %016llx\n", word[i], hash32[i], (unsigned long long)hash64[i]);
    int wrong = 0;
    for (int i = 0; i < words; ++i)
        wrong += hash32[i] != checksum(word[i], strlen(word[i]));
    printf("%d of %d differ from the hash of one word at a time\n", wrong, words);
    return wrong != 0;
}
