/*
 * real_dft.c - the real DFT and the Hartley transform of libtvkgenu8.
 *
 * Transforms 12 real samples (a constant plus tones at bins 2 and 5) into
 * the CCS layout, prints the magnitude of each bin, reads the same bins from
 * the Pack and Perm layouts, and returns to the samples; then applies the
 * Hartley transform twice.  Exits non-zero if a call fails or a result is off.
 */
#include <math.h>
#include <stdio.h>

#include "tvkgen.h"

enum { kN = 12 };

int main(void) {
    const double pi = 3.14159265358979323846;
    tvk64f x[kN], ccs[kN + 2], pack[kN], perm[kN], back[kN];
    for (int n = 0; n < kN; ++n) x[n] = 0.5 + cos(2 * pi * 2 * n / kN) + 0.25 * sin(2 * pi * 5 * n / kN);

    /* Forward into all three layouts, with 1/N on the forward side. */
    if (tvkgDFTFwd_RToCCS_12_64f(x, ccs, ScaleDivFwdByN) != StatusOk) return 1;
    if (tvkgDFTFwd_RToPack_64f(x, pack, kN, ScaleDivFwdByN) != StatusOk) return 1; /* through the switch */
    if (tvkgDFTFwd_RToPerm_12_64f(x, perm, ScaleDivFwdByN) != StatusOk) return 1;
    printf("bin   |X[k]|/N   (CCS: R0, 0, R1, I1, ..., R6, 0)\n");
    int ok = 1;
    for (int k = 0; k <= kN / 2; ++k) {
        const double re = ccs[2 * k], im = ccs[2 * k + 1];
        printf("%3d   %.4f\n", k, hypot(re, im));
        /* Pack keeps bin k (0 < k < 6) at 2k-1, 2k; Perm at 2k, 2k+1 as CCS, bin 6 at element 1. */
        if (k > 0 && k < kN / 2) ok = ok && pack[2 * k - 1] == re && pack[2 * k] == im && perm[2 * k] == re;
    }
    ok = ok && pack[kN - 1] == ccs[kN] && perm[1] == ccs[kN];
    ok = ok && fabs(ccs[0] - 0.5) < 1e-15 && fabs(ccs[4] - 0.5) < 1e-15 && fabs(ccs[11] + 0.125) < 1e-15;

    /* The inverse with no scale: the 1/N was taken on the way in. */
    if (tvkgDFTInv_CCSToR_12_64f(ccs, back, ScaleNoDiv) != StatusOk) return 1;
    double worst = 0;
    for (int n = 0; n < kN; ++n) worst = fmax(worst, fabs(back[n] - x[n]));
    printf("forward and inverse: max |x - x'| = %.3g\n", worst);
    ok = ok && worst < 1e-14;

    /* Hartley: its own inverse up to N, in single precision, in place. */
    tvk32f h[kN], orig[kN];
    for (int n = 0; n < kN; ++n) orig[n] = h[n] = (tvk32f)x[n];
    ok = ok && tvkgHartley_12_32f(h, h, ScaleNoDiv) == StatusOk && tvkgHartley_32f(h, h, kN, ScaleDivInvByN) == StatusOk;
    worst = 0;
    for (int n = 0; n < kN; ++n) worst = fmax(worst, fabs(h[n] - orig[n]));
    printf("Hartley twice: max |x - x'| = %.3g\n", worst);
    ok = ok && worst < 1e-6;
    return ok ? 0 : 1;
}
