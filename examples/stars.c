// A cloud of stars that fall towards each other.
//
// Shows: reciprocal square roots by an estimate of eight bits and steps that refine it, and multiply-adds and
// multiply-subtracts into either operand.
#include "example.h"
#include <math.h>
#include <stdio.h>

#ifdef __ARM_FEATURE_SVE
#include <arm_sve.h>
#else
#include <arm_neon.h>
#endif

enum { stars = 150, steps = 20 };

typedef struct cloud {
    float x[stars], y[stars], z[stars];    // positions
    float vx[stars], vy[stars], vz[stars]; // speeds
    float mass[stars];
} cloud;

// Adds to the speeds what the gravity of all stars makes of them in a time of `dt`. Close stars attract each
// other less, by `softening`.
#ifdef __ARM_FEATURE_SVE
KERNEL attract(cloud* c, float dt, float softening) {
    for (int i = 0; i < stars; i += (int)svcntw()) {
        svbool_t some = svwhilelt_b32(i, stars);
        svfloat32_t x = svld1(some, c->x + i), y = svld1(some, c->y + i), z = svld1(some, c->z + i);
        svfloat32_t vx = svld1(some, c->vx + i), vy = svld1(some, c->vy + i), vz = svld1(some, c->vz + i);
        for (int j = 0; j < stars; ++j) {
            svfloat32_t dx = svsubr_x(some, x, c->x[j]), dy = svsubr_x(some, y, c->y[j]);
            svfloat32_t dz = svsubr_x(some, z, c->z[j]);
            svfloat32_t square = svmad_x(some, dx, dx, softening);
            square = svmla_x(some, square, dy, dy);
            square = svmla_x(some, square, dz, dz);
            svfloat32_t root = svrsqrte(square);
            root = svmul_x(some, root, svrsqrts(svmul_x(some, square, root), root));
            root = svmul_x(some, root, svrsqrts(svmul_x(some, square, root), root));
            svfloat32_t pull = svmul_x(some, svmul_x(some, root, root), svmul_x(some, root, c->mass[j] * dt));
            vx = svmla_x(some, vx, pull, dx);
            vy = svmla_x(some, vy, pull, dy);
            vz = svmla_x(some, vz, pull, dz);
        }
        svst1(some, c->vx + i, vx);
        svst1(some, c->vy + i, vy);
        svst1(some, c->vz + i, vz);
    }
}
#else
KERNEL attract(cloud* c, float dt, float softening) {
    for (int i = 0; i < stars; ++i) {
        for (int j = 0; j < stars; ++j) {
            float dx = c->x[j] - c->x[i], dy = c->y[j] - c->y[i], dz = c->z[j] - c->z[i];
            float square = fmaf(dz, dz, fmaf(dy, dy, fmaf(dx, dx, softening)));
            float root = vrsqrtes_f32(square);
            root = root * vrsqrtss_f32(square * root, root);
            root = root * vrsqrtss_f32(square * root, root);
            float pull = root * root * (root * (c->mass[j] * dt));
            c->vx[i] = fmaf(pull, dx, c->vx[i]);
            c->vy[i] = fmaf(pull, dy, c->vy[i]);
            c->vz[i] = fmaf(pull, dz, c->vz[i]);
        }
    }
}
#endif

KERNEL move(float* restrict position, const float* restrict speed, float dt, int count) {
    for (int i = 0; i < count; ++i)
        position[i] = fmaf(speed[i], dt, position[i]);
}

// A number from -1 to 1.
static float random_number(uint64_t* state) { return (float)(int32_t)next_random(state) / 2147483648.0f; }

static void draw(const cloud* c) {
    enum { columns = 72, rows = 24 };
    char sky[rows][columns + 1] = {0};
    for (int line = 0; line < rows; ++line) {
        for (int i = 0; i < columns; ++i)
            sky[line][i] = ' ';
    }
    for (int i = 0; i < stars; ++i) {
        int column = (int)((c->x[i] + 1.2f) * 30), line = (int)((c->y[i] + 1.2f) * 10);
        if (column >= 0 && column < columns && line >= 0 && line < rows)
            sky[line][column] = c->mass[i] > 0.015f ? '*' : '.';
    }
    for (int line = 0; line < rows; ++line)
        puts(sky[line]);
}

int main(void) {
    static cloud c;
    uint64_t state = 1054;
    for (int i = 0; i < stars; ++i) {
        c.x[i] = random_number(&state);
        c.y[i] = random_number(&state);
        c.z[i] = random_number(&state);
        c.vx[i] = -c.y[i] / 2;
        c.vy[i] = c.x[i] / 2;
        c.mass[i] = 0.01f + random_number(&state) / 128;
    }
    for (int step = 1; step <= steps; ++step) {
        attract(&c, 0.05f, 0.01f);
        move(c.x, c.vx, 0.05f, stars);
        move(c.y, c.vy, 0.05f, stars);
        move(c.z, c.vz, 0.05f, stars);
        if (step % 4 == 0)
            printf("step %2d: first star at (% .6f, % .6f, % .6f), checksum %08x\n", step, (double)c.x[0],
                   (double)c.y[0], (double)c.z[0], checksum(&c, sizeof c));
    }
    draw(&c);
    return 0;
}
