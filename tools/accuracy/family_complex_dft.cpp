// Complex DFT: every length, both element types, both directions.
#include "accuracy.h"

namespace tvkaccuracy {

namespace {

// X[k] = sum_j x[j] exp(sign 2 pi i j k / N) on interleaved parts.
Reference complexDftOf(int n, int sign) {
    return [n, sign](const Real* in, Real* out) {
        std::vector<Complex> x(n);
        for (int j = 0; j < n; ++j) x[j] = {in[2 * j], in[2 * j + 1]};
        const auto X = dft(x.data(), n, sign);
        for (int k = 0; k < n; ++k) {
            out[2 * k] = X[k].real();
            out[2 * k + 1] = X[k].imag();
        }
    };
}

}  // namespace

std::vector<Codelet> complexDft() {
    std::vector<Codelet> all;
#define TVKACCURACY_DFT(N)                                                                                    \
    all.push_back(makeCodelet("tvkgDFTFwd_CToC_" #N "_32fc", "32fc fwd", N, tvkgDFTFwd_CToC_##N##_32fc, 2 * N, \
                              2 * N, complexDftOf(N, -1)));                                                  \
    all.push_back(makeCodelet("tvkgDFTInv_CToC_" #N "_32fc", "32fc inv", N, tvkgDFTInv_CToC_##N##_32fc, 2 * N, \
                              2 * N, complexDftOf(N, +1)));                                                  \
    all.push_back(makeCodelet("tvkgDFTFwd_CToC_" #N "_64fc", "64fc fwd", N, tvkgDFTFwd_CToC_##N##_64fc, 2 * N, \
                              2 * N, complexDftOf(N, -1)));                                                  \
    all.push_back(makeCodelet("tvkgDFTInv_CToC_" #N "_64fc", "64fc inv", N, tvkgDFTInv_CToC_##N##_64fc, 2 * N, \
                              2 * N, complexDftOf(N, +1)));
    TVKGEN_DFT_LENGTHS(TVKACCURACY_DFT)
#undef TVKACCURACY_DFT
    return all;
}

}  // namespace tvkaccuracy
