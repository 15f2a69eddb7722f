// What the transform computes: every power of two against a long-double sum
// and FFTW's REDFT11, the same bits in place, at element-aligned addresses
// and on a second call, the worked values of the short lengths, and
// contexts used from many threads.
#include <gtest/gtest.h>

#include <cstdio>
#include <thread>

#include "dct4_support.h"

using namespace dct4test;

namespace {

class Dct4Accuracy : public ByLength {};

// Against FFTW at every length and against the long-double sum where it is
// cheap; the source is left as it was.
template <class T>
void agreesWithTheReferences(int32_t n) {
    const Context<T> c(n);
    ASSERT_EQ(c.status(), StatusOk);
    const std::vector<T> x = randomData<T>(n, n);
    const std::vector<T> y = run(c, x);
    EXPECT_TRUE(sameBits(x, randomData<T>(n, n))) << "the source was written";
    const double fftwError = relativeError(y, fftwReference(x));
    std::printf("DCT-IV %s n=%d: largest relative error %.3g against REDFT11\n", sizeof(T) == 4 ? "32f" : "64f", n,
                fftwError);
    EXPECT_LT(fftwError, tolerance<T>(n) + 4e-16);
    if (n <= 4096) {
        EXPECT_LT(relativeError(y, longDoubleReference(x)), tolerance<T>(n));
    }
}

TEST_P(Dct4Accuracy, AgreesWithTheReferences) {
    agreesWithTheReferences<float>(length());
    agreesWithTheReferences<double>(length());
}

INSTANTIATE_TEST_SUITE_P(Powers, Dct4Accuracy, ::testing::ValuesIn(powersOfTwo(2, 1 << 20)), caseName);

class Dct4Paths : public ByLength {};

// In place, one element off a 16-byte boundary on either side, and a second
// call on the same context: all the same bits as the first plain call.
template <class T>
void inPlaceUnalignedAndRepeatedGiveTheSameBits(int32_t n) {
    const Context<T> c(n, 24);
    ASSERT_EQ(c.status(), StatusOk);
    const std::vector<T> x = randomData<T>(n, 3);
    const std::vector<T> first = run(c, x);
    EXPECT_TRUE(sameBits(run(c, x), first)) << "second call";

    std::vector<T> inPlace = x;
    ASSERT_EQ(transform(inPlace.data(), inPlace.data(), c.context()), StatusOk);
    EXPECT_TRUE(sameBits(inPlace, first)) << "in place";

    std::vector<T> src(n + 2), dst(n + 2, T(-7));
    std::copy(x.begin(), x.end(), src.begin() + 1);
    ASSERT_EQ(transform(src.data() + 1, dst.data() + 1, c.context()), StatusOk);
    EXPECT_TRUE(sameBits(std::vector<T>(dst.begin() + 1, dst.end() - 1), first)) << "unaligned";
    EXPECT_EQ(dst.front(), T(-7));
    EXPECT_EQ(dst.back(), T(-7));
}

TEST_P(Dct4Paths, InPlaceUnalignedAndRepeatedGiveTheSameBits) {
    inPlaceUnalignedAndRepeatedGiveTheSameBits<float>(length());
    inPlaceUnalignedAndRepeatedGiveTheSameBits<double>(length());
}

INSTANTIATE_TEST_SUITE_P(Powers, Dct4Paths, ::testing::ValuesIn(powersOfTwo(2, 1 << 20)), caseName);

// The transform is its own inverse up to n/2.
template <class T>
void twiceGivesHalfTheLengthTimesTheInput(int32_t n) {
    const Context<T> c(n);
    const std::vector<T> x = randomData<T>(n, 5);
    const std::vector<T> back = run(c, run(c, x));
    std::vector<long double> scaled(x.begin(), x.end());
    for (long double& v : scaled) v *= n / 2.0L;
    EXPECT_LT(relativeError(back, scaled), 2 * tolerance<T>(n));
}

TEST_P(Dct4Paths, TwiceGivesHalfTheLengthTimesTheInput) {
    twiceGivesHalfTheLengthTimesTheInput<float>(length());
    twiceGivesHalfTheLengthTimesTheInput<double>(length());
}

// ---- the short lengths ---------------------------------------------------------------

template <class T>
void lengthTwoIsAReflection(T c, T s) {
    const Context<T> ctx(2);
    EXPECT_EQ(run(ctx, std::vector<T>{1, 0}), (std::vector<T>{c, s}));
    EXPECT_EQ(run(ctx, std::vector<T>{0, 1}), (std::vector<T>{s, -c}));
}

TEST(Dct4Short, LengthTwoGivesTheCosinesOfAnEighthAndThreeEighthsOfPi) {
    lengthTwoIsAReflection<float>(0.9238795f, 0.38268343f);
    lengthTwoIsAReflection<double>(0.9238795325112867, 0.3826834323650898);
}

// A unit impulse at x[0] gives y[k] = cos(pi (2k + 1) / 4n).
template <class T>
void impulseGivesTheFirstColumn(int32_t n) {
    const Context<T> c(n);
    std::vector<T> x(n, 0);
    x[0] = 1;
    const std::vector<T> y = run(c, x);
    for (int32_t k = 0; k < n; ++k)
        ASSERT_NEAR(y[k], std::cos(3.141592653589793238L * (2 * k + 1) / (4.0L * n)), tolerance<T>(n)) << k;
}

TEST(Dct4Short, ImpulseGivesTheFirstColumn) {
    for (const int32_t n : {2, 4, 8, 16, 32, 64, 1024, 4096}) {
        impulseGivesTheFirstColumn<float>(n);
        impulseGivesTheFirstColumn<double>(n);
    }
}

// ---- lengths that are accepted but are not a DCT-IV ----------------------------------------

// 2^k + 1 passes the size formula's truncating divisions: Init builds the
// plan of 2^k and the call runs it, reading and writing inside the arrays,
// but the numbers are no DCT-IV of n points.
template <class T>
void oddSuccessorRuns(int32_t n) {
    const Context<T> c(n);
    ASSERT_EQ(c.status(), StatusOk) << n;
    const std::vector<T> x = randomData<T>(n, 9);
    std::vector<T> y(n + 1, T(-3));
    ASSERT_EQ(transform(x.data(), y.data(), c.context()), StatusOk);
    // Stage 2 covers the 2^k outputs of the plan: the last element and what
    // follows the array stay as they were.
    EXPECT_EQ(y[n - 1], T(-3)) << n;
    EXPECT_EQ(y[n], T(-3)) << n;
    y.pop_back();
    EXPECT_GT(relativeError(y, fftwReference(x)), 0.01) << n;
}

TEST(Dct4OddLengths, RunWithoutFaultAndAreNoDct4) {
    for (const int32_t n : {33, 65, 129, 1025, 4097, 65537}) {
        oddSuccessorRuns<float>(n);
        oddSuccessorRuns<double>(n);
    }
    oddSuccessorRuns<double>(9);
    oddSuccessorRuns<double>(17);
}

// ---- threads -------------------------------------------------------------------------------

// The short lengths never write their context: threads may share one.
template <class T>
void threadsShareAShortContext(int32_t n) {
    const Context<T> c(n);
    constexpr int kThreads = 4;
    std::vector<std::vector<T>> inputs, alone;
    for (int t = 0; t < kThreads; ++t) {
        inputs.push_back(randomData<T>(n, 100 + t));
        alone.push_back(run(c, inputs.back()));
    }
    std::vector<std::vector<T>> together(kThreads, std::vector<T>(n));
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t)
        threads.emplace_back([&, t] {
            for (int repeat = 0; repeat < 2000; ++repeat) transform(inputs[t].data(), together[t].data(), c.context());
        });
    for (std::thread& thread : threads) thread.join();
    for (int t = 0; t < kThreads; ++t) EXPECT_TRUE(sameBits(together[t], alone[t])) << n << " thread " << t;
}

