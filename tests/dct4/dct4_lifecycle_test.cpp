// Building and releasing contexts: the checks and statuses of each call,
// the one allocation of InitAlloc, and what a failed call leaves behind.
#include <gtest/gtest.h>

#include "dct4_support.h"
#include "plan.h"
#include "recording_allocator.h"

using namespace tvktest;
using namespace dct4test;

namespace {

template <class T>
class Dct4LifeCycle : public ::testing::Test {};
using ElementTypes = ::testing::Types<float, double>;
TYPED_TEST_SUITE(Dct4LifeCycle, ElementTypes);

// One block of the queried size from tvkMalloc, and that block back to tvkFree.
TYPED_TEST(Dct4LifeCycle, InitAllocAndFreeCallTheAllocatorOnceEach) {
    for (const int32_t n : {2, 32, 64, 4096}) {
        AllocationLog& log = freshAllocationLog();
        DCT4Spec* context = nullptr;
        ASSERT_EQ(initAlloc(static_cast<TypeParam*>(nullptr), &context, n), StatusOk);
        ASSERT_EQ(log.sizes, std::vector<int32_t>{static_cast<int32_t>(blockBytes<TypeParam>(n))});
        EXPECT_TRUE(log.freed.empty());
        EXPECT_EQ(release(static_cast<TypeParam*>(nullptr), context), StatusOk);
        EXPECT_EQ(log.freed, log.blocks);
        EXPECT_EQ(log.sizes.size(), 1u);
    }
}

TYPED_TEST(Dct4LifeCycle, InitAllocRefusesBeforeAllocating) {
    TypeParam* type = nullptr;
    AllocationLog& log = freshAllocationLog();
    DCT4Spec* context = reinterpret_cast<DCT4Spec*>(&log);
    EXPECT_EQ(initAlloc(type, nullptr, 64), StatusNullPtr);
    for (const int32_t n : {0, 1, 24, 48, 63, -64, 1 << 27}) EXPECT_EQ(initAlloc(type, &context, n), StatusSize) << n;
    EXPECT_TRUE(log.sizes.empty());
    EXPECT_TRUE(log.freed.empty());
    EXPECT_EQ(context, reinterpret_cast<DCT4Spec*>(&log));
}

// No status of its own: the null block fails Init's test and goes to tvkFree.
TYPED_TEST(Dct4LifeCycle, AnExhaustedAllocatorShowsAsNullPointer) {
    AllocationLog& log = freshAllocationLog();
    log.exhausted = true;
    DCT4Spec* context = nullptr;
    EXPECT_EQ(initAlloc(static_cast<TypeParam*>(nullptr), &context, 64), StatusNullPtr);
    EXPECT_EQ(context, nullptr);
    EXPECT_EQ(log.freed, std::vector<void*>{nullptr});
}

TYPED_TEST(Dct4LifeCycle, InitChecksPointersThenRefusesBadLengthsWithoutWriting) {
    TypeParam* type = nullptr;
    std::vector<uint8_t> block(4096);
    DCT4Spec* context = reinterpret_cast<DCT4Spec*>(&block);
    EXPECT_EQ(init(type, nullptr, 64, block.data()), StatusNullPtr);
    EXPECT_EQ(init(type, &context, 64, nullptr), StatusNullPtr);
    EXPECT_EQ(init(type, &context, 24, nullptr), StatusNullPtr);
    // 24 fails at its first split, 48 deep in the recursion where V is 2.
    for (const int32_t n : {24, 48, 36, 3, 0, -8}) EXPECT_EQ(init(type, &context, n, block.data()), StatusSize) << n;
    EXPECT_EQ(context, reinterpret_cast<DCT4Spec*>(&block));
}

TYPED_TEST(Dct4LifeCycle, TransformAndFreeCheckTheirPointers) {
    const Context<TypeParam> c(16);
    std::vector<TypeParam> x(16, 1), y(16, 7);
    EXPECT_EQ(transform(x.data(), y.data(), nullptr), StatusNullPtr);
    EXPECT_EQ(transform(static_cast<const TypeParam*>(nullptr), y.data(), c.context()), StatusNullPtr);
    EXPECT_EQ(transform(x.data(), static_cast<TypeParam*>(nullptr), c.context()), StatusNullPtr);
    EXPECT_EQ(y, std::vector<TypeParam>(16, 7));
    EXPECT_EQ(release(static_cast<TypeParam*>(nullptr), nullptr), StatusNullPtr);
}

// A record whose case is not one of a context's is refused untouched.
TYPED_TEST(Dct4LifeCycle, TransformRefusesARecordThatIsNoContext) {
    for (const int32_t n : {8, 256}) {
        Context<TypeParam> c(n);
        std::vector<TypeParam> x(n, 1), y(n, 7);
        const int32_t kept = c.context()->case_;
        for (const int32_t bad : {0, 7, -1}) {
            c.context()->case_ = bad;
            EXPECT_EQ(transform(x.data(), y.data(), c.context()), StatusBadArg);
        }
        c.context()->case_ = kept;
        EXPECT_EQ(y, std::vector<TypeParam>(n, 7));
    }
}

// The block's end is the size query's answer: Init writes nothing past it.
TYPED_TEST(Dct4LifeCycle, InitWritesNothingPastTheQueriedSize) {
    for (const int32_t n : {32, 33, 64, 1024, 4096}) {
        const int64_t bytes = blockBytes<TypeParam>(n);
        std::vector<uint8_t> block(bytes + 64, 0xA5);
        DCT4Spec* context = nullptr;
        ASSERT_EQ(init(static_cast<TypeParam*>(nullptr), &context, n, block.data() + 5), StatusOk);
        for (int64_t i = bytes + 5; i < bytes + 64; ++i) ASSERT_EQ(block[i], 0xA5) << n;
    }
}

}  // namespace
