// The real DFT and Hartley Codelets of libtvkgenu8 against FFTW, every length
// 2 to 64, both element types.
//
//   tvkgen-bench-real [--quick] [Google Benchmark flags]
//
// Forward real DFT (CCS) against FFTW's r2c, inverse (CCS) against c2r, and
// Hartley against FFTW's r2r plan of kind FFTW_DHT, all FFTW_MEASURE plans
// run through new-array execute on the same fftw_malloc arrays as ours.  The
// c2r plans keep their input (FFTW_PRESERVE_INPUT), since every run reuses
// it.  Ours is called with ScaleNoDiv, since FFTW does not scale.  Before
// timing, both results are compared.  The table gives CPU ns per call, the
// ratio ours/FFTW and the bound of scalar code on this core.
#include <benchmark/benchmark.h>
#include <fftw3.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <functional>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "bench_support.h"
#include "tvkgen.h"

namespace {

enum class Kind { Forward, Inverse, Hartley };

const char* kindName(Kind k) { return k == Kind::Forward ? "r2c" : k == Kind::Inverse ? "c2r" : "dht"; }

template <class T>
struct Fftw;

template <>
struct Fftw<float> {
    using Plan = fftwf_plan;
    using Complex = fftwf_complex;
    static void* allocate(size_t bytes) { return fftwf_malloc(bytes); }
    static void release(void* p) { fftwf_free(p); }
    static Plan r2c(int n, float* in, float* out) {
        return fftwf_plan_dft_r2c_1d(n, in, reinterpret_cast<Complex*>(out), FFTW_MEASURE);
    }
    static Plan c2r(int n, float* in, float* out) {
        return fftwf_plan_dft_c2r_1d(n, reinterpret_cast<Complex*>(in), out, FFTW_MEASURE | FFTW_PRESERVE_INPUT);
    }
    static Plan dht(int n, float* in, float* out) { return fftwf_plan_r2r_1d(n, in, out, FFTW_DHT, FFTW_MEASURE); }
    static void execute(Kind k, Plan p, float* in, float* out) {
        if (k == Kind::Forward) fftwf_execute_dft_r2c(p, in, reinterpret_cast<Complex*>(out));
        else if (k == Kind::Inverse) fftwf_execute_dft_c2r(p, reinterpret_cast<Complex*>(in), out);
        else fftwf_execute_r2r(p, in, out);
    }
    static void destroy(Plan p) { fftwf_destroy_plan(p); }
};

template <>
struct Fftw<double> {
    using Plan = fftw_plan;
    using Complex = fftw_complex;
    static void* allocate(size_t bytes) { return fftw_malloc(bytes); }
    static void release(void* p) { fftw_free(p); }
    static Plan r2c(int n, double* in, double* out) {
        return fftw_plan_dft_r2c_1d(n, in, reinterpret_cast<Complex*>(out), FFTW_MEASURE);
    }
    static Plan c2r(int n, double* in, double* out) {
        return fftw_plan_dft_c2r_1d(n, reinterpret_cast<Complex*>(in), out, FFTW_MEASURE | FFTW_PRESERVE_INPUT);
    }
    static Plan dht(int n, double* in, double* out) { return fftw_plan_r2r_1d(n, in, out, FFTW_DHT, FFTW_MEASURE); }
    static void execute(Kind k, Plan p, double* in, double* out) {
        if (k == Kind::Forward) fftw_execute_dft_r2c(p, in, reinterpret_cast<Complex*>(out));
        else if (k == Kind::Inverse) fftw_execute_dft_c2r(p, reinterpret_cast<Complex*>(in), out);
        else fftw_execute_r2r(p, in, out);
    }
    static void destroy(Plan p) { fftw_destroy_plan(p); }
};

template <class T>
using Codelet = tvkStatus (*)(const T*, T*, int32_t);

#define BENCH_ROW32(N) {tvkgDFTFwd_RToCCS_##N##_32f, tvkgDFTInv_CCSToR_##N##_32f, tvkgHartley_##N##_32f},
#define BENCH_ROW64(N) {tvkgDFTFwd_RToCCS_##N##_64f, tvkgDFTInv_CCSToR_##N##_64f, tvkgHartley_##N##_64f},
const Codelet<float> kCodelets32[][3] = {TVKGEN_DFT_LENGTHS(BENCH_ROW32)};
const Codelet<double> kCodelets64[][3] = {TVKGEN_DFT_LENGTHS(BENCH_ROW64)};

std::string codeletName(Kind k, int n, const char* type) {
    const char* stem = k == Kind::Forward ? "tvkgDFTFwd_RToCCS_" : k == Kind::Inverse ? "tvkgDFTInv_CCSToR_" : "tvkgHartley_";
    return stem + std::to_string(n) + "_" + type;
}

// One length, type and kind, with its arrays and FFTW plan.  A CCS array and
// FFTW's half-complex output hold the bins in the same order.
template <class T>
class Case {
public:
    Case(Kind kind, int n, Codelet<T> codelet) : kind_(kind), n_(n), codelet_(codelet) {
        const size_t bytes = sizeof(T) * (n + 2);
        src_ = static_cast<T*>(Fftw<T>::allocate(bytes));
        dst_ = static_cast<T*>(Fftw<T>::allocate(bytes));
        plan_ = kind == Kind::Forward ? Fftw<T>::r2c(n, src_, dst_)
              : kind == Kind::Inverse ? Fftw<T>::c2r(n, src_, dst_)
                                      : Fftw<T>::dht(n, src_, dst_);
        std::mt19937 random(1000 * n + static_cast<int>(kind));
        std::uniform_real_distribution<T> uniform(-1, 1);
        for (int k = 0; k < n + 2; ++k) src_[k] = uniform(random);
        // The imaginary parts of bins 0 and n/2, which neither inverse reads.
        if (kind == Kind::Inverse) src_[1] = src_[n + 1] = 0;
    }
    ~Case() {
        Fftw<T>::destroy(plan_);
        Fftw<T>::release(src_);
        Fftw<T>::release(dst_);
    }
    Case(const Case&) = delete;
    Case& operator=(const Case&) = delete;

