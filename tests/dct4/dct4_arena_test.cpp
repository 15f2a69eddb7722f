// The engine's support code on its own: the arena's arithmetic, the lists,
// the choice of radix and the cosine and sine in units of pi.  Built from the
// library's source into the test, since none of it is exported.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <vector>

#include "dct4_support.h"
#include "owngenautolib.h"

using namespace dct4test;
using tvk::dct4::cursorOf;
using tvk::dct4::setCursor;

namespace {

TEST(Dct4Arena, RoundsSizesUpToThirtyTwoBytes) {
    EXPECT_EQ(u8_tvkgAlignSize32Bytes(0), 0u);
    EXPECT_EQ(u8_tvkgAlignSize32Bytes(1), 32u);
    EXPECT_EQ(u8_tvkgAlignSize32Bytes(24), 32u);
    EXPECT_EQ(u8_tvkgAlignSize32Bytes(32), 32u);
    EXPECT_EQ(u8_tvkgAlignSize32Bytes(33), 64u);
    EXPECT_EQ(u8_EnvList_add_mem(3), 96);
}

// Init's first allocation, the context, lies on the first 32-byte boundary
// at least 33 bytes past the block's start, whatever the start's alignment.
TEST(Dct4Arena, FirstAllocationIs33To64BytesPastAnyBlockStart) {
    std::vector<uint8_t> storage(4096 + 96);
    uint8_t* base = storage.data() + (-reinterpret_cast<uintptr_t>(storage.data()) & 31);
    for (int offset = 0; offset < 32; ++offset) {
        for (const int32_t n : {16, 64}) {
            uint8_t* block = base + offset;
            DCT4Spec* context = nullptr;
            ASSERT_EQ(tvkgDCT4Init_32f(&context, n, block), StatusOk);
            const ptrdiff_t past = reinterpret_cast<uint8_t*>(context) - block;
            EXPECT_EQ(past, 64 - offset) << offset;
            EXPECT_EQ(reinterpret_cast<uintptr_t>(context) % 32, 0u) << offset;
        }
    }
}

TEST(Dct4Arena, MallocReturnsTheCursorAndFreeMovesItBackByTheRoundedSize) {
    alignas(8) uint8_t block[256 + 8];
    uint8_t* arena = block + 3;  // any address: the cursor is read bytewise
    const uint64_t start = reinterpret_cast<uint64_t>(block) + 64;
    setCursor(arena, start);
    EXPECT_EQ(reinterpret_cast<uint64_t>(u8_tvkgArenaMalloc(arena, 24)), start);
    EXPECT_EQ(reinterpret_cast<uint64_t>(u8_tvkgArenaMalloc(arena, 0)), start + 32);
    EXPECT_EQ(reinterpret_cast<uint64_t>(u8_tvkgArenaMalloc(arena, 33)), start + 32);
    EXPECT_EQ(cursorOf(arena), start + 96);
    // Frees need not come in reverse order, and the pointer is not looked at.
    EXPECT_EQ(u8_tvkgArenaFree(arena, nullptr, 24), 32u);
    EXPECT_EQ(u8_tvkgArenaFree(arena, nullptr, 40), 64u);
    EXPECT_EQ(cursorOf(arena), start);
}

// ---- lists ---------------------------------------------------------------------------

// An item that records the order in which the lists delete it.
struct Item {
    EnvHeader header;
    int id;
    std::vector<int>* deleted;
};

void recordDeletion(void* self) {
    auto* item = static_cast<Item*>(self);
    item->deleted->push_back(item->id);
}

class Dct4List : public ::testing::Test {
protected:
    void SetUp() override {
        arena_ = storage_ + 1;
        setCursor(arena_, start());
        head_ = u8_EnvList___init__(static_cast<EnvList*>(u8_tvkgArenaMalloc(arena_, sizeof(EnvList))), arena_);
    }
    uint64_t start() const { return reinterpret_cast<uint64_t>(storage_) + 64; }
    uint64_t cursor() const { return cursorOf(arena_); }
    Item* newItem(int id, int32_t size) {
        auto* item = static_cast<Item*>(u8_tvkgArenaMalloc(arena_, sizeof(Item)));
        item->header.__del__ = recordDeletion;
        item->header.size = size;
        item->id = id;
        item->deleted = &deleted_;
        return item;
    }

