// DCT-IV of libtvkgenu8 against two rivals built on FFTW, every power of two
// from 64 to 2^20, both element types, out of place:
//   redft11  FFTW's REDFT11 plan (FFTW_MEASURE), which computes twice the sum;
//   fft      what a user would write on FFTW: pre-rotation, a complex FFT of
//            n/2 points (FFTW_MEASURE), post-rotation.
// Before timing, the three results are compared, so that a wrong answer
// cannot pass for a fast one.  After the runs a table of CPU ns per call is
// printed with the ratios and ns per n log2 n.
//
//   tvkgen-bench-dct4 [Google Benchmark flags, e.g. --benchmark_repetitions=5]
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

#include "tvkgen.h"

namespace {

// ---- FFTW and the library, per element type ---------------------------------------

template <class T>
struct Api;

template <>
struct Api<float> {
    static constexpr const char* name = "32f";
    using Plan = fftwf_plan;
    using Complex = fftwf_complex;
    static void* allocate(size_t bytes) { return fftwf_malloc(bytes); }
    static void release(void* p) { fftwf_free(p); }
    static Plan redft11(int n, float* in, float* out) { return fftwf_plan_r2r_1d(n, in, out, FFTW_REDFT11, FFTW_MEASURE); }
    static Plan dft(int n, Complex* in, Complex* out) {
        return fftwf_plan_dft_1d(n, in, out, FFTW_FORWARD, FFTW_MEASURE);
    }
    static void execute(Plan p) { fftwf_execute(p); }
    static void destroy(Plan p) { fftwf_destroy_plan(p); }
    static tvkStatus initAlloc(DCT4Spec** spec, int n) { return tvkgDCT4InitAlloc_32f(spec, n); }
    static tvkStatus transform(const float* x, float* y, const DCT4Spec* spec) { return tvkgDCT4_32f(x, y, spec); }
    static tvkStatus free(DCT4Spec* spec) { return tvkgDCT4Free_32f(spec); }
};

template <>
struct Api<double> {
    static constexpr const char* name = "64f";
    using Plan = fftw_plan;
    using Complex = fftw_complex;
    static void* allocate(size_t bytes) { return fftw_malloc(bytes); }
    static void release(void* p) { fftw_free(p); }
    static Plan redft11(int n, double* in, double* out) { return fftw_plan_r2r_1d(n, in, out, FFTW_REDFT11, FFTW_MEASURE); }
    static Plan dft(int n, Complex* in, Complex* out) { return fftw_plan_dft_1d(n, in, out, FFTW_FORWARD, FFTW_MEASURE); }
    static void execute(Plan p) { fftw_execute(p); }
    static void destroy(Plan p) { fftw_destroy_plan(p); }
    static tvkStatus initAlloc(DCT4Spec** spec, int n) { return tvkgDCT4InitAlloc_64f(spec, n); }
    static tvkStatus transform(const double* x, double* y, const DCT4Spec* spec) { return tvkgDCT4_64f(x, y, spec); }
    static tvkStatus free(DCT4Spec* spec) { return tvkgDCT4Free_64f(spec); }
};

// ---- one case: a length and a type, the three transforms on one signal ---------------

template <class T>
class Case {
    using A = Api<T>;
    using C = typename A::Complex;

public:
    explicit Case(int n) : n_(n), half_(n / 2) {
        x_ = alloc<T>(n), y_ = alloc<T>(n), z_ = alloc<C>(half_), spectrum_ = alloc<C>(half_);
        // Plans first: FFTW_MEASURE overwrites its arrays.
        redft_ = A::redft11(n, x_, y_);
        dft_ = A::dft(half_, z_, spectrum_);
        A::initAlloc(&spec_, n);
        std::mt19937_64 gen(n);
        std::uniform_real_distribution<double> dist(-1, 1);
        for (int i = 0; i < n; ++i) x_[i] = static_cast<T>(dist(gen));
        // z[m] = (x[2m] + i x[n-1-2m]) exp(-i pi m / n); S[k] = Z[k] exp(-i pi (4k+1) / 4n);
        // y[2k] = Re S[k], y[n-1-2k] = -Im S[k].
        constexpr long double pi = 3.141592653589793238462643383279502884L;
        for (int m = 0; m < half_; ++m) {
            pre_.push_back({T(std::cos(pi * m / n)), T(-std::sin(pi * m / n))});
            post_.push_back({T(std::cos(pi * (4 * m + 1) / (4.0L * n))), T(-std::sin(pi * (4 * m + 1) / (4.0L * n)))});
        }
    }
    ~Case() {
        A::destroy(redft_);
        A::destroy(dft_);
        A::free(spec_);
        for (void* p : {static_cast<void*>(x_), static_cast<void*>(y_), static_cast<void*>(z_),
                        static_cast<void*>(spectrum_)})
            A::release(p);
    }

    void ours() { A::transform(x_, y_, spec_); }
    void redft11() { A::execute(redft_); }
    void viaFft() {
        for (int m = 0; m < half_; ++m) {
            const T a = x_[2 * m], b = x_[n_ - 1 - 2 * m];
            z_[m][0] = a * pre_[m].re - b * pre_[m].im;
            z_[m][1] = a * pre_[m].im + b * pre_[m].re;
        }
        A::execute(dft_);
        for (int k = 0; k < half_; ++k) {
            const T a = spectrum_[k][0], b = spectrum_[k][1];
            y_[2 * k] = a * post_[k].re - b * post_[k].im;
            y_[n_ - 1 - 2 * k] = -(a * post_[k].im + b * post_[k].re);
        }
    }

