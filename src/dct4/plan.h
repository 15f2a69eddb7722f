// The context record and the plan objects of the DCT-IV engine, as they lie
// in the arena.  Every object starts with an EnvHeader; the lists are EnvList
// heads.  Several objects repeat a value (n above all): each keeps its own
// copy in its own slot, so the layouts keep the repeats.
//
// For a length n = 2dq the plan is a tree:
//   DCT4Spec -> envfCompose, env2 (output stage), env3 (input stage)
//   env2 -> envfsplit, env4 (rotations and Y(2d), with the rotation table)
//   env3 -> env5 (R(m) on every column, m = n/d)
//   env5 -> env7 when m > 64: one radix-d' step of R(m)
//   env7 -> envlambda, env8 (twiddles and d'-point DFT), env9 (the inner R(m/d'))
//   env9 -> the next env7 when m/d' > 64
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "owngenautolib.h"

struct EnvFCompose;
struct EnvFSplit;
struct EnvLambda;

// The context: the root plan object.
struct DCT4Spec {
    EnvHeader header;
    EnvList* children;     // envfCompose, env2, env3
    EnvList* outputStage;  // env2
    EnvList* inputStage;   // env3
    void* buffer;          // n elements between the two stages; null for the direct lengths
    int32_t case_;         // `case`: 1 to 5 for the lengths 2 to 32, 6 for the plan
    int32_t divisor;       // d of n = 2dq
    int32_t length;
};

namespace tvk::dct4 {

// Output stage wrapper.
template <class T>
struct Env2 {
    EnvHeader header;
    EnvList* children;  // envfsplit, env4
    EnvList* stages;    // env4
    T* buffer;          // stays null
    int32_t state;      // 1 once q is a multiple of the lane count
    int32_t d, n, twoD, q, n2, twoNMinusOne, m;
    EnvFCompose* f;
};

// Input stage wrapper.
template <class T>
struct Env3 {
    EnvHeader header;
    EnvList* children;  // env5
    EnvList* stages;    // env5
    T* buffer;          // stays null
    int32_t state;      // 1 once d is a multiple of the lane count
    int32_t m, n, twoNMinusOne, twoD, d, n2, d2;
};

// Stage 2: rotations and Y(2d) on groups of V rows.
template <class T>
struct Env4 {
    EnvHeader header;
    EnvList* children;
    T* table;  // n elements: the rotations of V rows at a time
    int32_t case_;
    int32_t d, n, twoD, twoDV, groups /* q/V */, n2, twoNMinusOne, twoQ;
    EnvFSplit* f;
};

// Stage 1: R(m) on every column.
template <class T>
struct Env5 {
    EnvHeader header;
    EnvList* children;  // env7 when m > 64
    EnvList* stages;    // env7 when m > 64
    T* buffer;          // stays null
    int32_t case_;
    int32_t m, n, twoNMinusOne, twoD, columnGroups /* d/V */, n2, d;
};

// One radix-d' step of R(m) on one column group.
template <class T>
struct Env7 {
    EnvHeader header;
    EnvList* children;  // envlambda, env8, env9
    EnvList* outer;     // env8
    EnvList* inner;     // env9
    T* buffer;          // n elements, private to this level
    int32_t state;
    int32_t m, radix, n, n2, s, n3, t;
};

// The twiddles and the complex d'-point DFT of one step.
template <class T>
struct Env8 {
    EnvHeader header;
    EnvList* children;
    T* table;
    int32_t case_;
    int32_t radix, n, t, rowStride /* 2d't */, bins /* m/(2d') */, n2, halfM, mMinusOne, t2, subLength;
    EnvLambda* f;
};

// The d' inner transforms R(L), L = m/d', of one step.
template <class T>
struct Env9 {
    EnvHeader header;
    EnvList* children;  // the next env7 when L > 64
    EnvList* stages;    // the next env7 when L > 64
    T* buffer;          // stays null
    int32_t case_;
    int32_t L, n, n2, sourceStride /* d's */, s, radix, n3, destinationStride /* d't */, t;
};

}  // namespace tvk::dct4

// theta(row, col) as a cosine at even and a sine at odd flat index i * 2d + j.
struct EnvFCompose {
    EnvHeader header;
    int32_t twoD, eightN, rows /* n/(2d) */, d, twoD2;
};

// The same, with the row index unrolled into groups of V lanes.
struct EnvFSplit {
    EnvHeader header;
    int32_t twoD, groups;
    EnvFCompose* compose;
};

// (i + 1/2) / (m/d'): the angle of bin i of a step, in units of 2 pi / d'.
struct EnvLambda {
    EnvHeader header;
    int32_t m, radix;
};

static_assert(sizeof(EnvHeader) == 32 && offsetof(EnvHeader, plan) == 16 && offsetof(EnvHeader, arena) == 24);
static_assert(sizeof(DCT4Spec) == 80 && offsetof(DCT4Spec, case_) == 64 && offsetof(DCT4Spec, length) == 72);
static_assert(sizeof(tvk::dct4::Env2<float>) == 96 && offsetof(tvk::dct4::Env2<float>, f) == 88);
static_assert(sizeof(tvk::dct4::Env3<float>) == 88);
static_assert(sizeof(tvk::dct4::Env4<float>) == 96 && offsetof(tvk::dct4::Env4<float>, f) == 88);
static_assert(sizeof(tvk::dct4::Env5<float>) == 88);
static_assert(sizeof(tvk::dct4::Env7<float>) == 96 && offsetof(tvk::dct4::Env7<float>, t) == 92);
static_assert(sizeof(tvk::dct4::Env8<float>) == 104 && offsetof(tvk::dct4::Env8<float>, f) == 96);
static_assert(sizeof(tvk::dct4::Env9<float>) == 96 && offsetof(tvk::dct4::Env9<float>, t) == 92);
static_assert(sizeof(EnvFCompose) == 56 && sizeof(EnvFSplit) == 48 && sizeof(EnvLambda) == 40);
