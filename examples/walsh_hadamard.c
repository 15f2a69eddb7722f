/*
 * walsh_hadamard.c - the Walsh-Hadamard transform of libtvkgenu8.
 *
 * Prints the transform of a short signal of order 3, then transforms a
 * signal of order 10 twice through a work buffer of the size the library
 * asks for: the transform is its own inverse up to the factor N, which the
 * second call divides out.  Exits non-zero if a call fails or a result is off.
 */
#include <math.h>
#include <stdio.h>
#include <stdlib.h>

#include "tvkgen.h"

int main(void) {
    /* Order 3, N = 8: output k is the sum of the inputs with sign
     * (-1)^popcount(n & k), in natural order. */
    const tvk64f x8[8] = {1, 2, 3, 4, 5, 6, 7, 8};
    tvk64f y8[8];
    if (tvkgWHT_3_64f(x8, y8, ScaleNoDiv, NULL) != StatusOk) return 1; /* orders 1 to 7 take no buffer */
    printf("order 3:");
    for (int k = 0; k < 8; ++k) printf(" %g", y8[k]);
    printf("\n");
    if (y8[0] != 36 || y8[1] != -4 || y8[2] != -8 || y8[4] != -16) return 1;

    /* Order 10, N = 1024: a buffer of the queried size, 16-byte aligned,
     * reused by both calls (a null buffer would allocate one per call). */
    enum { kOrder = 10, kN = 1 << kOrder };
    int32_t bytes = 0;
    if (tvkgWHTGetBufferSize_32f(kOrder, &bytes) != StatusOk) return 1;
    uint8_t* buffer = aligned_alloc(16, (size_t)bytes);
    tvk32f* x = malloc(kN * sizeof *x);
    tvk32f* y = malloc(kN * sizeof *y);
    if (!buffer || !x || !y) return 1;
    for (int n = 0; n < kN; ++n) x[n] = (tvk32f)sin(0.01 * n * n);

    int ok = tvkgWHT_32f(x, y, kOrder, ScaleNoDiv, buffer) == StatusOk &&
             tvkgWHT_32f(y, y, kOrder, ScaleDivInvByN, buffer) == StatusOk; /* in place */
    double worst = 0;
    for (int n = 0; n < kN; ++n) worst = fmax(worst, fabs(y[n] - x[n]));
    printf("order %d with a %d-byte buffer, twice: max |x - x'| = %.3g\n", kOrder, (int)bytes, worst);
    ok = ok && worst < 1e-4;

    free(buffer);
    free(x);
    free(y);
    return ok ? 0 : 1;
}
