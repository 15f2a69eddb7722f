#include "algorithms/hartley.h"

#include <algorithm>

#include "algorithms/forms.h"
#include "ir/mixed_precision.h"
#include "ir/transpose.h"

namespace gen {

std::vector<int> hartleyPairs(Arithmetic& real, int n, const std::vector<std::pair<int, int>>& bins) {
    std::vector<int> y(n);
    y[0] = real.narrow(bins[0].first);
    for (int k = 1; 2 * k < n; ++k) {
        const int re = real.narrow(bins[k].first), im = real.narrow(bins[k].second);
        y[k] = real.sub(re, im);
        y[n - k] = real.add(re, im);
    }
    if (n % 2 == 0) y[n / 2] = real.narrow(bins[n / 2].first);
    return y;
}

namespace {

HartleyPair hartleyOf(PairArithmetic& c, int v) {
    Arithmetic& real = c.parent();
    return {real.sub(c.re(v), c.im(v)), real.add(c.re(v), c.im(v))};
}

// The direct form with the Hartley combination taken before its last sums:
// u = Re E - Im E and v = Re O - Im O give h at k and p - k as u + v and
// u - v, and likewise g from the sums.
std::vector<HartleyPair> directLastPass(PairArithmetic& c, const Signal& x, const DftOptions& opt) {
    const int p = static_cast<int>(x.size());
    Nodes values;
    for (const Ref& r : x) values.push_back(c.valueOf(r));
    DirectForm form(c, values, opt);
    Arithmetic& real = c.parent();
    std::vector<HartleyPair> out(p);
    out[0] = hartleyOf(c, form.X0());
    for (int k = 1; 2 * k < p; ++k) {
        const auto [E, O] = form.chains(k);
        const HartleyPair e = hartleyOf(c, E), o = hartleyOf(c, O);
        out[k] = {real.add(e.h, o.h), real.add(e.g, o.g)};
        out[p - k] = {real.sub(e.h, o.h), real.sub(e.g, o.g)};
    }
    return out;
}

// A join whose second stage ends in the Hartley pass: the rows of the first
// stage, twiddled, each through the last pass of the second factor.  A row
// that a real signal skips is the conjugate of a kept one: there h and g
// trade places.
std::vector<HartleyPair> joinLastPass(PairArithmetic& c, const Plan& plan, const Signal& x, const DftOptions& opt) {
    const JoinStage stage = firstStage(c, plan, Batch{x}, opt, {});
    std::vector<HartleyPair> out(plan.n);
    std::vector<bool> filled(plan.n, false);
    for (size_t s = 0; s < stage.rows.size(); ++s) {
        const int bin = stage.origin[s].second;
        Signal row = stage.rows[s];
        for (int j = 0; j < static_cast<int>(row.size()); ++j)
            row[j] = {c.narrow(c.mul(c.valueOf(row[j]), joinTwiddle(plan, opt, bin, j))), 0};
        const std::vector<HartleyPair> sub = hartleyLastPass(c, *plan.second, row, opt);
        for (int k2 = 0; k2 < plan.second->n; ++k2) {
            const int k = joinedBin(plan, bin, k2);
            out[k] = sub[k2];
            filled[k] = true;
        }
    }
    for (int k = 0; k < plan.n; ++k)
        if (!filled[k]) out[k] = {out[(plan.n - k) % plan.n].g, out[(plan.n - k) % plan.n].h};
    return out;
}

// C[k] = (1/q) sum over m of cas(2 pi g^m / p) exp(+2 pi i m k / q).
std::vector<Complex> casKernel(int p, int root) {
    const int q = p - 1;
    std::vector<Complex> K(q);
    for (int k = 0; k < q; ++k) {
        Fixed re, im;
        for (int m = 0; m < q; ++m) {
            const int64_t e = powMod(root, m, p);
            const Fixed cas = cosTurn(e, p) + sinTurn(e, p);
            re = re + cas * cosTurn(1LL * m * k, q);
            im = im + cas * sinTurn(1LL * m * k, q);
        }
        K[k] = Complex::of(re.divInt(q), im.divInt(q));
    }
    return K;
}

}  // namespace

std::vector<HartleyPair> hartleyLastPass(PairArithmetic& c, const Plan& plan, const Signal& x, const DftOptions& opt) {
    const bool directForm = plan.kind == Plan::Kind::Direct || (plan.kind == Plan::Kind::Small && plan.n % 2);
    if (directForm) return directLastPass(c, x, opt);
    const bool join = plan.kind == Plan::Kind::GoodThomas || plan.kind == Plan::Kind::CooleyTukey;
    const bool real = std::all_of(x.begin(), x.end(), [&](const Ref& r) { return c.isReal(r); });
    if (join && !real) {
        // R + iI as two real signals, whose blocks end in products that the
        // twiddles take up: h = hR - gI and g = gR + hI.
        Signal re, im;
        for (const Ref& r : x) {
            const int v = c.valueOf(r);
            re.push_back({c.lift(c.re(v)), 0});
            im.push_back({c.lift(c.im(v)), 0});
        }
        const std::vector<HartleyPair> R = joinLastPass(c, plan, re, opt), I = joinLastPass(c, plan, im, opt);
        Arithmetic& parent = c.parent();
        std::vector<HartleyPair> out;
        for (size_t k = 0; k < R.size(); ++k)
            out.push_back({parent.sub(R[k].h, I[k].g), parent.add(R[k].g, I[k].h)});
        return out;
    }
    if (join) return joinLastPass(c, plan, x, opt);
    const Signal X = transform(c, plan, Batch{x}, opt)[0];
    std::vector<HartleyPair> out;
    for (const Ref& r : X) out.push_back(hartleyOf(c, c.valueOf(r)));
    return out;
}

std::vector<int> hartleyHalves(Arithmetic& real, int n, const std::vector<int>& E, const std::vector<int>& O) {
    const int M = n / 2;
    std::vector<int> rotated(M);
    for (int k = 0; k < M; ++k) {
        if (M % 2) {  // coprime halves: O'[k] = (-1)^k O[k]
            rotated[k] = k % 2 ? real.sub(real.zero(), O[k]) : O[k];
            continue;
        }
        // O'[k] = cos(2 pi k/n) O[k] + sin(2 pi k/n) O[M - k], one rounding.
        const Fixed co = cosTurn(k, n), si = sinTurn(k, n);
        const int partner = O[(M - k) % M];
        if (co.isZero() || si.isZero()) {
            rotated[k] = real.narrow(real.mul(si.isZero() ? O[k] : partner, Complex::real(si.isZero() ? co : si)));
        } else if (co.compareMagnitude(si) == 0) {  // h (+-O[k] + O[M-k]): the sum first
            const int sum = co.isNegative() ? real.sub(partner, O[k]) : real.add(O[k], partner);
            rotated[k] = real.narrow(real.mul(sum, Complex::real(si)));
        } else {
            rotated[k] = real.narrow(real.add(real.mul(O[k], Complex::real(co)), real.mul(partner, Complex::real(si))));
        }
    }
    std::vector<int> y(n);
    for (int k = 0; k < M; ++k) {
        y[k] = real.add(E[k], rotated[k]);
        y[k + M] = real.sub(E[k], rotated[k]);
    }
    return y;
}

std::vector<int> hartleyRader(PairArithmetic& c, const Plan& plan, const std::vector<int>& x, const DftOptions& opt) {
    const int p = plan.n, q = p - 1, root = plan.root;
    Arithmetic& real = c.parent();
    Signal u(q);
    for (int a = 0; a < q; ++a) u[a] = {c.lift(x[powMod(root, a, p)]), 0};
    const Signal U = transform(c, *plan.first, Batch{u}, opt)[0];
    const std::vector<Complex> K = casKernel(p, root);
    const int total = c.re(c.valueOf(U[0]));

    // The inverse of the products, as the transpose of a forward network.
    Graph network(1, Domain::Real);
    MixedPrecision mixed(network);
    PairArithmetic pairs(real.mixedPrecision() ? static_cast<Arithmetic&>(mixed) : network);
    Signal z(q);
    for (int b = 0; b < q; ++b) z[b] = {pairs.lift(network.input({b, -1, -1, -1})), 0};
    const Signal bins = transform(pairs, *plan.second, Batch{z}, opt)[0];
    std::vector<Seed> seeds;
    auto seed = [&](int node, int value) {
        if (!network.isZero(node)) seeds.push_back({node, value});
    };
    // Bin 0 carries x[0], every output takes it once.
    seed(pairs.re(pairs.valueOf(bins[0])),
         real.narrow(real.sub(x[0], real.mul(total, Complex::real(Fixed::ratio(1, q))))));
    for (int k = 1; k <= q / 2; ++k) {
        const int factor = 2 * k == q ? 1 : 2;  // the Hermitian bins count twice
        const Complex kernel{Real::of(K[k].re.exact.mulInt(factor)), Real::of(K[k].im.exact.mulInt(factor))};
        const int v = c.narrow(c.mul(c.valueOf(U[k]), kernel));
        const int bin = pairs.valueOf(bins[k]);
        seed(pairs.re(bin), c.re(v));
        if (2 * k < q) seed(pairs.im(bin), c.im(v));
    }
    const std::vector<int> correlation = transpose(network, seeds, q, real);
    std::vector<int> y(p);
    y[0] = real.add(x[0], total);
    const int inverseRoot = powMod(root, p - 2, p);
    for (int b = 0; b < q; ++b) y[powMod(inverseRoot, b, p)] = correlation[b];
    return y;
}

}  // namespace gen
