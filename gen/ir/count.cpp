#include "ir/count.h"

#include <cmath>

namespace gen {

namespace {

// Real operations of a multiplication, lane by lane, as the vector back-ends
// perform it: real or imaginary constants take two products a lane (none for
// a uniform +-1 or +-i), h (+-1 +- i) two products and two additions, any
// other constant four products and two additions, in every lane, 0 and 1
// included.  The outputs take two products each for the scale.
OpCount countComplex(const Graph& g) {
    OpCount total;
    const int w = g.width();
    for (int id : g.liveNodes()) {
        const Node& n = g.node(id);
        if (n.op == Op::Add || n.op == Op::Sub) total.additions += 2 * w;
        if (n.op != Op::Mul) continue;
        bool realOnly = true, imagOnly = true, uniform = true;
        for (int l = 0; l < w; ++l) {
            realOnly &= n.k[l].im.isZero();
            imagOnly &= n.k[l].re.isZero();
            uniform &= n.k[l].sameAs(n.k[0]);
        }
        const double re = std::fabs(n.k[0].re.d), im = std::fabs(n.k[0].im.d);
        OpCount c;
        c.additions = 2;
        c.multiplications = 4;
        if (realOnly) c = {0, uniform && re == 1 ? 0 : 2};
        else if (imagOnly) c = {0, uniform && im == 1 ? 0 : 2};
        else if (uniform && re == im) c.multiplications = 2;
        if (!realOnly && !imagOnly) ++total.complexProducts;
        total.additions += c.additions * w;
        total.multiplications += c.multiplications * w;
    }
    total.multiplications += 2 * static_cast<int>(g.outputs().size());
    return total;
}

OpCount countReal(const Graph& g) {
    OpCount total;
    for (int id : g.liveNodes()) {
        const Node& n = g.node(id);
        switch (n.op) {
            case Op::Add:
            case Op::Sub:
                ++total.additions;
                total.doubleAdditions += n.isDouble;
                break;
            case Op::Mul:
                if (std::fabs(n.k[0].re.d) == 1) break;
                [[fallthrough]];
            case Op::Product:
                ++total.multiplications;
                total.doubleMultiplications += n.isDouble;
                break;
            case Op::Widen: ++total.widenings; break;
            case Op::Narrow: ++total.narrowings; break;
            default: break;
        }
    }
    return total;
}

}  // namespace

OpCount countOperations(const Graph& g) { return g.domain() == Domain::Real ? countReal(g) : countComplex(g); }

}  // namespace gen
