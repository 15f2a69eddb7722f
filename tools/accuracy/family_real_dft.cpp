// Real DFT: every length, both element types, forward and inverse, in the
// CCS, Pack and Perm layouts.
#include "accuracy.h"

namespace tvkaccuracy {

namespace {

enum class Layout { CCS, Pack, Perm };

int layoutLength(Layout l, int n) { return l == Layout::CCS ? (n % 2 ? n + 1 : n + 2) : n; }

// Where bin k keeps its real and imaginary part (-1: nowhere).
int realElement(Layout l, int n, int k) {
    if (k == 0) return 0;
    if (l == Layout::CCS) return 2 * k;
    if (l == Layout::Perm && n % 2 == 0) return 2 * k == n ? 1 : 2 * k;
    return 2 * k - 1;
}

int imagElement(Layout l, int n, int k) {
    if (k == 0 || 2 * k == n) return -1;
    return realElement(l, n, k) + 1;
}

// The layout of the bins 0 to n/2 of the DFT of n reals (the zeros of CCS stay zero).
Reference forwardOf(Layout l, int n) {
    return [l, n](const Real* in, Real* out) {
        std::vector<Complex> x(in, in + n);
        const auto X = dft(x.data(), n, -1);
        std::fill(out, out + layoutLength(l, n), Real(0));
        for (int k = 0; 2 * k <= n; ++k) {
            out[realElement(l, n, k)] = X[k].real();
            if (imagElement(l, n, k) >= 0) out[imagElement(l, n, k)] = X[k].imag();
        }
    };
}

// n reals from a layout: every bin but 0 and n/2 counts twice, and the
// imaginary parts of those two are not read.
Reference inverseOf(Layout l, int n) {
    return [l, n](const Real* in, Real* out) {
        std::vector<Complex> X(n);
        for (int k = 0; 2 * k <= n; ++k) {
            const int im = imagElement(l, n, k);
            X[k] = {in[realElement(l, n, k)], im < 0 ? Real(0) : in[im]};
            if (k > 0) X[n - k] = std::conj(X[k]);
        }
        const auto x = dft(X.data(), n, +1);
        for (int j = 0; j < n; ++j) out[j] = x[j].real();
    };
}

}  // namespace

std::vector<Codelet> realDft() {
    std::vector<Codelet> all;
    const Layout layouts[] = {Layout::CCS, Layout::Pack, Layout::Perm};
    const char* names[] = {"CCS", "Pack", "Perm"};
#define TVKACCURACY_REAL(N)                                                                                      \
    {                                                                                                            \
        tvkStatus (*fwd32[])(const tvk32f*, tvk32f*, int32_t) = {tvkgDFTFwd_RToCCS_##N##_32f,                    \
                                                                 tvkgDFTFwd_RToPack_##N##_32f,                   \
                                                                 tvkgDFTFwd_RToPerm_##N##_32f};                  \
        tvkStatus (*inv32[])(const tvk32f*, tvk32f*, int32_t) = {tvkgDFTInv_CCSToR_##N##_32f,                    \
                                                                 tvkgDFTInv_PackToR_##N##_32f,                   \
                                                                 tvkgDFTInv_PermToR_##N##_32f};                  \
        tvkStatus (*fwd64[])(const tvk64f*, tvk64f*, int32_t) = {tvkgDFTFwd_RToCCS_##N##_64f,                    \
                                                                 tvkgDFTFwd_RToPack_##N##_64f,                   \
                                                                 tvkgDFTFwd_RToPerm_##N##_64f};                  \
        tvkStatus (*inv64[])(const tvk64f*, tvk64f*, int32_t) = {tvkgDFTInv_CCSToR_##N##_64f,                    \
                                                                 tvkgDFTInv_PackToR_##N##_64f,                   \
                                                                 tvkgDFTInv_PermToR_##N##_64f};                  \
        for (int l = 0; l < 3; ++l) {                                                                            \
            const int len = layoutLength(layouts[l], N);                                                         \
            const std::string layout = names[l];                                                                 \
            all.push_back(makeCodelet("tvkgDFTFwd_RTo" + layout + "_" #N "_32f", "32f fwd " + layout, N,          \
                                      fwd32[l], N, len, forwardOf(layouts[l], N)));                              \
            all.push_back(makeCodelet("tvkgDFTInv_" + layout + "ToR_" #N "_32f", "32f inv " + layout, N,          \
                                      inv32[l], len, N, inverseOf(layouts[l], N)));                              \
            all.push_back(makeCodelet("tvkgDFTFwd_RTo" + layout + "_" #N "_64f", "64f fwd " + layout, N,          \
                                      fwd64[l], N, len, forwardOf(layouts[l], N)));                              \
            all.push_back(makeCodelet("tvkgDFTInv_" + layout + "ToR_" #N "_64f", "64f inv " + layout, N,          \
                                      inv64[l], len, N, inverseOf(layouts[l], N)));                              \
        }                                                                                                        \
    }
    TVKGEN_DFT_LENGTHS(TVKACCURACY_REAL)
#undef TVKACCURACY_REAL
    return all;
}

}  // namespace tvkaccuracy