    // Largest difference from FFTW relative to the largest output; negative
    // when our call fails.
    double relativeDifference() {
        const int outputs = kind_ == Kind::Forward ? 2 * (n_ / 2 + 1) : n_;
        if (codelet_(src_, dst_, ScaleNoDiv) != StatusOk) return -1;
        const std::vector<T> ours(dst_, dst_ + outputs);
        Fftw<T>::execute(kind_, plan_, src_, dst_);
        double largest = 0, difference = 0;
        for (int k = 0; k < outputs; ++k) {
            largest = std::max(largest, std::fabs(double(dst_[k])));
            difference = std::max(difference, std::fabs(double(ours[k]) - dst_[k]));
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
            Fftw<T>::execute(kind_, plan_, src_, dst_);
            benchmark::ClobberMemory();
        }
    }

private:
    Kind kind_;
    int n_;
    Codelet<T> codelet_;
    T* src_;
    T* dst_;
    typename Fftw<T>::Plan plan_;
};

struct Key {
    std::string type;
    Kind kind;
    int length;
    auto operator<=>(const Key&) const = default;
};

std::string benchmarkName(const Key& key, const char* library) {
    return std::string(library) + "/" + key.type + "/" + kindName(key.kind) + "/" + std::to_string(key.length);
}

// CPU ns per call of every run.
class CollectingReporter : public benchmark::BenchmarkReporter {
public:
    bool ReportContext(const Context&) override { return true; }
    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs)
            if (!run.error_occurred) cpuNs[run.run_name.function_name] = run.GetAdjustedCPUTime();
    }
    std::map<std::string, double> cpuNs;
};

double median(std::vector<double> values) {
    if (values.empty()) return NAN;
    std::sort(values.begin(), values.end());
    const size_t mid = values.size() / 2;
    return values.size() % 2 ? values[mid] : (values[mid - 1] + values[mid]) / 2;
}

