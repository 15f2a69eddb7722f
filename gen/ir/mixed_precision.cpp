#include "ir/mixed_precision.h"

#include <cmath>

namespace gen {

void MixedPrecision::align(int& a, int& b) {
    if (g_.node(a).isDouble) b = g_.widen(b);
    else if (g_.node(b).isDouble) a = g_.widen(a);
}

int MixedPrecision::add(int a, int b) {
    align(a, b);
    return g_.add(a, b);
}

int MixedPrecision::sub(int a, int b) {
    align(a, b);
    return g_.sub(a, b);
}

int MixedPrecision::mul(int a, const Complex& c) {
    if (c.im.isZero() && std::fabs(c.re.d) == 1) return g_.mul(a, c);
    return g_.mul(g_.widen(a), c);
}

}  // namespace gen
