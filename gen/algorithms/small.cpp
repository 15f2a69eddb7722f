#include "algorithms/forms.h"

namespace gen {

Nodes dft2(Arithmetic& g, const Nodes& x) { return {g.add(x[0], x[1]), g.sub(x[0], x[1])}; }

// Every form ends a block where it joins a cosine sum and a sine sum, and
// narrows both first: in a mixed-precision body each is formed in double
// and rounded once.

Nodes dft3(Arithmetic& g, const Nodes& x, const DftOptions& opt) {
    const int a = g.add(x[1], x[2]), d = g.sub(x[1], x[2]);
    const int X0 = g.add(x[0], a);
    const int m = g.narrow(g.sub(x[0], g.mul(a, realConst(Fixed::ratio(1, 2)))));
    const int e = g.narrow(g.mul(d, imagConst(sinTurn(1, 3).mulInt(opt.sign))));
    return {X0, g.add(m, e), g.sub(m, e)};
}

Nodes dft4(Arithmetic& g, const Nodes& x, const DftOptions& opt) {
    const int a = g.add(x[0], x[2]), b = g.sub(x[0], x[2]);
    const int c = g.add(x[1], x[3]), d = g.sub(x[1], x[3]);
    const int r = g.mul(d, rotation(opt.sign));
    return {g.add(a, c), g.add(b, r), g.sub(a, c), g.sub(b, r)};
}

// The 5-point form.  `w` selects the variant with t = a + b, m = x0 - t/4 and
// n = sqrt(5)/4 * (a - b) in place of the two cosine sums.
Nodes dft5(Arithmetic& g, const Nodes& x, const DftOptions& opt, bool w) {
    const Complex c1 = realConst(cosTurn(1, 5)), c2 = realConst(-cosTurn(2, 5));
    const Complex s1 = realConst(sinTurn(1, 5)), s2 = realConst(sinTurn(2, 5));
    const int a = g.add(x[1], x[4]), d = g.sub(x[1], x[4]);
    const int b = g.add(x[3], x[2]), e = g.sub(x[3], x[2]);
    int X0, P, Q;
    if (w) {
        const int t = g.add(a, b);
        X0 = g.add(x[0], t);
        const int m = g.sub(x[0], g.mul(t, realConst(Fixed::ratio(1, 4))));
        // sqrt(5)/4 = (cos 72 - cos 144) / 2
        const int n = g.mul(g.sub(a, b), realConst((cosTurn(1, 5) - cosTurn(2, 5)).divInt(2)));
        P = g.narrow(g.add(m, n));
        Q = g.narrow(g.sub(m, n));
    } else {
        X0 = g.add(g.add(x[0], a), b);
        P = g.narrow(g.sub(g.add(g.mul(a, c1), x[0]), g.mul(b, c2)));
        Q = g.narrow(g.add(g.sub(x[0], g.mul(a, c2)), g.mul(b, c1)));
    }
    const int u = g.mul(g.narrow(g.sub(g.mul(d, s1), g.mul(e, s2))), rotation(opt.sign));
    const int v = g.mul(g.narrow(g.add(g.mul(d, s2), g.mul(e, s1))), rotation(opt.sign));
    return {X0, g.add(P, u), g.add(Q, v), g.sub(Q, v), g.sub(P, u)};
}

}  // namespace gen
