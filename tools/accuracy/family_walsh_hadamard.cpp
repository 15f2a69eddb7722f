// Walsh-Hadamard: every order, both element types, with a null buffer (each
// call allocates its own).
#include "accuracy.h"

namespace tvkaccuracy {

namespace {

// y[k] = sum_n (-1)^popcount(n & k) x[n], by the fast transform in long double.
Reference walshHadamardOf(int n) {
    return [n](const Real* in, Real* out) {
        std::copy(in, in + n, out);
        for (int h = 1; h < n; h *= 2)
            for (int i = 0; i < n; ++i)
                if (!(i & h)) {
                    const Real a = out[i], b = out[i + h];
                    out[i] = a + b;
                    out[i + h] = a - b;
                }
    };
}

template <class R>
Codelet whtCodelet(std::string name, const char* variant, int order,
                   tvkStatus (*fn)(const R*, R*, int32_t, uint8_t*)) {
    const int n = 1 << order;
    Runner run = runnerOf<R>(n, n, [fn](const R* s, R* d) { return fn(s, d, ScaleNoDiv, nullptr); });
    return {std::move(name), variant, n, sizeof(R) == 4, n, n, std::move(run), walshHadamardOf(n)};
}

}  // namespace

std::vector<Codelet> walshHadamard() {
    std::vector<Codelet> all;
#define TVKACCURACY_WHT(M)                                                   \
    all.push_back(whtCodelet("tvkgWHT_" #M "_32f", "32f", M, tvkgWHT_##M##_32f)); \
    all.push_back(whtCodelet("tvkgWHT_" #M "_64f", "64f", M, tvkgWHT_##M##_64f));
    TVKGEN_WHT_ORDERS(TVKACCURACY_WHT)
#undef TVKACCURACY_WHT
    return all;
}

}  // namespace tvkaccuracy
