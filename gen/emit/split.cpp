// Split back-end for tvk32fc: a node is two __m128, four real parts and the
// four matching imaginary parts of four independent transforms.  Complex
// arithmetic is separate real arithmetic, a rotation by i a renaming with a
// sign, and signs are carried on the variables until an addition absorbs them.
// Source elements enter through 16-byte or 8-byte loads and two shuffles
// (0x88 takes the real parts, 0xDD the imaginary parts); results leave
// through low and high unpacks, one multiplication by the scale per result
// vector, and 16-byte stores where two adjacent outputs share a vector.
#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <stdexcept>
#include <vector>

#include "emit/emit.h"
#include "emit/schedule.h"
#include "emit/signs.h"

namespace gen {

namespace {

using Part = Signed;

class SplitEmitter {
public:
    explicit SplitEmitter(const Graph& g) : g_(g), parts_(g.nodes().size()) {}

    SplitCode run() {
        const std::vector<Store> stores = storesOf(g_.outputs());
        std::vector<int> storedNodes;
        for (const Store& st : stores) storedNodes.push_back(st.node);
        const std::vector<int> order = scheduleNodes(g_);
        const std::vector<int> storeAt = storePositions(g_, order, storedNodes);
        lines_.push_back("    const __m128 scale = _mm_set1_ps(s);\n");
        for (size_t i = 0; i < order.size(); ++i) {
            emitNode(order[i]);
            for (size_t j = 0; j < stores.size(); ++j)
                if (storeAt[j] == static_cast<int>(i)) emitStore(stores[j]);
        }
        for (const Held& h : held_)
            if (h.open) lines_[h.line] = h.definition();
        SplitCode code;
        for (const std::string& line : lines_) {
            code.text += line;
            code.shuffles += line.find("_mm_shuffle_ps(") != std::string::npos || line.find("_mm_unpack") != std::string::npos;
        }
        return code;
    }

private:
    // A named value for an expression; the same expression is one variable.
    std::string define(const std::string& expr) {
        if (auto it = cse_.find(expr); it != cse_.end()) return it->second;
        const std::string name = "v" + std::to_string(next_++);
        lines_.push_back("    const __m128 " + name + " = " + expr + ";\n");
        cse_.emplace(expr, name);
        return name;
    }

    std::string plain(const Part& p) { return p.negated ? define("tvk::negate(" + p.name + ")") : p.name; }

    Part combine(Part x, Part y, bool subtract) {
        return gen::combine(x, y, subtract, [this](bool plus, const std::string& a, const std::string& b) {
            return define(std::string(plus ? "_mm_add_ps(" : "_mm_sub_ps(") + a + ", " + b + ")");
        });
    }

    static bool uniform(const std::array<float, kMaxWidth>& c) {
        return c[1] == c[0] && c[2] == c[0] && c[3] == c[0];
    }
    static std::string vectorOf(const std::array<float, kMaxWidth>& c) {
        if (uniform(c)) return "_mm_set1_ps(" + literal(c[0]) + ")";
        return "_mm_setr_ps(" + literal(c[0]) + ", " + literal(c[1]) + ", " + literal(c[2]) + ", " + literal(c[3]) + ")";
    }

    // x times the lane constants c; a sign on x moves into the constants.
    Part times(const Part& x, std::array<float, kMaxWidth> c) {
        if (x.negated)
            for (float& v : c) v = -v;
        if (uniform(c) && std::fabs(c[0]) == 1) return {x.name, c[0] < 0};
        return {define("_mm_mul_ps(" + x.name + ", " + vectorOf(c) + ")"), false};
    }

