// Hartley: every length, both element types.
#include "accuracy.h"

namespace tvkaccuracy {

namespace {

// y[k] = sum_j x[j] cas(2 pi j k / n) = Re X[k] - Im X[k], X the DFT of negative exponent.
Reference hartleyOf(int n) {
    return [n](const Real* in, Real* out) {
        std::vector<Complex> x(in, in + n);
        const auto X = dft(x.data(), n, -1);
        for (int k = 0; k < n; ++k) out[k] = X[k].real() - X[k].imag();
    };
}

}  // namespace

std::vector<Codelet> hartley() {
    std::vector<Codelet> all;
#define TVKACCURACY_HARTLEY(N)                                                                                  \
    all.push_back(makeCodelet("tvkgHartley_" #N "_32f", "32f", N, tvkgHartley_##N##_32f, N, N, hartleyOf(N))); \
    all.push_back(makeCodelet("tvkgHartley_" #N "_64f", "64f", N, tvkgHartley_##N##_64f, N, N, hartleyOf(N)));
    TVKGEN_DFT_LENGTHS(TVKACCURACY_HARTLEY)
#undef TVKACCURACY_HARTLEY
    return all;
}

}  // namespace tvkaccuracy
