// The Hartley family: y[k] = s * sum x[n] cas(2 pi n k / N), lengths 2 to 64,
// tvk32f and tvk64f.  Each length has a plan and one of three last passes:
// `pairs` (a forward real DFT plan, then sums and differences of the real
// and imaginary parts), `p-point` (the plan's last blocks of p points form
// the outputs themselves), `halves` (two Hartley transforms of half the
// length joined).  The tvk32f bodies carry product chains in double, rounded
// once each; the last pass and the scale are single.
#include "families/hartley.h"

#include <algorithm>
#include <map>
#include <sstream>
#include <stdexcept>
#include <vector>

#include "algorithms/hartley.h"
#include "families/entry.h"
#include "families/real_plans.h"
#include "families/scalar_body.h"
#include "ir/product_folding.h"

namespace gen {

namespace {

enum class Pass { Pairs, PPoint, Halves };

struct Route {
    Pass pass;
    const char* plan;  // pairs and p-point; a Rader plan at p-point is the Hartley Rader form
};

const std::map<int, Route>& routes() {
    static const std::map<int, Route> table = {
        {2, {Pass::Pairs, "2"}},
        {3, {Pass::Pairs, "3d"}},
        {4, {Pass::Pairs, "2.2"}},
        {5, {Pass::Pairs, "5d"}},
        {6, {Pass::Pairs, "3dx2"}},
        {7, {Pass::Pairs, "7d"}},
        {8, {Pass::Pairs, "2.4"}},
        {9, {Pass::Pairs, "3d.3d"}},
        {10, {Pass::Pairs, "5dx2"}},
        {11, {Pass::Pairs, "11d"}},
        {12, {Pass::Halves, nullptr}},
        {13, {Pass::Pairs, "13r"}},
        {14, {Pass::Pairs, "2x7d"}},
        {15, {Pass::PPoint, "3dx5d"}},
        {16, {Pass::Pairs, "4.4"}},
        {17, {Pass::Pairs, "17r"}},
        {18, {Pass::PPoint, "2x(3d.3d)"}},
        {19, {Pass::Pairs, "19r"}},
        {20, {Pass::Halves, nullptr}},
        {21, {Pass::Pairs, "7dx3d"}},
        {22, {Pass::Pairs, "2x11d"}},
        {23, {Pass::Pairs, "23r"}},
        {24, {Pass::Pairs, "3dx(2.4)"}},
        {25, {Pass::PPoint, "5d.5d"}},
        {26, {Pass::Pairs, "13rx2"}},
        {27, {Pass::PPoint, "3d.(3d.3d)"}},  // 9-point blocks last, where the twiddles take up their products
        {28, {Pass::PPoint, "4x7d"}},
        {29, {Pass::Pairs, "29r"}},
        {30, {Pass::Halves, nullptr}},
        {31, {Pass::PPoint, "31r"}},
        {32, {Pass::Halves, nullptr}},
        {33, {Pass::PPoint, "3dx11r"}},
        {34, {Pass::Halves, nullptr}},
        {35, {Pass::PPoint, "5dx7d"}},
        {36, {Pass::PPoint, "4x(3d.3d)"}},
        {37, {Pass::Pairs, "37r"}},
        {38, {Pass::Pairs, "19rx2"}},
        {39, {Pass::Pairs, "13rx3d"}},
        {40, {Pass::Halves, nullptr}},
        {41, {Pass::Pairs, "41r"}},
        {42, {Pass::PPoint, "(3dx2)x7d"}},
        {43, {Pass::PPoint, "43r"}},
        {44, {Pass::PPoint, "4x11r"}},
        {45, {Pass::PPoint, "5dx(3d.3d)"}},
        {46, {Pass::Halves, nullptr}},
        {47, {Pass::Pairs, "47r"}},
        {48, {Pass::PPoint, "(4.4)x3d"}},
        {49, {Pass::Pairs, "7d.7d"}},
        {50, {Pass::Pairs, "(5d.5d)x2"}},
        {51, {Pass::PPoint, "3dx17r"}},
        {52, {Pass::Pairs, "13rx4"}},
        {53, {Pass::Pairs, "53r"}},
        {54, {Pass::Halves, nullptr}},
        {55, {Pass::PPoint, "5dx11r"}},
        {56, {Pass::PPoint, "(2.4)x7d"}},
        {57, {Pass::Pairs, "19rx3d"}},
        {58, {Pass::Pairs, "2x29r"}},
        {59, {Pass::Pairs, "59r"}},
        {60, {Pass::PPoint, "(4x3d)x5d"}},
        {61, {Pass::Pairs, "61r"}},
        {62, {Pass::Halves, nullptr}},
        {63, {Pass::Pairs, "7dx(3d.3d)"}},
        {64, {Pass::Halves, nullptr}},
    };
    return table;
}

std::string planText(int n) {
    const Route& r = routes().at(n);
    if (r.pass == Pass::Halves) return "halves of " + std::to_string(n / 2);
    return std::string(r.pass == Pass::PPoint ? "p-point " : "pairs ") + r.plan;
}

// How a transform of a half chooses its form: by the table; as the even
// half of a split of an even length, which splits again down to an odd
// length; or by halves to the bottom, the radix-2 recursion of 32 and 64.
enum class Mode { Table, EvenHalf, Radix2 };

class HartleyBuilder {
public:
    explicit HartleyBuilder(ScalarBody& body) : body_(body) { opt_.realRader = true; }

