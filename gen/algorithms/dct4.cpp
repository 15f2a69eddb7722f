#include "algorithms/dct4.h"

namespace gen {

namespace {

// exp(i pi num / den)
Complex halfTurn(int num, int den) { return Complex::of(cosTurn(num, 2 * den), sinTurn(num, 2 * den)); }

Complex unitI() { return {Real::ofInt(0), Real::ofInt(1)}; }

// The same DFT on inputs whose upper half is conjugated first.
std::vector<int> dftOfConjUpper(PairArithmetic& c, int R, std::vector<int> z) {
    for (int b = R / 2; b < R; ++b) z[b] = c.conjugate(z[b]);
    return dct4Dft(c, R, false, z);
}

}  // namespace

std::vector<int> dct4Dft(PairArithmetic& c, int R, bool conjUpper, const std::vector<int>& z) {
    auto upper = [&](int v) { return conjUpper ? c.conjugate(v) : v; };
    if (R == 2) return {c.add(z[0], z[1]), upper(c.sub(z[0], z[1]))};
    if (R == 4) {
        const int s0 = c.add(z[0], z[2]), d0 = c.sub(z[0], z[2]);
        const int s1 = c.add(z[1], z[3]), d1 = c.mul(c.sub(z[1], z[3]), unitI());
        return {c.add(s0, s1), c.add(d0, d1), upper(c.sub(s0, s1)), upper(c.sub(d0, d1))};
    }
    // R = 8: even and odd halves, the odd one turned by exp(2 pi i w / 8).
    const std::vector<int> e = dct4Dft(c, 4, false, {z[0], z[2], z[4], z[6]});
    const std::vector<int> o = dct4Dft(c, 4, false, {z[1], z[3], z[5], z[7]});
    std::vector<int> D(8);
    for (int w = 0; w < 4; ++w) {
        const int t = c.mul(o[w], halfTurn(w, 4));
        D[w] = c.add(e[w], t);
        D[w + 4] = upper(c.sub(e[w], t));
    }
    return D;
}

int dct4Rotate(PairArithmetic& c, Graph& g, int z, int cosine, int sine) {
    const int re = c.re(z), im = c.im(z);
    return c.make(g.sub(g.product(cosine, re), g.product(sine, im)), g.add(g.product(sine, re), g.product(cosine, im)));
}

std::vector<int> dct4RealTransform(PairArithmetic& c, int L, const std::vector<int>& points) {
    if (L == 2) return {c.make(points[1], c.parent().sub(c.parent().zero(), points[0]))};
    const int R = L <= 8 ? 2 : 4, Ls = L / R, Q = Ls / 2;
    // Sub-transform b takes the points t = R a + b.
    std::vector<std::vector<int>> sub(R);
    for (int b = 0; b < R; ++b) {
        std::vector<int> own;
        for (int a = 0; a < Ls; ++a) own.push_back(points[R * a + b]);
        sub[b] = dct4RealTransform(c, Ls, own);
    }
    // Bin i of each, turned by exp(i pi (2i + 1) b / L), gives bins Ls w + i
    // and, conjugated, Ls w + Ls-1-i.
    std::vector<int> Z(L / 2);
    for (int i = 0; i < Q; ++i) {
        std::vector<int> v(R);
        for (int b = 0; b < R; ++b) v[b] = b ? c.mul(sub[b][i], halfTurn((2 * i + 1) * b, L)) : sub[0][i];
        const std::vector<int> D = dct4Dft(c, R, true, v);
        for (int w = 0; w < R / 2; ++w) {
            Z[Ls * w + i] = D[w];
            Z[Ls * w + Ls - 1 - i] = D[R - 1 - w];
        }
    }
    return Z;
}

std::vector<int> dct4RealOutput(PairArithmetic& c, int L, bool wide, const std::vector<int>& W,
                                const std::function<void()>& betweenStages) {
    if (L == 2) return {c.im(W[0]), c.re(W[0])};
    const int R = wide && L >= 16 ? 4 : 2, Ls = L / R, Q = Ls / 2;
    std::vector<std::vector<int>> sub(R, std::vector<int>(Q));
    for (int i = 0; i < Q; ++i) {
        std::vector<int> P(R);
        for (int w = 0; w < R / 2; ++w) {
            P[w] = W[Ls * w + i];
            P[R - 1 - w] = W[Ls * w + Ls - 1 - i];
        }
        const std::vector<int> G = dftOfConjUpper(c, R, P);
        for (int b = 0; b < R; ++b) sub[b][i] = b ? c.mul(G[b], halfTurn((2 * i + 1) * b, L)) : G[0];
    }
    if (betweenStages) betweenStages();
    std::vector<int> out(L);
    for (int b = 0; b < R; ++b) {
        const std::vector<int> o = dct4RealOutput(c, Ls, wide, sub[b]);
        for (int a = 0; a < Ls; ++a) out[R * a + b] = o[a];
    }
    return out;
}

}  // namespace gen
