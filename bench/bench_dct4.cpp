// DCT-IV of libtvkgenu8 against two rivals built on FFTW, every power of two
// from 64 to 2^20, both element types, out of place:
//   redft11  FFTW's REDFT11 plan, which computes twice the sum;
//   fft      what a user would write on FFTW: pre-rotation, a complex FFT of
//            n/2 points, post-rotation, the rotations built for this machine.
// Each rival runs on every FFTW this executable has (fftw_rivals.h): Debian's,
// and with the CMake option TVKGEN_BENCH_FFTW128 the one with 128-bit
// vectors only.  Plans are FFTW_MEASURE.  Before timing, each rival's result
// is compared with ours, so that a wrong answer cannot pass for a fast one.
// After the runs a table of ns per call is printed with the ratios and
// ns per n log2 n; with repetitions, the least time of each case counts.
//
//   tvkgen-bench-dct4 [--quick] [Google Benchmark flags, e.g. --benchmark_repetitions=5]
//
// --quick stops at 4096 points and runs each case briefly.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "bench_support.h"
#include "fftw_rivals.h"
#include "tvkgen.h"

namespace {

// ---- the library, per element type ---------------------------------------------------

template <class T>
struct Api;

template <>
struct Api<float> {
    static constexpr const char* name = "32f";
    static tvkStatus initAlloc(DCT4Spec** context, int n) { return tvkgDCT4InitAlloc_32f(context, n); }
    static tvkStatus transform(const float* x, float* y, const DCT4Spec* context) {
        return tvkgDCT4_32f(x, y, context);
    }
    static tvkStatus free(DCT4Spec* context) { return tvkgDCT4Free_32f(context); }
};

template <>
struct Api<double> {
    static constexpr const char* name = "64f";
    static tvkStatus initAlloc(DCT4Spec** context, int n) { return tvkgDCT4InitAlloc_64f(context, n); }
    static tvkStatus transform(const double* x, double* y, const DCT4Spec* context) {
        return tvkgDCT4_64f(x, y, context);
    }
    static tvkStatus free(DCT4Spec* context) { return tvkgDCT4Free_64f(context); }
};

// ---- one case: a length and a type, its signal and ours --------------------------------

template <class T>
class Case {
    using Fftw = tvkbench::Fftw<T, tvkbench::FftwBuild::Native>;

public:
    explicit Case(int n) : n_(n) {
        x_ = static_cast<T*>(Fftw::allocate(n * sizeof(T)));
        y_ = static_cast<T*>(Fftw::allocate(n * sizeof(T)));
        Api<T>::initAlloc(&spec_, n);
        fill();
    }
    ~Case() {
        Api<T>::free(spec_);
        Fftw::release(x_);
        Fftw::release(y_);
    }
    Case(const Case&) = delete;
    Case& operator=(const Case&) = delete;

    // The same random signal every time: FFTW_MEASURE overwrites the arrays
    // while planning, so each rival fills them again after.
    void fill() {
        std::mt19937_64 random(n_);
        std::uniform_real_distribution<double> uniform(-1, 1);
        for (int i = 0; i < n_; ++i) x_[i] = static_cast<T>(uniform(random));
    }

    void ours() { Api<T>::transform(x_, y_, spec_); }
    int length() const { return n_; }
    T* x() { return x_; }
    T* y() { return y_; }

    // Largest difference of `scale` times a rival's result from ours,
    // relative to the largest of ours.
    template <class Run>
    double relativeDifference(Run rival, double scale) {
        ours();
        const std::vector<double> want(y_, y_ + n_);
        rival();
        double largest = 0, difference = 0;
        for (int k = 0; k < n_; ++k) {
            largest = std::max(largest, std::fabs(want[k]));
            difference = std::max(difference, std::fabs(scale * y_[k] - want[k]));
        }
        return difference / largest;
    }

private:
    int n_;
    T *x_, *y_;
    DCT4Spec* spec_ = nullptr;
};

// ---- the rivals, on one build of FFTW each ---------------------------------------------

template <class T, tvkbench::FftwBuild B>
class Redft11 : public tvkbench::FftwRival<Redft11<T, B>, Case<T>, tvkbench::Fftw<T, B>> {
    using Fftw = tvkbench::Fftw<T, B>;

public:
    static constexpr const char* kName = "redft11";
    static constexpr const char* kLabel = "REDFT11";