TEST(Dct4Threads, ShortLengthsShareOneContext) {
    for (const int32_t n : {2, 4, 8, 16, 32}) {
        threadsShareAShortContext<float>(n);
        threadsShareAShortContext<double>(n);
    }
}

// Long lengths keep scratch in the context: one context per thread, and
// then the same bits as one thread alone.
template <class T>
void threadsWithTheirOwnContexts(int32_t n) {
    constexpr int kThreads = 4;
    const std::vector<T> x = randomData<T>(n, 21);
    const std::vector<T> alone = run(Context<T>(n), x);
    std::vector<std::vector<T>> together(kThreads, std::vector<T>(n));
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t)
        threads.emplace_back([&, t] {
            const Context<T> own(n);
            for (int repeat = 0; repeat < 20; ++repeat) transform(x.data(), together[t].data(), own.context());
        });
    for (std::thread& thread : threads) thread.join();
    for (int t = 0; t < kThreads; ++t) EXPECT_TRUE(sameBits(together[t], alone)) << n << " thread " << t;
}

TEST(Dct4Threads, LongLengthsWithOneContextEach) {
    for (const int32_t n : {64, 4096, 131072}) {
        threadsWithTheirOwnContexts<float>(n);
        threadsWithTheirOwnContexts<double>(n);
    }
}

