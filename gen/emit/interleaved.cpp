// Interleaved back-end for tvk64fc: one complex value per __m128d.  A complex
// addition is one packed addition; a rotation by i is a swap of the halves
// with a sign; products by real constants are one packed multiplication.
#include <cmath>
#include <sstream>

#include "emit/emit.h"
#include "emit/schedule.h"

namespace gen {

namespace {

std::string pair(double lo, double hi) { return "_mm_set_pd(" + literal(hi) + ", " + literal(lo) + ")"; }
std::string splat(double v) { return "_mm_set1_pd(" + literal(v) + ")"; }

std::string product(const std::string& a, const Complex& k) {
    const double re = k.re.d, im = k.im.d;
    if (im == 0) {
        if (re == -1) return "tvk::negate(" + a + ")";
        return "_mm_mul_pd(" + a + ", " + splat(re) + ")";
    }
    if (re == 0) {  // (0, c) a = (-c a.im, c a.re)
        if (std::fabs(im) == 1) return (im > 0 ? "tvk::timesI(" : "tvk::timesMinusI(") + a + ")";
        return "_mm_mul_pd(tvk::swapHalves(" + a + "), " + pair(-im, im) + ")";
    }
    if (std::fabs(re) == std::fabs(im)) {  // h (sr + si i) a = h (sr a + si i a)
        const std::string rotated = im > 0 ? "tvk::timesI(" + a + ")" : "tvk::timesMinusI(" + a + ")";
        const std::string sum = re > 0 ? "_mm_add_pd(" + a + ", " + rotated + ")"
                                       : "_mm_sub_pd(" + rotated + ", " + a + ")";
        return "_mm_mul_pd(" + sum + ", " + splat(std::fabs(re)) + ")";
    }
    return "_mm_add_pd(_mm_mul_pd(" + a + ", " + splat(re) + "), _mm_mul_pd(tvk::swapHalves(" + a + "), " +
           pair(-im, im) + "))";
}

}  // namespace

std::string emitInterleaved(const Graph& g) {
    std::ostringstream out;
    auto name = [](int id) { return "v" + std::to_string(id); };
    const std::vector<int> order = scheduleNodes(g);
    const Signal& res = g.outputs();
    std::vector<int> storedNodes;
    for (const Ref& r : res) storedNodes.push_back(r.node);
    const std::vector<int> storeAt = storePositions(g, order, storedNodes);
    out << "    const __m128d scale = _mm_set1_pd(s);\n";
    for (size_t i = 0; i < order.size(); ++i) {
        const int id = order[i];
        const Node& n = g.node(id);
        std::string expr;
        switch (n.op) {
            case Op::Input: expr = "M::load(tvk::partsAt(src, " + std::to_string(n.element[0]) + "))"; break;
            case Op::Zero: expr = "_mm_setzero_pd()"; break;
            case Op::Add: expr = "_mm_add_pd(" + name(n.a) + ", " + name(n.b) + ")"; break;
            case Op::Sub: expr = "_mm_sub_pd(" + name(n.a) + ", " + name(n.b) + ")"; break;
            case Op::Mul: expr = product(name(n.a), n.k[0]); break;
            default: throw std::logic_error("no such operation in an interleaved body");
        }
        out << "    const __m128d " << name(id) << " = " << expr << ";\n";
        for (size_t k = 0; k < res.size(); ++k)
            if (storeAt[k] == static_cast<int>(i))
                out << "    M::store(tvk::partsAt(dst, " << k << "), _mm_mul_pd(" << name(res[k].node) << ", scale));\n";
    }
    return out.str();
}

}  // namespace gen
