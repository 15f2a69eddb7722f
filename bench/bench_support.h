// What every benchmark of the library shares: the clock the core really runs
// at, the operation counts of each Codelet, the lower bound on the time of a
// body that follows from both, and the collection of the times with the
// medians of their ratios under a results table.
//
//   int main(int argc, char** argv) {
//       const std::string countsPath = tvkbench::takeOpCountsPath(argc, argv);  // before benchmark::Initialize
//       ...
//       const auto counts = tvkbench::readOpCounts(countsPath);
//       const double ghz = tvkbench::measuredClockGHz();
//       const double ns = tvkbench::boundNs(counts.at("tvkgHartley_16_32f"), /*lanes=*/1, ghz);
//   }
//
// The build copies the generator's opcounts.tsv beside each benchmark
// executable, where takeOpCountsPath looks for it; --opcounts=FILE names
// another one.
#pragma once

#include <benchmark/benchmark.h>
#include <cpuid.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace tvkbench {

// ---- the clock ------------------------------------------------------------------

// The vendor, family and model of this core, from cpuid (read once: on a
// virtual machine every cpuid is a trip to the host).
struct Core {
    bool amd = false, intel = false;
    unsigned family = 0, model = 0;
};

inline const Core& thisCore() {
    static const Core core = [] {
        unsigned eax = 0, ebx = 0, ecx = 0, edx = 0;
        Core c;
        if (!__get_cpuid(0, &eax, &ebx, &ecx, &edx)) return c;
        c.amd = ebx == 0x68747541;    // "Auth" of AuthenticAMD
        c.intel = ebx == 0x756e6547;  // "Genu" of GenuineIntel
        __get_cpuid(1, &eax, &ebx, &ecx, &edx);
        const unsigned baseFamily = (eax >> 8) & 0xF;
        c.family = baseFamily == 0xF ? baseFamily + ((eax >> 20) & 0xFF) : baseFamily;
        c.model = ((eax >> 4) & 0xF) | (baseFamily >= 6 ? ((eax >> 16) & 0xF) << 4 : 0);
        return c;
    }();
    return core;
}

// Cycles of one `imul r32, r32` in a dependent chain on this core.  It is 3
// on Intel cores from Core 2 on, Intel Atom cores from Silvermont on and AMD
// cores from K8 on (Zen 1 to 5 among them), with three exceptions, told apart
// by cpuid: AMD Bulldozer to Excavator (family 15h) take 4, the first Atom
// cores (Bonnell and Saltwell) 5, and NetBurst Pentium 4 (family 0Fh) 10.
inline double multiplyLatency() {
    const Core& core = thisCore();
    if (core.amd && core.family == 0x15) return 4;
    if (core.intel && core.family == 0xF) return 10;
    if (core.intel && core.family == 6 &&
        (core.model == 0x1C || core.model == 0x26 || core.model == 0x27 || core.model == 0x35 || core.model == 0x36))
        return 5;
    return 3;
}

// The clock the core really runs at, in GHz, measured while it is busy:
// /proc/cpuinfo gives the nominal clock, which boosting cores exceed.
//
// The measure is a chain of dependent 32-bit integer multiplications.  Why
// that instruction:
// - Nothing shortens the chain: a multiplication is not eliminated at rename
//   and not fused with its neighbour, and its latency does not depend on the
//   values.  A chain of add-immediate instructions, the measure used before,
//   runs faster than one per cycle on cores that fold such additions at
//   rename (measured 14 to 22 GHz on a 4.15 GHz core).
// - Its latency is one number, 3, on nearly every core, and the few others
//   are known (multiplyLatency).  Floating-point additions and
//   multiplications vary much more: 2 to 4 cycles for an addition, 3 to 5 for
//   a multiplication, by core generation.
// The best of five runs is taken, so that a slow start (a core still raising
// its clock, an interruption) does not count.
inline double measuredClockGHz() {
    constexpr long kRounds = 10'000'000;
    constexpr int kPerRound = 8;
    const double latency = multiplyLatency();
    double best = 0;
    for (int trial = 0; trial < 5; ++trial) {
        uint32_t chain = 12345, factor = 1;
        asm volatile("" : "+r"(factor));  // a value the compiler can't see
        const auto start = std::chrono::steady_clock::now();
        for (long i = 0; i < kRounds; ++i)
            asm volatile("imul %1, %0\n\timul %1, %0\n\timul %1, %0\n\timul %1, %0\n\t"
                         "imul %1, %0\n\timul %1, %0\n\timul %1, %0\n\timul %1, %0"
                         : "+r"(chain)
                         : "r"(factor));
        const double ns = std::chrono::duration<double, std::nano>(std::chrono::steady_clock::now() - start).count();
        best = std::max(best, kPerRound * latency * kRounds / ns);
    }
    return best;
}

