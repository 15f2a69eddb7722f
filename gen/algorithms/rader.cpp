#include "algorithms/forms.h"

#include "ir/pair_arithmetic.h"
#include "ir/transpose.h"

namespace gen {

namespace {

Signal gatherInputs(const Batch& in, int element) {
    Signal s;
    for (const Signal& x : in) s.push_back(x[element]);
    return s;
}

// Rader's multipliers B[k] = (1/n) sum_m w^(g^-m mod p) exp(s 2 pi i m k / n),
// with s the sign of the first inner transform.
std::vector<Complex> raderMultipliers(int p, int root, int sign, int firstSign) {
    const int n = p - 1, inverseRoot = powMod(root, p - 2, p);
    std::vector<Complex> B(n);
    for (int k = 0; k < n; ++k) {
        Fixed re, im;
        for (int m = 0; m < n; ++m) {
            const Complex prod = rootOfUnity(powMod(inverseRoot, m, p), p, sign) *
                                 rootOfUnity(static_cast<int64_t>(m) * k, n, firstSign);
            re = re + prod.re.exact;
            im = im + prod.im.exact;
        }
        B[k] = Complex::of(re.divInt(n), im.divInt(n));
    }
    return B;
}

}  // namespace

// The inner transforms of Bluestein and of the deferred Rader are a forward
// and an unnormalised inverse DFT in both directions; only the root of unity
// in the multipliers changes.
std::pair<DftOptions, DftOptions> convolutionOptions(const DftOptions& opt) {
    DftOptions forward = opt, backward = opt;
    forward.sign = -1;
    backward.sign = +1;
    return {forward, backward};
}

// Complex-multiplier form: every bin is multiplied by its B[k] in full.
// The inner transforms take the sign of the outer one first and the other
// sign second, so that an inverse body is the forward one on swapped parts
// (Inv(x) = S(Fwd(S(x))) bit for bit wherever the inner transforms obey it).
Batch rader(Arithmetic& g, const Plan& plan, const Batch& in, const DftOptions& opt, const Multipliers& pre) {
    const int p = plan.n, n = p - 1, root = plan.root, count = static_cast<int>(in.size());
    Batch a(count, Signal(n));
    for (int t = 0; t < count; ++t)
        for (int m = 0; m < n; ++m) a[t][m] = in[t][powMod(root, m, p)];
    Signal x0 = gatherInputs(in, 0);
    if (pre) x0 = g.scale(x0, [&](int t) { return pre(t, 0); });
    DftOptions outerSign = opt, otherSign = opt;
    otherSign.sign = -opt.sign;
    const Batch A = transform(g, *plan.first, a, outerSign,
                              composePre(pre, [root, p](int t, int m) { return std::pair{t, powMod(root, m, p)}; }));
    const std::vector<Complex> B = raderMultipliers(p, root, opt.sign, opt.sign);
    const Signal A0 = gatherInputs(A, 0);
    const Signal X0 = g.add(x0, A0);
    const Signal C0 = g.add(g.scale(A0, [&](int) { return B[0]; }), x0);
    Batch C = A;
    for (int t = 0; t < count; ++t) C[t][0] = C0[t];
    const Batch c = transform(g, *plan.second, C, otherSign,
                              [&B](int, int k) { return k == 0 ? Complex::one() : B[k]; });
    const int inverseRoot = powMod(root, p - 2, p);
    Batch out(count, Signal(p));
    for (int t = 0; t < count; ++t) {
        out[t][0] = X0[t];
        for (int q = 0; q < n; ++q) out[t][powMod(inverseRoot, q, p)] = c[t][q];
    }
    return out;
}

namespace {

// The bins 0 to n/2 of the forward DFT of length n of a j-real sequence
// whose pair sums s[m] = a[m] + a[m + n/2] and differences d[m] = a[m] -
// a[m + n/2] are given: even bins depend on s alone, odd bins on d alone, so
// each comes from the length-n plan on s or d padded with zeros.  Returns
// (R, I) of every bin as values of `target`.
// A Good-Thomas join whose even factor comes second runs it first here (the
// joined transform is the same): its stage on m, m + n/2 then meets the
// zeros of the padding first, and the odd factor's transforms of the
// padded sequence coincide.
std::vector<std::pair<int, int>> halfSpectrum(Arithmetic& target, const Plan& plan, const std::vector<int>& s,
                                              const std::vector<int>& d, const DftOptions& forward) {
    const int n = plan.n, h = n / 2;
    Plan pairingFirst = plan;
    if (plan.kind == Plan::Kind::GoodThomas && plan.second->n % 2 == 0 && !plan.secondOfBinZero)
        std::swap(pairingFirst.first, pairingFirst.second);
    PairArithmetic pairs(target);
    auto padded = [&](const std::vector<int>& half) {
        Signal x(n, Ref::zero());
        for (int m = 0; m < h; ++m) x[m] = {pairs.lift(half[m]), 0};
        return transform(pairs, pairingFirst, Batch{x}, forward)[0];
    };
    const Signal even = padded(s), odd = padded(d);
    std::vector<std::pair<int, int>> bins;
    for (int k = 0; k <= h; ++k) {
        const int v = pairs.valueOf(k % 2 == 0 ? even[k] : odd[k]);
        bins.emplace_back(pairs.re(v), pairs.im(v));
    }
    return bins;
}

}  // namespace

// Deferred-rotation form.  With j a formal unit, the convolution is
// c[q] = E[q] + jO[q], where E is the cyclic correlation of the pair sums
// with the cosines and O the negacyclic one of the pair differences with the
// sines (g^(n/2) = -1 pairs x[k] with x[p-k]); X = E +- iO only at the end.
// The forward half spectrum is a real-coefficient network, and E and O come
// out of its transpose, a real-output inverse of the same cost, fed with the
// products: bins k and n-k share one rotation by P = 2 Re B[k], Q = 2 Im B[k].
Batch raderDeferred(Arithmetic& g, const Plan& plan, const Batch& in, const DftOptions& opt,
                    const Multipliers& pre) {
    const int p = plan.n, n = p - 1, h = n / 2, root = plan.root, count = static_cast<int>(in.size());
    const std::vector<Complex> B = raderMultipliers(p, root, opt.sign, -1);
    DftOptions forward = convolutionOptions(opt).first;
    // On half-spectrum pairs the conjugate-pair split radix would save
    // additions, and the published counts are those of the w^3n form.
    forward.conjugatePairs = false;
    // The network once more on symbolic inputs (s then d), to be transposed;
    // it is built by the plan of the back transform.
    Graph network(1);
    std::vector<int> symbolicS, symbolicD;
    for (int m = 0; m < h; ++m) {
        symbolicS.push_back(network.input({m, -1, -1, -1}));
        symbolicD.push_back(network.input({h + m, -1, -1, -1}));
    }
    const auto symbolic = halfSpectrum(network, *plan.second, symbolicS, symbolicD, forward);
    auto product = [&g](int v, const Fixed& k) { return k.isZero() ? g.zero() : g.mul(v, Complex::real(k)); };

    const int inverseRoot = powMod(root, p - 2, p);
    Batch out(count, Signal(p));
    for (int t = 0; t < count; ++t) {
        auto fetch = [&](int element) {
            const int v = g.valueOf(in[t][element]);
            return pre ? g.mul(v, pre(t, element)) : v;
        };
        const int x0 = fetch(0);
        std::vector<int> s(h), d(h);
        for (int m = 0; m < h; ++m) {
            const int u = fetch(powMod(root, m, p)), w = fetch(powMod(root, m + h, p));
            s[m] = g.add(u, w);
            d[m] = g.sub(u, w);
        }
        const auto A = halfSpectrum(g, *plan.first, s, d, forward);
        std::vector<Seed> seeds;
        auto seed = [&](int node, int value) {
            if (network.node(node).op != Op::Zero) seeds.push_back({node, value});
        };
        // Bin 0: -1/n on the sum, plus x[0].
        seed(symbolic[0].first, g.add(product(A[0].first, B[0].re.exact), x0));
        for (int k = 1; k <= h; ++k) {
            const int factor = k == h ? 1 : 2;
            const Fixed P = B[k].re.exact.mulInt(factor), Q = B[k].im.exact.mulInt(factor);
            const auto [R, I] = A[k];
            const int re = g.sub(product(R, P), product(I, Q)), im = g.add(product(R, Q), product(I, P));
            // Even bins feed E with C[k]; odd bins feed O with -jC[k].
            if (k % 2 == 0) {
                seed(symbolic[k].first, re);
                seed(symbolic[k].second, im);
            } else {
                seed(symbolic[k].first, im);
                seed(symbolic[k].second, g.mul(re, -Complex::one()));
            }
        }
        const std::vector<int> EO = transpose(network, seeds, n, g);
        out[t][0] = {g.add(x0, A[0].first), 0};
        for (int q = 0; q < h; ++q) {
            const int E = EO[q], iO = g.mul(EO[h + q], rotation(+1));
            out[t][powMod(inverseRoot, q, p)] = {g.add(E, iO), 0};
            out[t][powMod(inverseRoot, q + h, p)] = {g.sub(E, iO), 0};
        }
    }
    return out;
}

}  // namespace gen