    void emitMul(const Node& n, std::array<Part, 2>& p) {
        const auto& a = parts_[n.a];
        std::array<float, kMaxWidth> re{}, im{};
        bool realOnly = true, imagOnly = true;
        for (int l = 0; l < kMaxWidth; ++l) {
            re[l] = n.k[l].re.f;
            im[l] = n.k[l].im.f;
            realOnly &= n.k[l].im.isZero();
            imagOnly &= n.k[l].re.isZero();
        }
        if (realOnly) {
            p[0] = times(a[0], re);
            p[1] = times(a[1], re);
        } else if (imagOnly) {  // (0, c): (-c a.im, c a.re)
            std::array<float, kMaxWidth> minus = im;
            for (float& v : minus) v = -v;
            p[0] = times(a[1], minus);
            p[1] = times(a[0], im);
        } else if (uniform(re) && uniform(im) && std::fabs(re[0]) == std::fabs(im[0])) {  // h (+-1 +- i)
            const bool sr = re[0] < 0, si = im[0] < 0;
            std::array<float, kMaxWidth> h{};
            h.fill(std::fabs(re[0]));
            p[0] = times(combine(flip(a[0], sr), flip(a[1], si), true), h);
            p[1] = times(combine(flip(a[1], sr), flip(a[0], si), false), h);
        } else {
            p[0] = combine(times(a[0], re), times(a[1], im), true);
            p[1] = combine(times(a[1], re), times(a[0], im), false);
        }
    }

    // Two complex source elements in one vector: (a.re, a.im, b.re, b.im);
    // -1 leaves that half zero.
    std::string loadPair(int a, int b) {
        if (a >= 0 && b == a + 1)
            return define((a % 2 ? "_mm_loadu_ps(tvk::partsAt(src, " : "M::load(tvk::partsAt(src, ") + std::to_string(a) + "))");
        std::string v = "_mm_setzero_ps()";
        if (a >= 0) v = define("tvk::loadLow(" + v + ", &src[" + std::to_string(a) + "])");
        if (b >= 0) v = define("tvk::loadHigh(" + v + ", &src[" + std::to_string(b) + "])");
        return v;
    }

    void emitInput(const Node& n, std::array<Part, 2>& p) {
        const auto& e = n.element;
        const std::string lo = loadPair(e[0], e[1]), hi = loadPair(e[2], e[3]);
        p[0] = {define("_mm_shuffle_ps(" + lo + ", " + hi + ", 0x88)"), false};
        p[1] = {define("_mm_shuffle_ps(" + lo + ", " + hi + ", 0xDD)"), false};
    }

    // Lane `lane` of the variable `from`; an empty name is a spare lane.
    struct Lane {
        std::string from;
        int lane = 0;
        bool spare() const { return from.empty(); }
        bool operator==(const Lane&) const = default;
    };
    using Lanes = std::array<Lane, kMaxWidth>;

    // One instruction on x and y that gives `want`, if there is one: a
    // shufps (lanes 0, 1 from x, lanes 2, 3 from y) or an unpack; with all
    // the lanes it holds.
    struct Instruction {
        std::string expr;
        Lanes lanes;
    };
    static Instruction oneInstruction(const Lanes& want, const std::string& x, const std::string& y) {
        bool shuffles = true, inPlace = x == y;
        Lanes lanes;
        for (int l = 0; l < kMaxWidth; ++l) {
            lanes[l] = {l < 2 ? x : y, want[l].spare() ? 0 : want[l].lane};
            if (want[l].spare()) continue;
            shuffles &= want[l].from == lanes[l].from;
            inPlace &= want[l].lane == l;
        }
        if (shuffles) {
            if (inPlace) return {x, lanes};
            int imm = 0;
            for (int l = 0; l < kMaxWidth; ++l) imm |= lanes[l].lane << 2 * l;
            return {"_mm_shuffle_ps(" + x + ", " + y + ", " + std::to_string(imm) + ")", lanes};
        }
        for (const int half : {0, 2}) {
            bool unpacks = true;
            for (int l = 0; l < kMaxWidth; ++l) {
                lanes[l] = {l % 2 ? y : x, half + l / 2};
                unpacks &= want[l].spare() || want[l] == lanes[l];
            }
            if (unpacks) return {(half ? "_mm_unpackhi_ps(" : "_mm_unpacklo_ps(") + x + ", " + y + ")", lanes};
        }
        return {};
    }

