// Walsh-Hadamard throughput, in elements per nanosecond, of the library
// against two local baselines: the textbook in-place radix-2 loop and a
// radix-4 loop that does two stages per sweep over memory.  Both baselines
// work in place on a copy of the source, as an out-of-place caller would.
#include <benchmark/benchmark.h>

#include <cstring>
#include <random>
#include <vector>

#include "tvkgen.h"

namespace {

template <class T>
void radix2(T* x, int n) {
    for (int h = 1; h < n; h *= 2)
        for (int i = 0; i < n; i += 2 * h)
            for (int j = i; j < i + h; ++j) {
                const T a = x[j], b = x[j + h];
                x[j] = a + b;
                x[j + h] = a - b;
            }
}

// Stages h and 2h fused on each quadruple; a last radix-2 stage for odd orders.
template <class T>
void radix4(T* x, int n) {
    int h = 1;
    for (; 4 * h <= n; h *= 4)
        for (int i = 0; i < n; i += 4 * h)
            for (int j = i; j < i + h; ++j) {
                const T a = x[j] + x[j + h], b = x[j] - x[j + h];
                const T c = x[j + 2 * h] + x[j + 3 * h], d = x[j + 2 * h] - x[j + 3 * h];
                x[j] = a + c;
                x[j + h] = b + d;
                x[j + 2 * h] = a - c;
                x[j + 3 * h] = b - d;
            }
    if (h < n)
        for (int j = 0; j < h; ++j) {
            const T a = x[j], b = x[j + h];
            x[j] = a + b;
            x[j + h] = a - b;
        }
}

// Each order's Codelet directly, as a caller of one fixed order would call it.
#define WHT_ROW_32F(M) tvkgWHT_##M##_32f,
#define WHT_ROW_64F(M) tvkgWHT_##M##_64f,
constexpr tvkWHTCodelet_32f kCodelets32f[] = {TVKGEN_WHT_ORDERS(WHT_ROW_32F)};
constexpr tvkWHTCodelet_64f kCodelets64f[] = {TVKGEN_WHT_ORDERS(WHT_ROW_64F)};

tvkStatus library(const float* s, float* d, int m, uint8_t* b) { return kCodelets32f[m - 1](s, d, ScaleNoDiv, b); }
tvkStatus library(const double* s, double* d, int m, uint8_t* b) { return kCodelets64f[m - 1](s, d, ScaleNoDiv, b); }
int32_t bufferBytes(float*, int m) {
    int32_t size = 0;
    tvkgWHTGetBufferSize_32f(m, &size);
    return size;
}
int32_t bufferBytes(double*, int m) {
    int32_t size = 0;
    tvkgWHTGetBufferSize_64f(m, &size);
    return size;
}

enum class Kind { Library, Radix2, Radix4 };

template <class T, Kind K>
void BM_WHT(benchmark::State& state) {
    const int order = static_cast<int>(state.range(0));
    const int n = 1 << order;
    std::vector<T> src(n), dst(n);
    std::mt19937 gen(1);
    std::uniform_real_distribution<T> dist(-1, 1);
    for (T& e : src) e = dist(gen);
    std::vector<double> buffer(bufferBytes(static_cast<T*>(nullptr), order) / sizeof(double) + 1);
    auto* work = reinterpret_cast<uint8_t*>(buffer.data());
    for (auto _ : state) {
        if constexpr (K == Kind::Library) {
            library(src.data(), dst.data(), order, work);
        } else {
            std::memcpy(dst.data(), src.data(), n * sizeof(T));
            K == Kind::Radix2 ? radix2(dst.data(), n) : radix4(dst.data(), n);
        }
        benchmark::DoNotOptimize(dst.data());
        benchmark::ClobberMemory();
    }
    state.counters["elem/ns"] =
        benchmark::Counter(n * 1e-9, benchmark::Counter::kIsIterationInvariantRate);
}

#define WHT_BENCH(T, K) BENCHMARK(BM_WHT<T, Kind::K>)->Name("WHT_" #T "/" #K)->DenseRange(1, 13)
WHT_BENCH(float, Library);
WHT_BENCH(float, Radix2);
WHT_BENCH(float, Radix4);
WHT_BENCH(double, Library);
WHT_BENCH(double, Radix2);
WHT_BENCH(double, Radix4);

}  // namespace
