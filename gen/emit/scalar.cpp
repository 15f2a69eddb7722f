// Back-end of real-domain graphs: one real value per variable.  Two shapes:
// - scalar bodies (the real DFT, Hartley and short complex bodies), whose
//   elements are read and written through tvk::load and tvk::store, which
//   accept any address;
// - lanes (the DCT-IV kernels): every variable a vector V of independent
//   transforms, one per lane; inputs and outputs are numbered slots that the
//   caller's accessors in(Index<k>{}) and out(Index<k>{}, value) map to
//   memory, inputs and outputs never overlapping.
// Signs are carried on the variables and folded into the next addition, or
// into the store as a flip of the sign bit.  Nodes are written in the order
// of the schedule, and each output is stored once its value is ready and the
// last input has been read.
#include <cmath>
#include <map>
#include <sstream>
#include <stdexcept>

#include "emit/emit.h"
#include "emit/schedule.h"
#include "emit/signs.h"

namespace gen {

namespace {

class ScalarEmitter {
public:
    ScalarEmitter(const Graph& g, bool single, bool lanes)
        : g_(g), single_(single), lanes_(lanes), parts_(g.nodes().size()) {
        if (g.domain() != Domain::Real) throw std::logic_error("the scalar back-end writes real graphs");
    }

    std::string run() {
        const Signal& out = g_.outputs();
        std::vector<int> storedNodes;
        for (const Ref& r : out) storedNodes.push_back(r.isZero() ? -1 : r.node);
        const std::vector<int> order = scheduleNodes(g_);
        // A body may be called in place, so it stores once every element is
        // loaded; a kernel's outputs never overlap its inputs and leave as
        // soon as they are ready.
        const std::vector<int> storeAt =
            lanes_ ? readyPositions(order, storedNodes) : storePositions(g_, order, storedNodes);
        findOnlyNegated(order);
        for (int i = -1; i < static_cast<int>(order.size()); ++i) {
            if (i >= 0) emitNode(order[i]);
            for (size_t k = 0; k < out.size(); ++k)
                if (storeAt[k] == i) emitStore(static_cast<int>(k), out[k]);
        }
        return out_.str();
    }

private:
    std::string type(bool isDouble) const {
        if (lanes_) return "V";
        return isDouble || !single_ ? "double" : "float";
    }
    std::string lit(const Real& r, bool isDouble) const {
        const std::string value = isDouble || !single_ ? literal(r.d) : literal(r.f);
        return lanes_ ? "splat<V>(" + value + ")" : value;
    }

    std::vector<int> readyPositions(const std::vector<int>& order, const std::vector<int>& storedNodes) const {
        std::vector<int> position(g_.nodes().size(), -1), at;
        for (int i = 0; i < static_cast<int>(order.size()); ++i) position[order[i]] = i;
        for (int node : storedNodes) at.push_back(node >= 0 ? position[node] : -1);
        return at;
    }

    // Differences that are used only through a negation (b - a built as
    // -(a - b)) are written as b - a, so that no sign is left to flip.
    void findOnlyNegated(const std::vector<int>& order) {
        std::vector<int> plain(g_.nodes().size(), 0), negated(g_.nodes().size(), 0);
        for (const Ref& r : g_.outputs())
            if (!r.isZero()) ++plain[r.node];
        for (int id : order) {
            int of;
            const bool negation = g_.isNegation(id, of);
            for (int operand : g_.operandsOf(id)) ++(negation ? negated : plain)[operand];
        }
        onlyNegated_.assign(g_.nodes().size(), false);
        for (int id : order) onlyNegated_[id] = g_.node(id).op == Op::Sub && plain[id] == 0 && negated[id] > 0;
    }

    // The scale, widened or not, with or without a sign.
    bool isScale(int id) const {
        int of;
        if (g_.isNegation(id, of)) id = of;
        const Node& n = g_.node(id);
        return n.op == Op::Scale || (n.op == Op::Widen && g_.node(n.a).op == Op::Scale);
    }