    // The largest difference of ours and of the FFT route from REDFT11 / 2,
    // relative to the largest value.
    double worstDifference() {
        redft11();
        std::vector<double> want(y_, y_ + n_);
        double largest = 0, worst = 0;
        for (double& v : want) largest = std::max(largest, std::fabs(v /= 2));
        for (void (Case::*route)() : {&Case::ours, &Case::viaFft}) {
            (this->*route)();
            for (int k = 0; k < n_; ++k) worst = std::max(worst, std::fabs(y_[k] - want[k]) / largest);
        }
        return worst;
    }

private:
    template <class U>
    static U* alloc(size_t count) {
        return static_cast<U*>(A::allocate(count * sizeof(U)));
    }
    struct Rotation {
        T re, im;
    };

    int n_, half_;
    T *x_, *y_;
    C *z_, *spectrum_;
    typename A::Plan redft_, dft_;
    DCT4Spec* spec_ = nullptr;
    std::vector<Rotation> pre_, post_;
};

// ---- collecting the times -------------------------------------------------------------

// Keeps the least CPU time of each case over its repetitions, which other
// work on a shared machine disturbs least; echoes the usual console table.
class Collector : public benchmark::ConsoleReporter {
public:
    Collector() : ConsoleReporter(OO_Tabular) {}
    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) {
            if (run.error_occurred || run.run_type == Run::RT_Aggregate) continue;
            const auto [it, added] = cpuNs.emplace(run.run_name.function_name, run.GetAdjustedCPUTime());
            if (!added) it->second = std::min(it->second, run.GetAdjustedCPUTime());
        }
        ConsoleReporter::ReportRuns(runs);
    }
    std::map<std::string, double> cpuNs;
};

std::string caseName(const char* type, const char* route, int n) {
    return std::string("dct4/") + type + "/" + route + "/" + std::to_string(n);
}

constexpr const char* kRoutes[] = {"ours", "redft11", "fft"};

template <class T>
int registerCases(int first, int last) {
    int mismatches = 0;
    for (int n = first; n <= last; n *= 2) {
        auto c = std::make_shared<Case<T>>(n);
        const double difference = c->worstDifference();
        if (!(difference < (sizeof(T) == 4 ? 2e-6 : 1e-14))) {
            std::fprintf(stderr, "%s n=%d: results differ by %g\n", Api<T>::name, n, difference);
            ++mismatches;
        }
        void (Case<T>::*routes[])() = {&Case<T>::ours, &Case<T>::redft11, &Case<T>::viaFft};
        for (int r = 0; r < 3; ++r)
            benchmark::RegisterBenchmark(caseName(Api<T>::name, kRoutes[r], n).c_str(),
                                         [c, route = routes[r]](benchmark::State& state) {
                                             for (auto _ : state) ((*c).*route)();
                                         })
                ->Unit(benchmark::kNanosecond);
    }
    return mismatches;
}

double median(std::vector<double> v) {
    std::sort(v.begin(), v.end());
    return v.size() % 2 ? v[v.size() / 2] : (v[v.size() / 2 - 1] + v[v.size() / 2]) / 2;
}

void printTable(const std::map<std::string, double>& ns, int first, int last) {
    std::printf("\n| type | n | ours ns | REDFT11 ns | FFT route ns | ours/REDFT11 | ours/FFT route | ours ns/(n log2 n) |\n");
    std::printf("|---|---:|---:|---:|---:|---:|---:|---:|\n");
    for (const char* type : {"32f", "64f"}) {
        std::vector<double> overRedft, overFft;
        for (int n = first; n <= last; n *= 2) {
            const auto time = [&](const char* route) {
                const auto it = ns.find(caseName(type, route, n));
                return it == ns.end() ? NAN : it->second;
            };
            const double ours = time("ours"), redft = time("redft11"), fft = time("fft");
            overRedft.push_back(ours / redft);
            overFft.push_back(ours / fft);
            std::printf("| %s | %d | %.0f | %.0f | %.0f | %.2f | %.2f | %.3f |\n", type, n, ours, redft, fft, ours / redft,
                        ours / fft, ours / (n * std::log2(n)));
        }
        std::printf("| %s | median | | | | %.2f | %.2f | |\n", type, median(overRedft), median(overFft));
        std::printf("| %s | largest | | | | %.2f | %.2f | |\n", type,
                    *std::max_element(overRedft.begin(), overRedft.end()),
                    *std::max_element(overFft.begin(), overFft.end()));
    }
}

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
    constexpr int kFirst = 64, kLast = 1 << 20;
    const int mismatches = registerCases<float>(kFirst, kLast) + registerCases<double>(kFirst, kLast);
    Collector collector;
    benchmark::RunSpecifiedBenchmarks(&collector);
    benchmark::Shutdown();
    printTable(collector.cpuNs, kFirst, kLast);
    return mismatches == 0 ? 0 : 1;
}