    // A shuffled variable and the lanes it holds, so that later gathers can
    // take lanes from it.  An open one is a shufps of x (slots 0, 1) and y
    // (slots 2, 3) whose free slots later gathers fill as they need them, so
    // that one instruction serves several gathers, as the unpacks of a
    // transpose do; it is written out when the body is done.
    struct Held {
        std::string name;
        Lanes lanes;
        bool open = false;
        std::string x{}, y{};
        size_t line = 0;

        int slotOf(const Lane& w) const {
            for (int s = 0; s < kMaxWidth; ++s)
                if (lanes[s] == w) return s;
            return -1;
        }
        // A free slot that may take w; -1 if none.
        int freeSlotFor(const Lane& w) const {
            if (!open || (w.from != x && w.from != y)) return -1;
            for (int s = w.from == x ? 0 : 2, end = s + 2; s < end; ++s)
                if (lanes[s].spare()) return s;
            return -1;
        }
        std::string definition() const {
            int imm = 0;
            for (int s = 0; s < kMaxWidth; ++s) imm |= (lanes[s].spare() ? lanes[s ^ 1] : lanes[s]).lane << 2 * s;
            return "    const __m128 " + name + " = _mm_shuffle_ps(" + x + ", " + y + ", " + std::to_string(imm) + ");\n";
        }
    };

    std::string hold(const std::string& name, const Lanes& lanes) {
        held_.push_back({.name = name, .lanes = lanes});
        return name;
    }

    // A variable that holds lanes a and b somewhere, and their positions in it.
    std::pair<std::string, std::array<int, 2>> pairOf(const Lane& a, const Lane& b) {
        if (a.spare()) return {b.from, {b.lane, b.lane}};
        if (b.spare() || a.from == b.from) return {a.from, {a.lane, b.spare() ? a.lane : b.lane}};
        for (const Held& h : held_)
            if (const int sa = h.slotOf(a), sb = h.slotOf(b); sa >= 0 && sb >= 0) return {h.name, {sa, sb}};
        for (Held& h : held_) {
            const int sa = h.slotOf(a) >= 0 ? h.slotOf(a) : h.freeSlotFor(a);
            const int sb = h.slotOf(b) >= 0 ? h.slotOf(b) : h.freeSlotFor(b);
            if (sa < 0 || sb < 0) continue;
            h.lanes[sa] = a;
            h.lanes[sb] = b;
            return {h.name, {sa, sb}};
        }
        const Held h{.name = "v" + std::to_string(next_++),
                     .lanes = {a, Lane{}, b, Lane{}},
                     .open = true,
                     .x = a.from,
                     .y = b.from,
                     .line = lines_.size()};
        lines_.emplace_back();  // written when its slots are known
        held_.push_back(h);
        return {h.name, {0, 2}};
    }

    // A held variable whose lanes are `want` in place, filling free slots if need be.
    std::string heldInPlace(const Lanes& want) {
        for (Held& h : held_) {
            bool fits = true;
            for (int l = 0; l < kMaxWidth && fits; ++l)
                fits = want[l].spare() || h.lanes[l] == want[l] || (h.lanes[l].spare() && h.freeSlotFor(want[l]) / 2 == l / 2);
            if (!fits) continue;
            for (int l = 0; l < kMaxWidth; ++l)
                if (!want[l].spare()) h.lanes[l] = want[l];
            return h.name;
        }
        return {};
    }

