// The real DFT family: forward bodies from N real samples to a packed
// spectrum, inverse bodies back, in three layouts.
//
// A forward body runs its plan on complex values that are pairs of real
// nodes, with the samples entering as (x, 0): the zeros fold away, and joins
// of real signals compute only the bins they keep.  An inverse body is the
// transpose of such a forward network, fed with the doubled bins.  The three
// layouts of one direction are one computation with three maps of elements,
// so they agree bit for bit per bin.
#include "families/real_dft.h"

#include <cctype>
#include <sstream>
#include <vector>

#include "algorithms/transform.h"
#include "families/entry.h"
#include "families/real_plans.h"
#include "families/scalar_body.h"
#include "ir/product_folding.h"
#include "ir/transpose.h"

namespace gen {

namespace {

enum class Layout { CCS, Pack, Perm };

struct Set {
    bool inverse;
    Layout layout;
    bool single;
    std::string layoutName() const { return layout == Layout::CCS ? "CCS" : layout == Layout::Pack ? "Pack" : "Perm"; }
    std::string stem() const {
        return inverse ? "DFTInv_" + layoutName() + "ToR" : "DFTFwd_RTo" + layoutName();
    }
    std::string suffix() const { return single ? "32f" : "64f"; }
    std::string file() const {
        std::string lower = layoutName();
        for (char& c : lower) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        return "src/rdft/pgenrdft" + std::string(inverse ? "inv" : "fwd") + lower + suffix();
    }
};

// Where a layout keeps the real and imaginary part of bin k (0 to n/2); -1
// where it keeps none.
int realElement(Layout layout, int n, int k) {
    const bool top = n % 2 == 0 && k == n / 2;
    if (k == 0) return 0;
    switch (layout) {
        case Layout::CCS: return 2 * k;
        case Layout::Pack: return 2 * k - 1;
        case Layout::Perm: return n % 2 ? 2 * k - 1 : top ? 1 : 2 * k;
    }
    return -1;
}

int imagElement(Layout layout, int n, int k) {
    if (k == 0 || (n % 2 == 0 && k == n / 2)) return -1;
    return realElement(layout, n, k) + 1;
}

// The bins 0 to n/2 of the forward transform of n real values, each as a
// pair of real nodes.
std::vector<std::pair<int, int>> forwardBins(PairArithmetic& c, const Plan& plan, const std::vector<int>& x) {
    Signal in;
    for (int v : x) in.push_back({c.lift(v), 0});
    DftOptions opt;
    opt.realRader = true;
    const Signal X = transform(c, plan, Batch{in}, opt)[0];
    std::vector<std::pair<int, int>> bins;
    for (int k = 0; k <= plan.n / 2; ++k) {
        const int v = c.valueOf(X[k]);
        bins.emplace_back(c.re(v), c.im(v));
    }
    return bins;
}

void buildForward(ScalarBody& body, const Plan& plan, Layout layout) {
    const int n = plan.n;
    std::vector<int> x;
    for (int i = 0; i < n; ++i) x.push_back(body.load(i));
    const auto bins = forwardBins(body.complex(), plan, x);
    for (int k = 0; k <= n / 2; ++k) {
        body.store(realElement(layout, n, k), bins[k].first);
        if (const int e = imagElement(layout, n, k); e >= 0) body.store(e, bins[k].second);
    }
    if (layout == Layout::CCS) {
        body.storeZero(1);
        if (n % 2 == 0) body.storeZero(n + 1);
    }
}

// The transpose of the forward network of `plan`, seeded with the bins: the
// parts of bins 1 to K are doubled, merged into the first product where they
// meet one before a sum.  The network takes a block's last products into the
// constants after them (the sine parts of 3-point blocks into the twiddles
// of 9-point ones), which the table counts that way.
void buildInverse(ScalarBody& body, const Plan& plan, Layout layout, bool single) {
    const int n = plan.n;
    Graph network(1, Domain::Real);
    MixedPrecision mixed(network);
    ProductFolding products(single ? static_cast<Arithmetic&>(mixed) : network);
    PairArithmetic pairs(products);
    std::vector<int> x;
    for (int i = 0; i < n; ++i) x.push_back(network.input({i, -1, -1, -1}));
    const auto bins = forwardBins(pairs, plan, x);
    std::vector<Seed> seeds;
    for (int k = 0; k <= n / 2; ++k) {
        const int doubling = imagElement(layout, n, k) >= 0 ? 2 : 1;
        if (!network.isZero(bins[k].first))
            seeds.push_back({bins[k].first, body.load(realElement(layout, n, k)), doubling});
        if (const int e = imagElement(layout, n, k); e >= 0 && !network.isZero(bins[k].second))
            seeds.push_back({bins[k].second, body.load(e), doubling});
    }
    Graph& g = body.graph();
    const auto twice = [&g](int v) { return g.mul(v, Complex::real(Fixed::fromInt(2))); };
    const std::vector<int> samples = transpose(network, seeds, n, body.real(), twice);
    for (int i = 0; i < n; ++i) body.store(i, samples[i]);
}

struct Codelet {
    std::string text;
    OpCount count;
    std::string plan;
};

Codelet codelet(int n, const Set& set) {
    const std::string planText = set.inverse ? realInversePlanText(n) : realForwardPlanText(n);
    const auto plan = set.inverse ? realInversePlan(n) : realForwardPlan(n);
    // The forward tvk32f bodies scale in double what leaves its last block in double.
    ScalarBody body(set.single, set.inverse ? ScalarBody::Scaling::Single : ScalarBody::Scaling::AsItLeaves);
    if (set.inverse) buildInverse(body, *plan, set.layout, set.single);
    else buildForward(body, *plan, set.layout);
    const OpCount count = body.count();

    const std::string name = "tvkg" + set.stem() + "_" + std::to_string(n) + "_" + set.suffix();
    const std::string ns = "r" + set.stem() + "_" + std::to_string(n) + "_" + set.suffix();
    const std::string real = set.single ? "float" : "double";
    std::ostringstream s;
    s << "\n// " << name << ": plan " << planText << "; " << count.additions << " additions, "
      << count.multiplications << " multiplications with the scale\n";
    s << "namespace " << ns << " {\n" << scalesOf(n, set.single);
    s << "TVK_BODY void body(const " << real << "* src, " << real << "* dst, " << real << " s) {\n"
      << body.text() << "}\n}  // namespace " << ns << "\n";
    Entry entry;
    entry.name = name;
    entry.params = "(const tvk" + set.suffix() + "* src, tvk" + set.suffix() + "* dst, int32_t flag)";
    entry.arguments = "src, dst, flag";
    const std::string direction = set.inverse ? "tvk::Inverse" : "tvk::Forward";
    entry.run = [&](const std::string&) {
        return "tvk::run<" + direction + ", " + ns + "::body>(src, dst, flag, " + ns + "::kScales)";
    };
    s << entryPoints(entry);
    return {s.str(), count, planText};
}

}  // namespace

void writeRealDft(Output& out, int shards, std::ostream& counts) {
    for (const bool inverse : {false, true})
        for (const Layout layout : {Layout::CCS, Layout::Pack, Layout::Perm})
            for (const bool single : {true, false}) {
                const Set set{inverse, layout, single};
                std::vector<std::ostringstream> files(shards);
                for (int n = 2; n <= 64; ++n) {
                    const Codelet c = codelet(n, set);
                    files[(n - 2) % shards] << c.text;
                    counts << "tvkg" << set.stem() << "_" << n << "_" << set.suffix() << '\t' << c.plan << '\t'
                           << c.count.additions << '\t' << c.count.multiplications << '\t' << 0 << '\t'
                           << c.count.doubleMultiplications << '\t' << c.count.doubleAdditions << '\t'
                           << c.count.widenings << '\t' << c.count.narrowings << '\n';
                }
                for (int i = 0; i < shards; ++i)
                    out.write(set.file() + "_" + std::to_string(i) + ".cpp",
                              std::string(kGeneratedBanner) + "#include \"codelet.h\"\n" + files[i].str());
            }
}

}  // namespace gen