    explicit Redft11(std::shared_ptr<Case<T>> c) : Redft11::FftwRival(std::move(c)) {
        this->plan_ = Fftw::r2r(this->case_->length(), this->case_->x(), this->case_->y(), FFTW_REDFT11);
        this->case_->fill();
    }

    void execute() { Fftw::executeR2r(this->plan_, this->case_->x(), this->case_->y()); }
    double relativeDifference() { return this->case_->relativeDifference([this] { execute(); }, 0.5); }
};

// z[m] = (x[2m] + i x[n-1-2m]) exp(-i pi m / n); S[k] = Z[k] exp(-i pi (4k+1) / 4n);
// y[2k] = Re S[k], y[n-1-2k] = -Im S[k].
template <class T, tvkbench::FftwBuild B>
class FftRoute : public tvkbench::FftwRival<FftRoute<T, B>, Case<T>, tvkbench::Fftw<T, B>> {
    using Fftw = tvkbench::Fftw<T, B>;
    using Complex = typename Fftw::Complex;

public:
    static constexpr const char* kName = "fft";
    static constexpr const char* kLabel = "FFT route";

    explicit FftRoute(std::shared_ptr<Case<T>> c) : FftRoute::FftwRival(std::move(c)) {
        const int n = this->case_->length();
        half_ = n / 2;
        z_ = static_cast<Complex*>(Fftw::allocate(half_ * sizeof(Complex)));
        spectrum_ = static_cast<Complex*>(Fftw::allocate(half_ * sizeof(Complex)));
        this->plan_ = Fftw::dft(half_, z_, spectrum_, FFTW_FORWARD);
        constexpr long double pi = 3.141592653589793238462643383279502884L;
        for (int m = 0; m < half_; ++m) {
            pre_.push_back({T(std::cos(pi * m / n)), T(-std::sin(pi * m / n))});
            post_.push_back({T(std::cos(pi * (4 * m + 1) / (4.0L * n))), T(-std::sin(pi * (4 * m + 1) / (4.0L * n)))});
        }
    }
    ~FftRoute() {
        Fftw::release(z_);
        Fftw::release(spectrum_);
    }

    void execute() {
        const T* x = this->case_->x();
        T* y = this->case_->y();
        const int n = this->case_->length();
        for (int m = 0; m < half_; ++m) {
            const T a = x[2 * m], b = x[n - 1 - 2 * m];
            z_[m][0] = a * pre_[m].re - b * pre_[m].im;
            z_[m][1] = a * pre_[m].im + b * pre_[m].re;
        }
        Fftw::execute(this->plan_);
        for (int k = 0; k < half_; ++k) {
            const T a = spectrum_[k][0], b = spectrum_[k][1];
            y[2 * k] = a * post_[k].re - b * post_[k].im;
            y[n - 1 - 2 * k] = -(a * post_[k].im + b * post_[k].re);
        }
    }
    double relativeDifference() { return this->case_->relativeDifference([this] { execute(); }, 1); }

private:
    struct Rotation {
        T re, im;
    };

