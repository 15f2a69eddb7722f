// The size query: the reference sizes, the lengths it accepts and refuses,
// and its checks.
#include <climits>

#include "dct4_support.h"

using namespace dct4test;

namespace {

struct ReferenceSize {
    int32_t n;
    int64_t bytes32f, bytes64f;  // -1: refused
};

// The reference sizes the family promises, for both element types.
constexpr ReferenceSize kReferenceSizes[] = {
    {2, 256, 256},
    {4, 256, 256},
    {8, 256, 256},
    {16, 256, 256},
    {32, 256, 256},
    {33, 1600, 1856},
    {64, 1824, 2336},
    {65, 1856, 2368},
    {128, 2336, 3360},
    {256, 3360, 5408},
    {512, 5408, 9504},
    {1024, 9504, 17696},
    {2048, 17696, 34080},
    {4096, 53056, 102208},
    {8192, 104256, 202560},
    {65536, 820288, 1606720},
    {131072, 2165344, 4262496},
    {1 << 25, 687869056, 1358957696},
    {1 << 26, 1375734400, -1},
};

class Dct4ReferenceSize : public ::testing::TestWithParam<ReferenceSize> {};

TEST_P(Dct4ReferenceSize, IsAnswered) {
    const ReferenceSize& r = GetParam();
    EXPECT_EQ(blockBytes<float>(r.n), r.bytes32f);
    EXPECT_EQ(blockBytes<double>(r.n), r.bytes64f);
}

std::string lengthName(const ::testing::TestParamInfo<ReferenceSize>& info) {
    std::ostringstream name;
    name << 'n' << info.param.n;
    return name.str();
}

INSTANTIATE_TEST_SUITE_P(Table, Dct4ReferenceSize, ::testing::ValuesIn(kReferenceSizes), lengthName);

// A length is valid by the size formula alone: the powers of two, and the
// 2^k + 1 that truncating division turns into them (9 and 17 only where V
// is 2).  Everything else in the range is refused.
TEST(Dct4Size, AcceptsPowersOfTwoAndTheirSuccessorsOnly) {
    std::vector<int32_t> accepted32f, accepted64f;
    for (int32_t n = -70; n <= 70000; ++n) {
        if (blockBytes<float>(n) >= 0) accepted32f.push_back(n);
        if (blockBytes<double>(n) >= 0) accepted64f.push_back(n);
    }
    std::vector<int32_t> want32f = {2, 4, 8, 16, 32, 33}, want64f = {2, 4, 8, 9, 16, 17, 32, 33};
    for (int32_t n = 64; n <= 65536; n *= 2) {
        want32f.insert(want32f.end(), {n, n + 1});
        want64f.insert(want64f.end(), {n, n + 1});
    }
    EXPECT_EQ(accepted32f, want32f);
    EXPECT_EQ(accepted64f, want64f);
    EXPECT_EQ(blockBytes<double>(9), 1472);
    EXPECT_EQ(blockBytes<double>(17), 1600);
}

// The sum runs in signed 32 bits and only its sign is tested: where every
// large term wraps to zero the answer is positive and far too small.
TEST(Dct4Size, WrapsInThirtyTwoBitsForTheVeryLargePowers) {
    EXPECT_EQ(blockBytes<float>(1 << 27), -1);
    EXPECT_EQ(blockBytes<float>(1 << 28), -1);
    EXPECT_EQ(blockBytes<float>(1 << 29), -1);
    EXPECT_GT(blockBytes<float>(1 << 30), 0);
    EXPECT_LT(blockBytes<float>(1 << 30), int64_t{1} << 30);
    EXPECT_EQ(blockBytes<double>(1 << 27), -1);
    EXPECT_EQ(blockBytes<double>(1 << 28), -1);
    EXPECT_GT(blockBytes<double>(1 << 29), 0);
    EXPECT_LT(blockBytes<double>(1 << 29), int64_t{1} << 29);
    EXPECT_GT(blockBytes<double>(1 << 30), 0);
    EXPECT_EQ(blockBytes<float>(INT_MAX), -1);
    EXPECT_EQ(blockBytes<double>(INT_MIN), -1);
}

TEST(Dct4Size, NullSizeWinsOverABadLengthAndFailuresLeaveSizeAlone) {
    EXPECT_EQ(tvkgDCT4GetSize_32f(63, nullptr), StatusNullPtr);
    EXPECT_EQ(tvkgDCT4GetSize_64f(63, nullptr), StatusNullPtr);
    EXPECT_EQ(tvkgDCT4GetSize_32f(64, nullptr), StatusNullPtr);
    for (const int32_t n : {63, 48, 36, 24, 6, 3, 1, 0, -1, -64, 1 << 27}) {
        int32_t size = 12345;
        EXPECT_EQ(tvkgDCT4GetSize_32f(n, &size), StatusSize) << n;
        EXPECT_EQ(tvkgDCT4GetSize_64f(n, &size), StatusSize) << n;
        EXPECT_EQ(size, 12345) << n;
    }
}

}  // namespace
