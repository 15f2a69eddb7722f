// The processor gate, built from the library's own source with a stand-in
// for the two feature queries, so that every mask can be tried.
#include "gate.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

namespace {

struct Call {
    bool isFeatureQuery;  // tvkGetCpuFeatures, else tvkGetEnabledCpuFeatures
    bool argsNull;
};
std::vector<Call>* calls;
uint64_t fakeMask;

}  // namespace

extern "C" int32_t tvkGetCpuFeatures(uint64_t* featureMask, uint32_t cpuidLeaf1[4]) {
    if (calls) calls->push_back({true, featureMask == nullptr && cpuidLeaf1 == nullptr});
    return 0;
}

extern "C" uint64_t tvkGetEnabledCpuFeatures(void) {
    if (calls) calls->push_back({false, true});
    return fakeMask;
}

namespace {

uint32_t gateIndexFor(uint64_t mask, std::vector<Call>* record = nullptr) {
    fakeMask = mask;
    calls = record;
    tvkJumpIndexForMergedDLL = 0xDEAD;
    EXPECT_EQ(tvkgenRunGate(), 1);
    calls = nullptr;
    return tvkJumpIndexForMergedDLL;
}

TEST(Gate, RowOneNeedsBothBits) {
    EXPECT_EQ(gateIndexFor(0), 0u);
    EXPECT_EQ(gateIndexFor(0x10), 0u);
    EXPECT_EQ(gateIndexFor(0x20), 0u);
    EXPECT_EQ(gateIndexFor(0x30), 1u);
}

TEST(Gate, OtherBitsDoNotMatter) {
    const uint64_t others = ~uint64_t{0x30};
    EXPECT_EQ(gateIndexFor(others), 0u);
    EXPECT_EQ(gateIndexFor(others | 0x10), 0u);
    EXPECT_EQ(gateIndexFor(others | 0x20), 0u);
    EXPECT_EQ(gateIndexFor(~uint64_t{0}), 1u);
    EXPECT_EQ(gateIndexFor(0x30 | (uint64_t{1} << 63) | 0x1), 1u);
}

TEST(Gate, QueriesDetectionFirstWithNullArguments) {
    std::vector<Call> record;
    gateIndexFor(0x30, &record);
    ASSERT_EQ(record.size(), 2u);
    EXPECT_TRUE(record[0].isFeatureQuery);
    EXPECT_TRUE(record[0].argsNull);
    EXPECT_FALSE(record[1].isFeatureQuery);
}

}  // namespace
