// Interleaved back-end for tvk64fc: one complex value per __m128d.
//
// A register need not hold its value as (re, im): it may hold the parts
// swapped and each with a sign of its own, its "form".  Products by +-1 and
// +-i then cost nothing, they only change the form of the register they
// read; a product by a constant takes the signs into its constant vector;
// an addition of two registers in the same order takes them into the choice
// of add, sub or addsub.  Halves are swapped only where two registers in
// different orders meet (and once per register, shared by all its readers),
// and for products by constants with both parts, as before.  The outputs
// are put back in order before the scale, whose signs take the form's.
#include <array>
#include <cmath>
#include <map>
#include <optional>
#include <sstream>

#include "emit/emit.h"
#include "emit/schedule.h"

namespace gen {

namespace {

// Lane l of a register holds sign[l] times part l ^ swap of its value
// (index 0 the real part, 1 the imaginary part).
struct Form {
    int swap = 0;
    std::array<int, 2> sign{1, 1};
};

// The form in which a register holding x holds u x, u in {1, i, -1, -i}:
// u x = (re u) x + (im u) i x, and i x = (-x.im, x.re).
Form unitForm(const Complex& u) {
    if (u.im.isZero()) return {0, {int(u.re.d), int(u.re.d)}};
    return {1, {-int(u.im.d), int(u.im.d)}};
}

// A register that holds a in form f, read as a register of k a, k a unit:
// a = k^-1 a', so lane l holds f.sign[l] (k^-1 a')[l ^ f.swap].
Form afterUnit(const Form& f, const Complex& k) {
    const Form inv = unitForm({k.re, -k.im});  // k^-1 = conj(k) for a unit
    Form out;
    out.swap = f.swap ^ inv.swap;
    for (int l = 0; l < 2; ++l) out.sign[l] = f.sign[l] * inv.sign[l ^ f.swap];
    return out;
}

Form swapped(const Form& f) { return {f.swap ^ 1, {f.sign[1], f.sign[0]}}; }

bool isUnit(const Complex& k) {
    return (k.im.isZero() && std::fabs(k.re.d) == 1) || (k.re.isZero() && std::fabs(k.im.d) == 1);
}

std::string pair(double lo, double hi) {
    if (lo == hi) return "_mm_set1_pd(" + literal(lo) + ")";
    return "_mm_set_pd(" + literal(hi) + ", " + literal(lo) + ")";
}

// A vector that turns the sign of the lanes where `signs` is -1.
std::string signMask(std::array<int, 2> signs) {
    return std::string("_mm_set_pd(") + (signs[1] < 0 ? "-0.0" : "0.0") + ", " + (signs[0] < 0 ? "-0.0" : "0.0") + ")";
}

struct Register {
    std::string name;
    Form form;
};

// One add, sub or addsub of x and y whose lane l is x_l + ratio[l] y_l;
// none for ratios (1, -1), which no single instruction gives.
std::optional<std::string> combine(const std::string& x, const std::string& y, std::array<int, 2> ratio) {
    if (ratio[0] == 1 && ratio[1] == 1) return "_mm_add_pd(" + x + ", " + y + ")";
    if (ratio[0] == -1 && ratio[1] == -1) return "_mm_sub_pd(" + x + ", " + y + ")";
    if (ratio[0] == -1) return "_mm_addsub_pd(" + x + ", " + y + ")";
    return std::nullopt;
}

class Writer {
public:
    explicit Writer(const Graph& g) : g_(g) {}

    std::string text() {
        const std::vector<int> order = scheduleNodes(g_);
        const Signal& res = g_.outputs();
        std::vector<int> storedNodes;
        for (const Ref& r : res) storedNodes.push_back(r.node);
        const std::vector<int> storeAt = storePositions(g_, order, storedNodes);
        for (size_t i = 0; i < order.size(); ++i) {
            write(order[i]);
            for (size_t k = 0; k < res.size(); ++k)
                if (storeAt[k] == static_cast<int>(i)) store(static_cast<int>(k), res[k].node);
        }
        std::ostringstream head;
        head << "    const __m128d scale = _mm_set1_pd(s);\n";
        for (const auto& [signs, name] : scales_)
            if (name != "scale")
                head << "    const __m128d " << name << " = _mm_xor_pd(scale, " << signMask(signs) << ");\n";
        return head.str() + body_.str();
    }

private:
    std::string define(const std::string& expr) {
        const std::string name = "v" + std::to_string(count_++);
        body_ << "    const __m128d " << name << " = " << expr << ";\n";
        return name;
    }

    // The register with its halves swapped, made once.
    Register swappedOf(const Register& r) {
        auto [it, fresh] = swaps_.try_emplace(r.name);
        if (fresh) it->second = define("tvk::swapHalves(" + r.name + ")");
        return {it->second, swapped(r.form)};
    }
    bool hasSwapped(const Register& r) const { return swaps_.count(r.name) != 0; }

