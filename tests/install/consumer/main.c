#include <stdio.h>

#include "tvkgen.h"

int main(void) {
    const tvk32fc x[2] = {{1, 2}, {3, 4}};
    tvk32fc X[2];
    if (tvkgDFTFwd_CToC_2_32fc(x, X, ScaleNoDiv) != StatusOk) return 1;
    if (X[0].re != 4 || X[0].im != 6 || X[1].re != -2 || X[1].im != -2) return 2;
    printf("%s\n", tvkgenGetLibVersion()->version);
    return 0;
}
