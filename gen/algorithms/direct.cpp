#include "algorithms/forms.h"

namespace gen {

DirectForm::DirectForm(Arithmetic& g, const Nodes& x, const DftOptions& opt)
    : g_(g), x_(x), sign_(opt.sign), p_(static_cast<int>(x.size())), a_((p_ + 1) / 2), d_((p_ + 1) / 2) {
    const int L = (p_ - 1) / 2;
    for (int j = 1; j <= L; ++j) {
        a_[j] = g.add(x[j], x[p_ - j]);
        d_[j] = g.sub(x[j], x[p_ - j]);
    }
    int sum = a_[1];
    for (int j = 2; j <= L; ++j) sum = g.add(sum, a_[j]);
    X0_ = g.add(x[0], sum);
}

std::pair<int, int> DirectForm::chains(int k) {
    int E = x_[0], O = -1;
    for (int j = 1; 2 * j < p_; ++j) {
        const Fixed c = cosTurn(j * k, p_);
        const int term = g_.mul(a_[j], realConst(c.isNegative() ? -c : c));
        E = c.isNegative() ? g_.sub(E, term) : g_.add(E, term);
        // sign * i * sin: X[k] = E + O with O = sum of sign*i*sin(2 pi jk/p) d[j]
        const Fixed s = sinTurn(j * k, p_).mulInt(sign_);
        const int sterm = g_.mul(d_[j], imagConst(s.isNegative() ? -s : s));
        if (O < 0) O = s.isNegative() ? g_.mul(sterm, realConst(Fixed::fromInt(-1))) : sterm;
        else O = s.isNegative() ? g_.sub(O, sterm) : g_.add(O, sterm);
    }
    return {g_.narrow(E), g_.narrow(O)};
}

Nodes direct(Arithmetic& g, const Nodes& x, const DftOptions& opt) {
    const int p = static_cast<int>(x.size());
    DirectForm form(g, x, opt);
    Nodes X(p);
    X[0] = form.X0();
    for (int k = 1; 2 * k < p; ++k) {
        const auto [E, O] = form.chains(k);
        X[k] = g.add(E, O);
        X[p - k] = g.sub(E, O);
    }
    return X;
}

}  // namespace gen