    std::vector<int> transform(const std::vector<int>& x, Mode mode) {
        const int n = static_cast<int>(x.size());
        if (n == 1) return x;
        if (mode == Mode::Radix2 || (mode == Mode::EvenHalf && n % 2 == 0)) return halves(x, mode);
        const Route& route = routes().at(n);
        if (route.pass == Pass::Halves) return halves(x, Mode::Table);
        const auto plan = realPlan(route.plan);
        PairArithmetic& c = body_.complex();
        if (route.pass == Pass::Pairs) {
            Signal in;
            for (int v : x) in.push_back({c.lift(v), 0});
            const Signal X = gen::transform(c, *plan, Batch{in}, opt_)[0];
            std::vector<std::pair<int, int>> bins;
            for (int k = 0; k <= n / 2; ++k) bins.emplace_back(c.re(c.valueOf(X[k])), c.im(c.valueOf(X[k])));
            return hartleyPairs(body_.real(), n, bins);
        }
        // The p-point bodies take the constants of a block's last products
        // into the constants that follow them (twiddles, a Rader kernel).
        ProductFolding products(body_.real());
        PairArithmetic folding(products);
        if (plan->kind == Plan::Kind::Rader) {
            plan->second = realInversePlan(n - 1);
            return hartleyRader(folding, *plan, x, opt_);
        }
        Signal in;
        for (int v : x) in.push_back({folding.lift(v), 0});
        std::vector<int> y;
        for (const HartleyPair& h : hartleyLastPass(folding, *plan, in, opt_)) y.push_back(h.h);
        return y;
    }

private:
    // Even samples and odd ones; for an odd half length the odd half starts
    // at x[n/2] and steps by 2 modulo n.
    std::vector<int> halves(const std::vector<int>& x, Mode mode) {
        const int n = static_cast<int>(x.size()), M = n / 2;
        std::vector<int> even(M), odd(M);
        for (int m = 0; m < M; ++m) {
            even[m] = x[2 * m];
            odd[m] = M % 2 ? x[(M + 2 * m) % n] : x[2 * m + 1];
        }
        const Mode evenMode = mode == Mode::Radix2 ? Mode::Radix2 : M % 2 ? Mode::Table : Mode::EvenHalf;
        const Mode oddMode = mode == Mode::Radix2 ? Mode::Radix2 : Mode::Table;
        return hartleyHalves(body_.real(), n, transform(even, evenMode), transform(odd, oddMode));
    }

    ScalarBody& body_;
    DftOptions opt_;
};

struct Codelet {
    std::string text;
    OpCount count;
};

Codelet codelet(int n, bool single) {
    ScalarBody body(single);
    std::vector<int> x;
    for (int i = 0; i < n; ++i) x.push_back(body.load(i));
    // 32 and 64 split into halves all the way down; the other halves lengths
    // split their even half down to an odd length.
    const Mode mode = n == 32 || n == 64 ? Mode::Radix2 : Mode::Table;
    const std::vector<int> y = HartleyBuilder(body).transform(x, mode);
    for (int k = 0; k < n; ++k) body.store(k, y[k]);
    const OpCount count = body.count();

    const std::string suffix = single ? "32f" : "64f", real = single ? "float" : "double";
    const std::string name = "tvkgHartley_" + std::to_string(n) + "_" + suffix;
    const std::string ns = "hartley_" + std::to_string(n) + "_" + suffix;
    std::ostringstream s;
    s << "\n// " << name << ": " << planText(n) << "; " << count.additions << " additions, "
      << count.multiplications << " multiplications with the scale\n";
    s << "namespace " << ns << " {\n" << scalesOf(n, single);
    s << "TVK_BODY void body(const " << real << "* src, " << real << "* dst, " << real << " s) {\n"
      << body.text() << "}\n}  // namespace " << ns << "\n";
    Entry entry;
    entry.name = name;
    entry.params = "(const tvk" + suffix + "* src, tvk" + suffix + "* dst, int32_t flag)";
    entry.arguments = "src, dst, flag";
    entry.run = [&](const std::string&) {
        return "tvk::run<tvk::SelfInverse, " + ns + "::body>(src, dst, flag, " + ns + "::kScales)";
    };
    s << entryPoints(entry);
    return {s.str(), count};
}

}  // namespace

void writeHartley(Output& out, int shards, std::ostream& counts) {
    for (const bool single : {true, false}) {
        std::vector<std::ostringstream> files(shards);
        for (int n = 2; n <= 64; ++n) {
            const Codelet c = codelet(n, single);
            files[(n - 2) % shards] << c.text;
            std::string plan = planText(n);
            std::replace(plan.begin(), plan.end(), ' ', ':');
            counts << "tvkgHartley_" << n << (single ? "_32f" : "_64f") << '\t' << plan << '\t' << c.count.additions << '\t' << c.count.multiplications << '\t' << 0 << '\t'
                   << c.count.doubleMultiplications << '\t' << c.count.doubleAdditions << '\t' << c.count.widenings
                   << '\t' << c.count.narrowings << '\n';
        }
        for (int i = 0; i < shards; ++i)
            out.write(std::string("src/hartley/pgenhartley") + (single ? "32f" : "64f") + "_" + std::to_string(i) +
                          ".cpp",
                      std::string(kGeneratedBanner) + "#include \"codelet.h\"\n" + files[i].str());
    }
}

}  // namespace gen
