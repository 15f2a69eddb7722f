// FFTW as the benchmarks call it, one struct per precision and build, so that
// a benchmark times every FFTW it was built with through the same code:
//
//   native   Debian's libfftw3, which runs AVX codelets where the processor
//            has AVX (256-bit vectors);
//   128-bit  the same FFTW release built with SSE2 codelets only, the vector
//            width of our bodies.  Only with the CMake option
//            TVKGEN_BENCH_FFTW128 (bench/build-fftw128.sh builds it), linked
//            under the names fftw128_* and fftw128f_*, so that both run in
//            one executable.
//
//   tvkbench::forEachFftw([&](auto build) {
//       using F = tvkbench::Fftw<double, build>;
//       F::Plan plan = F::dft(n, in, out, FFTW_FORWARD);
//       ...
//   });
//
// registerFftwRivals does that for the usual case: check each rival against
// ours, then register its timed run.
#pragma once

#include <benchmark/benchmark.h>
#include <fftw3.h>

#include <array>
#include <cstddef>
#include <cstdio>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#ifdef TVKGEN_BENCH_FFTW128
// The declarations of the renamed build, from the same fftw3.h macro that
// declares Debian's.
#define TVKBENCH_FFTW128_DOUBLE(name) FFTW_CONCAT(fftw128_, name)
#define TVKBENCH_FFTW128_FLOAT(name) FFTW_CONCAT(fftw128f_, name)
extern "C" {
FFTW_DEFINE_API(TVKBENCH_FFTW128_DOUBLE, double, fftw128_complex)
FFTW_DEFINE_API(TVKBENCH_FFTW128_FLOAT, float, fftw128f_complex)
}
#endif