template <class T, size_t Count>
void registerCases(const Codelet<T> (&rows)[Count][3], const char* type, double minTime, std::vector<Key>& keys,
                   int& mismatches) {
    for (size_t i = 0; i < Count; ++i) {
        const int n = static_cast<int>(i) + 2;
        for (Kind kind : {Kind::Forward, Kind::Inverse, Kind::Hartley}) {
            auto c = std::make_shared<Case<T>>(kind, n, rows[i][static_cast<int>(kind)]);
            const double difference = c->relativeDifference();
            if (difference < 0 || difference > (std::is_same_v<T, float> ? 1e-5 : 1e-13)) {
                std::fprintf(stderr, "%s: ours differs from FFTW (relative %g)\n", codeletName(kind, n, type).c_str(),
                             difference);
                ++mismatches;
            }
            const Key key{type, kind, n};
            benchmark::RegisterBenchmark(benchmarkName(key, "ours").c_str(), [c](benchmark::State& s) { c->timeOurs(s); })
                ->MinTime(minTime)->Unit(benchmark::kNanosecond);
            benchmark::RegisterBenchmark(benchmarkName(key, "fftw").c_str(), [c](benchmark::State& s) { c->timeFftw(s); })
                ->MinTime(minTime)->Unit(benchmark::kNanosecond);
            keys.push_back(key);
        }
    }
}

void printTable(const std::vector<Key>& keys, const std::map<std::string, double>& cpuNs, const std::string& countsPath) {
    const auto ops = tvkbench::readOpCounts(countsPath);
    const double ghz = ops.empty() ? 0 : tvkbench::measuredClockGHz();
    const double conversionNs = ops.empty() ? 0 : tvkbench::measuredConversionNs();
    if (ops.empty()) std::printf("\n(no bound column: cannot read %s)\n", countsPath.c_str());
    else tvkbench::printBoundNote(ghz, countsPath);
    std::printf("        Lanes: 1, the bodies are scalar.  The tvk32f bodies also convert between single\n"
                "        and double; a conversion takes %.3f ns here (%.2f cycles), measured on independent\n"
                "        ones, so their bound is the larger of the above and conversions x %.3f ns.\n",
                conversionNs, conversionNs * ghz, conversionNs);
    std::printf("\n| length | type | kind | ours ns | FFTW ns | ours/FFTW | bound ns | ours/bound |\n");
    std::printf("|---:|---|---|---:|---:|---:|---:|---:|\n");
    std::map<std::string, std::vector<double>> ratios;
    for (const Key& key : keys) {
        const auto ours = cpuNs.find(benchmarkName(key, "ours")), fftw = cpuNs.find(benchmarkName(key, "fftw"));
        if (ours == cpuNs.end() || fftw == cpuNs.end()) continue;  // filtered out
        const double ratio = ours->second / fftw->second;
        ratios[key.type + " " + kindName(key.kind)].push_back(ratio);
        std::printf("| %d | %s | %s | %.2f | %.2f | %.2f |", key.length, key.type.c_str(), kindName(key.kind),
                    ours->second, fftw->second, ratio);
        const auto count = ops.find(codeletName(key.kind, key.length, key.type.c_str() + 3));
        if (count != ops.end()) {
            const double bound = tvkbench::scalarBoundNs(count->second, ghz, conversionNs);
            std::printf(" %.2f | %.2f |\n", bound, ours->second / bound);
        } else {
            std::printf(" - | - |\n");
        }
    }
    std::printf("\nmedian ratio ours/FFTW, and the cases where ours is faster:\n");
    for (const auto& [name, values] : ratios)
        std::printf("  %s: %.2f (%zu of %zu, worst %.2f)\n", name.c_str(), median(values),
                    size_t(std::count_if(values.begin(), values.end(), [](double r) { return r < 1; })), values.size(),
                    *std::max_element(values.begin(), values.end()));
}

}  // namespace

int main(int argc, char** argv) {
    const std::string countsPath = tvkbench::takeOpCountsPath(argc, argv);
    bool quick = false;
    std::vector<char*> args;
    for (int i = 0; i < argc; ++i) {
        if (std::strcmp(argv[i], "--quick") == 0) quick = true;
        else args.push_back(argv[i]);
    }
    int count = static_cast<int>(args.size());
    benchmark::Initialize(&count, args.data());
    if (benchmark::ReportUnrecognizedArguments(count, args.data())) return 2;

    const double minTime = quick ? 0.01 : 0.1;
    std::vector<Key> keys;
    int mismatches = 0;
    registerCases(kCodelets32, "tvk32f", minTime, keys, mismatches);
    registerCases(kCodelets64, "tvk64f", minTime, keys, mismatches);
    std::printf("timing %zu cases, ours and FFTW, %.2f s minimum per run%s\n", keys.size(), minTime,
                quick ? " (quick)" : "");
    std::fflush(stdout);
    CollectingReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    printTable(keys, reporter.cpuNs, countsPath);
    return mismatches ? 1 : 0;
}
