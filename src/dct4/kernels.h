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

// ---- rotations and small DFTs ------------------------------------------------------

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

template <class V>
[[gnu::always_inline]] inline Cx<V> add(Cx<V> a, Cx<V> b) {
    return {a.re + b.re, a.im + b.im};
}
template <class V>
[[gnu::always_inline]] inline Cx<V> sub(Cx<V> a, Cx<V> b) {
    return {a.re - b.re, a.im - b.im};
}
// a - b, conjugated.
template <class V>
[[gnu::always_inline]] inline Cx<V> subConj(Cx<V> a, Cx<V> b) {
    return {a.re - b.re, b.im - a.im};
}

// D[w] = sum over b of z[b] exp(2 pi i w b / R), positive sign.  With
// ConjUpper the outputs R/2 .. R-1 come out conjugated, at no cost: the
// radix steps store exactly those as conjugates.
template <int R, bool ConjUpper, class V>
[[gnu::always_inline]] inline void dft(const Cx<V>* z, Cx<V>* D) {
    if constexpr (R == 2) {
        D[0] = add(z[0], z[1]);
        D[1] = ConjUpper ? subConj(z[0], z[1]) : sub(z[0], z[1]);
    } else if constexpr (R == 4) {
        const Cx<V> s0 = add(z[0], z[2]), d0 = sub(z[0], z[2]);
        const Cx<V> s1 = add(z[1], z[3]), d1 = sub(z[1], z[3]);
        D[0] = add(s0, s1);
        D[1] = {d0.re - d1.im, d0.im + d1.re};
        if constexpr (ConjUpper) {
            D[2] = subConj(s0, s1);
            D[3] = {d0.re + d1.im, d1.re - d0.im};
        } else {
            D[2] = sub(s0, s1);
            D[3] = {d0.re + d1.im, d0.im - d1.re};
        }
    } else {
        static_assert(R == 8);
        const Cx<V> evenIn[4] = {z[0], z[2], z[4], z[6]}, oddIn[4] = {z[1], z[3], z[5], z[7]};
        Cx<V> e[4], o[4];
        dft<4, false>(evenIn, e);
        dft<4, false>(oddIn, o);
        // o[w] times exp(2 pi i w / 8): 1, (1 + i) h, i, (-1 + i) h.
        const V h = splat<V>(cosPi<ScalarOf<V>>(1, 4));
        const Cx<V> t[4] = {o[0],
                            {(o[1].re - o[1].im) * h, (o[1].re + o[1].im) * h},
                            {-o[2].im, o[2].re},
                            {-((o[3].re + o[3].im) * h), (o[3].re - o[3].im) * h}};
        unroll<4>([&](auto w) TVK_UNROLLED {
            D[w] = add(e[w], t[w]);
            D[w + 4] = ConjUpper ? subConj(e[w], t[w]) : sub(e[w], t[w]);
        });
    }
}

// The same DFT on inputs whose upper half z[R/2 .. R-1] is to be conjugated
// first: the transpose of dft<R, true>, for Y.
template <int R, class V>
[[gnu::always_inline]] inline void dftOfConjUpper(const Cx<V>* z, Cx<V>* G) {
    if constexpr (R == 2) {
        G[0] = {z[0].re + z[1].re, z[0].im - z[1].im};
        G[1] = {z[0].re - z[1].re, z[0].im + z[1].im};
    } else {
        static_assert(R == 4);
        const Cx<V> s0 = {z[0].re + z[2].re, z[0].im - z[2].im}, d0 = {z[0].re - z[2].re, z[0].im + z[2].im};
        const Cx<V> s1 = {z[1].re + z[3].re, z[1].im - z[3].im}, d1 = {z[1].re - z[3].re, z[1].im + z[3].im};
        G[0] = add(s0, s1);
        G[1] = {d0.re - d1.im, d0.im + d1.re};
        G[2] = sub(s0, s1);
        G[3] = {d0.re + d1.im, d0.im - d1.re};
    }
}

// ---- R(L) and Y(L) ----------------------------------------------------------------

