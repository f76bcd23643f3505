// Mixes two tracks of 16-bit sound, each with its own volume, and limits the sum to what 16 bits hold.
//
// Shows: signed halfwords widened to words and narrowed again; signed division, minimum and maximum; and an
// echo that is added in 16-bit elements.
#include "example.h"
#include <stdio.h>

enum { rate = 8000, samples = rate, loudest = 32767, softest = -32768, full_volume = 256 };

static int16_t melody[samples], bass[samples], mixed[samples], limited[samples];

KERNEL mix(int16_t* restrict result, const int16_t* restrict first, int first_volume,
           const int16_t* restrict second, int second_volume, int unity, int low, int high, int count) {
    for (int i = 0; i < count; ++i) {
        int sum = first[i] * first_volume / unity + second[i] * second_volume / unity;
        sum = sum > high ? high : sum;
        sum = sum < low ? low : sum;
        result[i] = (int16_t)sum;
    }
}

// Samples outside [low, high] are cut off; the result is shifted down by `offset`.
KERNEL limit(int16_t* restrict result, const int16_t* restrict sound, int16_t low, int16_t high,
             int16_t offset, int count) {
    for (int i = 0; i < count; ++i) {
        int16_t sample = sound[i] > high ? high : sound[i];
        sample = sample < low ? low : sample;
        result[i] = (int16_t)(sample - offset);
    }
}

// Triangle waves, one note after another.
SCALAR static void play(int16_t* track, const int* notes, int note_count, int amplitude) {
    int phase = 0, length = samples / note_count;
    for (int i = 0; i < samples; ++i) {
        int note = i / length < note_count ? i / length : note_count - 1;
        phase = (phase + notes[note]) % rate;
        int height = phase * 4 / 2 - rate; // -rate..rate
        height = height < 0 ? -height : height;
        track[i] = (int16_t)((2 * height - rate) * amplitude / rate);
    }
}

SCALAR static void draw_wave(const int16_t* sound, int from) {
    for (int line = from; line < from + 120; line += 5) {
        int column = (sound[line] + 32768) * 64 / 65536;
        printf("%5d |%*s\n", line, column + 1, "o");
    }
}

SCALAR int main(void) {
    static const int high_notes[] = {262, 330, 392, 523}, low_notes[] = {131, 98};
    play(melody, high_notes, 4, 30000);
    play(bass, low_notes, 2, 32000);
    for (int volume = 0; volume <= full_volume; volume += 32) {
        mix(mixed, melody, full_volume - volume / 4, bass, volume, full_volume, softest, loudest, samples);
        printf("bass at %3d/%d: checksum %08x\n", volume, full_volume, checksum(mixed, sizeof mixed));
    }
    limit(limited, mixed, -12000, 20000, 4000, samples);
    printf("limited: checksum %08x\n", checksum(limited, sizeof limited));
    draw_wave(mixed, 4000);
    return 0;
}
