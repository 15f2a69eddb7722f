// Walsh-Hadamard Codelets of libtvkgenu8 against two local rivals, every order
// 1 to 13, both element types, out of place:
//   loop     the textbook in-place radix-2 loop, stage by stage with pairs at
//            distance h, on a copy of the source;
//   blocked  what FFTW-like codelets would do on 128-bit registers: a block
//            of up to 8 registers loaded, every stage within it done in
//            registers, stored; then passes over memory, each doing up to 3
//            more stages on 8 registers taken at a stride.  Timed twice:
//            as it is, and with the multiplication by the scale that our
//            contract asks for every output (in its last pass), which
//            shows what of the difference is that multiplication.
// Both keep the butterfly order of ours: each value takes the stages in
// ascending order, (a, b) <- (a + b, a - b) with the lower index the minuend,
// so all three give the same bits, which is checked before timing.  Ours is
// each order's Codelet called directly with ScaleNoDiv and a caller buffer,
// twice: with the buffer placed as docs/walsh-hadamard.md recommends (its
// start 1 KiB past the destination's, modulo 2 KiB), and in the cache sets of
// the destination (its start a whole number of 4 KiB pages away), which
// slows the final pass of orders 11 to 13.  After the runs a table of ns per
// call is printed with the ratios.
//
//   tvkgen-bench-wht [--quick] [Google Benchmark flags]
#include <benchmark/benchmark.h>
#include <emmintrin.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "bench_support.h"
#include "tvkgen.h"

