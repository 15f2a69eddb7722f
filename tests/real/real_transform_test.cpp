// What the real DFT computes, in every layout and direction: accuracy against
// a long-double reference and FFTW, the worked values, the scale as one last
// multiplication, the layouts agreeing bit for bit, round trips, and how
// infinities and NaN travel through the packed elements.
//
// Accuracy bound.  The error measure is the relative 2-norm
//     e = ||X - R||_2 / ||R||_2
// over the stored values, with R the long-double transform times the exact
// scale, on random inputs in [-1, 1).  As for the complex family, each value
// passes through about log2(N) levels of butterflies and products, each
// adding a few roundings of size eps, so e <= C * eps * log2(N).  The
// tvk32f bodies carry their products in double and round once per block,
// which keeps them below the plain single-precision error.  C = 1.5 leaves a
// margin of at least 2x at every length while a wrong constant, sign or
// element gives e of order 1.  The measured e is printed per length.
#include <fftw3.h>

#include <algorithm>
#include <cstdio>
#include <limits>

#include "real_support.h"

using namespace rtest;

namespace {

constexpr long double kBoundC = 1.5L;

template <class T>
long double epsOf() {
    return std::numeric_limits<T>::epsilon();
}

template <class T>
long double errorBound(int n) {
    return kBoundC * epsOf<T>() * std::max(1.0L, std::log2(static_cast<long double>(n)));
}

// The error of one call against the reference, in the measure above.
template <class T>
long double errorOf(Dir d, Layout l, int n, const std::vector<T>& in, int flag) {
    const auto out = run<T>(d, l, n, in, flag);
    const long double s = scaleOf<T>(d, flag, n);
    if (d == Dir::Fwd) {
        auto want = referenceBins(in);
        for (auto& v : want) v *= s;
        return relativeError(unpack(l, n, out.data()), want);
    }
    auto want = referenceSamples(unpack(l, n, in.data()), n);
    for (auto& v : want) v *= s;
    return relativeError(std::vector<long double>(out.begin(), out.end()), want);
}

class RealAccuracy : public testing::TestWithParam<Case> {};

TEST_P(RealAccuracy, MatchesLongDoubleReferenceUnderEveryFlag) {
    const Case c = GetParam();
    withType(c.single, [&]<class T>() {
        for (Dir d : kDirs) {
            long double worst = 0;
            for (Layout l : kLayouts)
                for (unsigned seed = 0; seed < 3; ++seed) {
                    const auto in = randomInput<T>(d, l, c.n, seed);
                    for (int flag : kFlags) {
                        const long double e = errorOf<T>(d, l, c.n, in, flag);
                        worst = std::max(worst, e);
                        EXPECT_LE(e, errorBound<T>(c.n)) << stem(d, l) << " flag " << flag << " seed " << seed;
                    }
                }
            std::printf("max relative error %s %s N=%d: %.2f eps (bound %.2f eps)\n", typeName<T>(),
                        d == Dir::Fwd ? "forward" : "inverse", c.n, static_cast<double>(worst / epsOf<T>()),
                        static_cast<double>(errorBound<T>(c.n) / epsOf<T>()));
        }
    });
}

// FFTW's r2c and c2r with an estimated plan, in the precision of T.
void fftwR2c(int n, float* in, fftwf_complex* out) {
    fftwf_plan p = fftwf_plan_dft_r2c_1d(n, in, out, FFTW_ESTIMATE);
    fftwf_execute(p);
    fftwf_destroy_plan(p);
}
void fftwR2c(int n, double* in, fftw_complex* out) {
    fftw_plan p = fftw_plan_dft_r2c_1d(n, in, out, FFTW_ESTIMATE);
    fftw_execute(p);
    fftw_destroy_plan(p);
}
void fftwC2r(int n, fftwf_complex* in, float* out) {
    fftwf_plan p = fftwf_plan_dft_c2r_1d(n, in, out, FFTW_ESTIMATE);
    fftwf_execute(p);
    fftwf_destroy_plan(p);
}
void fftwC2r(int n, fftw_complex* in, double* out) {
    fftw_plan p = fftw_plan_dft_c2r_1d(n, in, out, FFTW_ESTIMATE);
    fftw_execute(p);
    fftw_destroy_plan(p);
}

// FFTW's r2c and c2r plans as an independent implementation (c2r weighs the
// bins as the inverse does); both sides round, so the bound doubles.
TEST_P(RealAccuracy, AgreesWithFftw) {
    const Case c = GetParam();
    const int n = c.n;
    withType(c.single, [&]<class T>() {
        using FftwComplex = std::conditional_t<std::is_same_v<T, float>, fftwf_complex, fftw_complex>;
        const auto x = randomValues<T>(n, 5);
        std::vector<T> samples(x), back(n);
        std::vector<FftwComplex> spectrum(n / 2 + 1);
        fftwR2c(n, samples.data(), spectrum.data());
        std::vector<LComplex> fftwBins(n / 2 + 1);
        for (int k = 0; k <= n / 2; ++k) fftwBins[k] = {spectrum[k][0], spectrum[k][1]};
        for (Layout l : kLayouts) {
            const auto packed = run<T>(Dir::Fwd, l, n, x, ScaleNoDiv);
            EXPECT_LE(relativeError(unpack(l, n, packed.data()), fftwBins), 2 * errorBound<T>(n)) << layoutName(l);

            // The inverse of a layout array against c2r of the same bins.
            const auto in = randomInput<T>(Dir::Inv, l, n, 6);
            const auto bins = unpack(l, n, in.data());
            for (int k = 0; k <= n / 2; ++k) {
                spectrum[k][0] = static_cast<T>(bins[k].real());
                spectrum[k][1] = static_cast<T>(bins[k].imag());
            }
            fftwC2r(n, spectrum.data(), back.data());
            const auto ours = run<T>(Dir::Inv, l, n, in, ScaleNoDiv);
            EXPECT_LE(relativeError(std::vector<long double>(ours.begin(), ours.end()),
                                    std::vector<long double>(back.begin(), back.end())),
                      2 * errorBound<T>(n))
                << layoutName(l);
        }
    });
}

// The flags that mean the same scale give the same bits, and the scale is
// one last multiplication of each output: bit for bit the ScaleNoDiv result
// times the constant.  Forward tvk32f bodies multiply some outputs before
// their last rounding (in double), so there the product matches only to
// rounding.
TEST_P(RealAccuracy, ScaleIsOneFinalMultiplication) {
    const Case c = GetParam();
    forEachSet(c.single, [&]<class T>(Dir d, Layout l) {
        const auto in = randomInput<T>(d, l, c.n, 7);
        const auto plain = run<T>(d, l, c.n, in, ScaleNoDiv);
        EXPECT_TRUE(sameBits(plain, run<T>(d, l, c.n, in, d == Dir::Fwd ? ScaleDivInvByN : ScaleDivFwdByN)));
        for (int flag : kFlags) {
            const T s = scaleOf<T>(d, flag, c.n);
            const auto got = run<T>(d, l, c.n, in, flag);
            for (size_t i = 0; i < got.size(); ++i) {
                if (d == Dir::Fwd && std::is_same_v<T, float>)
                    EXPECT_NEAR(got[i], plain[i] * s, 2 * std::fabs(plain[i] * s) * epsOf<T>()) << i;
                else
                    EXPECT_EQ(got[i], plain[i] * s) << "element " << i << " flag " << flag;
            }
        }
    });
}

// One computation, three maps of elements: every bin part has the same bits
// in every layout, forward and inverse.
TEST_P(RealAccuracy, LayoutsAgreeBitForBit) {
    const Case c = GetParam();
    const int n = c.n;
    withType(c.single, [&]<class T>() {
        const auto x = randomValues<T>(n, 8);
        const auto ccs = run<T>(Dir::Fwd, Layout::CCS, n, x, ScaleDivFwdByN);
        for (Layout l : {Layout::Pack, Layout::Perm}) {
            const auto other = run<T>(Dir::Fwd, l, n, x, ScaleDivFwdByN);
            for (int k = 0; k <= n / 2; ++k) {
                EXPECT_EQ(ccs[realElement(Layout::CCS, n, k)], other[realElement(l, n, k)]) << "Re bin " << k;
                if (imagElement(l, n, k) >= 0) {
                    EXPECT_EQ(ccs[imagElement(Layout::CCS, n, k)], other[imagElement(l, n, k)]) << "Im bin " << k;
                }
            }
        }
        std::vector<T> spectrum[3];
        for (Layout l : kLayouts) {
            spectrum[int(l)].assign(layoutLength(l, n), T(0));
            const auto bins = randomValues<T>(2 * (n / 2 + 1), 9);
            for (int k = 0; k <= n / 2; ++k) {
                spectrum[int(l)][realElement(l, n, k)] = bins[2 * k];
                if (imagElement(l, n, k) >= 0) spectrum[int(l)][imagElement(l, n, k)] = bins[2 * k + 1];
            }
        }
        const auto fromCcs = run<T>(Dir::Inv, Layout::CCS, n, spectrum[0], ScaleDivInvByN);
        EXPECT_TRUE(sameBits(fromCcs, run<T>(Dir::Inv, Layout::Pack, n, spectrum[1], ScaleDivInvByN)));
        EXPECT_TRUE(sameBits(fromCcs, run<T>(Dir::Inv, Layout::Perm, n, spectrum[2], ScaleDivInvByN)));
    });
}

// Forward then inverse with the flag pairs that divide by N once, in each
// layout, gives the samples back.
TEST_P(RealAccuracy, RoundTripsWithEveryFlagPair) {
    const Case c = GetParam();
    withType(c.single, [&]<class T>() {
        const auto x = randomValues<T>(c.n, 10);
        const std::pair<int, int> pairs[] = {
            {ScaleNoDiv, ScaleDivInvByN}, {ScaleDivFwdByN, ScaleNoDiv}, {ScaleDivBySqrtN, ScaleDivBySqrtN}};
        for (Layout l : kLayouts)
            for (auto [fwdFlag, invFlag] : pairs) {
                const auto back = run<T>(Dir::Inv, l, c.n, run<T>(Dir::Fwd, l, c.n, x, fwdFlag), invFlag);
                EXPECT_LE(relativeError(back, x), 3 * errorBound<T>(c.n))
                    << layoutName(l) << ": " << fwdFlag << " then " << invFlag;
            }
    });
}

// Infinite and NaN samples flow through the arithmetic, but the zeros of CCS
// are constants; the elements a CCS inverse never reads change nothing, and
// in Pack and Perm every element is read.
TEST_P(RealAccuracy, SpecialValuesTravelAsTheLayoutsSay) {
    const Case c = GetParam();
    const int n = c.n;
    withType(c.single, [&]<class T>() {
        for (T special : {std::numeric_limits<T>::infinity(), std::numeric_limits<T>::quiet_NaN()}) {
            std::vector<T> x(n, special);
            for (int flag : kFlags) {
                const auto ccs = run<T>(Dir::Fwd, Layout::CCS, n, x, flag);
                const T zero = 0;
                EXPECT_EQ(0, std::memcmp(&ccs[1], &zero, sizeof(T)));
                if (n % 2 == 0) {
                    EXPECT_EQ(0, std::memcmp(&ccs[n + 1], &zero, sizeof(T)));
                }
            }
        }
        auto spectrum = randomInput<T>(Dir::Inv, Layout::CCS, n, 11);
        const auto clean = run<T>(Dir::Inv, Layout::CCS, n, spectrum, ScaleNoDiv);
        spectrum[1] = std::numeric_limits<T>::quiet_NaN();
        if (n % 2 == 0) spectrum[n + 1] = std::numeric_limits<T>::quiet_NaN();
        EXPECT_TRUE(sameBits(clean, run<T>(Dir::Inv, Layout::CCS, n, spectrum, ScaleNoDiv)));
        for (Layout l : {Layout::Pack, Layout::Perm})
            for (int e = 0; e < n; ++e) {
                auto in = randomInput<T>(Dir::Inv, l, n, 12);
                in[e] = std::numeric_limits<T>::quiet_NaN();
                const auto out = run<T>(Dir::Inv, l, n, in, ScaleNoDiv);
                EXPECT_TRUE(std::any_of(out.begin(), out.end(), [](T v) { return std::isnan(v); }))
                    << layoutName(l) << " element " << e;
            }
    });
}

// Unit inputs: a constant lands in bin 0 only, cos and sin of the first
// harmonic give N/2 and -N/2 in bin 1, a unit bin 1 gives 2cos and -2sin.
TEST_P(RealAccuracy, SimpleInputsGiveKnownResults) {
    const Case c = GetParam();
    const int n = c.n;
    withType(c.single, [&]<class T>() {
        const double tol = (std::is_same_v<T, float> ? 1e-5 : 1e-13) * n;
        for (Layout l : kLayouts) {
            const auto flat = run<T>(Dir::Fwd, l, n, std::vector<T>(n, T(0.5)), ScaleNoDiv);
            for (int k = 0; k <= n / 2; ++k) {
                EXPECT_NEAR(flat[realElement(l, n, k)], k == 0 ? 0.5 * n : 0, tol) << "bin " << k;
                if (imagElement(l, n, k) >= 0) {
                    EXPECT_NEAR(flat[imagElement(l, n, k)], 0, tol);
                }
            }
            if (n < 3) continue;
            std::vector<T> cosine(n), sine(n);
            for (int j = 0; j < n; ++j) {
                cosine[j] = static_cast<T>(std::cos(angle(j, n)));
                sine[j] = static_cast<T>(std::sin(angle(j, n)));
            }
            EXPECT_NEAR(run<T>(Dir::Fwd, l, n, cosine, ScaleNoDiv)[realElement(l, n, 1)], n / 2.0, tol);
            EXPECT_NEAR(run<T>(Dir::Fwd, l, n, sine, ScaleNoDiv)[imagElement(l, n, 1)], -n / 2.0, tol);
            for (int part : {0, 1}) {
                std::vector<T> unitBin(layoutLength(l, n), T(0));
                unitBin[part ? imagElement(l, n, 1) : realElement(l, n, 1)] = 1;
                const auto x = run<T>(Dir::Inv, l, n, unitBin, ScaleNoDiv);
                for (int j = 0; j < n; ++j)
                    EXPECT_NEAR(x[j], part ? -2 * std::sin(angle(j, n)) : 2 * std::cos(angle(j, n)), tol) << j;
            }
        }
    });
}

RTEST_ALL_CASES(RealAccuracy);

// The worked values of N = 6 and N = 7 with ScaleNoDiv, to six places.
TEST(RealWorkedValues, SixAndSevenInEveryLayout) {
    const std::vector<double> six = {1, 2, 3, 4, 5, 6}, seven = {1, 2, 3, 4, 5, 6, 7};
    const std::vector<double> want6[] = {{21, 0, -3, 5.196152, -3, 1.732051, -3, 0},
                                         {21, -3, 5.196152, -3, 1.732051, -3},
                                         {21, -3, -3, 5.196152, -3, 1.732051}};
    const std::vector<double> want7[] = {{28, 0, -3.5, 7.267825, -3.5, 2.791157, -3.5, 0.798852},
                                         {28, -3.5, 7.267825, -3.5, 2.791157, -3.5, 0.798852},
                                         {28, -3.5, 7.267825, -3.5, 2.791157, -3.5, 0.798852}};
    for (Layout l : kLayouts) {
        for (auto [x, want] : {std::pair{&six, &want6[int(l)]}, std::pair{&seven, &want7[int(l)]}}) {
            const int n = static_cast<int>(x->size());
            const auto got64 = run<double>(Dir::Fwd, l, n, *x, ScaleNoDiv);
            const auto got32 = run<float>(Dir::Fwd, l, n, std::vector<float>(x->begin(), x->end()), ScaleNoDiv);
            for (size_t i = 0; i < want->size(); ++i) {
                EXPECT_NEAR(got64[i], (*want)[i], 5e-7) << layoutName(l) << " N=" << n << " element " << i;
                EXPECT_NEAR(got32[i], (*want)[i], 5e-6) << layoutName(l) << " N=" << n << " element " << i;
            }
        }
    }
}

// N = 2 is a sum and a difference, halved by ScaleDivFwdByN, never doubled.
TEST(RealWorkedValues, TwoIsSumAndDifference) {
    const std::vector<double> x = {3, 1};
    EXPECT_EQ(run<double>(Dir::Fwd, Layout::CCS, 2, x, ScaleNoDiv), (std::vector<double>{4, 0, 2, 0}));
    EXPECT_EQ(run<double>(Dir::Fwd, Layout::Pack, 2, x, ScaleDivFwdByN), (std::vector<double>{2, 1}));
    EXPECT_EQ(run<double>(Dir::Fwd, Layout::Perm, 2, x, ScaleNoDiv), (std::vector<double>{4, 2}));
    EXPECT_EQ(run<double>(Dir::Inv, Layout::CCS, 2, {4, 9, 2, 9}, ScaleNoDiv), (std::vector<double>{6, 2}));
    EXPECT_EQ(run<double>(Dir::Inv, Layout::Pack, 2, {4, 2}, ScaleDivInvByN), (std::vector<double>{3, 1}));
}

}  // namespace
