// The DCT-IV engine's support code, one copy for both element types: the
// bump allocator inside the caller's block (the arena), the singly linked
// lists that tie the plan objects together, the choice of radix, and the
// cosine and sine in units of pi that fill the tables.
#pragma once

#include <stdint.h>

#include "tvkgen.h"

#ifndef TVK_INTERNAL
#define TVK_INTERNAL __attribute__((visibility("hidden")))
#endif

extern "C" {

// The first fields of every plan object.  Lists free their items through
// `__del__` and `size`; function objects keep `at` where plans keep `plan`.
struct EnvHeader {
    void (*__del__)(void* self);
    int32_t size;  // own size in bytes, before rounding
    union {
        tvkStatus (*plan)(void* self);
        // Shared by both element types: a tvk32f result travels widened, exactly.
        double (*at)(const void* self, int32_t i, int32_t j, int32_t k);
    };
    void* arena;
};

// One node.  A list is its head; an empty list is a head with a null item.
struct EnvList {
    void* item;
    EnvList* next;
    void* arena;
};

// An arena is the address of its block, whose first 8 bytes hold the
// address of the next free byte.  Nothing bounds it: the size query counts
// every allocation ahead.
TVK_INTERNAL uint64_t u8_tvkgAlignSize32Bytes(uint64_t size);
TVK_INTERNAL void* u8_tvkgArenaMalloc(void* arena, uint64_t size);
TVK_INTERNAL uint64_t u8_tvkgArenaFree(void* arena, void* ptr, uint64_t size);

TVK_INTERNAL EnvList* u8_EnvList___init__(EnvList* node, void* arena);
TVK_INTERNAL void* u8_EnvList_add(EnvList* list, void* item);
TVK_INTERNAL int64_t u8_EnvList_add_mem(int32_t count);
TVK_INTERNAL void* u8_EnvList_get(const EnvList* list, int32_t index);
TVK_INTERNAL void u8_EnvList_freeChildren(EnvList* list);
TVK_INTERNAL void u8_EnvList___del__(EnvList* list);

// The radix with which the planner splits a length (callers pass half of it).
TVK_INTERNAL tvkStatus u8_divisorsIntNonTriv(int32_t* out, int32_t n);

// Calls the `at` of a function object.
TVK_INTERNAL double u8_owng_TFunc_IIIR_at(const void* f, int32_t i, int32_t j, int32_t k);

// cos(pi x) and sin(pi x).  The tvk32f forms round the angle to a float
// before cosf or sinf sees it.
TVK_INTERNAL float u8_tvkgCosPi_32f(float x);
TVK_INTERNAL float u8_tvkgSinPi_32f(float x);
TVK_INTERNAL double u8_tvkgCosPi_64f(double x);
TVK_INTERNAL double u8_tvkgSinPi_64f(double x);
}

namespace tvk::dct4 {

// The arena's cursor, read and written bytewise: a block may have any alignment.
uint64_t cursorOf(const void* arena);
void setCursor(void* arena, uint64_t address);

}  // namespace tvk::dct4