    // Lane l of the result is lane from[l].lane of part c of node from[l].node;
    // spare lanes take whatever the cheapest sequence leaves in them.
    std::string gather(const Node& n, int c) {
        Lanes want;
        std::vector<std::string> sources;
        for (int l = 0; l < kMaxWidth; ++l) {
            if (n.from[l].isSpare()) continue;
            want[l] = {plain(parts_[n.from[l].node][c]), n.from[l].lane};
            if (std::find(sources.begin(), sources.end(), want[l].from) == sources.end())
                sources.push_back(want[l].from);
        }
        for (const std::string& x : sources)
            if (oneInstruction(want, x, x).expr == x) return x;
        if (std::string h = heldInPlace(want); !h.empty()) return h;
        for (const std::string& x : sources)
            for (const std::string& y : sources)
                if (const Instruction i = oneInstruction(want, x, y); !i.expr.empty()) return hold(define(i.expr), i.lanes);
        const bool lowSpare = want[0].spare() && want[1].spare(), highSpare = want[2].spare() && want[3].spare();
        const auto [low, lp] = pairOf(want[lowSpare ? 2 : 0], want[lowSpare ? 3 : 1]);
        const auto [high, hp] = pairOf(want[highSpare ? 0 : 2], want[highSpare ? 1 : 3]);
        return hold(define("_mm_shuffle_ps(" + low + ", " + high + ", " +
                           std::to_string(lp[0] | lp[1] << 2 | hp[0] << 4 | hp[1] << 6) + ")"),
                    want);
    }

    void emitNode(int id) {
        const Node& n = g_.node(id);
        auto& p = parts_[id];
        switch (n.op) {
            case Op::Input: emitInput(n, p); break;
            case Op::Zero: p[0] = p[1] = {define("_mm_setzero_ps()"), false}; break;
            case Op::Add:
            case Op::Sub:
                for (int c = 0; c < 2; ++c) p[c] = combine(parts_[n.a][c], parts_[n.b][c], n.op == Op::Sub);
                break;
            case Op::Mul: emitMul(n, p); break;
            case Op::Shuffle:
                for (int c = 0; c < 2; ++c) p[c] = {gather(n, c), false};
                break;
            default: throw std::logic_error("no such operation in a split body");
        }
    }

    // Interleaved and scaled: lanes 0, 1 (low) or 2, 3 (high) of a node as two
    // complex values in memory order.
    std::string result(int node, bool high) {
        const std::string re = plain(parts_[node][0]), im = plain(parts_[node][1]);
        const std::string v = define(std::string(high ? "_mm_unpackhi_ps(" : "_mm_unpacklo_ps(") + re + ", " + im + ")");
        return define("_mm_mul_ps(" + v + ", scale)");
    }

    // One store: output k alone (8 bytes), or outputs k and k + 1 together
    // (16 bytes) when they sit in adjacent lanes of one node.
    struct Store {
        size_t k;
        bool pair;
        int node;
    };

    static std::vector<Store> storesOf(const Signal& res) {
        std::vector<Store> stores;
        for (size_t k = 0; k < res.size(); ++k) {
            const Ref r = res[k];
            const bool pair = k + 1 < res.size() && r.lane % 2 == 0 && res[k + 1].node == r.node &&
                              res[k + 1].lane == r.lane + 1;
            stores.push_back({k, pair, r.node});
            if (pair) ++k;
        }
        return stores;
    }

    void emitStore(const Store& st) {
        const Ref r = g_.outputs()[st.k];
        const std::string at = "&dst[" + std::to_string(st.k) + "]";
        const std::string v = result(r.node, r.lane >= 2);
        if (st.pair)
            lines_.push_back("    " + std::string(st.k % 2 ? "_mm_storeu_ps(" : "M::store(") + "tvk::partsAt(dst, " +
                             std::to_string(st.k) + "), " + v + ");\n");
        else lines_.push_back("    " + std::string(r.lane % 2 ? "tvk::storeHigh(" : "tvk::storeLow(") + at + ", " + v + ");\n");
    }

    const Graph& g_;
    std::vector<std::array<Part, 2>> parts_;
    std::map<std::string, std::string> cse_;
    std::vector<std::string> lines_;
    std::vector<Held> held_;
    int next_ = 0;
};

}  // namespace

SplitCode emitSplit(const Graph& g) { return SplitEmitter(g).run(); }

}  // namespace gen
