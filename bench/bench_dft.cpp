// Complex DFT Codelets of libtvkgenu8 against FFTW, every length 2 to 64, both
// element types, both directions.
//
//   tvkgen-bench-dft [--quick] [--opcounts=FILE] [Google Benchmark flags]
//
// Each case times ours and FFTW on the same 16-byte aligned arrays (from
// fftw_malloc) holding the same random signal, out of place.  Ours is called
// through a table of Codelet addresses with ScaleNoDiv, since FFTW does not
// scale; FFTW runs a FFTW_MEASURE plan through its new-array execute.  Before
// timing, both results are compared so that a wrong answer cannot pass for a
// fast one.  After the runs a table of CPU ns per call is printed, with the
// ratio ours/FFTW and the lower bound of 128-bit code on this core.
#include <benchmark/benchmark.h>
#include <fftw3.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include <unistd.h>

#include "bench_support.h"
#include "tvkgen.h"

namespace {

// ---- the two libraries, per element type ------------------------------------

template <class Complex>
struct Types;

template <>
struct Types<tvk32fc> {
    static constexpr const char* name = "tvk32fc";
    static constexpr int lanes = 4;  // reals per 128-bit register
    using Real = float;
    using Codelet = tvkDFTCodelet_32fc;
    using FftwPlan = fftwf_plan;
    static void* allocate(size_t bytes) { return fftwf_malloc(bytes); }
    static void release(void* p) { fftwf_free(p); }
    static FftwPlan plan(int n, tvk32fc* in, tvk32fc* out, int sign) {
        return fftwf_plan_dft_1d(n, reinterpret_cast<fftwf_complex*>(in), reinterpret_cast<fftwf_complex*>(out), sign,
                                 FFTW_MEASURE);
    }
    static void execute(FftwPlan p, tvk32fc* in, tvk32fc* out) {
        fftwf_execute_dft(p, reinterpret_cast<fftwf_complex*>(in), reinterpret_cast<fftwf_complex*>(out));
    }
    static void destroy(FftwPlan p) { fftwf_destroy_plan(p); }
};

template <>
struct Types<tvk64fc> {
    static constexpr const char* name = "tvk64fc";
    static constexpr int lanes = 2;
    using Real = double;
    using Codelet = tvkDFTCodelet_64fc;
    using FftwPlan = fftw_plan;
    static void* allocate(size_t bytes) { return fftw_malloc(bytes); }
    static void release(void* p) { fftw_free(p); }
    static FftwPlan plan(int n, tvk64fc* in, tvk64fc* out, int sign) {
        return fftw_plan_dft_1d(n, reinterpret_cast<fftw_complex*>(in), reinterpret_cast<fftw_complex*>(out), sign,
                                FFTW_MEASURE);
    }
    static void execute(FftwPlan p, tvk64fc* in, tvk64fc* out) {
        fftw_execute_dft(p, reinterpret_cast<fftw_complex*>(in), reinterpret_cast<fftw_complex*>(out));
    }
    static void destroy(FftwPlan p) { fftw_destroy_plan(p); }
};

template <class Complex>
struct CodeletRow {
    int length;
    typename Types<Complex>::Codelet forward, inverse;
};

#define TVKGEN_ROW_32FC(N) CodeletRow<tvk32fc>{N, tvkgDFTFwd_CToC_##N##_32fc, tvkgDFTInv_CToC_##N##_32fc},
#define TVKGEN_ROW_64FC(N) CodeletRow<tvk64fc>{N, tvkgDFTFwd_CToC_##N##_64fc, tvkgDFTInv_CToC_##N##_64fc},
const CodeletRow<tvk32fc> kCodelets32fc[] = {TVKGEN_DFT_LENGTHS(TVKGEN_ROW_32FC)};
const CodeletRow<tvk64fc> kCodelets64fc[] = {TVKGEN_DFT_LENGTHS(TVKGEN_ROW_64FC)};
#undef TVKGEN_ROW_32FC
#undef TVKGEN_ROW_64FC

// ---- one case: a length, a type, a direction, with its arrays and plan ------

enum class Direction { Forward, Inverse };

const char* directionName(Direction d) { return d == Direction::Forward ? "fwd" : "inv"; }

template <class Complex>
class Case {
public:
    using T = Types<Complex>;

