// Scalar back-end: one real value per variable, for the real-domain graphs of
// the real DFT, Hartley and short complex bodies.  Elements are read and
// written through tvk::load and tvk::store, which accept any address.  Signs
// are carried on the variables and folded into the next addition, or into
// the store as a flip of the sign bit.  Nodes are written in the order of the
// schedule, and each output is stored once its value is ready and the last
// element has been loaded.
#include <cmath>
#include <sstream>
#include <stdexcept>

#include "emit/emit.h"
#include "emit/schedule.h"
#include "emit/signs.h"

namespace gen {

namespace {

class ScalarEmitter {
public:
    ScalarEmitter(const Graph& g, bool single) : g_(g), single_(single), parts_(g.nodes().size()) {
        if (g.domain() != Domain::Real) throw std::logic_error("the scalar back-end writes real graphs");
    }

    std::string run() {
        const Signal& out = g_.outputs();
        std::vector<int> storedNodes;
        for (const Ref& r : out) storedNodes.push_back(r.isZero() ? -1 : r.node);
        const std::vector<int> order = scheduleNodes(g_);
        const std::vector<int> storeAt = storePositions(g_, order, storedNodes);
        for (int i = -1; i < static_cast<int>(order.size()); ++i) {
            if (i >= 0) emitNode(order[i]);
            for (size_t k = 0; k < out.size(); ++k)
                if (storeAt[k] == i) emitStore(static_cast<int>(k), out[k]);
        }
        return out_.str();
    }

private:
    std::string type(bool isDouble) const { return isDouble || !single_ ? "double" : "float"; }
    std::string lit(const Real& r, bool isDouble) const {
        return isDouble || !single_ ? literal(r.d) : literal(r.f);
    }

    Signed define(const std::string& expr, bool isDouble) {
        const std::string name = "t" + std::to_string(next_++);
        out_ << "    const " << type(isDouble) << ' ' << name << " = " << expr << ";\n";
        return {name, false};
    }

    void emitStore(int k, const Ref& r) {
        // A constant zero store is +0, all bits clear, whatever the input.
        const std::string value = r.isZero() ? (single_ ? "0.0f" : "0.0")
                                             : (parts_[r.node].negated ? "-" : "") + parts_[r.node].name;
        out_ << "    tvk::store(dst, " << k << ", " << value << ");\n";
    }

    void emitNode(int id) {
        const Node& n = g_.node(id);
        const bool dbl = n.isDouble;
        Signed& p = parts_[id];
        switch (n.op) {
            case Op::Input:
                p = define("tvk::load<" + type(false) + ">(src, " + std::to_string(n.element[0]) + ")", false);
                break;
            case Op::Zero: p = {dbl || !single_ ? "0.0" : "0.0f", false}; break;
            case Op::Scale: p = {"s", false}; break;
            case Op::Add:
            case Op::Sub:
                p = combine(parts_[n.a], parts_[n.b], n.op == Op::Sub,
                            [&](bool plus, const std::string& a, const std::string& b) {
                                return define(a + (plus ? " + " : " - ") + b, dbl).name;
                            });
                break;
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
                const Signed &a = parts_[n.a], &b = parts_[n.b];
                p = define(a.name + " * " + b.name, dbl);
                p.negated = a.negated != b.negated;
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
    bool single_;
    std::vector<Signed> parts_;
    std::ostringstream out_;
    int next_ = 0;
};

}  // namespace

std::string emitScalar(const Graph& g, bool single) { return ScalarEmitter(g, single).run(); }

}  // namespace gen