    alignas(32) uint8_t storage_[1024];
    uint8_t* arena_;
    EnvList* head_;
    std::vector<int> deleted_;
};

TEST_F(Dct4List, GetGivesNullOutsideTheList) {
    EXPECT_EQ(u8_EnvList_get(head_, 0), nullptr);
    Item* a = newItem(1, sizeof(Item));
    EXPECT_EQ(u8_EnvList_add(head_, a), a);
    EXPECT_EQ(u8_EnvList_get(head_, 0), a);
    EXPECT_EQ(u8_EnvList_get(head_, 1), nullptr);
    EXPECT_EQ(u8_EnvList_get(head_, -1), nullptr);
}

TEST_F(Dct4List, TheFirstItemGoesIntoTheHeadAndEachFurtherOneCostsANode) {
    Item *a = newItem(1, 40), *b = newItem(2, 40), *c = newItem(3, 40);
    const uint64_t before = cursor();
    u8_EnvList_add(head_, a);
    EXPECT_EQ(cursor(), before);
    u8_EnvList_add(head_, b);
    EXPECT_EQ(cursor(), before + 32);
    u8_EnvList_add(head_, c);
    EXPECT_EQ(cursor(), before + 64);
    EXPECT_EQ(u8_EnvList_get(head_, 2), c);
    EXPECT_EQ(head_->next->arena, arena_);
}

// Children are deleted first-made first, each freed by its own size; the
// list's delete then frees the nodes behind the head.
TEST_F(Dct4List, FreeChildrenDeletesInOrderOfAddingAndDelFreesTheNodes) {
    Item *a = newItem(1, 40), *b = newItem(2, 100), *c = newItem(3, 1);
    const uint64_t made = cursor();
    u8_EnvList_add(head_, a);
    u8_EnvList_add(head_, b);
    u8_EnvList_add(head_, c);
    ASSERT_EQ(cursor(), made + 2 * 32);
    u8_EnvList_freeChildren(head_);
    EXPECT_EQ(deleted_, (std::vector<int>{1, 2, 3}));
    EXPECT_EQ(cursor(), made + 2 * 32 - (64 + 128 + 32));  // each item's own size, rounded
    u8_EnvList___del__(head_);
    EXPECT_EQ(cursor(), made - (64 + 128 + 32));
}

TEST_F(Dct4List, NullListsAndSingleNodesCostNothingToDelete) {
    u8_EnvList_freeChildren(nullptr);
    u8_EnvList_add(head_, newItem(1, 40));
    const uint64_t before = cursor();
    u8_EnvList___del__(head_);
    EXPECT_EQ(cursor(), before);
    EXPECT_TRUE(deleted_.empty());
}

// ---- the radix ----------------------------------------------------------------------------

TEST(Dct4Radix, FollowsTheThresholdTableNotTheLargestDivisor) {
    const std::pair<int32_t, int32_t> chosen[] = {{1024, 32}, {512, 32}, {510, 2}, {768, 32}, {96, 8}, {24, 4},
                                                  {12, 2},     {128, 16}, {64, 8},   {32, 8},   {16, 4}, {8, 2},
                                                  {4, 2},      {511 * 2, 2}};
    for (const auto& [n, radix] : chosen) {
        int32_t out = -1;
        EXPECT_EQ(u8_divisorsIntNonTriv(&out, n), StatusOk) << n;
        EXPECT_EQ(out, radix) << n;
    }
    for (const int32_t n : {3, 2, 1, 0, -4, -512, 5, 15, 31, 127, 511}) {
        int32_t out = 77;
        EXPECT_EQ(u8_divisorsIntNonTriv(&out, n), StatusSize) << n;
        EXPECT_EQ(out, 77) << n;
    }
}

// ---- cos and sin in units of pi ----------------------------------------------------------

TEST(Dct4Trigonometry, DoublePrecisionAtExactAngles) {
    EXPECT_EQ(u8_tvkgCosPi_64f(0), 1.0);
    EXPECT_EQ(u8_tvkgSinPi_64f(0), 0.0);
    EXPECT_EQ(u8_tvkgCosPi_64f(0.25), 0.7071067811865476);
    EXPECT_EQ(u8_tvkgSinPi_64f(0.5), 1.0);
}

// The single-precision forms round the angle to a float before cosf and sinf.
TEST(Dct4Trigonometry, SinglePrecisionRoundsTheAngleFirst) {
    const float eighth = static_cast<float>(3.141592653589793 / 8);
    EXPECT_EQ(u8_tvkgCosPi_32f(0.125f), std::cos(eighth));
    EXPECT_EQ(u8_tvkgSinPi_32f(0.125f), std::sin(eighth));
    for (const float x : {0.01f, 0.3f, 0.7f, 0.9999f}) {
        const float angle = static_cast<float>(static_cast<double>(x) * 3.141592653589793);
        EXPECT_EQ(u8_tvkgCosPi_32f(x), std::cos(angle)) << x;
        EXPECT_EQ(u8_tvkgSinPi_32f(x), std::sin(angle)) << x;
    }
}

}  // namespace