namespace {

// ---- the library, per element type ---------------------------------------------

// Each order's Codelet directly, as a caller of one fixed order would call it.
#define WHT_ROW_32F(M) tvkgWHT_##M##_32f,
#define WHT_ROW_64F(M) tvkgWHT_##M##_64f,
constexpr tvkWHTCodelet_32f kCodelets32f[] = {TVKGEN_WHT_ORDERS(WHT_ROW_32F)};
constexpr tvkWHTCodelet_64f kCodelets64f[] = {TVKGEN_WHT_ORDERS(WHT_ROW_64F)};
#undef WHT_ROW_32F
#undef WHT_ROW_64F

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

// ---- the loop rival --------------------------------------------------------------

template <class T>
void radix2Loop(T* x, int n) {
    for (int h = 1; h < n; h *= 2)
        for (int i = 0; i < n; i += 2 * h)
            for (int j = i; j < i + h; ++j) {
                const T a = x[j], b = x[j + h];
                x[j] = a + b;
                x[j + h] = a - b;
            }
}

// ---- the blocked rival -------------------------------------------------------------

template <class T>
struct Sse;

template <>
struct Sse<float> {
    using V = __m128;
    static constexpr int lanes = 4;
    static V zero() { return _mm_setzero_ps(); }
    static V load(const float* p) { return _mm_loadu_ps(p); }
    static void store(float* p, V v) { _mm_storeu_ps(p, v); }
    // Stages 0 and 1 pair lanes of one vector: four vectors are transposed,
    // so that these stages pair vectors instead.
    static constexpr int kLaneStages = 2;
    static void laneStages(V* v, int count, int stages);
};

template <>
struct Sse<double> {
    using V = __m128d;
    static constexpr int lanes = 2;
    static V zero() { return _mm_setzero_pd(); }
    static V load(const double* p) { return _mm_loadu_pd(p); }
    static void store(double* p, V v) { _mm_storeu_pd(p, v); }
    // Stage 0 pairs the two lanes of a vector: two vectors exchange halves,
    // so that it pairs vectors instead.
    static constexpr int kLaneStages = 1;
    static void laneStages(V* v, int count, int stages);
};

// (a, b) <- (a + b, a - b), as ours.
inline void butterfly(__m128& a, __m128& b) {
    const __m128 t = a;
    a = _mm_add_ps(t, b);
    b = _mm_sub_ps(t, b);
}
inline void butterfly(__m128d& a, __m128d& b) {
    const __m128d t = a;
    a = _mm_add_pd(t, b);
    b = _mm_sub_pd(t, b);
}

// The stages d = 1, 2, ... between `count` vectors, each from its own place.
template <class V>
inline void vectorStages(V* v, int count) {
    for (int d = 1; d < count; d *= 2)
        for (int k = 0; k < count; ++k)
            if (!(k & d)) butterfly(v[k], v[k + d]);
}

inline void Sse<float>::laneStages(__m128* v, int count, int stages) {
    for (int g = 0; g < count; g += 4) {
        _MM_TRANSPOSE4_PS(v[g], v[g + 1], v[g + 2], v[g + 3]);
        butterfly(v[g], v[g + 1]);
        butterfly(v[g + 2], v[g + 3]);
        if (stages == 2) {
            butterfly(v[g], v[g + 2]);
            butterfly(v[g + 1], v[g + 3]);
        }
        _MM_TRANSPOSE4_PS(v[g], v[g + 1], v[g + 2], v[g + 3]);
    }
}

// (x0, x1), (x2, x3) <-> (x0, x2), (x1, x3); its own inverse.
inline void exchange(__m128d& a, __m128d& b) {
    const __m128d low = _mm_unpacklo_pd(a, b);
    b = _mm_unpackhi_pd(a, b);
    a = low;
}

inline void Sse<double>::laneStages(__m128d* v, int count, int) {
    for (int g = 0; g < count; g += 2) {
        exchange(v[g], v[g + 1]);
        butterfly(v[g], v[g + 1]);
        exchange(v[g], v[g + 1]);
    }
}

// v times the scale when `Scaled`, else v.
template <bool Scaled>
inline __m128 scaledBy(__m128 v, float scale) {
    return Scaled ? _mm_mul_ps(v, _mm_set1_ps(scale)) : v;
}
template <bool Scaled>
inline __m128d scaledBy(__m128d v, double scale) {
    return Scaled ? _mm_mul_pd(v, _mm_set1_pd(scale)) : v;
}

// The first stages of `Count` vectors from src, all in registers, into dst;
// a lane transpose takes a whole group of vectors, so a shorter block is
// padded with zero vectors, whose results are not stored.  `Scaled`: every
// output is multiplied by `scale` before its store.
template <class T, int Count, bool Scaled>
void block(const T* src, T* dst, int laneStages, T scale) {
    using S = Sse<T>;
    constexpr int kHeld = std::max(Count, S::lanes);
    typename S::V v[kHeld];
    for (int i = 0; i < kHeld; ++i) v[i] = i < Count ? S::load(src + i * S::lanes) : S::zero();
    S::laneStages(v, kHeld, laneStages);
    vectorStages(v, Count);
    for (int i = 0; i < Count; ++i) S::store(dst + i * S::lanes, scaledBy<Scaled>(v[i], scale));
}

// log2(Count) stages from distance h up, in place, Count vectors at a time
// taken h elements apart; `Scaled` as in block().
template <class T, int Count, bool Scaled>
void pass(T* x, int n, int h, T scale) {
    using S = Sse<T>;
    for (int i = 0; i < n; i += Count * h)
        for (int j = i; j < i + h; j += S::lanes) {
            typename S::V v[Count];
            for (int k = 0; k < Count; ++k) v[k] = S::load(x + j + k * h);
            vectorStages(v, Count);
            for (int k = 0; k < Count; ++k) S::store(x + j + k * h, scaledBy<Scaled>(v[k], scale));
        }
}

constexpr int kBlockVectors = 8;  // of the 16 XMM registers, the rest for transposes and butterflies

// The block pass and the passes of the rival; with `scaled` it also does what
// the library's contract asks of ours: every output multiplied by the scale
// in the last pass.
template <class T, int Count>
void blockPass(const T* src, T* dst, int n, int laneStages, bool scaled, T scale) {
    constexpr int step = Count * Sse<T>::lanes;
    if (scaled)
        for (int i = 0; i < n; i += step) block<T, Count, true>(src + i, dst + i, laneStages, scale);
    else
        for (int i = 0; i < n; i += step) block<T, Count, false>(src + i, dst + i, laneStages, scale);
}
template <class T, int Count>
void stridedPass(T* x, int n, int h, bool scaled, T scale) {
    scaled ? pass<T, Count, true>(x, n, h, scale) : pass<T, Count, false>(x, n, h, scale);
}

template <class T>
void blockedWht(const T* src, T* dst, int order, bool scaled, T scale) {
    using S = Sse<T>;
    const int n = 1 << order;
    const int laneStages = std::min(order, S::kLaneStages);
    if (n < S::lanes) {  // tvk32f order 1: half a vector
        alignas(16) T in[S::lanes] = {}, out[S::lanes];
        std::copy(src, src + n, in);
        blockPass<T, 1>(in, out, S::lanes, laneStages, scaled, scale);
        std::copy(out, out + n, dst);
        return;
    }
    const int vectors = std::min(n / S::lanes, kBlockVectors);
    const bool blockLast = scaled && vectors * S::lanes == n;
    switch (vectors) {
        case 1: blockPass<T, 1>(src, dst, n, laneStages, blockLast, scale); break;
        case 2: blockPass<T, 2>(src, dst, n, laneStages, blockLast, scale); break;
        case 4: blockPass<T, 4>(src, dst, n, laneStages, blockLast, scale); break;
        default: blockPass<T, kBlockVectors>(src, dst, n, laneStages, blockLast, scale); break;
    }
    for (int h = vectors * S::lanes; h < n;) {
        const int group = std::min(n / h, kBlockVectors);
        const bool last = scaled && h * group == n;
        switch (group) {
            case 2: stridedPass<T, 2>(dst, n, h, last, scale); break;
            case 4: stridedPass<T, 4>(dst, n, h, last, scale); break;
            default: stridedPass<T, kBlockVectors>(dst, n, h, last, scale); break;
        }
        h *= group;
    }
}

// ---- one case: an order and a type, every route on one signal -----------------------

// Source, destination and the two buffers in one block of pages, so that
// where each starts within a page is fixed: the source and the destination
// at page starts, one buffer 1 KiB into a page, the other at a page start.
template <class T>
class Case {
public:
    explicit Case(int order) : order_(order), n_(size_t{1} << order) {
        const size_t arrayPages = pages(n_ * sizeof(T)),
                     bufferPages = pages(bufferBytes(static_cast<T*>(nullptr), order) + kBufferOffset);
        block_.reset(static_cast<uint8_t*>(std::aligned_alloc(kPage, (2 * arrayPages + 2 * bufferPages) * kPage)));
        src_ = reinterpret_cast<T*>(block_.get());
        dst_ = src_ + arrayPages * kPage / sizeof(T);
        placedBuffer_ = block_.get() + 2 * arrayPages * kPage + kBufferOffset;
        sameSetsBuffer_ = block_.get() + (2 * arrayPages + bufferPages) * kPage;
        std::mt19937 random(order);
        std::uniform_real_distribution<T> uniform(-1, 1);
        for (size_t i = 0; i < n_; ++i) src_[i] = uniform(random);
    }

