// The direct lengths 2, 4, 8, 16 and 32: straight-line scalar code in the
// precision of the element type, no tables and no scratch.  Each is the
// two-stage factorisation n = 2dq of the long lengths, unrolled: R(2q) on
// d columns of the even extension, a rotation per pair, Y(2d) per row.
// Every input is read before the first output is written, so the
// destination may be the source.
#pragma once

#include "kernels.h"

namespace tvk::dct4 {

template <class T>
struct DirectConstants {
    static constexpr T h = cosPi<T>(1, 4);
    static constexpr T c8 = cosPi<T>(1, 8), s8 = sinPi<T>(1, 8);
};

// (a, b) rotated by pi * num / den.
template <class T, long Num, long Den>
[[gnu::always_inline]] inline void rotatePair(T a, T b, T& re, T& im) {
    const Cx<T> r = rotate(Cx<T>{a, b}, cosPi<T>(Num, Den), sinPi<T>(Num, Den));
    re = r.re;
    im = r.im;
}

// A reflection: c = cos(pi/8), s = sin(pi/8).
template <class T>
void direct2(const T* x, T* y) {
    constexpr T c = DirectConstants<T>::c8, s = DirectConstants<T>::s8;
    const T x0 = x[0], x1 = x[1];
    y[0] = c * x0 + s * x1;
    y[1] = s * x0 - c * x1;
}

// The rotations of (x0 - i x3) by pi/16 and of (x1 - i x2) by 3 pi/16, each
// as three shears, then Y(4).
template <class T>
void direct4(const T* x, T* y) {
    constexpr T P = T(__builtin_tanl(kPi * 7 / 32)), S = sinPi<T>(7, 16);
    constexpr T Q = T(__builtin_tanl(kPi * 5 / 32)), Tc = sinPi<T>(5, 16);
    constexpr T h = DirectConstants<T>::h;
    const T x0 = x[0], x1 = x[1], x2 = x[2], x3 = x[3];
    const T a = x0 - P * x3, b = x1 - Q * x2;
    const T c = x3 + S * a, e = x2 + Tc * b;
    const T f = b - Q * e, g = a - P * c;
    const T w = (c - e) * h, z = h * (g + f);
    y[0] = c + e;
    y[1] = w + z;
    y[2] = w - z;
    y[3] = g - f;
}

// d = 2, q = 2: R(4) on the columns (x0, x4, x3, x7) and (x1, x5, x2, x6).
template <class T>
void direct8(const T* x, T* y) {
    constexpr T h = DirectConstants<T>::h;
    T in[8];
    unroll<8>([&](auto i) TVK_UNROLLED { in[i] = element(x + i); });
    const T t0 = (in[4] + in[3]) * h, t1 = (in[4] - in[3]) * h;
    const T t2 = (in[5] + in[2]) * h, t3 = (in[5] - in[2]) * h;
    const T a = in[0] + t0, b = in[1] + t2, e = t1 - in[7], f = t3 - in[6];
    const T g = in[0] - t0, p = in[1] - t2, i = t1 + in[7], j = t3 + in[6];
    T A, B, C, D, E, F, G, H;
    rotatePair<T, 1, 32>(a, e, A, B);
    rotatePair<T, 3, 32>(b, f, C, D);
    rotatePair<T, 3, 32>(g, i, E, F);
    rotatePair<T, 9, 32>(p, j, G, H);
    y[0] = A + C;
    y[7] = B - D;
    y[1] = E + G;
    y[6] = F - H;
    const T m1 = (A - C) * h, m2 = (B + D) * h, m3 = (E - G) * h, m4 = (F + H) * h;
    y[3] = m1 + m2;
    y[4] = m1 - m2;
    y[2] = m3 + m4;
    y[5] = m3 - m4;
}

// Y(8) of one row k of length 16 (q = 2): output v goes to y[4v + k] or y[-4v - 1 - k].
template <class T>
[[gnu::always_inline]] inline void rowOf16(const T* A, const T* B, int k, T* y) {
    constexpr T h = DirectConstants<T>::h, c = DirectConstants<T>::c8, s = DirectConstants<T>::s8;
    const T P0 = A[0] + A[3], P1 = A[0] - A[3], Q0 = B[0] + B[3], Q1 = B[0] - B[3];
    const T P2 = A[1] + A[2], P3 = A[1] - A[2], Q2 = B[1] + B[2], Q3 = B[1] - B[2];
    y[k] = P0 + P2;
    y[15 - k] = Q1 - Q3;
    const T e = (Q1 + Q3) * h, f = (P0 - P2) * h;
    y[8 + k] = f - e;
    y[7 - k] = f + e;
    const T R1 = c * P1 - s * Q0, I1 = s * P1 + c * Q0;
    const T R2 = s * P3 - c * Q2, I2 = c * P3 + s * Q2;
    y[4 + k] = R1 + R2;
    y[11 - k] = I1 - I2;
    const T g = (R1 - R2) * h, j = (I1 + I2) * h;
    y[12 + k] = g - j;
    y[3 - k] = g + j;
}

// d = 4, q = 2: R(4) on four columns, rotations by (2k+1)(2r+1) pi/64, Y(8) per row.
template <class T>
void direct16(const T* x, T* y) {
    constexpr T h = DirectConstants<T>::h;
    T in[16];
    unroll<16>([&](auto i) TVK_UNROLLED { in[i] = element(x + i); });
    T A0[4], B0[4], A1[4], B1[4];
    unroll<4>([&](auto r) TVK_UNROLLED {
        const T plus = (in[8 + r] + in[7 - r]) * h, minus = (in[8 + r] - in[7 - r]) * h;
        rotatePair<T, 2 * r + 1, 64>(in[r] + plus, minus - in[15 - r], A0[r], B0[r]);
        rotatePair<T, 3 * (2 * r + 1), 64>(in[r] - plus, minus + in[15 - r], A1[r], B1[r]);
    });
    rowOf16(A0, B0, 0, y);
    rowOf16(A1, B1, 1, y);
}

// d = 2, q = 8: R(16) on the columns x[4s + r] (mirrored x[4s + 3 - r]),
// rotations by (2k+1) and 3(2k+1) pi/128, Y(4) per row.
template <class T>
[[gnu::flatten]] void direct32(const T* x, T* y) {
    constexpr T h = DirectConstants<T>::h;
    T in[32];
    unroll<32>([&](auto i) TVK_UNROLLED { in[i] = element(x + i); });
    T Z[2][16];  // bin k of column r: real part at 2k, imaginary part at 2k + 1
    unroll<2>([&](auto r) TVK_UNROLLED {
        // Point t >= 0 is x[4t + r], point t = -j is x[4j - 1 - r].
        Leaf<T, 16>::template run<T>(
            [&](auto t) TVK_UNROLLED {
                if constexpr (t >= 8) return in[4 * (t - 8) + r];
                else return in[4 * (8 - t) - 1 - r];
            },
            [&](auto slot, T value) TVK_UNROLLED { Z[r][slot] = value; });
    });
    unroll<8>([&](auto k) TVK_UNROLLED {
        const Cx<T> W0 = rotateBy<2 * k + 1, 128>(Cx<T>{Z[0][2 * k], Z[0][2 * k + 1]});
        const Cx<T> W1 = rotateBy<3 * (2 * k + 1), 128>(Cx<T>{Z[1][2 * k], Z[1][2 * k + 1]});
        const T A = W0.re, B = W0.im, C = W1.re, D = W1.im;
        y[k] = A + C;
        y[31 - k] = B - D;
        const T m1 = (A - C) * h, m2 = (B + D) * h;
        y[15 - k] = m1 + m2;
        y[16 + k] = m1 - m2;
    });
}

}  // namespace tvk::dct4
