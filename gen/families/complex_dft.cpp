// The complex DFT family: four sets of 63 Codelets (two directions, two
// element types), written into `shards` source files per set.
#include "families/complex_dft.h"

#include <cmath>
#include <sstream>
#include <utility>
#include <vector>

#include "emit/emit.h"
#include "families/complex_plans.h"
#include "families/entry.h"
#include "families/scalar_body.h"
#include "ir/count.h"

namespace gen {

namespace {

// Where the unaligned path lives: none, inside the body, or in a twin function.
Shape shapeOf(int n, ComplexType type) {
    if (type == ComplexType::C32) {
        if (n <= 5) return Shape::SinglePath;
        if (n <= 10 || (n >= 12 && n <= 16) || n == 18 || n == 20 || n == 24 || n == 59) return Shape::TwoPath;
        return Shape::Twinned;
    }
    if (n <= 16 || n == 18 || n == 20) return Shape::TwoPath;
    return Shape::Twinned;
}

struct Set {
    bool inverse;
    ComplexType type;
    std::string stem() const { return inverse ? "DFTInv_CToC" : "DFTFwd_CToC"; }
    std::string suffix() const { return type == ComplexType::C32 ? "32fc" : "64fc"; }
    std::string file() const {
        return std::string("src/dft/pgendft") + (inverse ? "inv" : "fwd") + suffix() + "w7cn";
    }
};

struct Codelet {
    std::string text;
    OpCount count;
    std::string plan;
};

// tvk32fc below length 6: scalar code on pairs of real values, products in
// double and rounded once per block.
void buildScalar(ScalarBody& body, const Plan& plan, const DftOptions& opt) {
    PairArithmetic& c = body.complex();
    Signal x(plan.n);
    for (int k = 0; k < plan.n; ++k) x[k] = {c.make(body.load(2 * k), body.load(2 * k + 1)), 0};
    const Signal X = transform(c, plan, Batch{x}, opt)[0];
    for (int k = 0; k < plan.n; ++k) {
        const int v = c.valueOf(X[k]);
        body.store(2 * k, c.re(v));
        body.store(2 * k + 1, c.im(v));
    }
}

// tvk32fc from length 6: the lane grouping whose text has the fewest
// shuffles, among those that keep the operations of the order given (a
// grouping that drops products by +-1 would change the published counts).
Codelet splitBody(const Plan& plan, const DftOptions& opt) {
    Codelet best;
    int fewest = 0;
    for (const Grouping grouping : {Grouping::AsGiven, Grouping::ByFirstValueUnmultiplied, Grouping::ByFirstValue}) {
        Graph g(4);
        g.setGrouping(grouping);
        buildDft(g, plan, opt);
        const OpCount count = countOperations(g);
        if (grouping != Grouping::AsGiven && !(count == best.count)) continue;
        SplitCode code = emitSplit(g);
        if (grouping == Grouping::AsGiven || code.shuffles < fewest) {
            best.text = std::move(code.text);
            best.count = count;
            fewest = code.shuffles;
        }
    }
    return best;
}

Codelet codelet(int n, const Set& set) {
    const bool single = set.type == ComplexType::C32;
    const std::string plan = planText(n, set.type);
    // tvk32fc from length 6 on is split four-lane vector code; below, scalar.
    const bool split = single && n >= 6;
    DftOptions opt;
    opt.sign = set.inverse ? +1 : -1;
    opt.bluesteinReadsPast = split;
    opt.deferredRotation = !single;  // x[p] times 0: a NaN behind the source reaches every output
    opt.conjugatePairs = !single;    // its interleaved back-end swaps halves only where orders meet
    std::string statements;
    OpCount count;
    if (single && !split) {
        ScalarBody body(true);
        buildScalar(body, *planFor(n, set.type), opt);
        statements = body.text();
        count = body.count();
    } else if (split) {
        Codelet body = splitBody(*planFor(n, set.type), opt);
        statements = std::move(body.text);
        count = body.count;
    } else {
        Graph g(1);
        buildDft(g, *planFor(n, set.type), opt);
        statements = emitInterleaved(g);
        count = countOperations(g);
    }

    const std::string name = "tvkg" + set.stem() + "_" + std::to_string(n) + "_" + set.suffix();
    const std::string ns = std::string(set.inverse ? "inv_" : "fwd_") + std::to_string(n) + "_" + set.suffix();
    const std::string elem = single ? "tvk32fc" : "tvk64fc", real = single ? "float" : "double";
    const std::string direction = set.inverse ? "tvk::Inverse" : "tvk::Forward";

    std::ostringstream s;
    s << "\n// " << name << ": plan " << plan << "; " << count.additions << " additions, " << count.multiplications
      << " multiplications with the scale\n";
    s << "namespace " << ns << " {\n" << scalesOf(n, single);
    s << "template <class M>\nTVK_BODY void body(const " << elem << "* src, " << elem << "* dst, " << real
      << " s) {\n";
    s << statements;
    s << "}\n}  // namespace " << ns << "\n";
    Entry entry;
    entry.name = name;
    entry.params = "(const " + elem + "* src, " + elem + "* dst, int32_t flag)";
    entry.arguments = "src, dst, flag";
    entry.shape = shapeOf(n, set.type);
    entry.aligned = single ? "tvk::Aligned32" : "tvk::Aligned64";
    entry.unaligned = single ? "tvk::Unaligned32" : "tvk::Unaligned64";
    entry.run = [&](const std::string& memory) {
        return "tvk::run<" + direction + ", " + ns + "::body<" + (memory.empty() ? "tvk::Elementwise" : memory) +
               ">>(src, dst, flag, " + ns + "::kScales)";
    };
    s << entryPoints(entry);
    return {s.str(), count, plan};
}

}  // namespace

void writeComplexDft(Output& out, int shards, std::ostream& counts) {
    for (const bool inverse : {false, true}) {
        for (const ComplexType type : {ComplexType::C32, ComplexType::C64}) {
            const Set set{inverse, type};
            std::vector<std::ostringstream> files(shards);
            for (int n = 2; n <= 64; ++n) {
                const Codelet c = codelet(n, set);
                // Deal the lengths out so that every shard gets short and long bodies.
                files[(n - 2) % shards] << c.text;
                counts << "tvkg" << set.stem() << "_" << n << "_" << set.suffix() << '\t' << c.plan << '\t'
                       << c.count.additions << '\t' << c.count.multiplications << '\t'
                       << c.count.complexProducts << '\t' << c.count.doubleMultiplications << '\t'
                       << c.count.doubleAdditions << '\t' << c.count.widenings << '\t' << c.count.narrowings << '\n';
            }
            for (int i = 0; i < shards; ++i)
                out.write(set.file() + "_" + std::to_string(i) + ".cpp",
                          std::string(kGeneratedBanner) + "#include \"codelet.h\"\n" + files[i].str());
        }
    }
}

}  // namespace gen
