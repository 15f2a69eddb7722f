#include "algorithms/forms.h"

namespace gen {

// Form D, direct pairing of x[j] with x[p-j]; signs of the cosines and sines
// are folded into the additions.
Nodes direct(Arithmetic& g, const Nodes& x, const DftOptions& opt) {
    const int p = static_cast<int>(x.size()), L = (p - 1) / 2;
    Nodes a(L + 1), d(L + 1);
    for (int j = 1; j <= L; ++j) {
        a[j] = g.add(x[j], x[p - j]);
        d[j] = g.sub(x[j], x[p - j]);
    }
    int sum = a[1];
    for (int j = 2; j <= L; ++j) sum = g.add(sum, a[j]);
    Nodes X(p);
    X[0] = g.add(x[0], sum);
    for (int k = 1; k <= L; ++k) {
        int E = x[0], O = -1;
        for (int j = 1; j <= L; ++j) {
            const Fixed c = cosTurn(j * k, p);
            const int term = g.mul(a[j], realConst(c.isNegative() ? -c : c));
            E = c.isNegative() ? g.sub(E, term) : g.add(E, term);
            // sign * i * sin: X[k] = E + O with O = sum of sign*i*sin(2 pi jk/p) d[j]
            const Fixed s = sinTurn(j * k, p).mulInt(opt.sign);
            const int sterm = g.mul(d[j], imagConst(s.isNegative() ? -s : s));
            if (O < 0) O = s.isNegative() ? g.mul(sterm, realConst(Fixed::fromInt(-1))) : sterm;
            else O = s.isNegative() ? g.sub(O, sterm) : g.add(O, sterm);
        }
        E = g.narrow(E);
        O = g.narrow(O);
        X[k] = g.add(E, O);
        X[p - k] = g.sub(E, O);
    }
    return X;
}

}  // namespace gen
