// The plan that Init builds for the long lengths: its shape, its tables, the
// scratch between the stages, and its memory, walked through the context's
// own lists.
#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <cstring>

#include "dct4_support.h"
#include "plan.h"
#include "recording_allocator.h"
#include "tvkcore.h"

using namespace tvktest;
using namespace dct4test;
using namespace tvk::dct4;

namespace {

template <class Object>
const Object* item(const EnvList* list, int32_t index = 0) {
    return static_cast<const Object*>(u8_EnvList_get(list, index));
}

// The env7 levels from the top of stage 1 down.
template <class T>
std::vector<const Env7<T>*> stepsOf(const DCT4Spec* context) {
    std::vector<const Env7<T>*> steps;
    const auto* columns = item<Env5<T>>(item<Env3<T>>(context->inputStage)->stages);
    if (columns->case_ != 7) return steps;
    for (const auto* step = item<Env7<T>>(columns->stages); step;) {
        steps.push_back(step);
        const auto* inner = item<Env9<T>>(step->inner);
        step = inner->case_ == 7 ? item<Env7<T>>(inner->stages) : nullptr;
    }
    return steps;
}

template <class T>
const Env4<T>* rotationsOf(const DCT4Spec* context) {
    return item<Env4<T>>(item<Env2<T>>(context->outputStage)->stages);
}

class Dct4PlanShape : public ByLength {};

// Depth 0 up to 2048, 1 from 4096 to 65536, 2 from 131072 to 2^21, 3 above.
template <class T>
void hasItsRecursionDepth(int32_t n) {
    const Context<T> c(n);
    ASSERT_EQ(c.status(), StatusOk);
    const size_t depth = n <= 2048 ? 0 : n <= 65536 ? 1 : n <= (1 << 21) ? 2 : 3;
    const auto steps = stepsOf<T>(c.context());
    EXPECT_EQ(steps.size(), depth);
    EXPECT_EQ(c.context()->divisor, 32);
    EXPECT_EQ(c.context()->case_, 6);
}

TEST_P(Dct4PlanShape, HasItsRecursionDepth) {
    hasItsRecursionDepth<float>(length());
    hasItsRecursionDepth<double>(length());
}

INSTANTIATE_TEST_SUITE_P(Lengths, Dct4PlanShape, ::testing::Values(2048, 4096, 65536, 131072, 1 << 21, 1 << 22), caseName);

// The worked trees: radices, lengths and strides of every level.
TEST(Dct4Plan, WorkedTreesOf4096And131072) {
    const Context<float> small(4096);
    const auto steps4096 = stepsOf<float>(small.context());
    ASSERT_EQ(steps4096.size(), 1u);
    const Env7<float>& top = *steps4096[0];
    EXPECT_EQ(std::tuple(top.m, top.radix, top.s, top.t), std::tuple(128, 8, 64, 32));
    const auto& twiddles = *item<Env8<float>>(top.outer);
    EXPECT_EQ(std::tuple(twiddles.case_, twiddles.bins), std::tuple(3, 8));
    const auto& leaves = *item<Env9<float>>(top.inner);
    EXPECT_EQ(std::tuple(leaves.L, leaves.case_), std::tuple(16, 4));

    const Context<double> large(131072);
    const auto steps = stepsOf<double>(large.context());
    ASSERT_EQ(steps.size(), 2u);
    EXPECT_EQ(std::tuple(steps[0]->m, steps[0]->radix, steps[0]->s, steps[0]->t), std::tuple(4096, 32, 64, 32));
    EXPECT_EQ(item<Env9<double>>(steps[0]->inner)->L, 128);
    EXPECT_EQ(std::tuple(steps[1]->m, steps[1]->radix, steps[1]->s, steps[1]->t), std::tuple(128, 8, 2048, 1024));
    EXPECT_EQ(std::tuple(item<Env9<double>>(steps[1]->inner)->L, item<Env9<double>>(steps[1]->inner)->case_),
              std::tuple(16, 4));
}

// Lane l of the first vector is row l's cosine for column 0: theta(l, 0) =
// pi (2l + 1) / 4n, its argument formed in single precision.
TEST(Dct4Plan, RotationTableOf64StartsWithTheColumnZeroCosines) {
    const Context<float> c(64);
    const Env4<float>& rotations = *rotationsOf<float>(c.context());
    EXPECT_EQ(rotations.case_, 4);
    for (int l = 0; l < 4; ++l) {
        const float x = static_cast<float>(4 * l + 2) / 512.0f;
        EXPECT_EQ(rotations.table[l], std::cos(static_cast<float>(x * 3.141592653589793))) << l;
    }
}

// The radix tables hold one rotation for all columns: every vector's lanes agree.
template <class T>
void radixTablesHaveEqualLanes(int32_t n) {
    const Context<T> c(n);
    const auto steps = stepsOf<T>(c.context());
    ASSERT_FALSE(steps.empty());
    for (const Env7<T>* step : steps) {
        const Env8<T>& twiddles = *item<Env8<T>>(step->outer);
        const int64_t vectors = int64_t{twiddles.bins} * 2 * (twiddles.radix - 1);
        constexpr int lanes = 16 / sizeof(T);
        for (int64_t v = 0; v < vectors; ++v)
            for (int l = 1; l < lanes; ++l) ASSERT_EQ(twiddles.table[lanes * v + l], twiddles.table[lanes * v]) << v;
    }
}

TEST(Dct4Plan, RadixTablesHaveEqualLanes) {
    for (const int32_t n : {4096, 8192, 16384, 65536, 131072}) {
        radixTablesHaveEqualLanes<float>(n);
        radixTablesHaveEqualLanes<double>(n);
    }
}

// ---- the scratch between the stages ---------------------------------------------------

// Z_r(k) = sum over t = -q .. q-1 of x_E[r + 2dt] exp(i pi (2k+1) t / 2q), x_E
// the even extension of x; real part at 2dk + r, imaginary at 2dk + d + r.
template <class T>
void scratchHoldsStageOne(int32_t n, const std::vector<std::pair<int, int>>& places) {
    const Context<T> c(n);
    const std::vector<T> x = randomData<T>(n, 7);
    run(c, x);
    const int32_t d = c.context()->divisor, q = n / (2 * d);
    const T* scratch = static_cast<const T*>(c.context()->buffer);
    auto extended = [&](int64_t t) { return x[t >= 0 ? t : 2 * int64_t{n} - 1 - (t + 2 * int64_t{n})]; };
    constexpr long double pi = 3.141592653589793238462643383279502884L;
    for (const auto& [r, k] : places) {
        std::complex<long double> z = 0;
        for (int64_t t = -q; t < q; ++t)
            z += static_cast<long double>(extended(r + 2 * int64_t{d} * t)) *
                 std::polar(1.0L, pi * (2 * k + 1) * t / (2.0L * q));
        const double bound = tolerance<T>(n) * std::sqrt(2.0 * q) * 4;
        EXPECT_NEAR(scratch[2 * d * k + r], static_cast<double>(z.real()), bound) << r << ", " << k;
        EXPECT_NEAR(scratch[2 * d * k + d + r], static_cast<double>(z.imag()), bound) << r << ", " << k;
    }
}

TEST(Dct4Plan, ScratchHoldsStageOneAtItsPlaces) {
    std::vector<std::pair<int, int>> all64;
    for (int r = 0; r < 8; ++r)
        for (int k = 0; k < 4; ++k) all64.push_back({r, k});
    scratchHoldsStageOne<float>(64, all64);
    scratchHoldsStageOne<double>(64, all64);
    const std::vector<std::pair<int, int>> sample = {{0, 0}, {1, 1}, {17, 1000}, {31, 2047}, {4, 513}, {30, 6}};
    scratchHoldsStageOne<float>(131072, sample);
    scratchHoldsStageOne<double>(131072, sample);
}

// ---- memory -----------------------------------------------------------------------------

// Init uses no more than the size query asked for, and Free's tear-down
// brings the cursor back to the first allocation, which is the context.
template <class T>
void staysInsideItsBlock(int32_t n) {
    const int64_t bytes = blockBytes<T>(n);
    ASSERT_GT(bytes, 0) << n;
    AllocationLog& log = freshAllocationLog();
    auto* block = static_cast<uint8_t*>(tvkMalloc(static_cast<int32_t>(bytes)));
    DCT4Spec* context = nullptr;
    ASSERT_EQ(init(static_cast<T*>(nullptr), &context, n, block), StatusOk) << n;
    const uint64_t cursor = cursorOf(block);
    EXPECT_GT(cursor, reinterpret_cast<uint64_t>(context)) << n;
    EXPECT_LE(cursor, reinterpret_cast<uint64_t>(block) + bytes) << n;
    ASSERT_EQ(release(static_cast<T*>(nullptr), context), StatusOk);
    ASSERT_EQ(log.cursorAtFree.size(), 1u);
    EXPECT_EQ(log.cursorAtFree[0], reinterpret_cast<uint64_t>(context)) << n;
}

TEST(Dct4Plan, EveryAcceptedLengthStaysInsideItsBlockAndFreeRewinds) {
    for (int64_t p = 2; p <= (1 << 22); p *= 2)
        for (const int64_t n : {p, p + 1}) {
            if (blockBytes<float>(n) > 0) staysInsideItsBlock<float>(n);
            if (blockBytes<double>(n) > 0) staysInsideItsBlock<double>(n);
        }
}

}  // namespace
