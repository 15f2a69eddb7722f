#include "owngenautolib.h"

#include <cmath>
#include <cstring>

namespace tvk::dct4 {

uint64_t cursorOf(const void* arena) {
    uint64_t cursor;
    std::memcpy(&cursor, arena, sizeof cursor);
    return cursor;
}

void setCursor(void* arena, uint64_t address) { std::memcpy(arena, &address, sizeof address); }

}  // namespace tvk::dct4

using tvk::dct4::cursorOf;
using tvk::dct4::setCursor;

namespace {
constexpr uint64_t kNodeBytes = sizeof(EnvList);
static_assert(kNodeBytes == 24);
}  // namespace

extern "C" {

uint64_t u8_tvkgAlignSize32Bytes(uint64_t size) { return (size + 31) & ~uint64_t{31}; }

void* u8_tvkgArenaMalloc(void* arena, uint64_t size) {
    const uint64_t cursor = cursorOf(arena);
    setCursor(arena, cursor + u8_tvkgAlignSize32Bytes(size));
    return reinterpret_cast<void*>(cursor);
}

// Frees come in any order and may even name memory never allocated: the
// cursor is a running total during tear-down.
uint64_t u8_tvkgArenaFree(void* arena, void*, uint64_t size) {
    const uint64_t rounded = u8_tvkgAlignSize32Bytes(size);
    setCursor(arena, cursorOf(arena) - rounded);
    return rounded;
}

EnvList* u8_EnvList___init__(EnvList* node, void* arena) {
    node->item = nullptr;
    node->next = nullptr;
    node->arena = arena;
    return node;
}

void* u8_EnvList_add(EnvList* list, void* item) {
    EnvList* tail = list;
    while (tail->next) tail = tail->next;
    if (!tail->item) {
        tail->item = item;
        return item;
    }
    EnvList* node = u8_EnvList___init__(static_cast<EnvList*>(u8_tvkgArenaMalloc(list->arena, kNodeBytes)),
                                        list->arena);
    tail->next = node;
    node->item = item;
    return item;
}

int64_t u8_EnvList_add_mem(int32_t count) {
    return int64_t{count} * static_cast<int64_t>(u8_tvkgAlignSize32Bytes(kNodeBytes));
}

void* u8_EnvList_get(const EnvList* list, int32_t index) {
    if (index < 0) return nullptr;
    const EnvList* node = list;
    for (int32_t i = 0; i < index && node; ++i) node = node->next;
    return node ? node->item : nullptr;
}

// First added first: the items' deletes run in the order the items were made.
void u8_EnvList_freeChildren(EnvList* list) {
    for (EnvList* node = list; node; node = node->next) {
        if (!node->item) continue;
        auto* header = static_cast<EnvHeader*>(node->item);
        header->__del__(node->item);
        u8_tvkgArenaFree(node->arena, node->item, static_cast<uint64_t>(int64_t{header->size}));
    }
}

void u8_EnvList___del__(EnvList* list) {
    EnvList* node = list->next;
    while (node) {
        EnvList* next = node->next;
        u8_tvkgArenaFree(list->arena, node, kNodeBytes);
        node = next;
    }
}

tvkStatus u8_divisorsIntNonTriv(int32_t* out, int32_t n) {
    // Larger radices only for larger n: 96 gives 8 although 32 divides it.
    static constexpr int32_t kCandidates[] = {32, 16, 8, 4, 2};
    int first;
    if (n >= 512) first = 0;
    else if (n >= 128) first = 1;
    else if (n >= 32) first = 2;
    else if (n >= 16) first = 3;
    else if (n >= 4) first = 4;
    else return StatusSize;
    for (int c = first; c < 5; ++c)
        if (n % kCandidates[c] == 0) {
            *out = kCandidates[c];
            return StatusOk;
        }
    return StatusSize;
}

double u8_owng_TFunc_IIIR_at(const void* f, int32_t i, int32_t j, int32_t k) {
    return static_cast<const EnvHeader*>(f)->at(f, i, j, k);
}

static constexpr double kPi = 3.141592653589793;

float u8_tvkgCosPi_32f(float x) { return std::cos(static_cast<float>(static_cast<double>(x) * kPi)); }
float u8_tvkgSinPi_32f(float x) { return std::sin(static_cast<float>(static_cast<double>(x) * kPi)); }
double u8_tvkgCosPi_64f(double x) { return std::cos(x * kPi); }
double u8_tvkgSinPi_64f(double x) { return std::sin(x * kPi); }
}