// ---- operation counts --------------------------------------------------------------

struct OpCounts {
    long additions = 0, multiplications = 0;
    long conversions = 0;  // widenings and narrowings of a tvk32f body that carries products in double
};

// The path of opcounts.tsv: the value of a --opcounts=FILE argument, which is
// taken out of argv so that later parsers do not see it, or else the file
// beside this executable.
inline std::string takeOpCountsPath(int& argc, char** argv) {
    constexpr const char* kFlag = "--opcounts=";
    std::string path;
    int kept = 0;
    for (int i = 0; i < argc; ++i) {
        if (i > 0 && std::strncmp(argv[i], kFlag, std::strlen(kFlag)) == 0)
            path = argv[i] + std::strlen(kFlag);
        else
            argv[kept++] = argv[i];
    }
    argc = kept;
    if (!path.empty()) return path;
    char exe[4096];
    const ssize_t length = readlink("/proc/self/exe", exe, sizeof exe - 1);
    if (length <= 0) return "opcounts.tsv";
    std::string dir(exe, static_cast<size_t>(length));
    return dir.substr(0, dir.rfind('/') + 1) + "opcounts.tsv";
}

// Real additions, multiplications and conversions of each Codelet by
// exported name, from the generator's table (a header line, then codelet,
// plan, additions, multiplications, complex products, double
// multiplications, double additions, widenings, narrowings, separated by
// tabs).  Empty when the file can't be read.
inline std::map<std::string, OpCounts> readOpCounts(const std::string& path) {
    std::map<std::string, OpCounts> counts;
    std::ifstream file(path);
    std::string line;
    std::getline(file, line);  // header
    while (std::getline(file, line)) {
        std::istringstream fields(line);
        std::string codelet, plan;
        OpCounts c;
        long complexProducts, doubleMultiplications, doubleAdditions, widenings, narrowings;
        if (!std::getline(fields, codelet, '\t') || !std::getline(fields, plan, '\t') ||
            !(fields >> c.additions >> c.multiplications))
            continue;
        if (fields >> complexProducts >> doubleMultiplications >> doubleAdditions >> widenings >> narrowings)
            c.conversions = widenings + narrowings;
        counts[codelet] = c;
    }
    return counts;
}

// ---- the bound ----------------------------------------------------------------------

// The floating-point ports of a core, as the least cycles of a body's
// arithmetic: a additions and m multiplications per lane, c conversions
// between single and double (scalar bodies only).  Two models, each measured
// with independent instructions on the core the tables were made on.
struct PortModel {
    const char* core;
    bool amd;
    unsigned family, model;  // of the core it was measured on
    const char* formula;
    const char* ports;
    double (*cycles)(double a, double m, double c, bool vector);
};

// Intel (family 6, model 207): three ports, additions on two, multiplications
// on two, one port serving both; a conversion is two micro-operations, one on
// the port of additions alone.  Per cycle: 2 additions or 2 multiplications
// alone, 2.5 of an even mix, 1 conversion alone, 0.9 conversion-addition
// pairs, 2 operations of an even mix of conversions, additions and
// multiplications.
inline constexpr PortModel kIntelPorts{
    "Intel family 6, model 207",
    false,
    6,
    207,
    "max(a/2, m/2, (a + m + 2c)/3, c, (a + c)/2, (m + c)/2)",
    "additions issue on two ports, multiplications on two, one port\n"
    "        serving both; a conversion is two operations, one of them on the port of\n"
    "        additions alone.",
    [](double a, double m, double c, bool) { return std::max({a / 2, m / 2, (a + m + 2 * c) / 3, c, (a + c) / 2, (m + c) / 2}); }};