    int half_;
    Complex *z_, *spectrum_;
    std::vector<Rotation> pre_, post_;
};

// ---- registration and the table -------------------------------------------------------

std::string caseName(const char* type, const std::string& route, int n) {
    return std::string("dct4/") + type + "/" + route + "/" + std::to_string(n);
}

// A rival on a build: its part of a benchmark name, and its column head.
std::string routeName(const char* rival, const char* library) { return std::string(rival) + "-" + library; }
std::string routeLabel(const char* rival, tvkbench::FftwBuild b) {
    return std::string(rival) + " (" + tvkbench::fftwLabel(b) + ")";
}

// Every rival on every build, in the order of the table's columns.
struct Column {
    std::string name, label;
};
std::vector<Column> rivalColumns() {
    using Named = Redft11<float, tvkbench::FftwBuild::Native>;
    using Routed = FftRoute<float, tvkbench::FftwBuild::Native>;
    std::vector<Column> columns;
    for (const auto& [name, label] : {std::pair{Named::kName, Named::kLabel}, std::pair{Routed::kName, Routed::kLabel}})
        for (tvkbench::FftwBuild b : tvkbench::kFftwBuilds)
            columns.push_back({routeName(name, tvkbench::fftwName(b)), routeLabel(label, b)});
    return columns;
}

// One rival on every build, checked against ours, then registered.
template <template <class, tvkbench::FftwBuild> class Rival, class T>
void registerRival(const std::shared_ptr<Case<T>>& c, double minTime, int& mismatches) {
    using Named = Rival<T, tvkbench::FftwBuild::Native>;
    const int n = c->length();
    tvkbench::registerFftwRivals(
        [&](auto build) { return std::make_shared<Rival<T, build>>(c); },
        [&](const char* library) { return caseName(Api<T>::name, routeName(Named::kName, library), n); },
        std::string(Api<T>::name) + " n=" + std::to_string(n) + " " + Named::kLabel, sizeof(T) == 4 ? 2e-6 : 1e-14,
        minTime, mismatches);
}

template <class T>
int registerCases(int first, int last, double minTime) {
    int mismatches = 0;
    for (int n = first; n <= last; n *= 2) {
        auto c = std::make_shared<Case<T>>(n);
        benchmark::RegisterBenchmark(caseName(Api<T>::name, "ours", n).c_str(),
                                     [c](benchmark::State& state) {
                                         for (auto _ : state) {
                                             c->ours();
                                             benchmark::ClobberMemory();
                                         }
                                     })
            ->MinTime(minTime)
            ->Unit(benchmark::kNanosecond);
        registerRival<Redft11>(c, minTime, mismatches);
        registerRival<FftRoute>(c, minTime, mismatches);
    }
    return mismatches;
}

void printTable(const tvkbench::CollectingReporter& reporter, int first, int last) {
    const std::vector<Column> rivals = rivalColumns();
    std::vector<std::string> ratioHeads;
    std::printf("\n| type | n | ours ns |");
    for (const Column& r : rivals) std::printf(" %s ns |", r.label.c_str());
    for (const Column& r : rivals) {
        ratioHeads.push_back("ours/" + r.label);
        std::printf(" %s |", ratioHeads.back().c_str());
    }
    std::printf(" ours ns/(n log2 n) |\n|---|---:|---:|");
    for (size_t i = 0; i < 2 * rivals.size() + 1; ++i) std::printf("---:|");
    std::printf("\n");
    tvkbench::RatioMedians medians({"type"}, ratioHeads);
    for (const char* type : {Api<float>::name, Api<double>::name})
        for (int n = first; n <= last; n *= 2) {
            const double ours = reporter.ns(caseName(type, "ours", n));
            std::vector<double> ns;
            for (const Column& r : rivals) ns.push_back(reporter.ns(caseName(type, r.name, n)));
            if (std::isnan(ours) && std::all_of(ns.begin(), ns.end(), [](double t) { return std::isnan(t); }))
                continue;  // filtered out
            std::printf("| %s | %d | %.0f |", type, n, ours);
            for (double t : ns) std::printf(" %.0f |", t);
            for (size_t i = 0; i < ns.size(); ++i) {
                medians.add(type, i, ours / ns[i]);
                std::printf(" %.2f |", ours / ns[i]);
            }
            std::printf(" %.3f |\n", ours / (n * std::log2(n)));
        }
    medians.print();
}

}  // namespace

int main(int argc, char** argv) {
    bool quick = false;
    if (!tvkbench::initialize(argc, argv, quick)) return 2;

    const int first = 64, last = quick ? 1 << 12 : 1 << 20;
    const double minTime = quick ? 0.01 : 0.1;
    const int mismatches = registerCases<float>(first, last, minTime) + registerCases<double>(first, last, minTime);
    std::printf("timing n = %d to %d, ours, REDFT11 and the FFT route on %s, %.2f s minimum per run%s\n", first, last,
                tvkbench::fftwLabels().c_str(), minTime, quick ? " (quick)" : "");
    std::fflush(stdout);
    tvkbench::CollectingReporter reporter(!quick);
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    printTable(reporter, first, last);
    return mismatches == 0 && reporter.errors == 0 ? 0 : 1;
}