    // a + e b, a and b in the same order.
    Register sum(const Register& a, const Register& b, int e) {
        std::array<int, 2> ratio;
        for (int l = 0; l < 2; ++l) ratio[l] = e * a.form.sign[l] * b.form.sign[l];
        std::optional<std::string> c = combine(a.name, b.name, ratio);
        if (!c) {  // ratios (1, -1): the sign of b's high lane turned first
            const std::string flipped = define("_mm_xor_pd(" + b.name + ", " + signMask({1, -1}) + ")");
            c = combine(a.name, flipped, {1, 1});
        }
        return {define(*c), a.form};
    }

    // a + e b: where the two are in different orders, one of them swapped,
    // preferably one swapped already, else the one that leaves the sum in
    // order, as the stores want it.
    Register addition(const Register& a, const Register& b, int e) {
        if (a.form.swap == b.form.swap) return sum(a, b, e);
        const bool swapA = hasSwapped(a) ? true : hasSwapped(b) ? false : a.form.swap == 1;
        return swapA ? sum(swappedOf(a), b, e) : sum(a, swappedOf(b), e);
    }

    // k a, k not a unit: lane l of the result holds part l ^ out.swap of k a,
    // k a = c a + s (i a), (i a)[q] = sigma_q a[q ^ 1] with sigma = (-1, 1).
    Register product(const Register& a, const Complex& k) {
        const double c = k.re.d, s = k.im.d;
        for (int outSwap : {0, 1}) {  // in order where there is a choice
            // Which register holds a[q] in lane l, q = l ^ outSwap, and with which sign.
            const bool direct = outSwap == a.form.swap;
            const bool needsSwap = (c != 0 && !direct) || (s != 0 && direct);
            if (needsSwap && s != 0 && c == 0) continue;  // a pure imaginary needs no swap
            if (needsSwap && c != 0 && s == 0) continue;
            const Register x = needsSwap ? swappedOf(a) : a;  // made at most once, shared
            const Register& same = direct ? a : x;            // a[q] in lane l
            const Register& other = direct ? x : a;           // a[q ^ 1] in lane l
            std::array<double, 2> cs, ss;
            for (int l = 0; l < 2; ++l) {
                const int q = l ^ outSwap;
                cs[l] = c * same.form.sign[l];
                ss[l] = s * (q == 0 ? -1 : 1) * other.form.sign[l];
            }
            if (s == 0) return {define("_mm_mul_pd(" + same.name + ", " + pair(cs[0], cs[1]) + ")"), {outSwap, {1, 1}}};
            if (c == 0) return {define("_mm_mul_pd(" + other.name + ", " + pair(ss[0], ss[1]) + ")"), {outSwap, {1, 1}}};
            if (std::fabs(c) == std::fabs(s)) {  // h (+-a +- i a): the sum first, then one product
                std::array<int, 2> ratio;
                for (int l = 0; l < 2; ++l) ratio[l] = cs[l] * ss[l] > 0 ? 1 : -1;
                const std::optional<std::string> sum = combine(same.name, other.name, ratio);
                if (!sum) continue;
                return {define("_mm_mul_pd(" + define(*sum) + ", " + pair(cs[0], cs[1]) + ")"), {outSwap, {1, 1}}};
            }
            return {define("_mm_add_pd(_mm_mul_pd(" + same.name + ", " + pair(cs[0], cs[1]) + "), _mm_mul_pd(" +
                           other.name + ", " + pair(ss[0], ss[1]) + "))"),
                    {outSwap, {1, 1}}};
        }
        throw std::logic_error("no interleaved form for a product");
    }

    void write(int id) {
        const Node& n = g_.node(id);
        switch (n.op) {
            case Op::Input:
                regs_[id] = {define("M::load(tvk::partsAt(src, " + std::to_string(n.element[0]) + "))"), {}};
                break;
            case Op::Zero: regs_[id] = {define("_mm_setzero_pd()"), {}}; break;
            case Op::Add: regs_[id] = addition(regs_.at(n.a), regs_.at(n.b), 1); break;
            case Op::Sub: regs_[id] = addition(regs_.at(n.a), regs_.at(n.b), -1); break;
            case Op::Mul: {
                const Register& a = regs_.at(n.a);
                regs_[id] = isUnit(n.k[0]) ? Register{a.name, afterUnit(a.form, n.k[0])} : product(a, n.k[0]);
                break;
            }
            default: throw std::logic_error("no such operation in an interleaved body");
        }
    }

    void store(int k, int id) {
        Register r = regs_.at(id);
        if (r.form.swap) r = swappedOf(r);
        auto [it, fresh] = scales_.try_emplace(r.form.sign);
        if (fresh) it->second = r.form.sign == std::array<int, 2>{1, 1} ? "scale" : "scale" + std::to_string(scales_.size());
        body_ << "    M::store(tvk::partsAt(dst, " << k << "), _mm_mul_pd(" << r.name << ", " << it->second << "));\n";
    }

    const Graph& g_;
    std::ostringstream body_;
    int count_ = 0;
    std::map<int, Register> regs_;
    std::map<std::string, std::string> swaps_;
    std::map<std::array<int, 2>, std::string> scales_;  // the scale with the signs of an output's form
};

}  // namespace

std::string emitInterleaved(const Graph& g) { return Writer(g).text(); }

}  // namespace gen
