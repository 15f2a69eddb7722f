// The floating-point environment, as docs/floating-point.md tells it: the
// bodies use the caller's MXCSR (rounding mode, flush-to-zero,
// denormals-are-zero) and never change it; NaN and infinity travel through
// the sums with StatusOk; and the scale comes after the sums, so that a
// result in range can overflow first.
#include <gtest/gtest.h>
#include <pmmintrin.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

#include "tvkgen.h"

namespace {

// MXCSR bits 0-5 are the sticky exception flags that any arithmetic sets;
// the rest is control: masks, rounding, flush-to-zero, denormals-are-zero.
constexpr unsigned kControlBits = ~0x3Fu;

// Sets the control bits for one scope and restores the caller's on exit.
class Mxcsr {
   public:
    explicit Mxcsr(unsigned control) : saved_(_mm_getcsr()) { _mm_setcsr((saved_ & 0x3F) | control); }
    ~Mxcsr() { _mm_setcsr(saved_); }
    Mxcsr(const Mxcsr&) = delete;
    Mxcsr& operator=(const Mxcsr&) = delete;

   private:
    unsigned saved_;
};

constexpr unsigned kDefault = 0x1F80;  // all exceptions masked, round to nearest, no FTZ or DAZ
constexpr unsigned kFlushToZero = 0x8000;
constexpr unsigned kDenormalsAreZero = 0x0040;
constexpr unsigned kRoundUp = 0x4000;
constexpr unsigned kRoundTowardZero = 0x6000;

template <class C>
std::vector<C> randomComplex(int n) {
    std::mt19937 random(n);
    std::uniform_real_distribution<double> u(-1, 1);
    std::vector<C> x(n + 2);  // two spare elements: some tvk32fc lengths read 8 bytes past the end
    for (auto& e : x) e = {static_cast<decltype(e.re)>(u(random)), static_cast<decltype(e.re)>(u(random))};
    return x;
}

TEST(FloatingPointEnvironment, CallsLeaveTheControlBitsAsTheyFoundThem) {
    for (unsigned control : {kDefault, kDefault | kRoundUp, kDefault | kRoundTowardZero,
                             kDefault | kFlushToZero | kDenormalsAreZero, 0x0000u /* every exception unmasked */}) {
        const auto x32 = randomComplex<tvk32fc>(47);
        const auto x64 = randomComplex<tvk64fc>(47);
        std::vector<tvk32fc> y32(47);
        std::vector<tvk64fc> y64(47);
        std::vector<float> w(256, 0.5f), v(256);
        unsigned after32 = 0, after64 = 0, afterWht = 0;
        {
            const Mxcsr scope(control);
            // Inputs in [-1, 1) raise no exception but inexact, which stays masked
            // under every setting but the last; the last uses exact data.
            if (control != 0) {
                tvkgDFTFwd_CToC_47_32fc(x32.data(), y32.data(), ScaleDivBySqrtN);
                after32 = _mm_getcsr();
                tvkgDFTInv_CToC_47_64fc(x64.data(), y64.data(), ScaleDivInvByN);
                after64 = _mm_getcsr();
            } else {
                after32 = after64 = _mm_getcsr();
            }
            tvkgWHT_8_32f(w.data(), v.data(), ScaleNoDiv, nullptr);
            afterWht = _mm_getcsr();
        }
        EXPECT_EQ(after32 & kControlBits, control & kControlBits) << std::hex << control;
        EXPECT_EQ(after64 & kControlBits, control & kControlBits) << std::hex << control;
        EXPECT_EQ(afterWht & kControlBits, control & kControlBits) << std::hex << control;
    }
}

TEST(FloatingPointEnvironment, TheRoundingModeIsTheCallers) {
    const auto x = randomComplex<tvk32fc>(16);
    std::vector<tvk32fc> nearest(16), up(16), towardZero(16);
    tvkgDFTFwd_CToC_16_32fc(x.data(), nearest.data(), ScaleNoDiv);
    {
        const Mxcsr scope(kDefault | kRoundUp);
        tvkgDFTFwd_CToC_16_32fc(x.data(), up.data(), ScaleNoDiv);
    }
    {
        const Mxcsr scope(kDefault | kRoundTowardZero);
        tvkgDFTFwd_CToC_16_32fc(x.data(), towardZero.data(), ScaleNoDiv);
    }
    EXPECT_NE(0, std::memcmp(nearest.data(), up.data(), sizeof(tvk32fc) * 16));
    EXPECT_NE(0, std::memcmp(nearest.data(), towardZero.data(), sizeof(tvk32fc) * 16));
    for (int k = 0; k < 16; ++k) {  // still the transform, to a few units in the last place
        EXPECT_NEAR(up[k].re, nearest[k].re, 1e-5);
        EXPECT_NEAR(towardZero[k].im, nearest[k].im, 1e-5);
    }
}

// Denormal inputs and results are kept in the default environment; DAZ
// reads denormal inputs as zero and FTZ writes denormal results as zero.
TEST(FloatingPointEnvironment, DenormalsStayUnlessTheCallerFlushesThem) {
    const float tiny = std::numeric_limits<float>::denorm_min();
    const float minNormal = std::numeric_limits<float>::min();
    auto transform = [](float a, float b, unsigned control) {
        const float x[2] = {a, b};
        float y[2] = {-1, -1};
        const Mxcsr scope(control);
        tvkgWHT_1_32f(x, y, ScaleNoDiv, nullptr);
        return std::vector<float>{y[0], y[1]};
    };
    EXPECT_EQ(transform(tiny, 0, kDefault), (std::vector<float>{tiny, tiny}));
    EXPECT_EQ(transform(tiny, 0, kDefault | kDenormalsAreZero), (std::vector<float>{0, 0}));
    // 1.5 min - min = min / 2, a denormal result
    EXPECT_EQ(transform(1.5f * minNormal, minNormal, kDefault)[1], minNormal / 2);
    EXPECT_EQ(transform(1.5f * minNormal, minNormal, kDefault | kFlushToZero)[1], 0.0f);

    const tvk64fc z[2] = {{std::numeric_limits<double>::denorm_min(), 0}, {0, 0}};
    tvk64fc Z[2];
    {
        const Mxcsr scope(kDefault | kDenormalsAreZero);
        tvkgDFTFwd_CToC_2_64fc(z, Z, ScaleNoDiv);
    }
    EXPECT_EQ(Z[0].re, 0.0);
    tvkgDFTFwd_CToC_2_64fc(z, Z, ScaleNoDiv);
    EXPECT_EQ(Z[0].re, std::numeric_limits<double>::denorm_min());
}

// One NaN or infinity in the input: every complex output has a part that is
// NaN (or not finite), and the status is StatusOk.  A single component can
// stay finite where its sum has no share of the bad value.
template <class C>
void badValuesReachEveryOutput(bool inverse) {
    using R = decltype(C{}.re);
    for (int n = 2; n <= 64; ++n) {
        for (R bad : {std::numeric_limits<R>::quiet_NaN(), std::numeric_limits<R>::infinity()}) {
            for (int at : {0, n / 2, n - 1}) {
                auto x = randomComplex<C>(n);
                x[at].re = bad;
                std::vector<C> y(n);
                tvkStatus s;
                if constexpr (std::is_same_v<C, tvk32fc>)
                    s = (inverse ? tvkgDFTInv_CToC_32fc : tvkgDFTFwd_CToC_32fc)(x.data(), y.data(), n, ScaleNoDiv);
                else
                    s = (inverse ? tvkgDFTInv_CToC_64fc : tvkgDFTFwd_CToC_64fc)(x.data(), y.data(), n, ScaleNoDiv);
                ASSERT_EQ(s, StatusOk);
                for (int k = 0; k < n; ++k) {
                    if (std::isnan(bad))
                        ASSERT_TRUE(std::isnan(y[k].re) || std::isnan(y[k].im)) << "N=" << n << " at " << at << " bin " << k;
                    else
                        ASSERT_FALSE(std::isfinite(y[k].re) && std::isfinite(y[k].im))
                            << "N=" << n << " at " << at << " bin " << k;
                }
            }
        }
    }
}

TEST(FloatingPointEnvironment, NanAndInfinityReachEveryComplexOutput) {
    for (bool inverse : {false, true}) {
        badValuesReachEveryOutput<tvk32fc>(inverse);
        badValuesReachEveryOutput<tvk64fc>(inverse);
    }
}

TEST(FloatingPointEnvironment, NanAndInfinityReachEveryWalshHadamardOutput) {
    for (int order = 1; order <= 13; ++order) {
        const int n = 1 << order;
        for (double bad : {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()}) {
            std::vector<double> x(n, 0.25), y(n);
            x[n - 1] = bad;
            ASSERT_EQ(tvkgWHT_64f(x.data(), y.data(), order, ScaleDivBySqrtN, nullptr), StatusOk);
            // Each output holds the bad value once: NaN stays NaN, infinity stays infinite.
            for (int k = 0; k < n; ++k) {
                ASSERT_FALSE(std::isfinite(y[k])) << "order " << order << " output " << k;
                ASSERT_EQ(std::isnan(y[k]), std::isnan(bad)) << "order " << order << " output " << k;
            }
        }
    }
}

// The sums are formed unscaled and each output is multiplied by the scale
// last: x0 + x1 overflows although (x0 + x1) / 2 is in range.
TEST(FloatingPointEnvironment, TheScaleComesAfterTheSumsSoAResultInRangeCanOverflow) {
    const float big32 = 3e38f;
    const tvk32fc x32[2] = {{big32, 0}, {big32, 0}};
    tvk32fc y32[2];
    ASSERT_EQ(tvkgDFTFwd_CToC_2_32fc(x32, y32, ScaleDivFwdByN), StatusOk);
    EXPECT_TRUE(std::isinf(y32[0].re));  // the exact result is 3e38, below FLT_MAX

    const double big64 = 1.5e308;
    const tvk64fc x64[2] = {{big64, 0}, {big64, 0}};
    tvk64fc y64[2];
    ASSERT_EQ(tvkgDFTInv_CToC_2_64fc(x64, y64, ScaleDivInvByN), StatusOk);
    EXPECT_TRUE(std::isinf(y64[0].re));

    const float w[8] = {big32, big32, big32, big32, big32, big32, big32, big32};
    float v[10];
    ASSERT_EQ(tvkgWHT_1_32f(w, v, ScaleDivFwdByN, nullptr), StatusOk);
    EXPECT_TRUE(std::isinf(v[0]));
    EXPECT_EQ(v[1], 0.0f);
    ASSERT_EQ(tvkgHartley_8_32f(w, v, ScaleDivFwdByN), StatusOk);
    EXPECT_TRUE(std::isinf(v[0]));
    ASSERT_EQ(tvkgDFTFwd_RToCCS_7_32f(w, v, ScaleDivFwdByN), StatusOk);
    EXPECT_TRUE(std::isinf(v[0]));
}

}  // namespace