// R(L): Z(k) = sum over t = -L/2 .. L/2-1 of u[t] exp(i pi (2k + 1) t / L),
// k = 0 .. L/2-1; the bins L/2 .. L-1 are the conjugates of these.  Point t
// is u[t + L/2].  Radix 2 up to 8 points, radix 4 above: R(4) and R(8) are
// radix 2 over R(2) and R(4), R(16), R(32), R(64) radix 4 over R(4), R(8), R(16).
template <int L>
constexpr int kRealRadix = L <= 8 ? 2 : 4;

template <int I>
using Index = std::integral_constant<int, I>;

// point(Index<t + L/2>) gives point t; loads stay next to their first use.
template <int L, class V, class Point>
[[gnu::always_inline]] inline void realTransform(Point&& point, Cx<V>* Z) {
    if constexpr (L == 2) {
        Z[0] = {point(Index<1>{}), -point(Index<0>{})};
    } else {
        constexpr int R = kRealRadix<L>, Ls = L / R, Q = Ls / 2;
        // Sub-transform b takes the points t = R a + b.
        Cx<V> sub[R][Q];
        unroll<R>([&](auto b) TVK_UNROLLED {
            realTransform<Ls, V>([&](auto a) TVK_UNROLLED { return point(Index<R * a + b>{}); }, sub[b]);
            if constexpr (L >= 32) cut(sub);
        });
        // Bin i of each, turned by exp(i pi (2i + 1) b / L), gives bins Ls w + i
        // and, conjugated, Ls w + Ls-1-i.
        unroll<Q>([&](auto i) TVK_UNROLLED {
            Cx<V> v[R], D[R];
            v[0] = sub[0][i];
            unroll<R - 1>([&](auto b) TVK_UNROLLED { v[b + 1] = rotateBy<(2 * i + 1) * (b + 1), L>(sub[b + 1][i]); });
            dft<R, true>(v, D);
            unroll<R / 2>([&](auto w) TVK_UNROLLED {
                Z[Ls * w + i] = D[w];
                Z[Ls * w + Ls - 1 - i] = D[R - 1 - w];
            });
        });
    }
}

// Y(L): output v = real part of sum over r < L/2 of W[r] exp(i pi v (2r + 1) / L),
// v = -L/2 .. L/2-1.  The transpose of R(L) with the imaginary inputs negated,
// so its flow graph is R's reversed.  Radix 2 throughout, or with Wide
// radix 4 from 16 points up (Y(64) over 16-point kernels shaped as R(16)).
// in(Index<r>) gives W[r], each asked for once; out(Index<v + L/2>, value)
// takes output v.
template <int L, bool Wide, class V, class In, class Out>
[[gnu::always_inline]] inline void realOutput(In&& in, Out&& out) {
    if constexpr (L == 2) {
        const Cx<V> w = in(Index<0>{});
        out(Index<1>{}, w.re);
        out(Index<0>{}, w.im);
    } else {
        constexpr int R = Wide && L >= 16 ? 4 : 2, Ls = L / R, Q = Ls / 2;
        Cx<V> sub[R][Q];
        unroll<Q>([&](auto i) TVK_UNROLLED {
            Cx<V> P[R], G[R];
            unroll<R / 2>([&](auto w) TVK_UNROLLED {
                P[w] = in(Index<Ls * w + i>{});
                P[R - 1 - w] = in(Index<Ls * w + Ls - 1 - i>{});
            });
            dftOfConjUpper<R>(P, G);
            sub[0][i] = G[0];
            unroll<R - 1>([&](auto b) TVK_UNROLLED { sub[b + 1][i] = rotateBy<(2 * i + 1) * (b + 1), L>(G[b + 1]); });
            if constexpr (L >= 32) cut(sub);
        });
        unroll<R>([&](auto b) TVK_UNROLLED {
            realOutput<Ls, Wide, V>([&](auto r) TVK_UNROLLED { return sub[b][r]; },
                                    [&](auto a, V value) TVK_UNROLLED { out(Index<R * a + b>{}, value); });
        });
    }
}

