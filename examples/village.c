// The people of a village, each with pointers to father and mother. The census asks many people at once: it
// follows the pointers of a whole vector, and from there to the parents.
//
// Shows: gather loads through vectors of addresses, also of addresses that were themselves gathered, with the
// offset of a member, of 8 to 64 bits, signed and unsigned; scatter stores through the same pointers.
#include "example.h"
#include <stdio.h>

enum { people = 2003, founders = 50, generations = 12 };

typedef struct person {
    struct person* father;
    struct person* mother;
    uint64_t wealth;
    uint32_t birth_year;
    int32_t temper;
    uint16_t height; // millimetres
    int16_t luck;
    uint8_t siblings;
    int8_t mood;
} person;

KERNEL ask_fathers(uint64_t* restrict wealth, person* const* restrict child, long n) {
    for (long i = 0; i < n; ++i)
        wealth[i] = child[i]->father->wealth;
}

KERNEL ask_mothers_age(uint64_t* restrict age, person* const* restrict child, long n) {
    for (long i = 0; i < n; ++i)
        age[i] = (uint64_t)child[i]->birth_year - child[i]->mother->birth_year;
}

KERNEL ask_character(int64_t* restrict sum, person* const* restrict who, long n) {
    for (long i = 0; i < n; ++i)
        sum[i] = (int64_t)who[i]->temper + who[i]->height - who[i]->luck * (int64_t)who[i]->mood +
                 who[i]->siblings;
}

// From a person to the father's mother.
KERNEL go_back(person** restrict result, person* const* restrict who, long n) {
    for (long i = 0; i < n; ++i)
        result[i] = who[i]->father->mother;
}

KERNEL pay(person* const* restrict who, const uint64_t* restrict sum, long n) {
    for (long i = 0; i < n; ++i)
        who[i]->wealth = sum[i];
}

KERNEL marry(person* const* restrict who, const uint32_t* restrict year, const uint16_t* restrict change,
             const uint8_t* restrict child, long n) {
    for (long i = 0; i < n; ++i) {
        who[i]->birth_year = year[i];
        who[i]->height = change[i];
        who[i]->siblings = child[i];
    }
}

static person village[people];
static person *everybody[people], *ancestor[people], *before[people];
static uint64_t wealth[people], age[people];
static int64_t character[people];
static uint32_t year[people];
static uint16_t change[people];
static uint8_t child[people];

SCALAR static void settle(void) {
    uint64_t random = 1871;
    for (int i = 0; i < people; ++i) {
        person* one = &village[i];
        uint64_t bits = next_random(&random);
        int elders = i < founders ? i + 1 : i;
        one->father = &village[bits % (unsigned)elders];
        one->mother = &village[(bits >> 16) % (unsigned)elders];
        one->wealth = next_random(&random);
        one->birth_year = 1500 + (uint32_t)i / 8;
        one->temper = (int32_t)next_random(&random);
        one->height = (uint16_t)(bits >> 32);
        one->luck = (int16_t)(bits >> 20);
        one->siblings = (uint8_t)(bits >> 40);
        one->mood = (int8_t)(bits >> 50);
        year[i] = (uint32_t)bits;
        change[i] = (uint16_t)(bits >> 8);
        child[i] = (uint8_t)(bits >> 24);
    }
    for (int i = 0; i < people; ++i) // not in the order of birth; 1000 and 2003 have no common factor
        everybody[i] = &village[i * 1000 % people];
}

SCALAR int main(void) {
    settle();
    ask_fathers(wealth, everybody, people);
    ask_mothers_age(age, everybody, people);
    ask_character(character, everybody, people);
    printf("wealth of fathers:    checksum %08x\n", checksum(wealth, sizeof wealth));
    printf("age of mothers:       checksum %08x\n", checksum(age, sizeof age));
    printf("character:            checksum %08x\n", checksum(character, sizeof character));

    go_back(ancestor, everybody, people);
    for (int k = 1; k <= generations; ++k) {
        int known = 0;
        static char seen[people];
        for (int i = 0; i < people; ++i)
            seen[i] = 0;
        for (int i = 0; i < people; ++i) {
            before[i] = ancestor[i];
            known += !seen[ancestor[i] - village];
            seen[ancestor[i] - village] = 1;
        }
        printf("%2d times back: %d different ancestors, one born in %u\n", 2 * k, known,
               ancestor[people / 2]->birth_year);
        go_back(ancestor, before, people);
    }

    // Those to whom several pay keep the last payment.
    pay(before, wealth, people);
    marry(everybody, year, change, child, people);
    uint32_t hash = 0;
    for (int i = 0; i < people; ++i) {
        const person* one = &village[i];
        uint64_t known[] = {one->wealth, one->birth_year, one->height, one->siblings};
        hash = hash * 31 + checksum(known, sizeof known);
    }
    printf("the village now:      checksum %08x\n", hash);
    return 0;
}
