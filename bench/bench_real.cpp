// The real DFT and Hartley Codelets of libtvkgenu8 against FFTW, every length
// 2 to 64, both element types.
//
//   tvkgen-bench-real [--quick] [Google Benchmark flags]
//
// Forward real DFT (CCS) against FFTW's r2c, inverse (CCS) against c2r, and
// Hartley against FFTW's r2r plan of kind FFTW_DHT, all FFTW_MEASURE plans
// run through new-array execute on the same fftw_malloc arrays as ours; with
// the CMake option TVKGEN_BENCH_FFTW128 the same against a second FFTW built
// with 128-bit vectors only (fftw_rivals.h).  The c2r plans keep their input
// (FFTW_PRESERVE_INPUT), since every run reuses it.  Ours is called with
// ScaleNoDiv, since FFTW does not scale.  Before timing, our result is
// compared with each FFTW's.  The table gives ns per call, the ratio of
// ours to each FFTW and the bound of scalar code on this core.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "bench_support.h"
#include "fftw_rivals.h"
#include "tvkgen.h"

namespace {

enum class Kind { Forward, Inverse, Hartley };

const char* kindName(Kind k) { return k == Kind::Forward ? "r2c" : k == Kind::Inverse ? "c2r" : "dht"; }

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

// One length, type and kind, with its arrays.  A CCS array and FFTW's
// half-complex output hold the bins in the same order.
template <class T>
class Case {
public:
    using Fftw = tvkbench::Fftw<T, tvkbench::FftwBuild::Native>;

    Case(Kind kind, int n, Codelet<T> codelet) : kind_(kind), n_(n), codelet_(codelet) {
        const size_t bytes = sizeof(T) * (n + 2);
        src_ = static_cast<T*>(Fftw::allocate(bytes));
        dst_ = static_cast<T*>(Fftw::allocate(bytes));
        fill();
    }
    ~Case() {
        Fftw::release(src_);
        Fftw::release(dst_);
    }
    Case(const Case&) = delete;
    Case& operator=(const Case&) = delete;

    // The same random signal every time: FFTW_MEASURE overwrites the arrays
    // while planning, so each rival fills them again after.
    void fill() {
        std::mt19937 random(1000 * n_ + static_cast<int>(kind_));
        std::uniform_real_distribution<T> uniform(-1, 1);
        for (int k = 0; k < n_ + 2; ++k) src_[k] = uniform(random);
        // The imaginary parts of bins 0 and n/2, which neither inverse reads.
        if (kind_ == Kind::Inverse) src_[1] = src_[n_ + 1] = 0;
    }

    void timeOurs(benchmark::State& state) {
        for (auto _ : state) {
            tvkStatus status = codelet_(src_, dst_, ScaleNoDiv);
            benchmark::DoNotOptimize(status);
            benchmark::ClobberMemory();
        }
    }

    Kind kind() const { return kind_; }
    int length() const { return n_; }
    int outputs() const { return kind_ == Kind::Forward ? 2 * (n_ / 2 + 1) : n_; }
    tvkStatus ours() { return codelet_(src_, dst_, ScaleNoDiv); }
    T* src() { return src_; }
    T* dst() { return dst_; }

private:
    Kind kind_;
    int n_;
    Codelet<T> codelet_;
    T* src_;
    T* dst_;
};

// One build of FFTW on the arrays of a case: a FFTW_MEASURE plan of the
// case's kind, run through new-array execute.
template <class T, tvkbench::FftwBuild B>
class Rival : public tvkbench::FftwRival<Rival<T, B>, Case<T>, tvkbench::Fftw<T, B>> {
public:
    using Fftw = tvkbench::Fftw<T, B>;
    using Complex = typename Fftw::Complex;

    explicit Rival(std::shared_ptr<Case<T>> c) : Rival::FftwRival(std::move(c)) {
        Case<T>& k = *this->case_;
        const int n = k.length();
        this->plan_ = k.kind() == Kind::Forward ? Fftw::r2c(n, k.src(), complex(k.dst()))
                    : k.kind() == Kind::Inverse ? Fftw::c2r(n, complex(k.src()), k.dst())
                                                : Fftw::r2r(n, k.src(), k.dst(), FFTW_DHT);
        k.fill();
    }

    void execute() {
        Case<T>& k = *this->case_;
        if (k.kind() == Kind::Forward) Fftw::executeR2c(this->plan_, k.src(), complex(k.dst()));
        else if (k.kind() == Kind::Inverse) Fftw::executeC2r(this->plan_, complex(k.src()), k.dst());
        else Fftw::executeR2r(this->plan_, k.src(), k.dst());
    }

