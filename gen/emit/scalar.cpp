// Scalar back-end.  Each complex node becomes two real variables; negations
// are carried as a sign on the variable and folded into the next addition or
// subtraction, so that a rotation by i costs nothing.
#include <array>
#include <cmath>
#include <sstream>

#include "emit/emit.h"

namespace gen {

namespace {

struct Part {
    std::string name;
    bool negated = false;
    bool isDouble = false;
};

class ScalarEmitter {
public:
    ScalarEmitter(const Graph& g, bool single) : g_(g), single_(single), parts_(g.nodes().size()) {}

    std::string run() {
        for (int id : g_.liveNodes()) emitNode(id);
        const Signal& out = g_.outputs();
        for (size_t k = 0; k < out.size(); ++k) {
            const auto& p = parts_[out[k].node];
            out_ << "    dst[" << k << "].re = s * " << (p[0].negated ? "-" : "") << p[0].name << ";\n";
            out_ << "    dst[" << k << "].im = s * " << (p[1].negated ? "-" : "") << p[1].name << ";\n";
        }
        return out_.str();
    }

private:
    std::string type(bool isDouble) const { return isDouble || !single_ ? "double" : "float"; }
    std::string lit(const Real& r, bool isDouble) const {
        return isDouble || !single_ ? literal(r.d) : literal(r.f);
    }

    Part define(const std::string& expr, bool isDouble) {
        const std::string name = "t" + std::to_string(next_++);
        out_ << "    const " << type(isDouble) << ' ' << name << " = " << expr << ";\n";
        return {name, false, isDouble};
    }

    // x + y, or x - y when `subtract`, with the signs of both folded in.
    Part combine(Part x, Part y, bool subtract) {
        if (subtract) y.negated = !y.negated;
        if (x.negated && y.negated) {
            Part r = define(x.name + " + " + y.name, x.isDouble);
            r.negated = true;
            return r;
        }
        if (x.negated) return define(y.name + " - " + x.name, x.isDouble);
        if (y.negated) return define(x.name + " - " + y.name, x.isDouble);
        return define(x.name + " + " + y.name, x.isDouble);
    }

    Part times(const Part& x, const Real& c) {
        const bool negative = (c.d < 0) != x.negated;
        if (std::fabs(c.d) == 1) return {x.name, negative, x.isDouble};
        const Real magnitude = c.d < 0 ? -c : c;
        Part r = define(lit(magnitude, x.isDouble) + " * " + x.name, x.isDouble);
        r.negated = negative;
        return r;
    }

    static Part flip(Part p, bool doIt) {
        if (doIt) p.negated = !p.negated;
        return p;
    }

    void emitNode(int id) {
        const Node& n = g_.node(id);
        auto& p = parts_[id];
        switch (n.op) {
            case Op::Input: {
                const int k = n.element[0];
                const std::string src = "src[" + std::to_string(k) + "]";
                p[0] = define(src + ".re", false);
                p[1] = define(src + ".im", false);
                break;
            }
            case Op::Zero: p[0] = p[1] = {"0", false, n.isDouble}; break;
            case Op::Add:
            case Op::Sub:
                for (int c = 0; c < 2; ++c) p[c] = combine(parts_[n.a][c], parts_[n.b][c], n.op == Op::Sub);
                break;
            case Op::Mul: {
                const auto& a = parts_[n.a];
                const Complex& k = n.k[0];
                if (k.im.isZero()) {
                    p[0] = times(a[0], k.re);
                    p[1] = times(a[1], k.re);
                } else if (k.re.isZero()) {  // (0, c): (-c a.im, c a.re)
                    p[0] = times(a[1], -k.im);
                    p[1] = times(a[0], k.im);
                } else if (std::fabs(k.re.d) == std::fabs(k.im.d)) {  // h (+-1 +- i)
                    const bool sr = k.re.d < 0, si = k.im.d < 0;
                    const Real h = sr ? -k.re : k.re;
                    p[0] = times(combine(flip(a[0], sr), flip(a[1], si), true), h);
                    p[1] = times(combine(flip(a[1], sr), flip(a[0], si), false), h);
                } else {
                    p[0] = combine(times(a[0], k.re), times(a[1], k.im), true);
                    p[1] = combine(times(a[1], k.re), times(a[0], k.im), false);
                }
                break;
            }
            case Op::Widen:
            case Op::Narrow:
                for (int c = 0; c < 2; ++c) {
                    const Part& a = parts_[n.a][c];
                    const bool toDouble = n.op == Op::Widen;
                    p[c] = define(type(toDouble) + "(" + a.name + ")", toDouble);
                    p[c].negated = a.negated;
                }
                break;
            case Op::Shuffle: throw std::logic_error("scalar bodies have one lane");
        }
    }

    const Graph& g_;
    bool single_;
    std::vector<std::array<Part, 2>> parts_;
    std::ostringstream out_;
    int next_ = 0;
};

}  // namespace

std::string emitScalar(const Graph& g, bool single) { return ScalarEmitter(g, single).run(); }

}  // namespace gen