// ---- memory ---------------------------------------------------------------------------

template <class T>
[[gnu::always_inline]] inline Vec<T> load(const T* p) {
    return *reinterpret_cast<const Vec<T>*>(p);
}
template <class T>
[[gnu::always_inline]] inline void store(T* p, Vec<T> v) {
    *reinterpret_cast<Vec<T>*>(p) = v;
}

// Lane l from p[Dir * l], one scalar load each: the caller's arrays need no alignment.
template <int Dir>
[[gnu::always_inline]] inline Vec<float> gatherLanes(const float* p) {
    const __m128 lo = _mm_unpacklo_ps(_mm_load_ss(p), _mm_load_ss(p + Dir));
    const __m128 hi = _mm_unpacklo_ps(_mm_load_ss(p + 2 * Dir), _mm_load_ss(p + 3 * Dir));
    return _mm_movelh_ps(lo, hi);
}
template <int Dir>
[[gnu::always_inline]] inline Vec<double> gatherLanes(const double* p) {
    return _mm_loadh_pd(_mm_load_sd(p), p + Dir);
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

// R(L) of one column group from its points, bins out in order through one
// stepping pointer.
template <int L, class V, class T, class Point>
[[gnu::always_inline]] inline void leafTransform(Point&& point, T* out, ptrdiff_t dstStride) {
    Cx<V> Z[L / 2];
    realTransform<L, V>(point, Z);
    cut(Z);
#pragma GCC unroll 1
    for (int k = 0; k < L / 2; ++k, out += 2 * dstStride) {
        store(out, Z[k].re);
        store(out + dstStride, Z[k].im);
    }
}

template <class T, int L>
[[gnu::flatten]] void leafKernel(const T* x, T* dst, const LeafSweep& s) {
    using V = Vec<T>;
    constexpr int W = kLanes<T>;
    for (int32_t g = 0; g < s.count; ++g)
        for (int32_t w = 0; w < s.width; ++w) {
            const ptrdiff_t stride = opaque(s.stride);
            // Points t >= 0 ascend from `forward`, points t = -j descend from `mirrored`.
            const T* forward = x + s.forward + g * s.step + W * w;
            const T* mirrored = x + s.mirrored - g * s.step - W * w;
            leafTransform<L, V>(
                [&](auto t) TVK_UNROLLED {
                    if constexpr (t >= L / 2) return gatherLanes<1>(forward + (t - L / 2) * stride);
                    else return gatherLanes<-1>(mirrored + (L / 2 - 1 - t) * stride);
                },
                dst + g * s.dstStep + W * w, opaque(s.dstStride));
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

template <class T, int R>
[[gnu::flatten]] void radixKernel(const T* src, T* dst, const T* table, ptrdiff_t stride, int32_t bins, int32_t width) {
    using V = Vec<T>;
    constexpr RadixTableShape shape = radixTableShape<T>(R);
    constexpr int W = kLanes<T>;
    const T* steps = table + shape.stepRegion(bins);
    const T* groups = table + shape.groupRegion(bins);
    const ptrdiff_t subLength = 2 * ptrdiff_t{bins};
    for (int32_t i = 0; i < bins; ++i)
    for (int32_t column = 0; column < width; ++column) {
        const ptrdiff_t t = opaque(stride);
        const T* in = src + 2 * R * t * i + W * column;
        // Inputs and outputs are reached through pointers that step by
        // multiples of t, a few registers in all.
        const ptrdiff_t imaginary = R * t;
        const auto next = [&](const T*& p, ptrdiff_t by) TVK_UNROLLED {
            const Cx<V> z = {load(p), load(p + imaginary)};
            p = opaque(p + by);
            return z;
        };
        T* out = dst + W * column;
        const ptrdiff_t rowStep = 2 * subLength * t;  // from bin k to bin k + 2 bins
        const T* step = steps + ptrdiff_t{i} * shape.stepVectors * W;
        if constexpr (!shape.twoLevel) {
            Cx<V> v[R], D[R];
            const T* p = in;
            v[0] = next(p, t);
            unroll<R - 1>([&](auto b) TVK_UNROLLED {
                v[b + 1] = rotate(next(p, t), load(step + 2 * b * W), load(step + (2 * b + 1) * W));
            });
            dft<R, true>(v, D);
            // D[w] goes to bin (2 bins) w + i, or for w >= d'/2, conjugated
            // already, to bin (2 bins) (d'-w) - 1 - i.
            T* up = out + 2 * i * t;
            T* down = out - 2 * (i + 1) * t;
            unroll<R>([&](auto w) TVK_UNROLLED {
                T* at = w < R / 2 ? up + w * rowStep : down + (R - w) * rowStep;
                store(at, D[w].re);
                store(at + t, D[w].im);
            });
        } else {
            constexpr int P = R / 4;
            const T* group = groups + ptrdiff_t{i} * shape.groupVectors * W;
            Cx<V> F[4][P];
            unroll<4>([&](auto b1) TVK_UNROLLED {
                Cx<V> v[P];
                const T* p = in + b1 * t;
                v[0] = next(p, 4 * t);
                unroll<P - 1>([&](auto b2) TVK_UNROLLED {
                    v[b2 + 1] = rotate(next(p, 4 * t), load(step + 2 * b2 * W), load(step + (2 * b2 + 1) * W));
                });
                dft<P, false>(v, F[b1]);
                cut(F);
            });
            // D[g + P w'] goes, as above, to bin (2 bins) (g + P w') + i for w' < 2
            // and to (2 bins) (P (4 - w') - g) - 1 - i for w' >= 2.
            T* up = out + 2 * i * t;
            T* down = out + 2 * (subLength * P - 1 - i) * t;
            const ptrdiff_t half = P * rowStep;
            unroll<P>([&](auto g) TVK_UNROLLED {
                Cx<V> v[4], D[4];
                v[0] = F[0][g];
                unroll<3>([&](auto b1) TVK_UNROLLED {
                    v[b1 + 1] = rotate(F[b1 + 1][g], load(group + (6 * g + 2 * b1) * W),
                                       load(group + (6 * g + 2 * b1 + 1) * W));
                });
                dft<4, true>(v, D);
                T* const at[4] = {up, up + half, down + half, down};
                unroll<4>([&](auto w) TVK_UNROLLED {
                    store(at[w], D[w].re);
                    store(at[w] + t, D[w].im);
                });
                up = opaque(up + rowStep);
                down = opaque(down - rowStep);
            });
        }
    }
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

template <class T, int D>
[[gnu::flatten]] void outputKernel(const T* buffer, T* y, const T* table, ptrdiff_t q, int32_t groups) {
    using V = Vec<T>;
    constexpr int W = kLanes<T>;
    static_assert(D >= W, "a row group has no more lanes than columns");
    for (int32_t i = 0; i < groups; ++i) {
        // Row l of the group is lane l: reading a column transposes.
        const T* rows = buffer + ptrdiff_t{2 * D * W} * i;
        const T* rotation = table + ptrdiff_t{2 * D * W} * i;
        const ptrdiff_t row = ptrdiff_t{W} * i;
        V out[2 * D];
        realOutput<2 * D, D == 32, V>(
            [&](auto r) TVK_UNROLLED {
                const T* entry = rotation + rotationEntry(D, r) * W;
                const Cx<V> z = {gatherLanes(rows + r, 2 * D), gatherLanes(rows + D + r, 2 * D)};
                return rotate(z, load(entry), load(entry + W));
            },
            [&](auto index, V value) TVK_UNROLLED { out[index] = value; });
        // Outputs v >= 0 ascend from y[row], v < 0 descend from y[2q - 1 - row],
        // 2q apart, through two stepping pointers.
        cut(out);
        T* up = y + row;
        T* down = y + 2 * q - 1 - row;
#pragma GCC unroll 1
        for (int v = 0; v < D; ++v, up += 2 * q, down += 2 * q) {
            scatterLanes<1>(up, out[D + v]);
            scatterLanes<-1>(down, out[D - 1 - v]);
        }
    }
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
