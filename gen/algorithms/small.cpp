#include "algorithms/forms.h"

namespace gen {

Nodes dft2(Arithmetic& g, const Nodes& x) { return {g.add(x[0], x[1]), g.sub(x[0], x[1])}; }

// Products of the single-precision 3 and 5 are formed in double and rounded once.
struct Precise {
    Arithmetic& g;
    bool on;
    int in(int a) const { return on ? g.widen(a) : a; }
    int out(int a) const { return on ? g.narrow(a) : a; }
};

Nodes dft3(Arithmetic& g, const Nodes& x, const DftOptions& opt) {
    const Precise p{g, opt.doubleProducts};
    const int a = g.add(x[1], x[2]), d = g.sub(x[1], x[2]);
    const int X0 = g.add(x[0], a);
    const int m = p.out(g.sub(p.in(x[0]), g.mul(p.in(a), realConst(Fixed::ratio(1, 2)))));
    const int e = p.out(g.mul(p.in(d), imagConst(sinTurn(1, 3).mulInt(opt.sign))));
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
    const Precise p{g, opt.doubleProducts};
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
        P = g.add(m, n);
        Q = g.sub(m, n);
    } else {
        X0 = g.add(g.add(x[0], a), b);
        const int x0 = p.in(x[0]), wa = p.in(a), wb = p.in(b);
        P = p.out(g.sub(g.add(g.mul(wa, c1), x0), g.mul(wb, c2)));
        Q = p.out(g.add(g.sub(x0, g.mul(wa, c2)), g.mul(wb, c1)));
    }
    const int wd = p.in(d), we = p.in(e);
    const int u = g.mul(p.out(g.sub(g.mul(wd, s1), g.mul(we, s2))), rotation(opt.sign));
    const int v = g.mul(p.out(g.add(g.mul(wd, s2), g.mul(we, s1))), rotation(opt.sign));
    return {X0, g.add(P, u), g.add(Q, v), g.sub(Q, v), g.sub(P, u)};
}

}  // namespace gen
