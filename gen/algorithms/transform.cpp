#include "algorithms/forms.h"

#include <stdexcept>

namespace gen {

namespace {

Arithmetic::Kernel kernelOf(const Plan& plan, const DftOptions& opt) {
    switch (plan.kind) {
        case Plan::Kind::Small:
            switch (plan.n) {
                case 2: return [](Arithmetic& g, const Nodes& x) { return dft2(g, x); };
                case 3: return [opt](Arithmetic& g, const Nodes& x) { return dft3(g, x, opt); };
                case 4: return [opt](Arithmetic& g, const Nodes& x) { return dft4(g, x, opt); };
                default: return [opt](Arithmetic& g, const Nodes& x) { return dft5(g, x, opt, false); };
            }
        case Plan::Kind::FiveW: return [opt](Arithmetic& g, const Nodes& x) { return dft5(g, x, opt, true); };
        case Plan::Kind::Direct: return [opt](Arithmetic& g, const Nodes& x) { return direct(g, x, opt); };
        case Plan::Kind::SplitRadix: return [opt](Arithmetic& g, const Nodes& x) { return splitRadix(g, x, opt); };
        default: throw std::logic_error("not a kernel");
    }
}

}  // namespace

Batch transform(Arithmetic& g, const Plan& plan, const Batch& in, const DftOptions& opt, const Multipliers& pre) {
    const bool composite = plan.kind == Plan::Kind::CooleyTukey || plan.kind == Plan::Kind::GoodThomas ||
                           plan.kind == Plan::Kind::Rader || plan.kind == Plan::Kind::Bluestein;
    if (composite && !g.inLane() && (in.size() % g.width() == 0 || in.size() % g.width() == 3))
        return inLane(g, plan, in, opt, pre);
    switch (plan.kind) {
        case Plan::Kind::CooleyTukey:
        case Plan::Kind::GoodThomas: return join(g, plan, in, opt, pre);
        case Plan::Kind::Rader:
            if (opt.realRader) return realRader(g, plan, in, opt, pre);
            return opt.deferredRotation ? raderDeferred(g, plan, in, opt, pre) : rader(g, plan, in, opt, pre);
        case Plan::Kind::Bluestein: return bluestein(g, plan, in, opt, pre);
        default: return g.lanewise(in, kernelOf(plan, opt), pre);
    }
}

void buildDft(Graph& g, const Plan& plan, const DftOptions& opt) {
    Signal x(plan.n);
    for (int k = 0; k < plan.n; ++k) x[k] = Ref::memory(k);
    const Batch out = transform(g, plan, Batch{x}, opt);
    g.setOutputs(out[0]);
}

}  // namespace gen
