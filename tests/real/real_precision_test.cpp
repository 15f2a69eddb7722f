// The tvk32f precision rule, evaluated by hand beside the bodies: sums of
// single values in single precision, products in double on widened values
// with double constants, each block's sums of products in double and rounded
// once.  The forward direct form scales in double what it leaves in double;
// the inverse narrows first and scales in single.  A body must agree with
// the rule bit for bit, and differ from a pure single and from a pure double
// evaluation.
#include <cmath>

#include "real_support.h"

using namespace rtest;

namespace {

constexpr int kSeeds = 40;

// How a rule or a plain evaluation forms the direct forms below.
enum class Eval { Rule, PureSingle, PureDouble };

// cos and sin of 2 pi m / n, as the double literal or its float rounding.
double cosOf(long long m, int n) { return static_cast<double>(std::cos(angle(m, n))); }
double sinOf(long long m, int n) { return static_cast<double>(std::sin(angle(m, n))); }

// Forward direct form of odd length n into CCS order, under flag scale s.
std::vector<float> forwardDirect(const std::vector<float>& x, float s, Eval how) {
    const int n = static_cast<int>(x.size()), h = (n - 1) / 2;
    std::vector<float> out(n + 1, 0.0f);
    if (how == Eval::PureDouble) {
        for (int k = 0; k <= h; ++k) {
            double re = x[0], im = 0;
            for (int j = 1; j <= h; ++j) {
                re += (double(x[j]) + x[n - j]) * cosOf(1LL * j * k, n);
                im -= (double(x[j]) - x[n - j]) * sinOf(1LL * j * k, n);
            }
            out[2 * k] = float(re * s);
            if (k) out[2 * k + 1] = float(im * s);
        }
        return out;
    }
    std::vector<float> a(h + 1), b(h + 1);
    float sum = 0;
    for (int j = 1; j <= h; ++j) {
        a[j] = x[j] + x[n - j];
        b[j] = x[j] - x[n - j];
        sum = j == 1 ? a[1] : sum + a[j];
    }
    out[0] = (x[0] + sum) * s;
    for (int k = 1; k <= h; ++k) {
        if (how == Eval::PureSingle) {
            float re = x[0], im = 0;
            for (int j = 1; j <= h; ++j) {
                re += a[j] * float(cosOf(1LL * j * k, n));
                im -= b[j] * float(sinOf(1LL * j * k, n));
            }
            out[2 * k] = re * s;
            out[2 * k + 1] = im * s;
        } else {
            double re = x[0], im = 0;
            for (int j = 1; j <= h; ++j) {
                re += double(a[j]) * cosOf(1LL * j * k, n);
                im -= double(b[j]) * sinOf(1LL * j * k, n);
            }
            out[2 * k] = float(re * double(s));
            out[2 * k + 1] = float(im * double(s));
        }
    }
    return out;
}

// Inverse direct form of odd length n from CCS order: P and Q each formed in
// double and narrowed, joined in single, scaled in single.
std::vector<float> inverseDirect(const std::vector<float>& ccs, float s, Eval how) {
    const int n = static_cast<int>(ccs.size()) - 1, h = (n - 1) / 2;
    std::vector<float> x(n);
    for (int m = 1; m <= h; ++m) {
        double p = ccs[0], q = 0;
        float ps = ccs[0], qs = 0;
        for (int j = 1; j <= h; ++j) {
            const float A = 2 * ccs[2 * j], B = 2 * ccs[2 * j + 1];
            p += double(A) * cosOf(1LL * j * m, n);
            q += double(B) * sinOf(1LL * j * m, n);
            ps += A * float(cosOf(1LL * j * m, n));
            qs += B * float(sinOf(1LL * j * m, n));
        }
        if (how == Eval::PureDouble) {
            x[m] = float((p - q) * s);
            x[n - m] = float((p + q) * s);
        } else if (how == Eval::PureSingle) {
            x[m] = (ps - qs) * s;
            x[n - m] = (ps + qs) * s;
        } else {
            x[m] = (float(p) - float(q)) * s;
            x[n - m] = (float(p) + float(q)) * s;
        }
    }
    return x;
}

// Counts the elements (from `first` on) where two results differ.
int differences(const std::vector<float>& a, const std::vector<float>& b, size_t first) {
    int count = 0;
    for (size_t i = first; i < a.size(); ++i) count += a[i] != b[i];
    return count;
}

TEST(RealPrecision, ForwardSevenFollowsTheRule) {
    int fromSingle = 0, fromDouble = 0;
    for (unsigned seed = 0; seed < kSeeds; ++seed) {
        const auto x = randomValues<float>(7, 100 + seed);
        for (int flag : {ScaleNoDiv, ScaleDivBySqrtN}) {
            const float s = scaleOf<float>(Dir::Fwd, flag, 7);
            const auto got = run<float>(Dir::Fwd, Layout::CCS, 7, x, flag);
            EXPECT_EQ(differences(got, forwardDirect(x, s, Eval::Rule), 0), 0) << "seed " << seed;
            // Bin 0 is sums alone: single precision, scale included.
            EXPECT_EQ(got[0], forwardDirect(x, s, Eval::PureSingle)[0]);
            fromSingle += differences(got, forwardDirect(x, s, Eval::PureSingle), 2);
            fromDouble += differences(got, forwardDirect(x, s, Eval::PureDouble), 0);
        }
    }
    EXPECT_GT(fromSingle, 0) << "the products are not carried in double";
    EXPECT_GT(fromDouble, 0) << "the pair sums are not single-precision additions";
}

TEST(RealPrecision, InverseFiveFollowsTheRule) {
    int fromSingle = 0, fromDouble = 0;
    for (unsigned seed = 0; seed < kSeeds; ++seed) {
        const auto ccs = randomValues<float>(6, 200 + seed);
        for (int flag : {ScaleNoDiv, ScaleDivInvByN}) {
            const float s = scaleOf<float>(Dir::Inv, flag, 5);
            const auto got = run<float>(Dir::Inv, Layout::CCS, 5, ccs, flag);
            // x[0] is a plain single-precision sum, in an order of its own.
            EXPECT_NEAR(got[0], (ccs[0] + 2 * ccs[2] + 2 * ccs[4]) * s, 4e-7f);
            EXPECT_EQ(differences(got, inverseDirect(ccs, s, Eval::Rule), 1), 0) << "seed " << seed;
            fromSingle += differences(got, inverseDirect(ccs, s, Eval::PureSingle), 1);
            fromDouble += differences(got, inverseDirect(ccs, s, Eval::PureDouble), 1);
        }
    }
    EXPECT_GT(fromSingle, 0) << "the products are not carried in double";
    EXPECT_GT(fromDouble, 0) << "P and Q are not narrowed before they are joined";
}

// The scale of a forward tvk32f body that ends in a direct block is the
// single-precision constant widened, not the double value: at N = 7 and flag
// ScaleDivBySqrtN the result is the rule evaluated with that float.
TEST(RealPrecision, ForwardScaleIsTheWidenedSingleConstant) {
    const auto x = randomValues<float>(7, 300);
    const auto got = run<float>(Dir::Fwd, Layout::CCS, 7, x, ScaleDivBySqrtN);
    EXPECT_EQ(scaleOf<float>(Dir::Fwd, ScaleDivBySqrtN, 7), float(1 / std::sqrt(7.0L)));
    EXPECT_EQ(differences(got, forwardDirect(x, float(1 / std::sqrt(7.0L)), Eval::Rule), 0), 0);
    // N = 16 has 0.25 exactly.
    EXPECT_EQ(scaleOf<float>(Dir::Fwd, ScaleDivBySqrtN, 16), 0.25f);
}

}  // namespace
