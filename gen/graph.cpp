#include "graph.h"

#include <cmath>
#include <sstream>
#include <stdexcept>

namespace gen {

namespace {

std::string keyOf(const Node& n, int width) {
    std::ostringstream s;
    s.precision(17);
    s << int(n.op) << ':' << n.a << ':' << n.b << ':' << n.isDouble;
    for (int l = 0; l < width; ++l) {
        switch (n.op) {
            case Op::Input: s << '|' << n.element[l]; break;
            case Op::Mul: s << '|' << n.k[l].re.d << ',' << n.k[l].im.d; break;
            case Op::Shuffle: s << '|' << n.from[l].node << '.' << n.from[l].lane; break;
            default: break;
        }
    }
    return s.str();
}

}  // namespace

int Graph::intern(Node n) {
    const std::string key = keyOf(n, width_);
    if (auto it = index_.find(key); it != index_.end()) return it->second;
    nodes_.push_back(n);
    const int id = static_cast<int>(nodes_.size()) - 1;
    index_.emplace(key, id);
    return id;
}

bool Graph::allOnes(const std::array<Complex, kMaxWidth>& c, int width) {
    for (int l = 0; l < width; ++l)
        if (!c[l].isOne()) return false;
    return true;
}

bool Graph::allUnits(const std::array<Complex, kMaxWidth>& c) const {
    for (int l = 0; l < width_; ++l) {
        const bool realUnit = c[l].im.isZero() && std::fabs(c[l].re.d) == 1;
        const bool imagUnit = c[l].re.isZero() && std::fabs(c[l].im.d) == 1;
        if (!realUnit && !imagUnit) return false;
    }
    return true;
}

int Graph::zero() {
    Node n;
    n.op = Op::Zero;
    return intern(n);
}

int Graph::input(const std::array<int, kMaxWidth>& elements) {
    bool any = false;
    for (int l = 0; l < width_; ++l) any |= elements[l] >= 0;
    if (!any) return zero();
    Node n;
    n.op = Op::Input;
    n.element = elements;
    return intern(n);
}

bool Graph::isNegation(int id, int& of) const {
    const Node& n = nodes_[id];
    if (n.op != Op::Mul) return false;
    for (int l = 0; l < width_; ++l)
        if (!n.k[l].re.isMinusOne() || !n.k[l].im.isZero()) return false;
    of = n.a;
    return true;
}

int Graph::add(int a, int b) {
    if (nodes_[a].op == Op::Zero) return b;
    if (nodes_[b].op == Op::Zero) return a;
    if (int m; isNegation(b, m)) return sub(a, m);
    if (int m; isNegation(a, m)) return sub(b, m);
    if (a > b) std::swap(a, b);  // one node for a + b and b + a
    Node n;
    n.op = Op::Add;
    n.a = a;
    n.b = b;
    n.isDouble = nodes_[a].isDouble;
    return intern(n);
}

int Graph::sub(int a, int b) {
    if (nodes_[b].op == Op::Zero) return a;
    if (nodes_[a].op == Op::Zero) return mul(b, -Complex::one());
    if (int m; isNegation(b, m)) return add(a, m);
    Node n;
    n.op = Op::Sub;
    n.a = a;
    n.b = b;
    n.isDouble = nodes_[a].isDouble;
    return intern(n);
}

int Graph::mul(int a, const Complex& c) {
    std::array<Complex, kMaxWidth> k;
    k.fill(c);
    return mulLanes(a, k);
}

int Graph::mulLanes(int a, const std::array<Complex, kMaxWidth>& c) {
    if (nodes_[a].op == Op::Zero || allOnes(c, width_)) return a;
    // A product of a product folds into one when either constant is a unit
    // (+-1, +-i), which keeps the result exact.
    if (nodes_[a].op == Op::Mul && (allUnits(c) || allUnits(nodes_[a].k))) {
        std::array<Complex, kMaxWidth> folded = c;
        for (int l = 0; l < width_; ++l) folded[l] = nodes_[a].k[l] * c[l];
        return mulLanes(nodes_[a].a, folded);
    }
    Node n;
    n.op = Op::Mul;
    n.a = a;
    n.k = c;
    n.isDouble = nodes_[a].isDouble;
    return intern(n);
}

int Graph::shuffle(const std::array<Ref, kMaxWidth>& from) {
    Node n;
    n.op = Op::Shuffle;
    n.from = from;
    return intern(n);
}

int Graph::widen(int a) {
    Node n;
    n.op = Op::Widen;
    n.a = a;
    n.isDouble = true;
    return intern(n);
}

int Graph::narrow(int a) {
    Node n;
    n.op = Op::Narrow;
    n.a = a;
    n.isDouble = false;
    return intern(n);
}

std::vector<int> Graph::pack(const std::vector<Ref>& values) {
    std::vector<int> out;
    for (size_t g = 0; g < values.size(); g += width_) {
        std::array<Ref, kMaxWidth> group;
        group.fill(Ref::zero());
        int used = 0;
        bool memory = false, computed = false;
        for (int l = 0; l < width_ && g + l < values.size(); ++l, ++used) {
            group[l] = values[g + l];
            memory |= group[l].isMemory();
            computed |= !group[l].isMemory() && !group[l].isZero();
        }
        if (memory && computed) throw std::logic_error("pack: source elements mixed with computed values");
        if (!memory && !computed) {
            out.push_back(zero());
        } else if (memory) {
            std::array<int, kMaxWidth> elements{-1, -1, -1, -1};
            for (int l = 0; l < used; ++l)
                if (group[l].isMemory()) elements[l] = group[l].lane;
            out.push_back(input(elements));
        } else {
            // Reuse a node whose lanes already hold the group in order.
            bool whole = true;
            for (int l = 0; l < used; ++l)
                whole &= group[l].node == group[0].node && group[l].lane == l;
            if (whole) {
                out.push_back(group[0].node);
            } else {
                for (int l = 0; l < used; ++l)
                    if (group[l].isZero()) group[l] = {zero(), 0};
                for (int l = used; l < width_; ++l) group[l] = group[0];  // spare lanes: any value
                out.push_back(shuffle(group));
            }
        }
    }
    return out;
}

Signal Graph::scale(const Signal& s, const std::function<Complex(int)>& constant) {
    bool fromMemory = false;
    for (const Ref& r : s) fromMemory |= r.isMemory();
    Signal src = s;
    if (fromMemory) {
        const std::vector<int> nodes = pack(s);
        for (size_t i = 0; i < s.size(); ++i) src[i] = {nodes[i / width_], int(i % width_)};
    }
    // One multiplication per node, with the constants of the lanes it serves.
    std::map<int, std::array<Complex, kMaxWidth>> perNode;
    for (size_t i = 0; i < src.size(); ++i) {
        if (src[i].isZero()) continue;
        auto [it, fresh] = perNode.try_emplace(src[i].node);
        if (fresh) it->second.fill(Complex::one());
        it->second[src[i].lane] = constant(static_cast<int>(i));
    }
    std::map<int, int> product;
    for (auto& [node, k] : perNode) product[node] = mulLanes(node, k);
    Signal out = src;
    for (Ref& r : out)
        if (!r.isZero()) r.node = product[r.node];
    return out;
}

Signal Graph::add(const Signal& x, const Signal& y) {
    const std::vector<int> a = pack(x), b = pack(y);
    Signal out(x.size());
    for (size_t i = 0; i < x.size(); ++i) out[i] = {add(a[i / width_], b[i / width_]), int(i % width_)};
    return out;
}

Batch Graph::lanewise(const Batch& in, const Kernel& kernel, const Multipliers& pre) {
    const int count = static_cast<int>(in.size());
    const int n = static_cast<int>(in[0].size());
    Batch out(count);
    for (int g = 0; g < count; g += width_) {
        const int used = std::min(width_, count - g);
        std::vector<int> inputs(n);
        for (int j = 0; j < n; ++j) {
            std::vector<Ref> lanes;
            for (int l = 0; l < used; ++l) lanes.push_back(in[g + l][j]);
            inputs[j] = pack(lanes)[0];
            if (pre) {
                std::array<Complex, kMaxWidth> k;
                k.fill(Complex::one());
                for (int l = 0; l < used; ++l) k[l] = pre(g + l, j);
                inputs[j] = mulLanes(inputs[j], k);
            }
        }
        const std::vector<int> outputs = kernel(*this, inputs);
        for (int l = 0; l < used; ++l) {
            out[g + l].resize(outputs.size());
            for (size_t k = 0; k < outputs.size(); ++k) out[g + l][k] = {outputs[k], l};
        }
    }
    return out;
}

std::vector<int> Graph::liveNodes() const {
    std::vector<char> live(nodes_.size(), 0);
    for (const Ref& r : outputs_)
        if (r.node >= 0) live[r.node] = 1;
    for (int i = static_cast<int>(nodes_.size()) - 1; i >= 0; --i) {
        if (!live[i]) continue;
        const Node& n = nodes_[i];
        if (n.a >= 0) live[n.a] = 1;
        if (n.b >= 0) live[n.b] = 1;
        if (n.op == Op::Shuffle)
            for (int l = 0; l < width_; ++l)
                if (n.from[l].node >= 0) live[n.from[l].node] = 1;
    }
    std::vector<int> order;
    for (size_t i = 0; i < nodes_.size(); ++i)
        if (live[i]) order.push_back(static_cast<int>(i));
    return order;
}

namespace {

// Real operations of one lane multiplied by a complex constant.
OpCount mulCost(const Complex& c) {
    const double re = std::fabs(c.re.d), im = std::fabs(c.im.d);
    if (c.im.isZero()) return {0, re == 1 ? 0 : 2};
    if (c.re.isZero()) return {0, im == 1 ? 0 : 2};
    if (re == im) return {2, 2};  // (c, +-c): c * (x.re -+ x.im, x.im +- x.re)
    return {2, 4};
}

}  // namespace

OpCount countOperations(const Graph& g) {
    OpCount total;
    const int w = g.width();
    for (int id : g.liveNodes()) {
        const Node& n = g.node(id);
        switch (n.op) {
            case Op::Add:
            case Op::Sub: total.additions += 2 * w; break;
            case Op::Mul: {
                bool uniform = true;
                for (int l = 1; l < w; ++l) uniform &= n.k[l].sameAs(n.k[0]);
                // A vector of different constants is a full complex product in every lane.
                const OpCount c = uniform ? mulCost(n.k[0]) : OpCount{2, 4};
                total.additions += c.additions * w;
                total.multiplications += c.multiplications * w;
                break;
            }
            default: break;
        }
    }
    return total;
}

}  // namespace gen
