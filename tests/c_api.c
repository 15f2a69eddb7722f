/* The public header and a few entries used from plain C11. */
#include <math.h>
#include <stdio.h>
#include <string.h>

#include "tvkgen.h"

static int failures;

#define CHECK(cond)                                                    \
    do {                                                               \
        if (!(cond)) {                                                 \
            fprintf(stderr, "%s:%d: %s\n", __FILE__, __LINE__, #cond); \
            ++failures;                                                \
        }                                                              \
    } while (0)

int main(void) {
    const tvkLibraryVersion* v = tvkgenGetLibVersion();
    CHECK(v != NULL && v->major == 8 && v->minor == 2 && strcmp(v->target, "u8") == 0);

    /* Length 4, impulse at x[1]: the bins run through 1, -i, -1, i. */
    tvk32fc x[4] = {{0, 0}, {1, 0}, {0, 0}, {0, 0}}, X[4];
    CHECK(tvkgDFTFwd_CToC_4_32fc(x, X, ScaleNoDiv) == StatusOk);
    CHECK(X[1].re == 0 && X[1].im == -1 && X[2].re == -1 && X[3].im == 1);

    /* Through the switch and back, with 1/N on the inverse. */
    tvk64fc y[7], Y[7], z[7];
    for (int k = 0; k < 7; ++k) y[k] = (tvk64fc){k + 1.0, -k * 0.5};
    CHECK(tvkgDFTFwd_CToC_64fc(y, Y, 7, ScaleNoDiv) == StatusOk);
    CHECK(fabs(Y[0].re - 28.0) < 1e-12);
    CHECK(tvkgDFTInv_CToC_7_64fc(Y, z, ScaleDivInvByN) == StatusOk);
    for (int k = 0; k < 7; ++k) CHECK(fabs(z[k].re - y[k].re) < 1e-13 && fabs(z[k].im - y[k].im) < 1e-13);

    CHECK(tvkgDFTInv_CToC_32fc(NULL, NULL, 65, 0) == StatusSize);
    CHECK(tvkgDFTFwd_CToC_5_32fc(NULL, X, 3) == StatusNullPtr);
    CHECK(tvkgDFTFwd_CToC_5_32fc(x, X, 3) == StatusScaleFlag);

    tvkDFTCodelet_64fc fn = tvkgDFTInv_CToC_2_64fc;
    CHECK(fn(y, Y, ScaleDivBySqrtN) == StatusOk);
    CHECK(Y[0].re == (y[0].re + y[1].re) * (1.0 / sqrt(2.0)));

    if (failures == 0) printf("C interface: all checks passed\n");
    return failures == 0 ? 0 : 1;
}
