#include "ir/transpose.h"

#include <cmath>
#include <stdexcept>

namespace gen {

namespace {

// A value arriving at a node from one of its consumers.
struct Contribution {
    int value;
    bool negated = false;
    bool isDouble = false;  // a double value that is not just a widened single
    int factor = 1;
};

class Transposer {
public:
    Transposer(const Graph& network, Arithmetic& target, const std::function<int(int)>& twice)
        : network_(network), target_(target), twice_(twice), arriving_(network.nodes().size()) {}

    void seed(const Seed& s) { arriving_.at(s.node).push_back({s.value, false, false, s.factor}); }

    std::vector<int> run(int inputs) {
        std::vector<int> result(inputs, -1);
        for (int id = static_cast<int>(arriving_.size()) - 1; id >= 0; --id) {
            if (arriving_[id].empty()) continue;
            const Node& n = network_.node(id);
            const Contribution v = adjoint(id);
            switch (n.op) {
                case Op::Zero: break;
                case Op::Input: result.at(n.element[0]) = finish(v); break;
                case Op::Add: fanOut(n, materialize(v), false); break;
                case Op::Sub: fanOut(n, materialize(v), true); break;
                case Op::Mul: transposeProduct(n, v); break;
                // A conversion hands its adjoint on: a single value that only
                // passes through a double node stays single.
                case Op::Widen:
                case Op::Narrow: send(n.a, v, false); break;
                default: throw std::logic_error("transpose: not a linear network");
            }
        }
        for (int& r : result)
            if (r < 0) r = target_.zero();
        return result;
    }

private:
    void send(int to, Contribution c, bool negate) {
        if (negate) c.negated = !c.negated;
        arriving_[to].push_back(c);
    }

    void fanOut(const Node& n, const Contribution& v, bool subtract) {
        send(n.a, v, false);
        send(n.b, v, subtract);
    }

    void transposeProduct(const Node& n, Contribution v) {
        const Real& k = n.k[0].re;
        if (!n.k[0].im.isZero()) throw std::logic_error("transpose: not a real-coefficient network");
        if (std::fabs(k.d) == 1) {  // a sign
            send(n.a, v, k.d < 0);
            return;
        }
        // A doubling merges with k: x * 2k is (2x) * k exactly.
        const Complex constant = Complex::real(v.factor == 2 ? k.exact.mulInt(2) : k.exact);
        v.factor = 1;
        send(n.a, {target_.mul(finish(v), constant), false, n.isDouble, 1}, false);
    }

    // A contribution with its factor applied.
    Contribution materialize(Contribution c) {
        if (c.factor == 2) c = {twice_(c.value), c.negated, c.isDouble, 1};
        return c;
    }

    // The signed value of a contribution, its factor applied.
    int finish(const Contribution& c) {
        const Contribution m = materialize(c);
        return m.negated ? target_.mul(m.value, -Complex::one()) : m.value;
    }

    // What reaches node `id`: a lone contribution passes on unchanged (sign
    // and factor included) unless a double one reaches a single node.
    // Several are summed in double, widened, if any is a product, and else in
    // single; a single node narrows a double sum.
    Contribution adjoint(int id) {
        const std::vector<Contribution>& in = arriving_[id];
        const Node& n = network_.node(id);
        if (in.size() == 1 && (n.isDouble || !in[0].isDouble)) return in[0];
        bool anyDouble = false;
        for (const Contribution& c : in) anyDouble |= c.isDouble;
        int sum = -1;
        for (const Contribution& c : in) {
            const Contribution m = materialize(c);
            const int value = anyDouble ? target_.widen(m.value) : m.value;
            if (sum < 0) sum = m.negated ? target_.mul(value, -Complex::one()) : value;
            else sum = m.negated ? target_.sub(sum, value) : target_.add(sum, value);
        }
        if (!n.isDouble && anyDouble) return {target_.narrow(sum), false, false, 1};
        return {sum, false, anyDouble, 1};
    }

    const Graph& network_;
    Arithmetic& target_;
    const std::function<int(int)>& twice_;
    std::vector<std::vector<Contribution>> arriving_;
};

}  // namespace

std::vector<int> transpose(const Graph& network, const std::vector<Seed>& seeds, int inputs, Arithmetic& target,
                           const std::function<int(int)>& twice) {
    Transposer t(network, target, twice);
    for (const Seed& s : seeds) t.seed(s);
    return t.run(inputs);
}

}  // namespace gen
