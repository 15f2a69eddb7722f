#include "ir/value_arithmetic.h"

namespace gen {

int ValueArithmetic::valueOf(const Ref& r) {
    if (r.isZero()) return zero();
    if (r.isMemory()) throw std::logic_error("values are loaded by their family, not from a signal");
    return r.node;
}

Signal ValueArithmetic::scale(const Signal& s, const std::function<Complex(int)>& constant) {
    Signal out = s;
    for (size_t i = 0; i < s.size(); ++i)
        if (!s[i].isZero()) out[i] = {mul(valueOf(s[i]), constant(static_cast<int>(i))), 0};
    return out;
}

Signal ValueArithmetic::add(const Signal& x, const Signal& y) {
    Signal out(x.size());
    for (size_t i = 0; i < x.size(); ++i) out[i] = {add(valueOf(x[i]), valueOf(y[i])), 0};
    return out;
}

Batch ValueArithmetic::lanewise(const Batch& in, const Kernel& kernel, const Multipliers& pre) {
    Batch out(in.size());
    for (size_t t = 0; t < in.size(); ++t) {
        std::vector<int> inputs;
        for (size_t j = 0; j < in[t].size(); ++j) {
            const int v = valueOf(in[t][j]);
            inputs.push_back(pre ? narrow(mul(v, pre(static_cast<int>(t), static_cast<int>(j)))) : v);
        }
        for (int v : kernel(*this, inputs)) out[t].push_back({v, 0});
    }
    return out;
}

}  // namespace gen