namespace tvkbench {

enum class FftwBuild { Native, Sse128 };

// What a build is called in benchmark names and in the columns of a table.
constexpr const char* fftwName(FftwBuild b) { return b == FftwBuild::Native ? "fftw" : "fftw128"; }
constexpr const char* fftwLabel(FftwBuild b) { return b == FftwBuild::Native ? "FFTW" : "FFTW-128"; }

// The builds this executable has, in the order of the table's columns.
constexpr FftwBuild kFftwBuilds[] = {
    FftwBuild::Native,
#ifdef TVKGEN_BENCH_FFTW128
    FftwBuild::Sse128,
#endif
};
constexpr size_t kFftwCount = sizeof kFftwBuilds / sizeof kFftwBuilds[0];

// "FFTW" or "FFTW and FFTW-128", for the line that opens a run.
inline std::string fftwLabels() {
    std::string labels;
    for (size_t i = 0; i < kFftwCount; ++i)
        labels += std::string(i == 0 ? "" : i + 1 < kFftwCount ? ", " : " and ") + fftwLabel(kFftwBuilds[i]);
    return labels;
}

// The FFTW columns of a results table, after ours: each build's ns, then
// ours over each build; the heads, the alignment row and the cells of a row.
inline void printFftwHeads() {
    for (FftwBuild b : kFftwBuilds) std::printf(" %s ns |", fftwLabel(b));
    for (FftwBuild b : kFftwBuilds) std::printf(" ours/%s |", fftwLabel(b));
}
inline void printFftwRule() {
    for (size_t i = 0; i < 2 * kFftwCount; ++i) std::printf("---:|");
}
inline void printFftwCells(double ours, const std::array<double, kFftwCount>& fftw) {
    for (double ns : fftw) std::printf(" %.2f |", ns);
    for (double ns : fftw) std::printf(" %.2f |", ours / ns);
}
// The heads of the ratio columns, ours over each build, then over the bound
// when the table has one: the columns of a RatioMedians.
inline std::vector<std::string> fftwRatioHeads(bool withBound) {
    std::vector<std::string> heads;
    for (FftwBuild b : kFftwBuilds) heads.push_back(std::string("ours/") + fftwLabel(b));
    if (withBound) heads.push_back("ours/bound");
    return heads;
}

// Calls f(std::integral_constant<FftwBuild, B>{}) for each build B in turn,
// so that f can name Fftw<Real, B>.
template <class F>
void forEachFftw(F&& f) {
    f(std::integral_constant<FftwBuild, FftwBuild::Native>{});
#ifdef TVKGEN_BENCH_FFTW128
    f(std::integral_constant<FftwBuild, FftwBuild::Sse128>{});
#endif
}

template <class Real, FftwBuild B>
struct Fftw;

// Every plan is FFTW_MEASURE, and runs through new-array execute; c2r keeps
// its input (FFTW_PRESERVE_INPUT), since every run reuses it.
#define TVKBENCH_FFTW(X, R, BUILD)                                                                              \
    template <>                                                                                                 \
    struct Fftw<R, BUILD> {                                                                                     \
        using Plan = X(plan);                                                                                   \
        using Complex = X(complex);                                                                             \
        static void* allocate(size_t bytes) { return X(malloc)(bytes); }                                        \
        static void release(void* p) { X(free)(p); }                                                            \
        static Plan dft(int n, Complex* in, Complex* out, int sign) {                                           \
            return X(plan_dft_1d)(n, in, out, sign, FFTW_MEASURE);                                              \
        }                                                                                                       \
        static Plan r2c(int n, R* in, Complex* out) { return X(plan_dft_r2c_1d)(n, in, out, FFTW_MEASURE); }    \
        static Plan c2r(int n, Complex* in, R* out) {                                                           \
            return X(plan_dft_c2r_1d)(n, in, out, FFTW_MEASURE | FFTW_PRESERVE_INPUT);                          \
        }                                                                                                       \
        static Plan r2r(int n, R* in, R* out, X(r2r_kind) kind) {                                               \
            return X(plan_r2r_1d)(n, in, out, kind, FFTW_MEASURE);                                              \
        }                                                                                                       \
        static void execute(Plan p) { X(execute)(p); }                                                          \
        static void executeDft(Plan p, Complex* in, Complex* out) { X(execute_dft)(p, in, out); }               \
        static void executeR2c(Plan p, R* in, Complex* out) { X(execute_dft_r2c)(p, in, out); }                 \
        static void executeC2r(Plan p, Complex* in, R* out) { X(execute_dft_c2r)(p, in, out); }                 \
        static void executeR2r(Plan p, R* in, R* out) { X(execute_r2r)(p, in, out); }                           \
        static void destroy(Plan p) { X(destroy_plan)(p); }                                                     \
    };

TVKBENCH_FFTW(FFTW_MANGLE_DOUBLE, double, FftwBuild::Native)
TVKBENCH_FFTW(FFTW_MANGLE_FLOAT, float, FftwBuild::Native)
#ifdef TVKGEN_BENCH_FFTW128
TVKBENCH_FFTW(TVKBENCH_FFTW128_DOUBLE, double, FftwBuild::Sse128)
TVKBENCH_FFTW(TVKBENCH_FFTW128_FLOAT, float, FftwBuild::Sse128)
#endif
#undef TVKBENCH_FFTW

// One build of FFTW on the arrays of a benchmark case, which it shares with
// ours: Derived makes plan_ in its constructor (FFTW_MEASURE overwrites the
// arrays, so it fills the case again after) and gives execute().
template <class Derived, class Case, class F>
class FftwRival {
public:
    ~FftwRival() { F::destroy(plan_); }
    FftwRival(const FftwRival&) = delete;
    FftwRival& operator=(const FftwRival&) = delete;

    void time(benchmark::State& state) {
        for (auto _ : state) {
            static_cast<Derived*>(this)->execute();
            benchmark::ClobberMemory();
        }
    }

protected:
    explicit FftwRival(std::shared_ptr<Case> c) : case_(std::move(c)) {}

    std::shared_ptr<Case> case_;
    typename F::Plan plan_{};
};

// Registers one run per build after ours: makeRival(build) gives a rival
// with relativeDifference() from our result and time(benchmark::State&);
// nameOf(fftwName(build)) names its run.  A rival whose result differs from
// ours by more than `tolerance` is reported on stderr and counted.
template <class MakeRival, class NameOf>
void registerFftwRivals(MakeRival makeRival, NameOf nameOf, const std::string& codelet, double tolerance,
                        double minTime, int& mismatches) {
    forEachFftw([&](auto build) {
        auto rival = makeRival(build);
        const double difference = rival->relativeDifference();  // also warms code and data
        if (difference < 0 || difference > tolerance) {
            std::fprintf(stderr, "%s: ours differs from %s (relative %g)\n", codelet.c_str(), fftwLabel(build),
                         difference);
            ++mismatches;
        }
        // The registered lambda owns the rival, and so the case.
        benchmark::RegisterBenchmark(nameOf(fftwName(build)).c_str(), [rival](benchmark::State& s) { rival->time(s); })
            ->MinTime(minTime)
            ->Unit(benchmark::kNanosecond);
    });
}

}  // namespace tvkbench
