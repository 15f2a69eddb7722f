// The arithmetic of the DCT-IV: R(L), the real transform of stage 1, its
// transpose Y(L) of stage 2, the complex DFTs of the radix steps, and the
// kernels that run them on 16-byte vectors of V lanes.
//
// Everything here is written once over a value type, a scalar (the direct
// lengths) or a vector (the kernels), and the compiler unrolls it into
// straight-line code with literal constants.
//
// The kernel interface.  Three kinds of kernels, each called through a
// table (KernelSet) and each running a whole loop per call; every step of
// the loop works on V independent transforms, one per lane, and never
// mixes lanes.  A generator may replace any entry by straight-line code of
// the same signature and the same memory behaviour.
//  - LeafKernel, R(L) for L = 2 .. 64: reads its points from the caller's
//    source with scalar loads and writes its L/2 bins to aligned scratch.
//  - RadixKernel, one radix-d' step, d' = 2 .. 32: twiddles and the complex
//    d'-point DFT on aligned scratch, for each bin i of the sub-transforms.
//  - OutputKernel, stage 2 for d = 2 .. 32: gathers V rows of the scratch,
//    rotates them by the table, runs Y(2d) and stores to the destination
//    with scalar stores.
// Leaf and radix kernels take `width` neighbouring column groups (V lanes
// each, V elements apart) per step, so that a 64-byte line of scratch or
// source is used whole while it is in the cache.
#pragma once

#include <pmmintrin.h>
#include <stddef.h>
#include <stdint.h>

#include <type_traits>
#include <utility>

namespace tvk::dct4 {

// ---- values ------------------------------------------------------------------

template <class T>
struct VectorOf;
template <>
struct VectorOf<float> {
    typedef float type __attribute__((vector_size(16)));
};
template <>
struct VectorOf<double> {
    typedef double type __attribute__((vector_size(16)));
};
template <class T>
using Vec = typename VectorOf<T>::type;

template <class T>
constexpr int kLanes = 16 / sizeof(T);

template <class V>
struct ScalarOfT {
    using type = V;
};
template <>
struct ScalarOfT<Vec<float>> {
    using type = float;
};
template <>
struct ScalarOfT<Vec<double>> {
    using type = double;
};
template <class V>
using ScalarOf = typename ScalarOfT<V>::type;

// A constant in every lane, loaded as one literal vector.
template <class V, class T>
[[gnu::always_inline]] inline V splat(T c) {
    if constexpr (std::is_same_v<V, Vec<float>>) return V{c, c, c, c};
    else if constexpr (std::is_same_v<V, Vec<double>>) return V{c, c};
    else return c;
}

template <class V>
struct Cx {
    V re, im;
};

// Makes the compiler keep `values` in memory at this point and build no
// value of the code after it early.  Long kernels put it between their
// sub-transforms, which then each work within the registers, so that what
// crosses the cut is stored once and loaded once.
template <class Array>
[[gnu::always_inline]] inline void cut(Array& values) {
    asm volatile("" : : "r"(&values) : "memory");
}

// A run-time stride as the compiler sees it inside one block of a kernel
// loop: unknown anew each time, so that it forms the block's addresses from
// it there and then rather than keeping one pointer per access across the
// loop, which spills them all.
template <class U>
[[gnu::always_inline]] inline U opaque(U value) {
    asm("" : "+r"(value));
    return value;
}

// Element p[0] of a caller's array, read by one scalar access: g++ merges
// reads of neighbouring elements into one 16-byte load where it can, and the
// caller's arrays are touched only element by element.
template <class T>
[[gnu::always_inline]] inline T element(const T* p) {
    T value = *p;
    asm("" : "+x"(value));
    return value;
}

// Calls f(integral_constant<0>) .. f(integral_constant<N-1>) in order, so that
// every index is a constant of the unrolled code.  The lambdas given to it
// are marked TVK_UNROLLED, lest the compiler keep any of them out of line.
#define TVK_UNROLLED __attribute__((always_inline))
template <int N, class F>
[[gnu::always_inline]] inline void unroll(F&& f) {
    [&]<int... I>(std::integer_sequence<int, I...>) TVK_UNROLLED {
        (f(std::integral_constant<int, I>{}), ...);
    }(std::make_integer_sequence<int, N>{});
}

// cos and sin of pi * num / den, evaluated by the compiler.
constexpr long double kPi = 3.141592653589793238462643383279502884L;
template <class T>
constexpr T cosPi(long num, long den) {
    return T(__builtin_cosl(kPi * num / den));
}
template <class T>
constexpr T sinPi(long num, long den) {
    return T(__builtin_sinl(kPi * num / den));
}

// ---- rotations -----------------------------------------------------------------------

// (a, b) -> (c a - s b, s a + c b).
template <class V>
[[gnu::always_inline]] inline Cx<V> rotate(Cx<V> a, V c, V s) {
    return {c * a.re - s * a.im, s * a.re + c * a.im};
}

// Rotation by the constant angle pi * Num / Den; at pi/4, where cosine and
// sine are equal, two products.
template <long Num, long Den, class V>
[[gnu::always_inline]] inline Cx<V> rotateBy(Cx<V> a) {
    using T = ScalarOf<V>;
    if constexpr (4 * Num == Den) {
        const V h = splat<V>(cosPi<T>(1, 4));
        return {(a.re - a.im) * h, (a.re + a.im) * h};
    } else {
        return rotate(a, splat<V>(cosPi<T>(Num, Den)), splat<V>(sinPi<T>(Num, Den)));
    }
}

template <int I>
using Index = std::integral_constant<int, I>;

}  // namespace tvk::dct4