// ---- the longest lengths ----------------------------------------------------------------------

// Too long for a full reference here: the energy identity |y|^2 = n/2 |x|^2
// over all outputs, and a sample of outputs as long-double sums.
template <class T>
void longestLengthComputesTheTransform(int32_t n) {
    std::vector<T> x = randomData<T>(n, 13);
    std::vector<T> y;
    {
        const Context<T> c(n);
        ASSERT_EQ(c.status(), StatusOk);
        y = run(c, x);
    }
    long double energyIn = 0, energyOut = 0;
    for (int32_t i = 0; i < n; ++i) {
        energyIn += static_cast<long double>(x[i]) * x[i];
        energyOut += static_cast<long double>(y[i]) * y[i];
    }
    EXPECT_NEAR(static_cast<double>(energyOut / (energyIn * n / 2)), 1.0, 64 * tolerance<T>(n));
    constexpr long double pi = 3.141592653589793238462643383279502884L;
    long double largest = 0;
    for (T v : y) largest = std::max(largest, std::fabs(static_cast<long double>(v)));
    // Output k by a rotation recurrence, restarted from exact values every 1024 terms.
    for (const int32_t k : {0, 1, n / 3, n / 2 + 1, n - 1}) {
        const long double theta = pi * (2 * int64_t{k} + 1) / (4.0L * n);
        const long double rc = std::cos(2 * theta), rs = std::sin(2 * theta);
        long double sum = 0;
        for (int32_t j0 = 0; j0 < n; j0 += 1024) {
            // The angle's multiple of pi/4n reduced exactly, lest cos see a huge argument.
            const int64_t multiple = (2 * int64_t{k} + 1) * (2 * int64_t{j0} + 1) % (8 * int64_t{n});
            const long double angle = pi * multiple / (4.0L * n);
            long double c = std::cos(angle), s = std::sin(angle);
            for (int32_t j = j0; j < j0 + 1024; ++j) {
                sum += x[j] * c;
                const long double next = c * rc - s * rs;
                s = s * rc + c * rs;
                c = next;
            }
        }
        EXPECT_LT(static_cast<double>(std::fabs(sum - y[k]) / largest), 8 * tolerance<T>(n)) << k;
    }
}

TEST(Dct4Longest, SinglePrecisionAtTwoToTheTwentySix) { longestLengthComputesTheTransform<float>(1 << 26); }
TEST(Dct4Longest, DoublePrecisionAtTwoToTheTwentyFive) { longestLengthComputesTheTransform<double>(1 << 25); }

}  // namespace
