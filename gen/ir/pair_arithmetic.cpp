#include "ir/pair_arithmetic.h"

#include <cmath>

namespace gen {

int PairArithmetic::make(int r, int i) {
    values_.emplace_back(r, i);
    return static_cast<int>(values_.size()) - 1;
}

int PairArithmetic::times(int v, const Real& k) {
    if (k.isZero()) return parent_.zero();
    return parent_.mul(v, Complex{k, Real::ofInt(0)});
}

int PairArithmetic::conjugate(int v) { return make(re(v), parent_.sub(parent_.zero(), im(v))); }

int PairArithmetic::zero() { return make(parent_.zero(), parent_.zero()); }

int PairArithmetic::add(int a, int b) { return make(parent_.add(re(a), re(b)), parent_.add(im(a), im(b))); }

int PairArithmetic::sub(int a, int b) { return make(parent_.sub(re(a), re(b)), parent_.sub(im(a), im(b))); }

int PairArithmetic::mul(int a, const Complex& c) {
    const int r = re(a), i = im(a);
    if (!c.re.isZero() && std::fabs(c.re.d) == std::fabs(c.im.d)) {
        // h (sr + j si): the sums first, then one product each.
        const Real h = c.re.d < 0 ? -c.re : c.re;
        const bool sr = c.re.d < 0, si = c.im.d < 0;
        auto signedSum = [&](int x, bool negX, int y, bool negY) {
            if (negX && negY) return parent_.sub(parent_.zero(), parent_.add(x, y));
            if (negX) return parent_.sub(y, x);
            if (negY) return parent_.sub(x, y);
            return parent_.add(x, y);
        };
        // (sr R - si I) h + j (si R + sr I) h
        return make(times(signedSum(r, sr, i, !si), h), times(signedSum(r, si, i, sr), h));
    }
    return make(parent_.sub(times(r, c.re), times(i, c.im)), parent_.add(times(r, c.im), times(i, c.re)));
}

int PairArithmetic::widen(int a) { return make(parent_.widen(re(a)), parent_.widen(im(a))); }
int PairArithmetic::narrow(int a) { return make(parent_.narrow(re(a)), parent_.narrow(im(a))); }

}  // namespace gen
