// The Rader form of the real family, for a prime p with q = p - 1, h = q/2
// and g a primitive root, on signals of pairs of real values.
//
// With u[a] = x[g^a], the q-point real DFT U of u gives X[0] = x[0] + U[0],
// and the bins Y[b] = X[g^-b] - x[0] are the inverse DFT of V[k] = U[k] C[q-k]
// with the kernel C[k] = (1/q) sum_a exp(-2 pi i g^a / p) exp(-2 pi i a k / q).
// Since g^h = -1, the even k of V make Re Y and the odd k make i Im Y, both
// periodic in b with period h: two inverse blocks of length h, whose joining
// pass never runs, and only bins 0 to h of V are formed.  The doubling of
// their Hermitian bins is folded into the kernel (2 Re C, 2 Im C); bin 0 is
// x[0] - U[0]/q, so x[0] enters the real path at its first step.
//
// The inverse blocks are transposed forward networks.  The odd block of an
// odd h is an ordinary inverse block on the odd bins shifted by h, with the
// signs (-1)^b; for an even h it is the transposed odd bins of a q-point
// real DFT of h values padded with zeros.
#include <stdexcept>

#include "algorithms/forms.h"
#include "ir/mixed_precision.h"
#include "ir/pair_arithmetic.h"
#include "ir/product_folding.h"
#include "ir/transpose.h"

namespace gen {

namespace {

// C[k], k = 0..q-1.
std::vector<Complex> raderKernel(int p, int root) {
    const int q = p - 1;
    std::vector<Complex> C(q);
    for (int k = 0; k < q; ++k) {
        Fixed re, im;
        for (int a = 0; a < q; ++a) {
            const Complex prod = rootOfUnity(powMod(root, a, p), p, -1) * rootOfUnity(1LL * a * k, q, -1);
            re = re + prod.re.exact;
            im = im + prod.im.exact;
        }
        C[k] = Complex::of(re.divInt(q), im.divInt(q));
    }
    return C;
}

// The real parts of a pair, as values of its parent.
struct Parts {
    int re, im;
};

class RealRader {
public:
    RealRader(PairArithmetic& pairs, const Plan& plan, const DftOptions& opt)
        : pairs_(pairs), real_(pairs.parent()), plan_(plan), opt_(opt), p_(plan.n), q_(p_ - 1), h_(q_ / 2),
          kernel_(raderKernel(p_, plan.root)) {}

