#include "algorithms/forms.h"

namespace gen {

Batch bluestein(Arithmetic& g, const Plan& plan, const Batch& in, const DftOptions& opt, const Multipliers& pre) {
    const int p = plan.n, L = plan.first->n, half = (p + 1) / 2, count = static_cast<int>(in.size());
    if (pre) throw std::logic_error("Bluestein is a whole body, never a factor");
    std::vector<Complex> chirp(p);
    for (int k = 0; k < p; ++k) chirp[k] = rootOfUnity(static_cast<int64_t>(half) * k * k % p, p, opt.sign);
    // y = x * chirp, zero from p on; the vector bodies also fetch x[p] and multiply it by 0.
    Batch y(count, Signal(L, Ref::zero()));
    for (int t = 0; t < count; ++t) {
        for (int k = 0; k < p; ++k) y[t][k] = in[t][k];
        if (opt.bluesteinReadsPast) y[t][p] = Ref::memory(p);
    }
    const Complex zero = Complex::real(Fixed{});
    const auto [forward, backward] = convolutionOptions(opt);
    const Batch Y = transform(g, *plan.first, y, forward,
                              [&](int, int k) { return k < p ? chirp[k] : zero; });
    // H[k] = (1/L) sum over m = -(p-1)..p-1 of w^(-t m^2 mod p) exp(-2 pi i m k / L)
    std::vector<Complex> H(L);
    for (int k = 0; k < L; ++k) {
        Fixed re, im;
        for (int m = -(p - 1); m <= p - 1; ++m) {
            const int64_t e = (static_cast<int64_t>(p) - (static_cast<int64_t>(half) * m * m) % p) % p;
            const Complex prod = rootOfUnity(e, p, opt.sign) * rootOfUnity(static_cast<int64_t>(m) * k, L, -1);
            re = re + prod.re.exact;
            im = im + prod.im.exact;
        }
        H[k] = Complex::of(re.divInt(L), im.divInt(L));
    }
    const Batch z = transform(g, *plan.second, Y, backward, [&H](int, int k) { return H[k]; });
    Batch out(count);
    for (int t = 0; t < count; ++t) {
        const Signal head(z[t].begin(), z[t].begin() + p);
        out[t] = g.scale(head, [&chirp](int k) { return chirp[k]; });
    }
    return out;
}

}  // namespace gen
