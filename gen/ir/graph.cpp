#include "ir/graph.h"

#include <algorithm>
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

bool Graph::productOf(int v, int& of, Real& k) const {
    if (domain_ != Domain::Real) return false;
    int negated;
    const bool negative = isNegation(v, negated);
    if (negative) v = negated;
    if (nodes_[v].op == Op::Narrow) v = nodes_[v].a;
    const Node& n = nodes_[v];
    if (n.op != Op::Mul || !n.k[0].im.isZero() || n.k[0].re.isOne() || n.k[0].re.isMinusOne()) return false;
    // A product in double is of the widened single value.
    of = nodes_[n.a].op == Op::Widen ? nodes_[n.a].a : n.a;
    k = negative ? -n.k[0].re : n.k[0].re;
    return true;
}

bool Graph::samePrecision(int a, int b) const {
    if (nodes_[a].op == Op::Zero || nodes_[b].op == Op::Zero) return true;
    if (nodes_[a].isDouble == nodes_[b].isDouble) return true;
    throw std::logic_error("an operation on a single and a double value");
}

int Graph::add(int a, int b) {
    if (nodes_[a].op == Op::Zero) return b;
    if (nodes_[b].op == Op::Zero) return a;
    samePrecision(a, b);
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
    samePrecision(a, b);
    // In the real domain a difference and its negative are one node, with a
    // sign: -a - b is -(a + b), and b - a is -(a - b) when a is the older
    // node.  Round to nearest is symmetric, so only the sign of an exact zero
    // can change; the sharing shows the duplicates that conjugate symmetry
    // leaves in a real transform.
    if (domain_ == Domain::Real) {
        if (int m; isNegation(a, m)) return negate(add(m, b));
        if (a > b) return negate(sub(b, a));
    }
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

int Graph::negate(int a) {
    if (int m; isNegation(a, m)) return m;
    Node n;
    n.op = Op::Mul;
    n.a = a;
    n.k.fill(-Complex::one());
    n.isDouble = nodes_[a].isDouble;
    return intern(n);
}

int Graph::mulLanes(int a, const std::array<Complex, kMaxWidth>& c) {
    if (nodes_[a].op == Op::Zero || allOnes(c, width_)) return a;
    if (domain_ == Domain::Real && !c[0].im.isZero()) throw std::logic_error("a complex constant in a real graph");
    // Products by -k are negations of products by k, so that a value and its
    // negative are one node (the negation folds into additions).
    bool negativeReal = true;
    for (int l = 0; l < width_; ++l) negativeReal &= c[l].im.isZero() && c[l].re.d < 0 && c[l].sameAs(c[0]);
    if (negativeReal) {
        if (c[0].re.isMinusOne()) return negate(a);
        std::array<Complex, kMaxWidth> positive;
        for (int l = 0; l < width_; ++l) positive[l] = -c[l];
        return negate(mulLanes(a, positive));
    }
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

// Widening a double and narrowing a single change nothing, so that a block
// can narrow what leaves it whatever the precision of the body; narrowing a
// widened value gives it back, since the widening was exact.
// A sign goes outside a conversion, so that -x and x widen to one value and
// its negation.
int Graph::widen(int a) {
    if (nodes_[a].isDouble || nodes_[a].op == Op::Zero) return a;
    if (int m; isNegation(a, m)) return negate(widen(m));
    Node n;
    n.op = Op::Widen;
    n.a = a;
    n.isDouble = true;
    return intern(n);
}

int Graph::narrow(int a) {
    if (!nodes_[a].isDouble) return a;
    if (nodes_[a].op == Op::Widen) return nodes_[a].a;
    if (int m; isNegation(a, m)) return negate(narrow(m));
    Node n;
    n.op = Op::Narrow;
    n.a = a;
    n.isDouble = false;
    return intern(n);
}

int Graph::scale() {
    Node n;
    n.op = Op::Scale;
    return intern(n);
}

int Graph::product(int a, int b) {
    samePrecision(a, b);
    if (b < a) std::swap(a, b);
    Node n;
    n.op = Op::Product;
    n.a = a;
    n.b = b;
    n.isDouble = nodes_[a].isDouble;
    return intern(n);
}

std::vector<int> Graph::pack(const std::vector<Ref>& values) {
    std::vector<int> out;
    const size_t step = static_cast<size_t>(laneGroup());
    for (size_t g = 0; g < values.size(); g += step) {
        std::array<Ref, kMaxWidth> group;
        group.fill(Ref::zero());
        int used = 0;
        bool memory = false, computed = false;
        for (size_t l = 0; l < step && g + l < values.size(); ++l, ++used) {
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
                for (int l = used; l < width_; ++l) group[l] = Ref::spare();
                out.push_back(shuffle(group));
            }
        }
    }
    return out;
}

int Graph::valueOf(const Ref& r) {
    if (laneGroup() != 1) throw std::logic_error("valueOf: a lane of a shared node has no node of its own");
    return pack({r})[0];
}

Signal Graph::scale(const Signal& s, const std::function<Complex(int)>& constant) {
    bool fromMemory = false;
    for (const Ref& r : s) fromMemory |= r.isMemory();
    Signal src = s;
    if (fromMemory) {
        const std::vector<int> nodes = pack(s);
        const int step = laneGroup();
        for (size_t i = 0; i < s.size(); ++i) src[i] = {nodes[i / step], int(i % step)};
    }
    // One multiplication per node, with the constants of the lanes it serves.
    std::map<int, std::array<Complex, kMaxWidth>> perNode;
    for (size_t i = 0; i < src.size(); ++i) {
        if (src[i].isZero()) continue;
        auto [it, fresh] = perNode.try_emplace(src[i].node);
        const Complex k = constant(static_cast<int>(i));
        if (fresh || inLane_) it->second.fill(k);  // lanes it does not serve take a copy
        it->second[src[i].lane] = k;
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
    const int step = laneGroup();
    Signal out(x.size());
    for (size_t i = 0; i < x.size(); ++i) out[i] = {add(a[i / step], b[i / step]), int(i % step)};
    return out;
}

// Signals whose first values sit side by side in one vector go into one
// group in their lane order, so that gathering a group's inputs takes whole
// vectors or single shuffles more often than transposes.  Signals read from
// memory keep their order: which elements share a load is the input layout's.
std::vector<int> Graph::laneOrder(const Batch& in, bool multiplied) const {
    std::vector<int> order(in.size());
    for (size_t i = 0; i < in.size(); ++i) order[i] = static_cast<int>(i);
    const bool grouped = grouping_ == Grouping::ByFirstValue ||
                         (grouping_ == Grouping::ByFirstValueUnmultiplied && !multiplied);
    if (laneGroup() == 1 || !grouped) return order;
    for (const Signal& s : in)
        if (s[0].isMemory()) return order;
    std::stable_sort(order.begin(), order.end(), [&in](int a, int b) {
        const Ref &x = in[a][0], &y = in[b][0];
        return x.node != y.node ? x.node < y.node : x.lane < y.lane;
    });
    return order;
}

Batch Graph::lanewise(const Batch& in, const Kernel& kernel, const Multipliers& pre) {
    const int count = static_cast<int>(in.size());
    const int n = static_cast<int>(in[0].size());
    const std::vector<int> order = laneOrder(in, static_cast<bool>(pre));
    Batch out(count);
    const int step = laneGroup();
    for (int g = 0; g < count; g += step) {
        const int used = std::min(step, count - g);
        std::vector<int> inputs(n);
        for (int j = 0; j < n; ++j) {
            std::vector<Ref> lanes;
            for (int l = 0; l < used; ++l) lanes.push_back(in[order[g + l]][j]);
            inputs[j] = pack(lanes)[0];
            if (pre) {
                std::array<Complex, kMaxWidth> k;
                k.fill(pre(order[g], j));  // spare lanes, and all lanes in-lane, take the first lane's
                for (int l = 1; l < used; ++l) k[l] = pre(order[g + l], j);
                inputs[j] = mulLanes(inputs[j], k);
            }
        }
        const std::vector<int> outputs = kernel(*this, inputs);
        for (int l = 0; l < used; ++l) {
            Signal& o = out[order[g + l]];
            o.resize(outputs.size());
            for (size_t k = 0; k < outputs.size(); ++k) o[k] = {outputs[k], l};
        }
    }
    return out;
}

std::vector<int> Graph::operandsOf(int id) const {
    const Node& n = nodes_[id];
    std::vector<int> ops;
    if (n.a >= 0) ops.push_back(n.a);
    if (n.b >= 0) ops.push_back(n.b);
    if (n.op == Op::Shuffle)
        for (int l = 0; l < width_; ++l)
            if (n.from[l].node >= 0) ops.push_back(n.from[l].node);
    std::sort(ops.begin(), ops.end());
    ops.erase(std::unique(ops.begin(), ops.end()), ops.end());
    return ops;
}

std::vector<int> Graph::liveNodes() const {
    std::vector<char> live(nodes_.size(), 0);
    for (const Ref& r : outputs_)
        if (r.node >= 0) live[r.node] = 1;
    for (int i = static_cast<int>(nodes_.size()) - 1; i >= 0; --i) {
        if (!live[i]) continue;
        for (int operand : operandsOf(i)) live[operand] = 1;
    }
    std::vector<int> order;
    for (size_t i = 0; i < nodes_.size(); ++i)
        if (live[i]) order.push_back(static_cast<int>(i));
    return order;
}

}  // namespace gen