    // The transform of one signal of pair values whose imaginary parts are zero.
    Signal ofReal(const Signal& x) {
        // The inner transform and the kernel fold constants into products:
        // where a block ends in a product by a constant and the next
        // constant follows, the two are one product.
        ProductFolding products(real_);
        PairArithmetic folding(products);
        Signal u(q_);
        for (int a = 0; a < q_; ++a) {
            const int sample = pairs_.re(pairs_.valueOf(x[powMod(plan_.root, a, p_)]));
            u[a] = {folding.lift(sample), 0};
        }
        const Signal U = transform(folding, *plan_.first, Batch{u}, opt_)[0];
        const int x0 = pairs_.re(pairs_.valueOf(x[0]));
        auto bin = [&](int k) {
            const int v = folding.valueOf(U[k]);
            return Parts{folding.re(v), folding.im(v)};
        };
        // V[k] for k = 1..h; the Hermitian ones doubled through their constant.
        std::vector<Parts> V(h_ + 1);
        for (int k = 1; k <= h_; ++k) {
            const Complex& c = kernel_[q_ - k];
            const int factor = k == h_ ? 1 : 2;
            const int v = folding.narrow(folding.mul(folding.make(bin(k).re, bin(k).im),
                                                     {Real::of(c.re.exact.mulInt(factor)), Real::of(c.im.exact.mulInt(factor))}));
            V[k] = {folding.re(v), folding.im(v)};
        }
        const int U0 = bin(0).re;
        const int binZero = real_.narrow(real_.sub(x0, real_.mul(U0, Complex::real(Fixed::ratio(1, q_)))));
        const std::vector<int> Y = inverseBlocks(binZero, V);
        Signal X(p_);
        X[0] = {pairs_.lift(real_.add(x0, U0)), 0};
        const int inverseRoot = powMod(plan_.root, p_ - 2, p_);
        for (int b = 0; b < h_; ++b) {
            X[powMod(inverseRoot, b, p_)] = {pairs_.make(Y[b], Y[h_ + b]), 0};
            X[powMod(inverseRoot, b + h_, p_)] = {pairs_.make(Y[b], real_.sub(real_.zero(), Y[h_ + b])), 0};
        }
        return X;
    }

private:
    // Re Y[b] and Im Y[b] for b = 0..h-1, one after the other.
    std::vector<int> inverseBlocks(int binZero, const std::vector<Parts>& V) {
        Graph network(1, Domain::Real);
        MixedPrecision mixed(network);
        Arithmetic& values = real_.mixedPrecision() ? static_cast<Arithmetic&>(mixed) : network;
        // For an odd h the blocks fold constant products too; for an even h
        // that costs more additions in the transpose than it saves products
        // (37: 10 more additions for 7 fewer multiplications).
        ProductFolding products(values);
        PairArithmetic pairs(h_ % 2 ? static_cast<Arithmetic&>(products) : values);
        std::vector<Seed> seeds;
        auto seed = [&](int node, int value) {
            if (!network.isZero(node)) seeds.push_back({node, value});
        };
        // The bins 0 to n/2 of a block on the h inputs from `firstInput` on,
        // padded with zeros to the block's length.
        auto blockBins = [&](const Plan& block, int firstInput) {
            Signal y(block.n, Ref::zero());
            for (int b = 0; b < h_; ++b) y[b] = {pairs.lift(network.input({firstInput + b, -1, -1, -1})), 0};
            const Signal bins = transform(pairs, block, Batch{y}, opt_)[0];
            std::vector<Parts> out;
            for (int k = 0; k <= block.n / 2; ++k) {
                const int v = pairs.valueOf(bins[k]);
                out.push_back({pairs.re(v), pairs.im(v)});
            }
            return out;
        };
        // Even block: bins 0 to h/2 of the length-h inverse are V[0], V[2], ...
        const auto even = blockBins(*plan_.second, 0);
        seed(even[0].re, binZero);
        for (int m = 1; 2 * m <= h_; ++m) {
            seed(even[m].re, V[2 * m].re);
            if (2 * m < h_) seed(even[m].im, V[2 * m].im);
        }
        // Odd block: Z[k] = -i V[k] for the odd k, a Hermitian spectrum.
        std::vector<int> signs(h_, 1);
        if (h_ % 2) {
            // Bins m = 0..(h-1)/2 of an inverse of length h are conj Z[h - 2m],
            // the output taking (-1)^b.
            const auto odd = blockBins(*plan_.second, h_);
            for (int m = 0; 2 * m < h_; ++m) {
                seed(odd[m].re, V[h_ - 2 * m].im);
                if (m > 0) seed(odd[m].im, V[h_ - 2 * m].re);
            }
            for (int b = 1; b < h_; b += 2) signs[b] = -1;
        } else {
            const auto odd = blockBins(*plan_.oddBins, h_);
            for (int k = 1; k < h_; k += 2) {
                seed(odd[k].re, V[k].im);
                seed(odd[k].im, real_.sub(real_.zero(), V[k].re));
            }
        }
        std::vector<int> Y = transpose(network, seeds, 2 * h_, real_);
        for (int b = 0; b < h_; ++b)
            if (signs[b] < 0) Y[h_ + b] = real_.sub(real_.zero(), Y[h_ + b]);
        return Y;
    }

    PairArithmetic& pairs_;
    Arithmetic& real_;
    const Plan& plan_;
    const DftOptions& opt_;
    const int p_, q_, h_;
    const std::vector<Complex> kernel_;
};

}  // namespace

// A complex signal is two real ones: X = A + iB.
Batch realRader(Arithmetic& g, const Plan& plan, const Batch& in, const DftOptions& opt, const Multipliers& pre) {
    auto* pairs = dynamic_cast<PairArithmetic*>(&g);
    if (!pairs) throw std::logic_error("the real Rader form works on pairs of real values");
    RealRader form(*pairs, plan, opt);
    Batch out;
    for (size_t t = 0; t < in.size(); ++t) {
        Signal x = in[t];
        if (pre)
            for (int j = 0; j < plan.n; ++j)
                x[j] = {g.narrow(g.mul(g.valueOf(x[j]), pre(static_cast<int>(t), j))), 0};
        bool real = true;
        for (const Ref& r : x) real = real && g.isReal(r);
        if (real) {
            out.push_back(form.ofReal(x));
            continue;
        }
        Signal re(plan.n), im(plan.n);
        for (int j = 0; j < plan.n; ++j) {
            const int v = g.valueOf(x[j]);
            re[j] = {pairs->lift(pairs->re(v)), 0};
            im[j] = {pairs->lift(pairs->im(v)), 0};
        }
        const Signal A = form.ofReal(re), B = form.ofReal(im);
        Signal X(plan.n);
        for (int k = 0; k < plan.n; ++k)
            X[k] = {g.add(g.valueOf(A[k]), g.mul(g.valueOf(B[k]), {Real::ofInt(0), Real::ofInt(1)})), 0};
        out.push_back(X);
    }
    return out;
}

}  // namespace gen
