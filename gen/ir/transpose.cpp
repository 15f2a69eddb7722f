#include "ir/transpose.h"

namespace gen {

std::vector<int> transpose(const Graph& network, const std::vector<std::pair<int, int>>& seeds, int inputs,
                           Arithmetic& target) {
    std::vector<int> adjoint(network.nodes().size(), -1);
    auto accumulate = [&](int node, int value, bool negated) {
        int& a = adjoint[node];
        if (a < 0) a = negated ? target.mul(value, -Complex::one()) : value;
        else a = negated ? target.sub(a, value) : target.add(a, value);
    };
    for (const auto& [node, value] : seeds) accumulate(node, value, false);
    std::vector<int> result(inputs, -1);
    for (int id = static_cast<int>(adjoint.size()) - 1; id >= 0; --id) {
        const int v = adjoint[id];
        if (v < 0) continue;
        const Node& n = network.node(id);
        switch (n.op) {
            case Op::Input: result.at(n.element[0]) = v; break;
            case Op::Zero: break;
            case Op::Add: accumulate(n.a, v, false), accumulate(n.b, v, false); break;
            case Op::Sub: accumulate(n.a, v, false), accumulate(n.b, v, true); break;
            case Op::Mul:
                if (!n.k[0].im.isZero()) throw std::logic_error("transpose: not a real-coefficient network");
                accumulate(n.a, target.mul(v, n.k[0]), false);
                break;
            default: throw std::logic_error("transpose: not a linear network");
        }
    }
    for (int& r : result)
        if (r < 0) r = target.zero();
    return result;
}

}  // namespace gen
