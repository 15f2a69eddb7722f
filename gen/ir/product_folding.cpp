#include "ir/product_folding.h"

namespace gen {

int ProductFolding::mul(int a, const Complex& c) {
    const bool sign = c.im.isZero() && (c.re.isOne() || c.re.isMinusOne());
    int of;
    Real k;
    if (!sign && c.im.isZero() && parent_.productOf(a, of, k)) return parent_.mul(of, Complex::real(k.exact * c.re.exact));
    return parent_.mul(a, c);
}

}  // namespace gen
