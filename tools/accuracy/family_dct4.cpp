// DCT-IV: the direct lengths 2 to 32 and the planned ones up to 512, both
// element types, each through one context made once.
#include <cmath>
#include <memory>

#include "accuracy.h"

namespace tvkaccuracy {

namespace {

// y[k] = sum_n x[n] cos(pi / N (n + 1/2) (k + 1/2)), in long double; the
// cosines of (2n + 1)(2k + 1) pi / 4N, by their index modulo 8N, once.
Reference dct4Of(int n) {
    const Real pi = 3.141592653589793238462643383279502884L;
    auto cosines = std::make_shared<std::vector<Real>>(8 * n);
    for (int m = 0; m < 8 * n; ++m) (*cosines)[m] = std::cos(pi * m / (4 * n));
    return [n, cosines](const Real* in, Real* out) {
        for (int k = 0; k < n; ++k) {
            Real sum = 0;
            for (int j = 0; j < n; ++j) sum += in[j] * (*cosines)[(2 * j + 1) * (2 * k + 1) % (8 * n)];
            out[k] = sum;
        }
    };
}

template <class R>
Codelet dct4Codelet(const char* variant, int n, tvkStatus (*initAlloc)(DCT4Spec**, int32_t),
                    tvkStatus (*transform)(const R*, R*, const DCT4Spec*), tvkStatus (*release)(DCT4Spec*)) {
    DCT4Spec* made = nullptr;
    initAlloc(&made, n);
    const std::shared_ptr<DCT4Spec> context(made, [release](DCT4Spec* s) {
        if (s) release(s);
    });
    Runner run = runnerOf<R>(n, n, [context, transform](const R* s, R* d) {
        return context ? transform(s, d, context.get()) : StatusNullPtr;
    });
    return {std::string("tvkgDCT4_") + variant + " N=" + std::to_string(n), variant, n, sizeof(R) == 4, n, n,
            std::move(run), dct4Of(n)};
}

}  // namespace

std::vector<Codelet> dct4() {
    std::vector<Codelet> all;
    for (int n = 2; n <= 512; n *= 2) {
        all.push_back(dct4Codelet<tvk32f>("32f", n, tvkgDCT4InitAlloc_32f, tvkgDCT4_32f, tvkgDCT4Free_32f));
        all.push_back(dct4Codelet<tvk64f>("64f", n, tvkgDCT4InitAlloc_64f, tvkgDCT4_64f, tvkgDCT4Free_64f));
    }
    return all;
}

}  // namespace tvkaccuracy
