#include "algorithms/forms.h"

namespace gen {

// Split radix, decimation in frequency.  The rotations act on the 2-point
// differences; at n = N/8 both rotations share the products h*a and h*b.
// Each rotation is a block of its own.
//
// With conjugate pairs the second quarter is rotated by w^-n, not w^3n, and
// gives the outputs 4k - 1.  The two rotations of a + q and a - q (q = i b)
// then share their parts: with w = c + i s,
//   w (a + q) = E + F,  w^-1 (a - q) = E - F,  E = c a + i s q,  F = c q + i s a,
// the same operations as two complex products, but by real and imaginary
// constants only, and E and F each add values that come out of their
// products in the same order of halves: the interleaved back-end swaps
// halves once, for E + F and E - F together, instead of three times.
Nodes splitRadix(Arithmetic& g, const Nodes& x, const DftOptions& opt) {
    const int N = static_cast<int>(x.size());
    if (N == 1) return x;
    if (N == 2) return dft2(g, x);
    if (N == 4) return dft4(g, x, opt);
    Nodes u(N / 2), z1(N / 4), z3(N / 4);
    for (int n = 0; n < N / 2; ++n) u[n] = g.add(x[n], x[n + N / 2]);
    const Complex minusOne = realConst(Fixed::fromInt(-1));
    for (int n = 0; n < N / 4; ++n) {
        const int a = g.sub(x[n], x[n + N / 2]);
        const int b = g.sub(x[n + N / 4], x[n + 3 * N / 4]);
        if (n == 0) {
            const int ib = g.mul(b, rotation(opt.sign));
            z1[n] = g.add(a, ib);
            z3[n] = g.sub(a, ib);
        } else if (8 * n == N) {
            const Complex h = realConst(cosTurn(1, 8));
            const int r = g.mul(a, h), t = g.mul(b, h);
            const int A = g.add(r, t), B = g.sub(r, t);
            z1[n] = g.narrow(g.add(B, g.mul(A, rotation(opt.sign))));
            const int z3n = g.sub(B, g.mul(A, rotation(opt.sign)));
            z3[n] = g.narrow(opt.conjugatePairs ? z3n : g.mul(z3n, minusOne));
        } else if (opt.conjugatePairs) {
            const Complex w = rootOfUnity(n, N, opt.sign);
            const Complex c{w.re, Real::ofInt(0)}, is{Real::ofInt(0), w.im};
            const int q = g.mul(b, rotation(opt.sign));
            const int E = g.add(g.mul(a, c), g.mul(q, is)), F = g.add(g.mul(q, c), g.mul(a, is));
            z1[n] = g.narrow(g.add(E, F));
            z3[n] = g.narrow(g.sub(E, F));
        } else {
            const int ib = g.mul(b, rotation(opt.sign));
            z1[n] = g.narrow(g.mul(g.add(a, ib), rootOfUnity(n, N, opt.sign)));
            z3[n] = g.narrow(g.mul(g.sub(a, ib), rootOfUnity(3 * n, N, opt.sign)));
        }
    }
    const Nodes U = splitRadix(g, u, opt), Z1 = splitRadix(g, z1, opt), Z3 = splitRadix(g, z3, opt);
    Nodes X(N);
    for (int k = 0; k < N / 2; ++k) X[2 * k] = U[k];
    for (int k = 0; k < N / 4; ++k) {
        X[4 * k + 1] = Z1[k];
        X[4 * k + 3] = opt.conjugatePairs ? Z3[(k + 1) % (N / 4)] : Z3[k];
    }
    return X;
}

}  // namespace gen
