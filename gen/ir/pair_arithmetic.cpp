#include "ir/pair_arithmetic.h"

#include <stdexcept>

namespace gen {

int PairArithmetic::make(int r, int i) {
    values_.emplace_back(r, i);
    return static_cast<int>(values_.size()) - 1;
}

int PairArithmetic::times(int v, const Real& k) {
    if (k.isZero()) return parent_.zero();
    return parent_.mul(v, Complex{k, Real::ofInt(0)});
}

int PairArithmetic::conjugate(int v) { return make(re(v), parent_.sub(parent_.zero(), im(v))); }

int PairArithmetic::zero() { return make(parent_.zero(), parent_.zero()); }

int PairArithmetic::add(int a, int b) { return make(parent_.add(re(a), re(b)), parent_.add(im(a), im(b))); }

int PairArithmetic::sub(int a, int b) { return make(parent_.sub(re(a), re(b)), parent_.sub(im(a), im(b))); }

int PairArithmetic::mul(int a, const Complex& c) {
    const int r = re(a), i = im(a);
    return make(parent_.sub(times(r, c.re), times(i, c.im)), parent_.add(times(r, c.im), times(i, c.re)));
}

int PairArithmetic::widen(int) { throw std::logic_error("pair values have no mixed precision"); }
int PairArithmetic::narrow(int) { throw std::logic_error("pair values have no mixed precision"); }

int PairArithmetic::valueOf(const Ref& r) {
    if (r.isZero()) return zero();
    if (r.isMemory()) throw std::logic_error("pair values are lifted from the parent, never loaded");
    return r.node;
}

Signal PairArithmetic::scale(const Signal& s, const std::function<Complex(int)>& constant) {
    Signal out = s;
    for (size_t i = 0; i < s.size(); ++i)
        if (!s[i].isZero()) out[i] = {mul(valueOf(s[i]), constant(static_cast<int>(i))), 0};
    return out;
}

Signal PairArithmetic::add(const Signal& x, const Signal& y) {
    Signal out(x.size());
    for (size_t i = 0; i < x.size(); ++i) out[i] = {add(valueOf(x[i]), valueOf(y[i])), 0};
    return out;
}

Batch PairArithmetic::lanewise(const Batch& in, const Kernel& kernel, const Multipliers& pre) {
    Batch out(in.size());
    for (size_t t = 0; t < in.size(); ++t) {
        std::vector<int> inputs;
        for (size_t j = 0; j < in[t].size(); ++j) {
            const int v = valueOf(in[t][j]);
            inputs.push_back(pre ? mul(v, pre(static_cast<int>(t), static_cast<int>(j))) : v);
        }
        for (int v : kernel(*this, inputs)) out[t].push_back({v, 0});
    }
    return out;
}

}  // namespace gen
