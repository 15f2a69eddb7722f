// tvkgen-accuracy: measures every Codelet of every family against a
// long-double reference and writes the table as Markdown.
//
//   tvkgen-accuracy [--output=FILE] [--sizes=N,N,...] [--trials=K] [--limit=E]
//
// --output  the file to write (default: standard output)
// --sizes   only the Codelets of these transform lengths N (for a
//           Walsh-Hadamard order m, N = 2^m)
// --trials  random inputs per Codelet (default 1000)
// --limit   exit with status 1 if any max error is above E eps
// A Codelet that fails its call or gives a non-finite value fails the run.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <map>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "registry.h"

namespace tvkaccuracy {
namespace {

struct Options {
    std::string output;
    std::set<int> sizes;  // empty: all
    int trials = 1000;
    double limit = std::numeric_limits<double>::infinity();
};

bool parse(int argc, char** argv, Options& o) {
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        const auto value = [&](const char* flag) -> const char* {
            const size_t len = std::strlen(flag);
            return arg.compare(0, len, flag) == 0 ? argv[i] + len : nullptr;
        };
        if (const char* v = value("--output=")) {
            o.output = v;
        } else if (const char* v = value("--sizes=")) {
            std::istringstream list(v);
            for (std::string n; std::getline(list, n, ',');) o.sizes.insert(std::atoi(n.c_str()));
        } else if (const char* v = value("--trials=")) {
            o.trials = std::atoi(v);
        } else if (const char* v = value("--limit=")) {
            o.limit = std::atof(v);
        } else {
            return false;
        }
    }
    return o.trials > 0;
}

struct Result {
    double rms = 0;  // normwise relative error, in eps
    double max = 0;  // worst single output over the rms of its exact outputs, in eps
    bool failed = false;
};

// The inputs of trial t: uniform in [-1, 1), rounded to the Codelet's type.
// The same for every Codelet of one size and type.
std::vector<Real> inputsOf(const Codelet& c, int trial) {
    std::mt19937_64 random(1000003ull * trial + 2ull * c.inputs + c.single);
    std::uniform_real_distribution<double> uniform(-1.0, 1.0);
    std::vector<Real> x(c.inputs);
    for (Real& v : x) v = c.single ? static_cast<float>(uniform(random)) : uniform(random);
    return x;
}

Result measure(const Codelet& c, int trials) {
    const Real eps = c.single ? std::numeric_limits<float>::epsilon() : std::numeric_limits<double>::epsilon();
    Real errorSquares = 0, exactSquares = 0, worst = 0;
    Result r;
    std::vector<Real> exact(c.outputs), got(c.outputs);
    for (int t = 0; t < trials; ++t) {
        const auto x = inputsOf(c, t);
        c.reference(x.data(), exact.data());
        if (c.run(x.data(), got.data()) != StatusOk) r.failed = true;
        Real squares = 0, errors = 0, largest = 0;
        for (int i = 0; i < c.outputs; ++i) {
            if (!std::isfinite(got[i])) r.failed = true;
            const Real e = std::fabs(got[i] - exact[i]);
            squares += exact[i] * exact[i];
            errors += e * e;
            largest = std::max(largest, e);
        }
        errorSquares += errors;
        exactSquares += squares;
        worst = std::max(worst, largest / std::sqrt(squares / c.outputs));
    }
    r.rms = static_cast<double>(std::sqrt(errorSquares / exactSquares) / eps);
    r.max = static_cast<double>(worst / eps);
    return r;
}

struct Measured {
    const Codelet* codelet;
    Result result;
};

// One table per family: a row per length, a column per variant, each cell
// "rms / max"; then the worst of each column.
void writeFamily(FILE* out, const char* title, const std::vector<Measured>& rows) {
    std::vector<std::string> variants;
    std::map<int, std::map<std::string, Result>> byLength;
    for (const auto& m : rows) {
        if (std::find(variants.begin(), variants.end(), m.codelet->variant) == variants.end())
            variants.push_back(m.codelet->variant);
        byLength[m.codelet->n][m.codelet->variant] = m.result;
    }
    std::fprintf(out, "\n## %s\n\n| N |", title);
    for (const auto& v : variants) std::fprintf(out, " %s |", v.c_str());
    std::fprintf(out, "\n|---:|");
    for (size_t i = 0; i < variants.size(); ++i) std::fprintf(out, "---:|");
    std::fprintf(out, "\n");
    for (const auto& [n, cells] : byLength) {
        std::fprintf(out, "| %d |", n);
        for (const auto& v : variants) {
            const auto it = cells.find(v);
            if (it == cells.end())
                std::fprintf(out, " |");
            else
                std::fprintf(out, " %.2f / %.2f |", it->second.rms, it->second.max);
        }
        std::fprintf(out, "\n");
    }
    std::fprintf(out, "\nWorst of each column:\n\n");
    for (const auto& v : variants) {
        const Measured* rms = nullptr;
        const Measured* max = nullptr;
        for (const auto& m : rows) {
            if (m.codelet->variant != v) continue;
            if (!rms || m.result.rms > rms->result.rms) rms = &m;
            if (!max || m.result.max > max->result.max) max = &m;
        }
        std::fprintf(out, "- %s: rms %.2f eps (`%s`), max %.2f eps (`%s`)\n", v.c_str(), rms->result.rms,
                     rms->codelet->name.c_str(), max->result.max, max->codelet->name.c_str());
    }
}

void writeHeader(FILE* out, const Options& o, size_t count, const std::string& titles) {
    std::fprintf(out,
                 "# Accuracy of the Codelets\n\n"
                 "Written by `tvkgen-accuracy` (`cmake --build build --target accuracy-table`);\n"
                 "do not edit by hand.\n\n"
                 "Families: %s; %zu Codelets, %d random inputs each.\n\n"
                 "For each Codelet, %d inputs of values drawn uniformly from [-1, 1) with fixed\n"
                 "seeds, and rounded to the Codelet's type, are transformed with `ScaleNoDiv`.\n"
                 "The same transform of the same rounded values is computed in long double\n"
                 "(64-bit significand) as the exact result. Each cell gives two numbers, in\n"
                 "units of the epsilon of the type (2^-23 = 1.19e-7 for `tvk32f` and\n"
                 "`tvk32fc`, 2^-52 = 2.22e-16 for `tvk64f` and `tvk64fc`):\n\n"
                 "- **rms**: the normwise relative error ||y - x||_2 / ||x||_2 over all\n"
                 "  real outputs y of all inputs, x being the exact outputs;\n"
                 "- **max**: the largest error |y_i - x_i| of any one real output, divided\n"
                 "  by the root mean square of the exact outputs of the same input.\n\n"
                 "The other scale flags multiply each output once more, which adds at most\n"
                 "half an epsilon of that output. The results depend only on the library's\n"
                 "code, not on the machine that runs the command.\n",
                 titles.c_str(), count, o.trials, o.trials);
}

}  // namespace
}  // namespace tvkaccuracy