// AMD family 25 (Zen 4, model 17): two pipes of additions, two of
// multiplications; a conversion is one operation on a pipe of additions.
// Per cycle: 2 additions, 2 multiplications or 2 conversions alone, 2
// conversion-addition pairs; of a mix of additions and multiplications 3.9
// vector operations but 3.0 scalar ones (3.0 with conversions too).
inline constexpr PortModel kZenPorts{
    "AMD family 25, model 17",
    true,
    25,
    17,
    "max((a + c)/2, m/2, (a + m + c)/3) for scalar bodies, max(a/2, m/2, (a + m)/4) for vectors",
    "additions and conversions issue on two pipes, multiplications\n"
    "        on two others; a scalar mix of all three reaches three operations per cycle,\n"
    "        a vector mix of additions and multiplications four.",
    [](double a, double m, double c, bool vector) {
        return vector ? std::max({a / 2, m / 2, (a + m) / 4}) : std::max({(a + c) / 2, m / 2, (a + m + c) / 3});
    }};

// The model of this core: the AMD one for AMD family 25, the Intel one for
// every other core; on a core other than the one a model was measured on,
// the bound is an estimate.
inline const PortModel& portModel() {
    const Core& core = thisCore();
    return core.amd && core.family == 25 ? kZenPorts : kIntelPorts;
}

// No 128-bit body can run faster than this, in ns: the least cycles its
// arithmetic needs on this core's ports, at `ghz`.  Every addition and
// multiplication takes a lane of a vector operation, `lanes` reals per
// operation (4 for tvk32f vectors, 2 for tvk64f vectors, 1 for scalar code);
// a conversion between single and double (scalar bodies only) is one
// operation.
inline double boundNs(const OpCounts& ops, int lanes, double ghz) {
    const double a = static_cast<double>(ops.additions) / lanes, m = static_cast<double>(ops.multiplications) / lanes;
    return portModel().cycles(a, m, static_cast<double>(ops.conversions), lanes > 1) / ghz;
}

// The lines that explain the bound column, for the head of a results table.
inline void printBoundNote(double ghz, const std::string& countsPath) {
    const PortModel& ports = portModel();
    const Core& core = thisCore();
    const bool measured = core.amd == ports.amd && core.family == ports.family && core.model == ports.model;
    std::printf("\nbound = %s\n"
                "        cycles / %.3f GHz, with a and m the additions and multiplications per lane\n"
                "        and c the conversions between single and double.\n"
                "        Ports measured on %s:\n"
                "        %s\n"
                "        The clock is measured by a chain of dependent integer multiplications;\n"
                "        operation counts from %s.\n"
                "        %s\n",
                ports.formula, ghz, ports.core, ports.ports, countsPath.c_str(),
                measured ? "No 128-bit body can run below it on this core."
                         : "An estimate on this core: the model was measured on another one.");
}

// ---- start-up ---------------------------------------------------------------------

// Google Benchmark's start-up, after taking out the flag of our own: --quick,
// every case but a short minimum time per run (run.sh uses it).  False when
// an argument is unknown.
//
// A full run times every case eight times, the cases in a random order each
// time, and keeps the least time of each: a shared or virtual machine has
// stretches of seconds in which everything runs up to twice as slowly, and
// one run per case, the cases one after the other, let such a stretch pass
// for a slow body (the "two speeds" of the long bodies were that).  Giving
// --benchmark_repetitions on the command line replaces the default.
inline bool initialize(int argc, char** argv, bool& quick) {
    std::vector<char*> args;
    bool repetitionsGiven = false;
    for (int i = 0; i < argc; ++i) {
        if (std::strcmp(argv[i], "--quick") == 0) quick = true;
        else args.push_back(argv[i]);
        if (std::strncmp(argv[i], "--benchmark_repetitions", 23) == 0) repetitionsGiven = true;
    }
    static char repetitions[] = "--benchmark_repetitions=8";
    static char interleaving[] = "--benchmark_enable_random_interleaving=true";
    if (!quick && !repetitionsGiven) {
        args.push_back(repetitions);
        args.push_back(interleaving);
    }
    int count = static_cast<int>(args.size());
    benchmark::Initialize(&count, args.data());
    return !benchmark::ReportUnrecognizedArguments(count, args.data());
}

// ---- collecting and summing up the times ----------------------------------------------