    void ours() { library(src_, dst_, order_, placedBuffer_); }
    void oursSameSets() { library(src_, dst_, order_, sameSetsBuffer_); }
    void loop() {
        std::memcpy(dst_, src_, n_ * sizeof(T));
        radix2Loop(dst_, static_cast<int>(n_));
    }
    void blocked() { blockedWht(src_, dst_, order_, false, scale_); }
    void blockedScaled() { blockedWht(src_, dst_, order_, true, scale_); }

    const T* result() const { return dst_; }
    size_t size() const { return n_; }

private:
    static constexpr size_t kPage = 4096, kBufferOffset = 1024;
    static size_t pages(size_t bytes) { return (bytes + kPage - 1) / kPage; }
    struct Free {
        void operator()(uint8_t* p) const { std::free(p); }
    };

    int order_;
    size_t n_;
    T scale_ = 1;  // ScaleNoDiv's, read from memory as ours reads it from its table
    std::unique_ptr<uint8_t, Free> block_;
    T *src_, *dst_;
    uint8_t *placedBuffer_, *sameSetsBuffer_;
};

template <class T>
struct Route {
    const char* name;
    void (Case<T>::*run)();
};

template <class T>
constexpr Route<T> kRoutes[] = {{"ours", &Case<T>::ours},
                                 {"ours-same-sets", &Case<T>::oursSameSets},
                                 {"loop", &Case<T>::loop},
                                 {"blocked", &Case<T>::blocked},
                                 {"blocked-scaled", &Case<T>::blockedScaled}};

const char* typeName(float*) { return "tvk32f"; }
const char* typeName(double*) { return "tvk64f"; }

std::string benchmarkName(const char* type, const char* route, int order) {
    return std::string("wht/") + type + "/" + route + "/" + std::to_string(order);
}

constexpr int kOrders = 13;

// Registers every route of every order; a route whose bits differ from
// ours is reported on stderr and counted.
template <class T>
int registerCases(double minTime) {
    const char* type = typeName(static_cast<T*>(nullptr));
    int mismatches = 0;
    for (int order = 1; order <= kOrders; ++order) {
        auto c = std::make_shared<Case<T>>(order);
        c->ours();
        const std::vector<T> ours(c->result(), c->result() + c->size());
        for (const Route<T>& route : kRoutes<T>) {
            ((*c).*route.run)();
            if (route.run != &Case<T>::ours && std::memcmp(c->result(), ours.data(), ours.size() * sizeof(T)) != 0) {
                std::fprintf(stderr, "%s order %d: %s differs from ours\n", type, order, route.name);
                ++mismatches;
            }
            benchmark::RegisterBenchmark(benchmarkName(type, route.name, order).c_str(),
                                         [c, run = route.run](benchmark::State& state) {
                                             for (auto _ : state) {
                                                 ((*c).*run)();
                                                 benchmark::DoNotOptimize(c->result());
                                                 benchmark::ClobberMemory();
                                             }
                                         })
                ->MinTime(minTime)
                ->Unit(benchmark::kNanosecond);
        }
    }
    return mismatches;
}

void printTable(const tvkbench::CollectingReporter& reporter) {
    std::printf("\n| type | order | ours ns | ours, buffer in dst's sets, ns | loop ns | blocked ns | "
                "blocked with the scale ns | ours/loop | ours/blocked | same sets/blocked | "
                "ours/blocked with the scale |\n"
                "|---|---:|---:|---:|---:|---:|---:|---:|---:|---:|---:|\n");
    tvkbench::RatioMedians medians({"type"},
                                   {"ours/loop", "ours/blocked", "same sets/blocked", "ours/blocked with the scale"});
    for (const char* type : {"tvk32f", "tvk64f"})
        for (int order = 1; order <= kOrders; ++order) {
            const double ours = reporter.ns(benchmarkName(type, "ours", order)),
                         sameSets = reporter.ns(benchmarkName(type, "ours-same-sets", order)),
                         loop = reporter.ns(benchmarkName(type, "loop", order)),
                         blocked = reporter.ns(benchmarkName(type, "blocked", order)),
                         scaled = reporter.ns(benchmarkName(type, "blocked-scaled", order));
            if (std::isnan(ours) && std::isnan(loop) && std::isnan(blocked)) continue;  // filtered out
            medians.add(type, 0, ours / loop);
            medians.add(type, 1, ours / blocked);
            medians.add(type, 2, sameSets / blocked);
            medians.add(type, 3, ours / scaled);
            std::printf("| %s | %d | %.2f | %.2f | %.2f | %.2f | %.2f | %.2f | %.2f | %.2f | %.2f |\n", type, order,
                        ours, sameSets, loop, blocked, scaled, ours / loop, ours / blocked, sameSets / blocked,
                        ours / scaled);
        }
    medians.print();
}

}  // namespace

int main(int argc, char** argv) {
    bool quick = false;
    if (!tvkbench::initialize(argc, argv, quick)) return 2;

    const double minTime = quick ? 0.01 : 0.04;
    const int mismatches = registerCases<float>(minTime) + registerCases<double>(minTime);
    std::printf("timing orders 1 to %d, ours (two buffer places), loop and blocked (with and without the scale), "
                "%.2f s minimum per run%s\n",
                kOrders, minTime, quick ? " (quick)" : "");
    std::fflush(stdout);
    tvkbench::CollectingReporter reporter(!quick);
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    printTable(reporter);
    return mismatches == 0 && reporter.errors == 0 ? 0 : 1;
}