    Case(int length, typename T::Codelet codelet, Direction direction)
        : length_(length), codelet_(codelet) {
        // Two spare elements: some tvk32fc bodies read up to 16 bytes past the end.
        const size_t bytes = sizeof(Complex) * (length + 2);
        src_ = static_cast<Complex*>(T::allocate(bytes));
        dst_ = static_cast<Complex*>(T::allocate(bytes));
        // FFTW_MEASURE overwrites the arrays while planning, so fill them after.
        plan_ = T::plan(length, src_, dst_, direction == Direction::Forward ? FFTW_FORWARD : FFTW_BACKWARD);
        std::mt19937 random(1000 * length + static_cast<int>(direction));
        std::uniform_real_distribution<typename T::Real> uniform(-1, 1);
        for (int k = 0; k < length + 2; ++k) src_[k] = Complex{uniform(random), uniform(random)};
    }
    ~Case() {
        T::destroy(plan_);
        T::release(src_);
        T::release(dst_);
    }
    Case(const Case&) = delete;
    Case& operator=(const Case&) = delete;

    // Largest difference between our result and FFTW's, relative to the
    // largest output magnitude; negative when our call fails.
    double relativeDifference() {
        if (codelet_(src_, dst_, ScaleNoDiv) != StatusOk) return -1;
        const std::vector<Complex> ours(dst_, dst_ + length_);
        T::execute(plan_, src_, dst_);
        double largest = 0, difference = 0;
        for (int k = 0; k < length_; ++k) {
            largest = std::max(largest, std::hypot(double(dst_[k].re), double(dst_[k].im)));
            difference = std::max(difference, std::hypot(double(ours[k].re) - dst_[k].re, double(ours[k].im) - dst_[k].im));
        }
        return difference / largest;
    }

    void timeOurs(benchmark::State& state) {
        for (auto _ : state) {
            tvkStatus status = codelet_(src_, dst_, ScaleNoDiv);
            benchmark::DoNotOptimize(status);
            benchmark::ClobberMemory();
        }
    }

    void timeFftw(benchmark::State& state) {
        for (auto _ : state) {
            T::execute(plan_, src_, dst_);
            benchmark::ClobberMemory();
        }
    }

private:
    int length_;
    typename T::Codelet codelet_;
    Complex* src_;
    Complex* dst_;
    typename T::FftwPlan plan_;
};

// ---- results ------------------------------------------------------------------

// Ordered by type, then length, then direction: the order of the table.
struct Key {
    std::string type;
    int length;
    std::string direction;
    auto operator<=>(const Key&) const = default;
};

struct Timing {
    double ours = NAN, fftw = NAN;
};

std::string benchmarkName(const Key& key, const char* library) {
    return std::string(library) + "/" + key.type + "/" + key.direction + "/" + std::to_string(key.length);
}

// Collects CPU ns per call of every run; shows Google Benchmark's own lines
// only when asked to (the summary table repeats them).
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
            cpuNs[run.run_name.function_name] = run.GetAdjustedCPUTime();  // name without the min_time suffix
        }
        if (echo_) ConsoleReporter::ReportRuns(runs);
    }

    std::map<std::string, double> cpuNs;
    int errors = 0;

private:
    bool echo_;
};

std::string codeletName(const Key& key) {
    return std::string(key.direction == "fwd" ? "tvkgDFTFwd_CToC_" : "tvkgDFTInv_CToC_") + std::to_string(key.length) +
           "_" + key.type.substr(3);
}

double median(std::vector<double> values) {
    if (values.empty()) return NAN;
    std::sort(values.begin(), values.end());
    const size_t mid = values.size() / 2;
    return values.size() % 2 ? values[mid] : (values[mid - 1] + values[mid]) / 2;
}

