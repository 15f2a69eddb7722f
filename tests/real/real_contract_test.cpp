// The call contract of the real DFT entries: status codes and which error
// wins, a failed call leaves the destination alone, in-place use and any
// byte alignment give the same bits, and nothing outside the layout is
// written.
#include <climits>

#include "real_support.h"

using namespace rtest;

namespace {

constexpr int kBadLengths[] = {0, 1, -1, 65, INT_MIN, INT_MAX};
constexpr int kBadFlags[] = {0, 3, 5, 6, 7, 9, 12, 16, -1, INT_MIN};

TEST(RealLengthSwitch, RejectsBadLengthBeforeAnythingElse) {
    for (bool single : {true, false})
        forEachSet(single, [&]<class T>(Dir d, Layout l) {
            const auto sw = lengthSwitch<T>(d, l);
            ASSERT_NE(sw, nullptr);
            T src[66] = {}, dst[66] = {};
            for (int len : kBadLengths) {
                EXPECT_EQ(sw(nullptr, nullptr, len, 0), StatusSize) << len;
                EXPECT_EQ(sw(src, dst, len, ScaleNoDiv), StatusSize) << len;
            }
        });
}

TEST(RealExports, EveryLengthOfEverySet) { EXPECT_EQ(builtCases().size(), 2u * 63u); }

class RealContract : public testing::TestWithParam<Case> {};

// Null pointers before the flag, and nothing written on any failure, through
// the Codelet and through the switch.
TEST_P(RealContract, FailuresLeaveDestinationUntouched) {
    const Case c = GetParam();
    forEachSet(c.single, [&]<class T>(Dir d, Layout l) {
        const auto in = randomInput<T>(d, l, c.n, 1);
        const int outLen = outputLength(d, l, c.n);
        std::vector<T> dst(outLen + 4, T(-7.5));
        const auto before = dst;
        const auto fn = codelet<T>(d, l, c.n);
        const auto sw = lengthSwitch<T>(d, l);
        auto expectFails = [&](tvkStatus want, tvkStatus got, const char* what) {
            EXPECT_EQ(got, want) << what;
            EXPECT_TRUE(sameBits(before, dst)) << what;
        };
        expectFails(StatusNullPtr, fn(nullptr, dst.data(), ScaleNoDiv), "null src");
        expectFails(StatusNullPtr, fn(in.data(), nullptr, ScaleNoDiv), "null dst");
        expectFails(StatusNullPtr, fn(nullptr, dst.data(), 3), "null src beats flag");
        expectFails(StatusNullPtr, sw(in.data(), nullptr, c.n, 0), "switch: null dst beats flag");
        for (int flag : kBadFlags) {
            expectFails(StatusScaleFlag, fn(in.data(), dst.data(), flag), "bad flag");
            expectFails(StatusScaleFlag, sw(in.data(), dst.data(), c.n, flag), "switch: bad flag");
        }
        std::vector<T> viaSwitch(outLen);
        EXPECT_EQ(sw(in.data(), viaSwitch.data(), c.n, ScaleDivBySqrtN), StatusOk);
        EXPECT_TRUE(sameBits(viaSwitch, run<T>(d, l, c.n, in, ScaleDivBySqrtN)));
    });
}

// Every pair of byte offsets 0 to 15 of source and destination, and the
// destination over the source, give the bits of aligned separate arrays;
// the bytes around the destination keep their canary.
TEST_P(RealContract, AlignmentAndOverlapChangeNoBit) {
    const Case c = GetParam();
    forEachSet(c.single, [&]<class T>(Dir d, Layout l) {
        const auto in = randomInput<T>(d, l, c.n, 2);
        const auto want = run<T>(d, l, c.n, in, ScaleDivFwdByN);
        const size_t inBytes = sizeof(T) * in.size(), outBytes = sizeof(T) * want.size();
        for (size_t srcOff = 0; srcOff < 16; ++srcOff)
            for (size_t dstOff = 0; dstOff < 16; ++dstOff) {
                RawBlock src(inBytes), dst(outBytes + 32, 0x5A);
                std::memcpy(src.at(srcOff), in.data(), inBytes);
                T* out = reinterpret_cast<T*>(dst.at(16 + dstOff));
                ASSERT_EQ(codelet<T>(d, l, c.n)(reinterpret_cast<const T*>(src.at(srcOff)), out, ScaleDivFwdByN),
                          StatusOk);
                EXPECT_EQ(0, std::memcmp(out, want.data(), outBytes)) << "offsets " << srcOff << ", " << dstOff;
                for (size_t b = 0; b < 16 + dstOff; ++b) ASSERT_EQ(dst.at(0)[b], 0x5A) << "byte before the output";
                for (size_t b = 16 + dstOff + outBytes; b < dst.size(); ++b)
                    ASSERT_EQ(dst.at(0)[b], 0x5A) << "byte after the output";
            }
        // In place: the array holds the source and has the room of both.
        std::vector<T> shared(std::max(in.size(), want.size()) + 1, T(3.25));
        std::copy(in.begin(), in.end(), shared.begin());
        const auto tail = std::vector<T>(shared.begin() + want.size(), shared.end());
        ASSERT_EQ(codelet<T>(d, l, c.n)(shared.data(), shared.data(), ScaleDivFwdByN), StatusOk);
        EXPECT_TRUE(sameBits(std::vector<T>(shared.begin(), shared.begin() + want.size()), want));
        EXPECT_TRUE(sameBits(std::vector<T>(shared.begin() + want.size(), shared.end()), tail));
    });
}

RTEST_ALL_CASES(RealContract);

}  // namespace