// R(L), the radix steps and Y(2d) as straight-line code, written by the
// generator: Leaf<T, L>, Radix<T, R> and Output<T, D>.
#include "dct4/kernels_generated.h"

namespace tvk::dct4 {

// ---- memory ---------------------------------------------------------------------------

template <class T>
[[gnu::always_inline]] inline Vec<T> load(const T* p) {
    return *reinterpret_cast<const Vec<T>*>(p);
}
template <class T>
[[gnu::always_inline]] inline void store(T* p, Vec<T> v) {
    *reinterpret_cast<Vec<T>*>(p) = v;
}
// Past the caches, into memory: no read of the line before it is written.
[[gnu::always_inline]] inline void streamStore(float* p, Vec<float> v) { _mm_stream_ps(p, v); }
[[gnu::always_inline]] inline void streamStore(double* p, Vec<double> v) { _mm_stream_pd(p, v); }

// Lane l from p[Dir * l], one scalar load each: the caller's arrays need no alignment.
template <int Dir>
[[gnu::always_inline]] inline Vec<float> gatherLanes(const float* p) {
    const __m128 lo = _mm_unpacklo_ps(_mm_load_ss(p), _mm_load_ss(p + Dir));
    const __m128 hi = _mm_unpacklo_ps(_mm_load_ss(p + 2 * Dir), _mm_load_ss(p + 3 * Dir));
    return _mm_movelh_ps(lo, hi);
}
template <int Dir>
[[gnu::always_inline]] inline Vec<double> gatherLanes(const double* p) {
    __m128d low = _mm_load_sd(p);
    asm("" : "+x"(low));  // two loads, not the one 16-byte load g++ would make of them
    return _mm_loadh_pd(low, p + Dir);
}

// Lane l to p[Dir * l], one scalar store each.
template <int Dir>
[[gnu::always_inline]] inline void scatterLanes(float* p, Vec<float> v) {
    _mm_store_ss(p, v);
    _mm_store_ss(p + Dir, _mm_shuffle_ps(v, v, 1));
    _mm_store_ss(p + 2 * Dir, _mm_movehl_ps(v, v));
    _mm_store_ss(p + 3 * Dir, _mm_shuffle_ps(v, v, 3));
}
template <int Dir>
[[gnu::always_inline]] inline void scatterLanes(double* p, Vec<double> v) {
    _mm_storel_pd(p, v);
    _mm_storeh_pd(p + Dir, v);
}

// Lane l from p[l * stride], one scalar load each.
[[gnu::always_inline]] inline Vec<float> gatherLanes(const float* p, ptrdiff_t stride) {
    const __m128 lo = _mm_unpacklo_ps(_mm_load_ss(p), _mm_load_ss(p + stride));
    const __m128 hi = _mm_unpacklo_ps(_mm_load_ss(p + 2 * stride), _mm_load_ss(p + 3 * stride));
    return _mm_movelh_ps(lo, hi);
}
[[gnu::always_inline]] inline Vec<double> gatherLanes(const double* p, ptrdiff_t stride) {
    return _mm_loadh_pd(_mm_load_sd(p), p + stride);
}

// ---- kernels ---------------------------------------------------------------------------

// The blocks of a leaf kernel.  Block g (0 .. count-1) works on `width`
// neighbouring column groups of V columns: lane l of group w's point t >= 0 is
// x[forward + g step + t stride + V w + l], of point t = -j (j >= 1)
// x[mirrored - g step + (j-1) stride - V w - l].  Its bin k goes to the aligned
// vectors at dst + g dstStep + V w + 2k dstStride (real part) and + (2k+1)
// dstStride (imaginary part).  Groups that share cache lines run together.
struct LeafSweep {
    ptrdiff_t forward, mirrored, stride, step;
    ptrdiff_t dstStride, dstStep;
    int32_t count, width;
};

template <class T>
using LeafKernel = void (*)(const T* x, T* dst, const LeafSweep& sweep);

// One radix-d' step on `width` neighbouring column groups (group w is V w
// further on), for every bin i < bins of the sub-transforms: reads
// sub-transform b's bin i at src + 2d't i + bt (real) and + (d' + b)t
// (imaginary), twiddles it by the table and writes bins (2 bins) w + i and,
// conjugated, (2 bins) w + 2 bins - 1 - i at dst + 2kt and + (2k+1)t.  All
// accesses are aligned vectors.
template <class T>
using RadixKernel = void (*)(const T* src, T* dst, const T* table, ptrdiff_t t, int32_t bins, int32_t width);

// Stage 2 on row groups 0 .. groups-1 of V rows each, q = n / 2d: row k of the
// scratch is 2d elements, Z_r(k) real at 2dk + r, imaginary at 2dk + d + r.
// The table holds 2d vectors per group.  Output v of row k goes to y[2qv + k]
// (v >= 0) or y[-2qv - 1 - k] (v < 0), by scalar stores.
template <class T>
using OutputKernel = void (*)(const T* buffer, T* y, const T* table, ptrdiff_t q, int32_t groups);

// By the `case` of env5 and env9 (1 .. 6: L = 2 .. 64), of env8 (1 .. 5: d' = 2 .. 32)
// and of env4 (1 .. 6: d = 1 .. 32).  Index 0 is never used.
template <class T>
struct KernelSet {
    LeafKernel<T> leaf[7];
    RadixKernel<T> radix[6];
    OutputKernel<T> output[7];
};

// Column groups (16 bytes each) that share a 64-byte cache line.  The leaf
// and output kernels compute that many groups before storing any, then
// store line by line: with power-of-two strides a transform's results fall
// into few cache sets, and a line left partly written is evicted before its
// neighbours come back to it (8192 points and up).
constexpr int32_t kLineGroups = 64 / 16;

// Blocks (g, w0) to (g, w0 + G - 1) of a leaf sweep: the G transforms, then
// their bins line by line.
template <int G, int L, class T>
[[gnu::always_inline]] inline void leafGroups(const T* x, T* dst, const LeafSweep& s, int32_t g, int32_t w0) {
    using V = Vec<T>;
    constexpr int W = kLanes<T>;
    V Z[G][L];
    // One copy of the transform's code, however many groups.
#pragma GCC unroll 1
    for (int32_t w = 0; w < G; ++w) {
        const ptrdiff_t stride = opaque(s.stride);
        // Points t >= 0 ascend from `forward`, points t = -j descend from `mirrored`.
        const T* forward = x + s.forward + g * s.step + W * (w0 + w);
        const T* mirrored = x + s.mirrored - g * s.step - W * (w0 + w);
        Leaf<T, L>::template run<V>(
            [&](auto t) TVK_UNROLLED {
                if constexpr (t >= L / 2) return gatherLanes<1>(forward + (t - L / 2) * stride);
                else return gatherLanes<-1>(mirrored + (L / 2 - 1 - t) * stride);
            },
            [&](auto slot, V value) TVK_UNROLLED { Z[w][slot] = value; });
        cut(Z);
    }
    // Slot 2k of group w (bin k's real part) at out + 2k dstStride + V w,
    // slot 2k + 1 (its imaginary part) one dstStride on.
    T* out = dst + g * s.dstStep + W * w0;
    const ptrdiff_t dstStride = opaque(s.dstStride);
#pragma GCC unroll 1
    for (int slot = 0; slot < L; ++slot, out += dstStride)
        unroll<G>([&](auto w) TVK_UNROLLED { store(out + W * w, Z[w][slot]); });
}

template <class T, int L>
[[gnu::flatten]] void leafKernel(const T* x, T* dst, const LeafSweep& s) {
    for (int32_t g = 0; g < s.count; ++g) {
        int32_t w0 = 0;
        for (; w0 + kLineGroups <= s.width; w0 += kLineGroups) leafGroups<kLineGroups, L>(x, dst, s, g, w0);
        for (; w0 < s.width; ++w0) leafGroups<1, L>(x, dst, s, g, w0);
    }
}

// How the env8 table holds the twiddles of one bin.  Up to d' = 8 one region
// of d'-1 pairs (cos, sin) at angles pi b x 2/d', b = 1 .. d'-1, x the bin's
// lambda.  From 16 on the step is two-level, 4 x p with p = d'/4, b = 4 b2 + b1:
// a region of the p-point level's pairs at pi b2 x 8/d', b2 = 1 .. p-1, and a
// region of the 4-point level's pairs at pi (x + g) b1 2/d', g = 0 .. p-1, b1 = 1 .. 3.
// The regions are separate arrays in one table, each with a stride of its
// own size; the tvk64f family puts the p-point region of d' = 32 first.
struct RadixTableShape {
    int lanes;
    bool twoLevel;
    int stepVectors, groupVectors;  // per bin
    bool stepsFirst;
    // Where the regions start, in elements, for `bins` bins.
    constexpr ptrdiff_t stepRegion(int32_t bins) const { return stepsFirst ? 0 : ptrdiff_t{bins} * groupVectors * lanes; }
    constexpr ptrdiff_t groupRegion(int32_t bins) const { return stepsFirst ? ptrdiff_t{bins} * stepVectors * lanes : 0; }
};

template <class T>
constexpr RadixTableShape radixTableShape(int radix) {
    const bool twoLevel = radix >= 16;
    return {kLanes<T>, twoLevel, twoLevel ? 2 * (radix / 4 - 1) : 2 * (radix - 1), twoLevel ? 6 * (radix / 4) : 0,
            !twoLevel || (radix == 32 && sizeof(T) == 8)};
}

// Bin i of columns c0 to c0 + G - 1 of a radix step: the G transforms, then
// their outputs line by line (streamed past the caches if `stream`); one
// column stores each output as it comes.
template <int G, int R, class T>
[[gnu::always_inline]] inline void radixColumns(const T* src, T* dst, const T* table, ptrdiff_t stride, int32_t bins,
                                                int32_t i, int32_t c0, bool stream) {
    using V = Vec<T>;
    constexpr RadixTableShape shape = radixTableShape<T>(R);
    constexpr int W = kLanes<T>, P = R / 4;
    const T* step = table + shape.stepRegion(bins) + ptrdiff_t{i} * shape.stepVectors * W;
    const T* group = table + shape.groupRegion(bins) + ptrdiff_t{i} * shape.groupVectors * W;
    // Output w < R/2 goes to bin (2 bins) w + i, output w >= R/2, conjugated
    // already, to bin (2 bins) (R - w) - 1 - i; from 16 on, D_g[w] is output
    // g + P w of the step.
    const auto outputAt = [&](auto slot, T* out, ptrdiff_t t) TVK_UNROLLED {
        constexpr int w = shape.twoLevel ? slot / 2 % 4 * P + slot / 8 : slot / 2;
        const ptrdiff_t rowStep = 4 * ptrdiff_t{bins} * t;  // from bin k to bin k + 2 bins
        T* bin = w < R / 2 ? out + 2 * i * t + w * rowStep : out - 2 * (i + 1) * t + (R - w) * rowStep;
        return bin + (slot % 2) * t;
    };
    // The transform of one column, its outputs handed to `output`.
    const auto transform = [&](int32_t column, auto&& output) TVK_UNROLLED {
        const ptrdiff_t t = opaque(stride);
        const T* in = src + 2 * R * t * i + W * (c0 + column);
        // Sub-transform b's bin at in + b t (real part) and + R t (imaginary
        // part); the twiddles of the step (from 16 on read by each of the
        // four inner transforms apart: slot 2R + 8(b2 - 1) + 2 b1 + part),
        // then those of the groups.
        const auto input = [&](auto slot) TVK_UNROLLED {
            constexpr int twiddle = slot - 2 * R;
            if constexpr (slot < 2 * R) return load(in + (slot / 2) * t + (slot % 2) * R * t);
            else if constexpr (!shape.twoLevel) return load(step + twiddle * W);
            else if constexpr (twiddle < 8 * (P - 1)) return load(step + (twiddle / 8 * 2 + twiddle % 2) * W);
            else return load(group + (twiddle - 8 * (P - 1)) * W);
        };
        Radix<T, R>::template run<V>(input, [&](auto slot, V value) TVK_UNROLLED { output(slot, value, t); });
    };
    if constexpr (G == 1) {
        T* out = dst + W * c0;
        transform(0, [&](auto slot, V value, ptrdiff_t t) TVK_UNROLLED { store(outputAt(slot, out, t), value); });
        return;
    }
    V outputs[G][2 * R];
#pragma GCC unroll 1
    for (int32_t column = 0; column < G; ++column) {
        transform(column, [&](auto slot, V value, ptrdiff_t) TVK_UNROLLED { outputs[column][slot] = value; });
        cut(outputs);
    }
    const ptrdiff_t t = opaque(stride);
    T* out = dst + W * c0;
    const auto storeLines = [&](auto write) TVK_UNROLLED {
        unroll<2 * R>([&](auto slot) TVK_UNROLLED {
            T* at = outputAt(slot, out, t);
            unroll<G>([&](auto column) TVK_UNROLLED { write(at + W * column, outputs[column][slot]); });
        });
    };
    if (stream) storeLines([](T* p, V v) TVK_UNROLLED { streamStore(p, v); });
    else storeLines([](T* p, V v) TVK_UNROLLED { store(p, v); });
}

template <class T, int R>
[[gnu::flatten]] void radixKernel(const T* src, T* dst, const T* table, ptrdiff_t stride, int32_t bins, int32_t width) {
    // The 64 lines a radix-32 column writes outnumber the ways of the few
    // sets they fall into, and so do the 2R lines of any radix when bins
    // k and k + 2 bins lie 64 KiB or more apart; otherwise the lines stay,
    // and staging the outputs of a whole line costs more than it saves
    // (measured).
    const ptrdiff_t binDistance = 4 * ptrdiff_t{bins} * stride * ptrdiff_t{sizeof(T)};  // bytes from bin k to k + 2 bins
    const ptrdiff_t bytes = R / 2 * binDistance;  // what the step writes
    const bool staged = R >= 32 || binDistance >= 65536;
    // A step that writes 8 MiB or more (every step of 2^20 points in tvk64f,
    // 2^21 in tvk32f) has its first lines out of the caches before the next
    // step reads them: whole lines then go straight to memory, without the
    // read that a cached store makes first (2^20 to 2^22 points 12 to 30 %
    // faster; at 4 MiB the lines still come back from the last-level cache,
    // and streaming gains nothing).
    const bool stream = bytes >= (ptrdiff_t{8} << 20);
    for (int32_t i = 0; i < bins; ++i) {
        int32_t c = 0;
        if (staged)
            for (; c + kLineGroups <= width; c += kLineGroups)
                radixColumns<kLineGroups, R>(src, dst, table, stride, bins, i, c, stream);
        for (; c < width; ++c) radixColumns<1, R>(src, dst, table, stride, bins, i, c, false);
    }
    // Streamed stores are ordered apart from the others: all of them are
    // done before the next step or stage reads.
    if (stream) _mm_sfence();
}

// The order of the columns r in the rotation table of one row group: four
// vectors per position (cos, sin of r, then of d-1-r).  Plain for d up to 16;
// for 32 r = a + 4b + 16c with a slowest, c fastest.
constexpr int rotationColumn(int d, int position) {
    if (d < 32) return position;
    const int a = position / 8, b = position / 2 % 4, c = position % 2;
    return a + 4 * b + 16 * c;
}

// Where W[r]'s rotation sits in a row group's table: its position, four
// vectors each, and 0 or 2 for the position's own column or its mirror d-1-r.
constexpr int rotationEntry(int d, int r) {
    for (int p = 0; p < d / 2; ++p) {
        if (rotationColumn(d, p) == r) return 4 * p;
        if (d - 1 - rotationColumn(d, p) == r) return 4 * p + 2;
    }
    return -1;
}

// Row groups i0 to i0 + G - 1 of stage 2 (neighbouring rows): the G
// transforms, then their outputs line by line.
template <int G, int D, class T>
[[gnu::always_inline]] inline void outputGroups(const T* buffer, T* y, const T* table, ptrdiff_t q, int32_t i0) {
    using V = Vec<T>;
    constexpr int W = kLanes<T>;
    V out[G][2 * D];
#pragma GCC unroll 1
    for (int32_t b = 0; b < G; ++b) {
        // Row l of the group is lane l: reading a column transposes.
        const T* rows = buffer + ptrdiff_t{2 * D * W} * (i0 + b);
        const T* rotation = table + ptrdiff_t{2 * D * W} * (i0 + b);
        Output<T, D>::template run<V>(
            [&](auto slot) TVK_UNROLLED {
                constexpr int r = slot / 4, part = slot % 4;
                if constexpr (part < 2) return gatherLanes(rows + part * D + r, 2 * D);
                else return load(rotation + (rotationEntry(D, r) + part - 2) * W);
            },
            [&](auto index, V value) TVK_UNROLLED { out[b][index] = value; });
        cut(out);
    }
    // Outputs v >= 0 ascend from y[row], v < 0 descend from y[2q - 1 - row],
    // 2q apart, through two stepping pointers.
    const ptrdiff_t row = ptrdiff_t{W} * i0;
    T* up = y + row;
    T* down = y + 2 * q - 1 - row;
#pragma GCC unroll 1
    for (int v = 0; v < D; ++v, up += 2 * q, down += 2 * q)
        unroll<G>([&](auto b) TVK_UNROLLED {
            scatterLanes<1>(up + W * b, out[b][D + v]);
            scatterLanes<-1>(down - W * b, out[b][D - 1 - v]);
        });
}

template <class T, int D>
[[gnu::flatten]] void outputKernel(const T* buffer, T* y, const T* table, ptrdiff_t q, int32_t groups) {
    static_assert(D >= kLanes<T>, "a row group has no more lanes than columns");
    int32_t i = 0;
    for (; i + kLineGroups <= groups; i += kLineGroups) outputGroups<kLineGroups, D>(buffer, y, table, q, i);
    for (; i < groups; ++i) outputGroups<1, D>(buffer, y, table, q, i);
}

template <class T>
constexpr KernelSet<T> makeKernelSet() {
    KernelSet<T> k{};
    k.leaf[1] = leafKernel<T, 2>;
    k.leaf[2] = leafKernel<T, 4>;
    k.leaf[3] = leafKernel<T, 8>;
    k.leaf[4] = leafKernel<T, 16>;
    k.leaf[5] = leafKernel<T, 32>;
    k.leaf[6] = leafKernel<T, 64>;
    k.radix[1] = radixKernel<T, 2>;
    k.radix[2] = radixKernel<T, 4>;
    k.radix[3] = radixKernel<T, 8>;
    k.radix[4] = radixKernel<T, 16>;
    k.radix[5] = radixKernel<T, 32>;
    // d = 1, and d = 2 in tvk32f, have fewer columns than lanes: the input
    // stage refuses those lengths, so stage 2 never runs on them.
    if constexpr (kLanes<T> == 2) k.output[2] = outputKernel<T, 2>;
    k.output[3] = outputKernel<T, 4>;
    k.output[4] = outputKernel<T, 8>;
    k.output[5] = outputKernel<T, 16>;
    k.output[6] = outputKernel<T, 32>;
    return k;
}

}  // namespace tvk::dct4