// Collects the wall-clock ns per call of every run, the least over
// repetitions (which other work on a shared machine disturbs least); shows
// Google Benchmark's own lines only when asked to (a summary table may repeat
// them).  Wall-clock time, not CPU time: other work can only lengthen it,
// while a virtual machine's CPU time, with the host's steal time taken out,
// now and then counts a run as far shorter than it was (in 20,000 batches of
// 100 calls here, a few dozen read below 0.8 of their wall-clock time, some
// near 0), and the least of several runs would keep just such a one.
class CollectingReporter : public benchmark::ConsoleReporter {
public:
    // Colour only on a terminal, so that a saved log stays plain text.
    explicit CollectingReporter(bool echo)
        : ConsoleReporter(isatty(STDOUT_FILENO) ? OO_ColorTabular : OO_Tabular), echo_(echo) {}

    bool ReportContext(const Context& context) override { return echo_ ? ConsoleReporter::ReportContext(context) : true; }

    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) {
            if (run.error_occurred) {
                std::fprintf(stderr, "%s: %s\n", run.benchmark_name().c_str(), run.error_message.c_str());
                ++errors;
                continue;
            }
            if (run.run_type == Run::RT_Aggregate) continue;
            // The name without the min_time suffix.
            const auto [it, added] = leastNs.emplace(run.run_name.function_name, run.GetAdjustedRealTime());
            if (!added) it->second = std::min(it->second, run.GetAdjustedRealTime());
        }
        if (echo_) ConsoleReporter::ReportRuns(runs);
    }

    // NaN for a run that did not take place (filtered out, or failed).
    double ns(const std::string& name) const {
        const auto it = leastNs.find(name);
        return it == leastNs.end() ? NAN : it->second;
    }

    std::map<std::string, double> leastNs;
    int errors = 0;

private:
    bool echo_;
};

inline double median(std::vector<double> values) {
    if (values.empty()) return NAN;
    std::sort(values.begin(), values.end());
    const size_t mid = values.size() / 2;
    return values.size() % 2 ? values[mid] : (values[mid - 1] + values[mid]) / 2;
}

// The ratio columns of a results table (ours/rival, ours/bound), summed up
// per group of rows, e.g. a type and a direction: the median of each column,
// in how many rows it is below 1 (ours faster) and its largest value.
class RatioMedians {
public:
    // `groupHeads` names the columns that tell a group, e.g. {"type", "dir"};
    // add() takes a group as their cells joined by " | ".
    RatioMedians(std::vector<std::string> groupHeads, std::vector<std::string> columns)
        : groupHeads_(std::move(groupHeads)), columns_(std::move(columns)) {}

    // Groups appear in the order of their first ratio; a NaN (a run filtered
    // out) is left out.
    void add(const std::string& group, size_t column, double ratio) {
        auto it = std::find_if(groups_.begin(), groups_.end(), [&](const auto& g) { return g.first == group; });
        if (it == groups_.end()) it = groups_.insert(groups_.end(), {group, std::vector<std::vector<double>>(columns_.size())});
        if (std::isfinite(ratio)) it->second[column].push_back(ratio);
    }

    void print() const {
        std::string title, heads, rule;
        for (const std::string& h : groupHeads_) {
            title += (title.empty() ? "" : " and ") + h;
            heads += " " + h + " |";
            rule += "---|";
        }
        for (const std::string& c : columns_) {
            heads += " " + c + " |";
            rule += "---:|";
        }
        std::printf("\nmedians per %s (in brackets: rows below 1 of all rows, and the largest):\n\n|%s\n|%s\n", title.c_str(),
                    heads.c_str(), rule.c_str());
        for (const auto& [group, ratios] : groups_) {
            std::printf("| %s |", group.c_str());
            for (const std::vector<double>& r : ratios) {
                if (r.empty()) {
                    std::printf(" - |");
                    continue;
                }
                const auto below = std::count_if(r.begin(), r.end(), [](double x) { return x < 1; });
                std::printf(" %.2f (%td of %zu, largest %.2f) |", median(r), below, r.size(),
                            *std::max_element(r.begin(), r.end()));
            }
            std::printf("\n");
        }
    }

private:
    std::vector<std::string> groupHeads_;
    std::vector<std::string> columns_;
    std::vector<std::pair<std::string, std::vector<std::vector<double>>>> groups_;
};

}  // namespace tvkbench
