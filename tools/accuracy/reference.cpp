// Long-double helpers that the families' references share.
#include <cmath>

#include "accuracy.h"

namespace tvkaccuracy {

std::vector<Complex> unitRoots(int n, int sign) {
    const Real twoPi = 6.283185307179586476925286766559005768L;
    std::vector<Complex> w(n);
    for (int m = 0; m < n; ++m) {
        const Real angle = twoPi * m / n;
        w[m] = {std::cos(angle), sign * std::sin(angle)};
    }
    return w;
}

std::vector<Complex> dft(const Complex* x, int n, int sign) {
    const auto w = unitRoots(n, sign);
    std::vector<Complex> out(n);
    for (int k = 0; k < n; ++k) {
        Complex sum = 0;
        for (int j = 0; j < n; ++j) sum += x[j] * w[(static_cast<long>(j) * k) % n];
        out[k] = sum;
    }
    return out;
}

}  // namespace tvkaccuracy