int main(int argc, char** argv) {
    using namespace tvkaccuracy;
    Options options;
    if (!parse(argc, argv, options)) {
        std::fprintf(stderr, "usage: %s [--output=FILE] [--sizes=N,N,...] [--trials=K] [--limit=E]\n", argv[0]);
        return 2;
    }
    struct FamilyResults {
        const char* title;
        std::vector<Codelet> codelets;
        std::vector<Measured> measured;
    };
    std::vector<FamilyResults> results;
    size_t count = 0;
    bool ok = true;
    for (const Family& family : families()) {
        FamilyResults f{family.title, family.codelets(), {}};
        for (const Codelet& c : f.codelets) {
            if (!options.sizes.empty() && !options.sizes.count(c.n)) continue;
            const Result r = measure(c, options.trials);
            if (r.failed) std::fprintf(stderr, "%s: a call failed or gave a non-finite value\n", c.name.c_str());
            if (r.max > options.limit)
                std::fprintf(stderr, "%s: max error %.2f eps is above the limit %.2f\n", c.name.c_str(), r.max,
                             options.limit);
            ok = ok && !r.failed && r.max <= options.limit;
            f.measured.push_back({&c, r});
        }
        count += f.measured.size();
        results.push_back(std::move(f));
    }
    if (count == 0) {
        std::fprintf(stderr, "no Codelet has one of the sizes asked for\n");
        return 1;
    }

    FILE* out = options.output.empty() ? stdout : std::fopen(options.output.c_str(), "w");
    if (!out) {
        std::perror(options.output.c_str());
        return 1;
    }
    std::string titles;
    for (const auto& f : results) {
        if (f.measured.empty()) continue;
        std::string title = f.title;
        title = title.substr(0, title.find(','));  // the family's name, without notes
        titles += (titles.empty() ? "" : ", ") + title;
    }
    writeHeader(out, options, count, titles);
    for (const auto& f : results)
        if (!f.measured.empty()) writeFamily(out, f.title, f.measured);
    if (out != stdout) std::fclose(out);
    return ok ? 0 : 1;
}