    // -v for a variable v, defined at its first use.
    std::string negatedVariable(const std::string& v, bool isDouble) {
        auto [it, fresh] = negated_.try_emplace(v);
        if (fresh) it->second = define("-" + v, isDouble).name;
        return it->second;
    }

    Signed define(const std::string& expr, bool isDouble) {
        const std::string name = "t" + std::to_string(next_++);
        out_ << "    const " << type(isDouble) << ' ' << name << " = " << expr << ";\n";
        return {name, false};
    }

    void emitStore(int k, const Ref& r) {
        // A constant zero store is +0, all bits clear, whatever the input.
        const std::string zero = lanes_ ? "V{}" : single_ ? "0.0f" : "0.0";
        const std::string value = r.isZero() ? zero : (parts_[r.node].negated ? "-" : "") + parts_[r.node].name;
        if (lanes_) out_ << "    out(Index<" << k << ">{}, " << value << ");\n";
        else out_ << "    tvk::store(dst, " << k << ", " << value << ");\n";
    }

    void emitNode(int id) {
        const Node& n = g_.node(id);
        const bool dbl = n.isDouble;
        Signed& p = parts_[id];
        switch (n.op) {
            case Op::Input:
                p = define(lanes_ ? "in(Index<" + std::to_string(n.element[0]) + ">{})"
                                  : "tvk::load<" + type(false) + ">(src, " + std::to_string(n.element[0]) + ")",
                           false);
                break;
            case Op::Zero: p = {lanes_ ? "V{}" : dbl || !single_ ? "0.0" : "0.0f", false}; break;
            case Op::Scale: p = {"s", false}; break;
            case Op::Add:
            case Op::Sub: {
                const auto write = [&](bool plus, const std::string& a, const std::string& b) {
                    return define(a + (plus ? " + " : " - ") + b, dbl).name;
                };
                if (onlyNegated_[id]) p = flip(combine(parts_[n.b], parts_[n.a], true, write), true);
                else p = combine(parts_[n.a], parts_[n.b], n.op == Op::Sub, write);
                break;
            }
            case Op::Mul: {
                const Real& k = n.k[0].re;
                const Signed& a = parts_[n.a];
                const bool negative = (k.d < 0) != a.negated;
                if (std::fabs(k.d) == 1) {
                    p = {a.name, negative};
                } else {
                    p = define(lit(k.d < 0 ? -k : k, dbl) + " * " + a.name, dbl);
                    p.negated = negative;
                }
                break;
            }
            case Op::Product: {
                std::string a = parts_[n.a].name, b = parts_[n.b].name;
                p.negated = parts_[n.a].negated != parts_[n.b].negated;
                // A negative output takes the negated scale, made once, rather
                // than a flip of its sign bit at the store.
                if (p.negated && isScale(n.a)) a = negatedVariable(a, g_.node(n.a).isDouble);
                else if (p.negated && isScale(n.b)) b = negatedVariable(b, g_.node(n.b).isDouble);
                const bool folded = a != parts_[n.a].name || b != parts_[n.b].name;
                p = {define(a + " * " + b, dbl).name, p.negated && !folded};
                break;
            }
            case Op::Widen:
            case Op::Narrow:
                p = define(type(dbl) + "(" + parts_[n.a].name + ")", dbl);
                p.negated = parts_[n.a].negated;
                break;
            case Op::Shuffle: throw std::logic_error("scalar bodies have one lane");
        }
    }

    const Graph& g_;
    bool single_, lanes_;
    std::vector<Signed> parts_;
    std::vector<bool> onlyNegated_;
    std::map<std::string, std::string> negated_;  // variable -> its negation
    std::ostringstream out_;
    int next_ = 0;
};

}  // namespace

std::string emitScalar(const Graph& g, bool single) { return ScalarEmitter(g, single, false).run(); }

std::string emitLanes(const Graph& g, bool single) { return ScalarEmitter(g, single, true).run(); }

}  // namespace gen