void printTable(const std::map<Key, Timing>& timings, const std::string& countsPath) {
    const auto ops = tvkbench::readOpCounts(countsPath);
    const bool withBound = !ops.empty();
    const double ghz = withBound ? tvkbench::measuredClockGHz() : 0;
    if (withBound) {
        tvkbench::printBoundNote(ghz, countsPath);
        std::printf("        Lanes: 4 for tvk32fc, 2 for tvk64fc.  A case where FFTW runs below the bound\n"
                    "        (with wider vectors) is out of reach for 128-bit code.\n");
    } else {
        std::printf("\n(no bound column: cannot read %s)\n", countsPath.c_str());
    }

    std::printf("\n| length | type | dir | ours ns | FFTW ns | ours/FFTW |%s\n", withBound ? " bound ns | ours/bound |" : "");
    std::printf("|---:|---|---|---:|---:|---:|%s\n", withBound ? "---:|---:|" : "");
    std::map<std::string, std::vector<double>> ratios, overBound;
    int fftwBelowBound = 0;
    for (const auto& [key, t] : timings) {
        const double ratio = t.ours / t.fftw;
        if (std::isfinite(ratio)) ratios[key.type].push_back(ratio);
        std::printf("| %d | %s | %s | %.2f | %.2f | %.2f |", key.length, key.type.c_str(), key.direction.c_str(), t.ours,
                    t.fftw, ratio);
        if (withBound) {
            const auto it = ops.find(codeletName(key));
            const int lanes = key.type == Types<tvk32fc>::name ? Types<tvk32fc>::lanes : Types<tvk64fc>::lanes;
            if (it != ops.end()) {
                const double bound = tvkbench::boundNs(it->second, lanes, ghz);
                fftwBelowBound += t.fftw < bound;
                overBound[key.type].push_back(t.ours / bound);
                std::printf(" %.2f | %.2f |", bound, t.ours / bound);
            } else {
                std::printf(" - | - |");
            }
        }
        std::printf("\n");
    }
    std::printf("\nmedian ratio ours/FFTW over all lengths and both directions:\n");
    for (const auto& [type, values] : ratios)
        std::printf("  %s: %.2f (%zu cases, ours faster in %zu)\n", type.c_str(), median(values), values.size(),
                    size_t(std::count_if(values.begin(), values.end(), [](double r) { return r < 1; })));
    if (withBound) {
        std::printf("median ours/bound:");
        for (const auto& [type, values] : overBound) std::printf("  %s %.2f", type.c_str(), median(values));
        std::printf("\ncases where FFTW ran below the 128-bit bound: %d\n", fftwBelowBound);
    }
}

// ---- registration -------------------------------------------------------------

template <class Complex, size_t Count>
void registerCases(const CodeletRow<Complex> (&rows)[Count], double minTime, std::vector<Key>& keys, int& mismatches) {
    for (const auto& row : rows) {
        for (Direction direction : {Direction::Forward, Direction::Inverse}) {
            auto c = std::make_shared<Case<Complex>>(row.length, direction == Direction::Forward ? row.forward : row.inverse,
                                                     direction);
            const double difference = c->relativeDifference();  // also warms code and data
            const double tolerance = std::is_same_v<Complex, tvk32fc> ? 1e-5 : 1e-13;
            const Key key{Types<Complex>::name, row.length, directionName(direction)};
            if (difference < 0 || difference > tolerance) {
                std::fprintf(stderr, "%s: ours differs from FFTW (relative %g)\n", codeletName(key).c_str(), difference);
                ++mismatches;
            }
            // The registered lambdas own the case.
            benchmark::RegisterBenchmark(benchmarkName(key, "ours").c_str(), [c](benchmark::State& s) { c->timeOurs(s); })
                ->MinTime(minTime)->Unit(benchmark::kNanosecond);
            benchmark::RegisterBenchmark(benchmarkName(key, "fftw").c_str(), [c](benchmark::State& s) { c->timeFftw(s); })
                ->MinTime(minTime)->Unit(benchmark::kNanosecond);
            keys.push_back(key);
        }
    }
}

}  // namespace

int main(int argc, char** argv) {
    const std::string countsPath = tvkbench::takeOpCountsPath(argc, argv);
    // --quick: every case, but a short minimum time per run; for run.sh.
    bool quick = false;
    std::vector<char*> args;
    for (int i = 0; i < argc; ++i) {
        if (std::strcmp(argv[i], "--quick") == 0) quick = true;
        else args.push_back(argv[i]);
    }
    int count = static_cast<int>(args.size());
    benchmark::Initialize(&count, args.data());
    if (benchmark::ReportUnrecognizedArguments(count, args.data())) return 2;

    const double minTime = quick ? 0.01 : 0.25;
    std::vector<Key> keys;
    int mismatches = 0;
    registerCases(kCodelets32fc, minTime, keys, mismatches);
    registerCases(kCodelets64fc, minTime, keys, mismatches);

    std::printf("timing %zu cases, ours and FFTW, %.2f s minimum per run%s\n", keys.size(), minTime,
                quick ? " (quick)" : "");
    std::fflush(stdout);
    CollectingReporter reporter(!quick);
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();

    std::map<Key, Timing> timings;
    for (const Key& key : keys) {
        const auto ours = reporter.cpuNs.find(benchmarkName(key, "ours"));
        const auto fftw = reporter.cpuNs.find(benchmarkName(key, "fftw"));
        if (ours == reporter.cpuNs.end() && fftw == reporter.cpuNs.end()) continue;  // filtered out
        timings[key] = {ours == reporter.cpuNs.end() ? NAN : ours->second, fftw == reporter.cpuNs.end() ? NAN : fftw->second};
    }
    printTable(timings, countsPath);
    return mismatches == 0 && reporter.errors == 0 ? 0 : 1;
}
