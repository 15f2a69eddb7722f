/*
 * dct4.c - the DCT-IV of libtvkgenu8.
 *
 * Sizes, sets up and frees a context of 1024 points in a block of the
 * caller's, and one of 16 points through InitAlloc; transforms a signal
 * twice (the DCT-IV is its own inverse up to n/2) and checks one output
 * against the defining sum.  Exits non-zero if a call fails or a result is off.
 */
#include <math.h>
#include <stdio.h>
#include <stdlib.h>

#include "tvkgen.h"

enum { kN = 1024 };

int main(void) {
    const double pi = 3.14159265358979323846;
    int32_t bytes = 0;
    if (tvkgDCT4GetSize_64f(kN, &bytes) != StatusOk) return 1;
    uint8_t* block = malloc((size_t)bytes); /* the context lives at its head: never move or copy it */
    tvk64f* x = malloc(kN * sizeof *x);
    tvk64f* y = malloc(kN * sizeof *y);
    DCT4Spec* context = NULL;
    if (!block || !x || !y || tvkgDCT4Init_64f(&context, kN, block) != StatusOk) return 1;
    printf("DCT-IV of %d points: a context of %d bytes\n", kN, (int)bytes);

    for (int n = 0; n < kN; ++n) x[n] = sin(0.05 * n) + 0.1 * cos(0.3 * n * n);
    if (tvkgDCT4_64f(x, y, context) != StatusOk) return 1;
    double sum = 0; /* y[5] = sum over n of x[n] cos(pi/N (n + 1/2)(5 + 1/2)) */
    for (int n = 0; n < kN; ++n) sum += x[n] * cos(pi / kN * (n + 0.5) * 5.5);
    printf("y[5] = %.12f, the defining sum %.12f\n", y[5], sum);
    int ok = fabs(y[5] - sum) < 1e-10;

    /* Twice, in place, gives n/2 times the input. */
    if (tvkgDCT4_64f(y, y, context) != StatusOk) return 1;
    double worst = 0;
    for (int n = 0; n < kN; ++n) worst = fmax(worst, fabs(y[n] * 2 / kN - x[n]));
    printf("twice, divided by n/2: max |x - x'| = %.3g\n", worst);
    ok = ok && worst < 1e-12;
    /* No Free for a block of the caller's: Free would hand it to tvkFree. */
    free(block);

    /* A short length through InitAlloc, which allocates and Free releases. */
    DCT4Spec* small = NULL;
    tvk32f a[16], b[16];
    for (int n = 0; n < 16; ++n) a[n] = (tvk32f)(n % 5) - 2;
    ok = ok && tvkgDCT4InitAlloc_32f(&small, 16) == StatusOk && tvkgDCT4_32f(a, b, small) == StatusOk &&
         tvkgDCT4Free_32f(small) == StatusOk;
    printf("16 points in single precision: y[0] = %.6f\n", b[0]);
    free(x);
    free(y);
    return ok ? 0 : 1;
}
