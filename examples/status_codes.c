/*
 * status_codes.c - what the complex DFT returns on bad input.
 *
 * Length is checked first, then the pointers, then the scale flag; a failed
 * call leaves the destination as it was.  Exits non-zero if any status
 * differs from the one the contract promises.
 */
#include <stdio.h>
#include <string.h>

#include "tvkgen.h"

enum { kLength = 8 };

static int expect(const char* call, tvkStatus got, tvkStatus wanted) {
    printf("  %-58s -> %4d %s\n", call, (int)got, got == wanted ? "" : "UNEXPECTED");
    return got == wanted;
}

int main(void) {
    _Alignas(16) tvk32fc src[kLength] = { { 1.0f, 0.0f } };
    _Alignas(16) tvk32fc dst[kLength];
    _Alignas(16) tvk32fc untouched[kLength];
    int ok = 1;

    for (int k = 0; k < kLength; ++k) dst[k] = (tvk32fc){ -7.0f, -7.0f };
    memcpy(untouched, dst, sizeof dst);

    printf("status codes: StatusOk %d, StatusSize %d, StatusNullPtr %d, StatusScaleFlag %d\n\n",
           StatusOk, StatusSize, StatusNullPtr, StatusScaleFlag);
    ok &= expect("tvkgDFTFwd_CToC_32fc(src, dst, 8, ScaleNoDiv)",
                 tvkgDFTFwd_CToC_32fc(src, dst, kLength, ScaleNoDiv), StatusOk);
    memcpy(dst, untouched, sizeof dst);

    ok &= expect("tvkgDFTFwd_CToC_32fc(src, dst, 65, ScaleNoDiv)", tvkgDFTFwd_CToC_32fc(src, dst, 65, ScaleNoDiv),
                 StatusSize);
    ok &= expect("tvkgDFTFwd_CToC_32fc(NULL, NULL, 1, 0)   (size wins)", tvkgDFTFwd_CToC_32fc(NULL, NULL, 1, 0),
                 StatusSize);
    ok &= expect("tvkgDFTFwd_CToC_8_32fc(NULL, dst, 3)     (null wins)", tvkgDFTFwd_CToC_8_32fc(NULL, dst, 3),
                 StatusNullPtr);
    ok &= expect("tvkgDFTInv_CToC_8_32fc(src, NULL, ScaleNoDiv)", tvkgDFTInv_CToC_8_32fc(src, NULL, ScaleNoDiv),
                 StatusNullPtr);
    ok &= expect("tvkgDFTFwd_CToC_8_32fc(src, dst, 3)", tvkgDFTFwd_CToC_8_32fc(src, dst, 3), StatusScaleFlag);
    ok &= expect("tvkgDFTFwd_CToC_8_32fc(src, dst, 0)", tvkgDFTFwd_CToC_8_32fc(src, dst, 0), StatusScaleFlag);

    const int untouched_after_failures = memcmp(dst, untouched, sizeof dst) == 0;
    printf("\ndestination unchanged by the failed calls: %s\n", untouched_after_failures ? "yes" : "NO");
    return ok && untouched_after_failures ? 0 : 1;
}