    // Largest difference from this FFTW relative to the largest output;
    // negative when our call fails.
    double relativeDifference() {
        Case<T>& k = *this->case_;
        if (k.ours() != StatusOk) return -1;
        const std::vector<T> ours(k.dst(), k.dst() + k.outputs());
        execute();
        double largest = 0, difference = 0;
        for (int i = 0; i < k.outputs(); ++i) {
            largest = std::max(largest, std::fabs(double(k.dst()[i])));
            difference = std::max(difference, std::fabs(double(ours[i]) - k.dst()[i]));
        }
        return difference / largest;
    }

private:
    static Complex* complex(T* p) { return reinterpret_cast<Complex*>(p); }
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

template <class T, size_t Count>
void registerCases(const Codelet<T> (&rows)[Count][3], const char* type, double minTime, std::vector<Key>& keys,
                   int& mismatches) {
    for (size_t i = 0; i < Count; ++i) {
        const int n = static_cast<int>(i) + 2;
        for (Kind kind : {Kind::Forward, Kind::Inverse, Kind::Hartley}) {
            auto c = std::make_shared<Case<T>>(kind, n, rows[i][static_cast<int>(kind)]);
            const Key key{type, kind, n};
            benchmark::RegisterBenchmark(benchmarkName(key, "ours").c_str(), [c](benchmark::State& s) { c->timeOurs(s); })
                ->MinTime(minTime)->Unit(benchmark::kNanosecond);
            tvkbench::registerFftwRivals(
                [&](auto build) { return std::make_shared<Rival<T, build>>(c); },
                [&](const char* library) { return benchmarkName(key, library); }, codeletName(kind, n, type + 3),
                std::is_same_v<T, float> ? 1e-5 : 1e-13, minTime, mismatches);
            keys.push_back(key);
        }
    }
}

void printTable(const std::vector<Key>& keys, const tvkbench::CollectingReporter& reporter, const std::string& countsPath) {
    const auto ops = tvkbench::readOpCounts(countsPath);
    const double ghz = ops.empty() ? 0 : tvkbench::measuredClockGHz();
    if (ops.empty()) std::printf("\n(no bound column: cannot read %s)\n", countsPath.c_str());
    else tvkbench::printBoundNote(ghz, countsPath);
    std::printf("        Lanes: 1, the bodies are scalar; the tvk32f ones convert every product's\n"
                "        operands and result between single and double.\n");
    std::printf("\n| length | type | kind | ours ns |");
    tvkbench::printFftwHeads();
    std::printf(" bound ns | ours/bound |\n|---:|---|---|---:|");
    tvkbench::printFftwRule();
    std::printf("---:|---:|\n");
    tvkbench::RatioMedians medians({"type", "kind"}, tvkbench::fftwRatioHeads(true));
    for (const Key& key : keys) {
        const double ours = reporter.ns(benchmarkName(key, "ours"));
        std::array<double, tvkbench::kFftwCount> fftw;
        bool timed = std::isfinite(ours);
        for (size_t i = 0; i < tvkbench::kFftwCount; ++i) {
            fftw[i] = reporter.ns(benchmarkName(key, tvkbench::fftwName(tvkbench::kFftwBuilds[i])));
            timed = timed || std::isfinite(fftw[i]);
        }
        if (!timed) continue;  // filtered out
        const std::string group = key.type + " | " + kindName(key.kind);
        for (size_t i = 0; i < tvkbench::kFftwCount; ++i) medians.add(group, i, ours / fftw[i]);
        std::printf("| %d | %s | %s | %.2f |", key.length, key.type.c_str(), kindName(key.kind), ours);
        tvkbench::printFftwCells(ours, fftw);
        const auto count = ops.find(codeletName(key.kind, key.length, key.type.c_str() + 3));
        if (count != ops.end()) {
            const double bound = tvkbench::boundNs(count->second, 1, ghz);
            medians.add(group, tvkbench::kFftwCount, ours / bound);
            std::printf(" %.2f | %.2f |\n", bound, ours / bound);
        } else {
            std::printf(" - | - |\n");
        }
    }
    medians.print();
}

}  // namespace

int main(int argc, char** argv) {
    const std::string countsPath = tvkbench::takeOpCountsPath(argc, argv);
    bool quick = false;
    if (!tvkbench::initialize(argc, argv, quick)) return 2;

    const double minTime = quick ? 0.01 : 0.04;
    std::vector<Key> keys;
    int mismatches = 0;
    registerCases(kCodelets32, "tvk32f", minTime, keys, mismatches);
    registerCases(kCodelets64, "tvk64f", minTime, keys, mismatches);
    std::printf("timing %zu cases, ours and %s, %.2f s minimum per run%s\n", keys.size(), tvkbench::fftwLabels().c_str(),
                minTime, quick ? " (quick)" : "");
    std::fflush(stdout);
    tvkbench::CollectingReporter reporter(false);
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    printTable(keys, reporter, countsPath);
    return mismatches == 0 && reporter.errors == 0 ? 0 : 1;
}
