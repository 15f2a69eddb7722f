// The DCT-IV engine, one copy for both element types: the size query, the
// context's life cycle, the plan objects' making, planning and deleting,
// and the compute that walks the plan.  Each family's source instantiates
// it under its own names (family.h); Family<T> leads from here to those names.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include <algorithm>

#include "direct.h"
#include "kernels.h"
#include "plan.h"
#include "tvkcore.h"

namespace tvk::dct4 {

template <class T>
struct Family;

template <class T>
inline constexpr KernelSet<T> kKernels = makeKernelSet<T>();

template <class T>
constexpr int32_t kElementBytes = sizeof(T);

// 1 for `first`, 2 for twice that, ... up to `last`; `other` for anything else.
constexpr int32_t powerCase(int32_t x, int32_t first, int32_t last, int32_t other) {
    int32_t c = 1;
    for (int32_t v = first; v <= last; v *= 2, ++c)
        if (x == v) return c;
    return other;
}
constexpr int32_t caseOfLength(int32_t n) { return powerCase(n, 2, 32, 6); }      // DCT4Spec
constexpr int32_t caseOfTransform(int32_t L) { return powerCase(L, 2, 64, 7); }   // env5, env9
constexpr int32_t caseOfDivisor(int32_t d) { return powerCase(d, 1, 32, 0); }     // env4
constexpr int32_t caseOfRadix(int32_t radix) { return powerCase(radix, 2, 32, 0); }  // env8

// ---- the size query ---------------------------------------------------------------

// The block size is a signed 32-bit sum that wraps, and only the sign of each
// partial sum is looked at: lengths whose terms wrap to small values pass.
class SizeSum {
public:
    void add(int64_t bytes) {
        total_ = wrap(int64_t{total_} + wrap(bytes));
        failed_ = failed_ || total_ < 0;
    }
    void fail() { failed_ = true; }
    bool failed() const { return failed_; }
    int32_t total() const { return total_; }

    static int32_t wrap(int64_t v) { return static_cast<int32_t>(static_cast<uint32_t>(v)); }
    // An arena allocation of a 32-bit byte count.
    static int32_t rounded(int32_t bytes) {
        return wrap(static_cast<int64_t>(u8_tvkgAlignSize32Bytes(static_cast<uint64_t>(int64_t{bytes}))));
    }
    static int32_t nodes(int32_t count) { return wrap(u8_EnvList_add_mem(count)); }

private:
    int32_t total_ = 0;
    bool failed_ = false;
};

// Bytes of one env7 level of R(m) and all below it.
template <class T>
void addRecursiveStep(SizeSum& sum, int32_t length, int32_t m) {
    using S = SizeSum;
    int32_t radix;
    if (u8_divisorsIntNonTriv(&radix, m / 2) != StatusOk) return sum.fail();
    const int32_t bins = m / (2 * radix);
    sum.add(S::rounded(S::wrap(int64_t{bins} * 2 * (radix - 1) * 16)) + S::rounded(104) + S::rounded(24));
    const int32_t inner = m / radix;
    if (caseOfTransform(inner) != 7) {
        sum.add(S::rounded(0) + S::rounded(96) + 2 * S::rounded(24));
    } else {
        SizeSum below;
        addRecursiveStep<T>(below, length, inner);
        if (below.failed()) return sum.fail();
        sum.add(below.total());
        sum.add(S::rounded(0) + S::rounded(96) + 2 * S::rounded(24) + S::nodes(2));
    }
    sum.add(S::rounded(S::wrap(int64_t{length} * kElementBytes<T>)));
    sum.add(S::rounded(96) + 3 * S::rounded(24) + S::nodes(2) + S::rounded(40) + S::nodes(1) + S::nodes(2));
}

// Everything Init will build, counted ahead; the node terms count one node
// more per list than Init makes, so the block always suffices.
template <class T>
SizeSum blockSize(int32_t length) {
    using S = SizeSum;
    constexpr int32_t V = kLanes<T>;
    SizeSum sum;
    if (caseOfLength(length) != 6) {
        sum.add(S::rounded(0) + S::rounded(80) + 3 * S::rounded(24));
        return sum;
    }
    int32_t d;
    if (u8_divisorsIntNonTriv(&d, length / 2) != StatusOk) return sum.fail(), sum;
    const int32_t q = length / (2 * d);
    if (q % V != 0 || caseOfDivisor(d) == 0) return sum.fail(), sum;
    sum.add(S::rounded(S::wrap(int64_t{q / V} * 2 * d * 16)) + S::rounded(96) + S::rounded(24));
    sum.add(S::rounded(0) + S::rounded(96) + 2 * S::rounded(24) + S::nodes(2) + S::rounded(48) + S::nodes(1));
    if (d % V != 0) return sum.fail(), sum;
    const int32_t m = length / d;
    if (caseOfTransform(m) != 7) {
        sum.add(S::rounded(0) + S::rounded(88) + 2 * S::rounded(24));
    } else {
        SizeSum steps;
        addRecursiveStep<T>(steps, length, m);
        if (steps.failed()) return sum.fail(), sum;
        sum.add(steps.total());
        sum.add(S::rounded(0) + S::rounded(88) + 2 * S::rounded(24) + S::nodes(2));
    }
    sum.add(S::rounded(0) + S::rounded(88) + 2 * S::rounded(24) + S::nodes(2));
    sum.add(S::rounded(S::wrap(int64_t{length} * kElementBytes<T>)));
    sum.add(S::rounded(80) + 3 * S::rounded(24) + S::nodes(2) + S::rounded(56) + S::nodes(1) + S::nodes(2));
    return sum;
}

// Twice the rounded size of 1: the gap between a block's start and its first allocation.
constexpr int32_t kAlignmentGap = 64;

template <class T>
tvkStatus getSize(int32_t length, int32_t* pSize) {
    const SizeSum sum = blockSize<T>(length);
    if (!pSize) return StatusNullPtr;
    if (sum.failed()) return StatusSize;
    *pSize = sum.total() + kAlignmentGap;
    return StatusOk;
}

// ---- objects in the arena -----------------------------------------------------------

inline EnvList* newList(void* arena) {
    return u8_EnvList___init__(static_cast<EnvList*>(u8_tvkgArenaMalloc(arena, sizeof(EnvList))), arena);
}
// A role list: its nodes and head.
inline void deleteList(EnvList* list) {
    u8_EnvList___del__(list);
    u8_tvkgArenaFree(list->arena, list, sizeof(EnvList));
}
// An owner's children: the items, then the nodes and head.
inline void deleteChildren(EnvList* list) {
    u8_EnvList_freeChildren(list);
    deleteList(list);
}
// Adds to the children first and to the role list second, so that deleting
// walks the children alone.
inline void adopt(EnvList* children, EnvList* role, void* item) { u8_EnvList_add(role, u8_EnvList_add(children, item)); }

template <class Object>
Object* newObject(void* arena, void (*del)(void*)) {
    auto* object = static_cast<Object*>(u8_tvkgArenaMalloc(arena, sizeof(Object)));
    object->header.__del__ = del;
    object->header.size = sizeof(Object);
    object->header.arena = arena;
    return object;
}

template <class Object>
tvkStatus runPlan(Object* object) {
    return object->header.plan(object);
}

template <class T>
T* newBuffer(void* arena, int32_t elements) {
    return static_cast<T*>(u8_tvkgArenaMalloc(arena, uint64_t(elements) * sizeof(T)));
}
template <class T>
void freeBuffer(void* arena, T* buffer, int32_t elements) {
    u8_tvkgArenaFree(arena, buffer, uint64_t(elements) * sizeof(T));
}

template <class T>
T cosPiOf(T x) {
    if constexpr (sizeof(T) == 4) return u8_tvkgCosPi_32f(x);
    else return u8_tvkgCosPi_64f(x);
}
template <class T>
T sinPiOf(T x) {
    if constexpr (sizeof(T) == 4) return u8_tvkgSinPi_32f(x);
    else return u8_tvkgSinPi_64f(x);
}

// ---- function objects ---------------------------------------------------------------

inline void deleteNothing(void*) {}

template <class T>
double composeAt(const void* self, int32_t i, int32_t j, int32_t) {
    const auto* f = static_cast<const EnvFCompose*>(self);
    const int32_t a = i * f->twoD + j, b = a / 2;
    const int32_t row = b / f->d, column = b % f->d;
    const int32_t w = (4 * row + 2) * (2 * column + 1);
    const T angle = T(w) / T(f->eightN);
    return a % 2 == 0 ? cosPiOf(angle) : sinPiOf(angle);
}

template <class T>
double splitAt(const void* self, int32_t i, int32_t lane, int32_t j) {
    const auto* f = static_cast<const EnvFSplit*>(self);
    return u8_owng_TFunc_IIIR_at(f->compose, kLanes<T> * i + lane, j, 0);
}

template <class T>
double lambdaAt(const void* self, int32_t i, int32_t, int32_t) {
    const auto* f = static_cast<const EnvLambda*>(self);
    return (T(i) + T(0.5)) / T(f->m / f->radix);
}

// ---- making -------------------------------------------------------------------------------

template <class T>
EnvFCompose* newCompose(void* arena, int32_t d, int32_t n) {
    auto* f = newObject<EnvFCompose>(arena, Family<T>::composeDelete);
    f->header.at = Family<T>::composeAt;
    f->twoD = 2 * d, f->eightN = 8 * n, f->rows = n / (2 * d), f->d = d, f->twoD2 = 2 * d;
    return f;
}

template <class T>
Env2<T>* newEnv2(void* arena, int32_t d, int32_t n, EnvFCompose* compose) {
    auto* e = newObject<Env2<T>>(arena, Family<T>::env2Delete);
    e->header.plan = Family<T>::env2Plan;
    e->children = newList(arena), e->stages = newList(arena), e->buffer = nullptr, e->state = 0;
    e->d = d, e->n = n, e->twoD = 2 * d, e->q = n / (2 * d), e->n2 = n, e->twoNMinusOne = 2 * n - 1, e->m = n / d;
    e->f = compose;
    return e;
}

template <class T>
Env3<T>* newEnv3(void* arena, int32_t d, int32_t n) {
    auto* e = newObject<Env3<T>>(arena, Family<T>::env3Delete);
    e->header.plan = Family<T>::env3Plan;
    e->children = newList(arena), e->stages = newList(arena), e->buffer = nullptr, e->state = 0;
    e->m = n / d, e->n = n, e->twoNMinusOne = 2 * n - 1, e->twoD = 2 * d, e->d = d, e->n2 = n, e->d2 = d;
    return e;
}

template <class T>
Env7<T>* newEnv7(void* arena, int32_t m, int32_t n, int32_t s, int32_t t) {
    auto* e = newObject<Env7<T>>(arena, Family<T>::env7Delete);
    e->header.plan = Family<T>::env7Plan;
    e->children = newList(arena), e->outer = newList(arena), e->inner = newList(arena), e->buffer = nullptr;
    e->state = 0, e->m = m, e->radix = 0, e->n = n, e->n2 = n, e->s = s, e->n3 = n, e->t = t;
    return e;
}

// ---- planning -------------------------------------------------------------------------------

template <class T>
tvkStatus planRoot(DCT4Spec* context) {
    void* arena = context->header.arena;
    const int32_t n = context->length;
    int32_t d;
    if (u8_divisorsIntNonTriv(&d, n / 2) != StatusOk) return StatusSize;
    context->divisor = d;
    EnvFCompose* compose = newCompose<T>(arena, d, n);
    Env2<T>* output = newEnv2<T>(arena, d, n, compose);
    u8_EnvList_add(context->children, compose);
    adopt(context->children, context->outputStage, output);
    if (runPlan(output) != StatusOk) return StatusSize;
    Env3<T>* input = newEnv3<T>(arena, d, n);
    adopt(context->children, context->inputStage, input);
    return runPlan(input);
}

template <class T>
tvkStatus planEnv2(Env2<T>* e) {
    constexpr int32_t V = kLanes<T>;
    void* arena = e->header.arena;
    if (e->q % V != 0) {
        e->state = 0;
        return StatusSize;
    }
    e->state = 1;
    auto* split = newObject<EnvFSplit>(arena, Family<T>::splitDelete);
    split->header.at = Family<T>::splitAt;
    split->twoD = e->twoD, split->groups = e->q / V, split->compose = e->f;
    auto* rotations = newObject<Env4<T>>(arena, Family<T>::env4Delete);
    rotations->header.plan = Family<T>::env4Plan;
    rotations->children = newList(arena), rotations->table = nullptr, rotations->case_ = 0;
    rotations->d = e->d, rotations->n = e->n, rotations->twoD = e->twoD, rotations->twoDV = e->twoD * V;
    rotations->groups = e->q / V, rotations->n2 = e->n, rotations->twoNMinusOne = e->twoNMinusOne;
    rotations->twoQ = 2 * e->q, rotations->f = split;
    u8_EnvList_add(e->children, split);
    adopt(e->children, e->stages, rotations);
    return runPlan(rotations);
}

// The rotation table: for each group of V rows, four vectors per column
// position (cos and sin of theta(k, r), then of theta(k, d-1-r)), lane l
// for row k = V i + l; d = 1 has one pair.
template <class T>
tvkStatus planEnv4(Env4<T>* e) {
    constexpr int32_t V = kLanes<T>;
    e->case_ = caseOfDivisor(e->d);
    if (e->case_ == 0) return StatusSize;
    e->table = newBuffer<T>(e->header.arena, e->groups * e->twoDV);
    const int32_t d = e->d;
    T* entry = e->table;
    for (int32_t i = 0; i < e->groups; ++i) {
        const int32_t positions = d == 1 ? 1 : d / 2;
        for (int32_t p = 0; p < positions; ++p) {
            const int32_t r = rotationColumn(d, p), mirror = d - 1 - r;
            const int32_t js[4] = {2 * r, 2 * r + 1, 2 * mirror, 2 * mirror + 1};
            for (int32_t v = 0; v < (d == 1 ? 2 : 4); ++v, entry += V)
                for (int32_t l = 0; l < V; ++l) entry[l] = T(u8_owng_TFunc_IIIR_at(e->f, i, l, js[v]));
        }
    }
    return StatusOk;
}

template <class T>
tvkStatus planEnv3(Env3<T>* e) {
    constexpr int32_t V = kLanes<T>;
    void* arena = e->header.arena;
    if (e->d % V != 0) {
        e->state = 0;
        return StatusSize;
    }
    e->state = 1;
    auto* columns = newObject<Env5<T>>(arena, Family<T>::env5Delete);
    columns->header.plan = Family<T>::env5Plan;
    columns->children = newList(arena), columns->stages = newList(arena), columns->buffer = nullptr;
    columns->case_ = 0, columns->m = e->m, columns->n = e->n, columns->twoNMinusOne = e->twoNMinusOne;
    columns->twoD = e->twoD, columns->columnGroups = e->d / V, columns->n2 = e->n, columns->d = e->d;
    adopt(e->children, e->stages, columns);
    return runPlan(columns);
}

// R(m) on the columns: straight-line up to 64 points, else a radix step
// with strides s = 2d (columns in the source) and t = d (in the scratch).
template <class T>
tvkStatus planEnv5(Env5<T>* e) {
    e->case_ = caseOfTransform(e->m);
    if (e->case_ != 7) return StatusOk;
    Env7<T>* step = newEnv7<T>(e->header.arena, e->m, e->n, e->twoD, e->d);
    adopt(e->children, e->stages, step);
    return runPlan(step);
}

// The env8 table of one radix step, laid out as RadixTable says.
template <class T>
void fillRadixTable(Env8<T>* e) {
    constexpr int32_t V = kLanes<T>;
    const RadixTableShape shape = radixTableShape<T>(e->radix);
    const T scale = T(2) / T(e->radix);
    for (int32_t i = 0; i < e->bins; ++i) {
        const T x = T(u8_owng_TFunc_IIIR_at(e->f, i, 0, 0));
        T* entry = e->table + shape.stepRegion(e->bins) + ptrdiff_t{i} * shape.stepVectors * V;
        auto pair = [&entry](T y) {
            const T c = cosPiOf(y), s = sinPiOf(y);
            for (int32_t l = 0; l < V; ++l) entry[l] = c, entry[V + l] = s;
            entry += 2 * V;
        };
        if (!shape.twoLevel) {
            for (int32_t b = 1; b < e->radix; ++b) pair(T(b) * x * scale);
            continue;
        }
        for (int32_t b2 = 1; b2 < e->radix / 4; ++b2) pair(T(b2) * x * (T(4) * scale));
        entry = e->table + shape.groupRegion(e->bins) + ptrdiff_t{i} * shape.groupVectors * V;
        for (int32_t g = 0; g < e->radix / 4; ++g)
            for (int32_t b1 = 1; b1 < 4; ++b1) pair((x + T(g)) * T(b1) * scale);
    }
}

template <class T>
tvkStatus planEnv8(Env8<T>* e) {
    e->case_ = caseOfRadix(e->radix);
    if (e->case_ == 0) return StatusSize;
    e->table = newBuffer<T>(e->header.arena, e->bins * 2 * (e->radix - 1) * kLanes<T>);
    fillRadixTable(e);
    return StatusOk;
}

template <class T>
tvkStatus planEnv9(Env9<T>* e) {
    e->case_ = caseOfTransform(e->L);
    if (e->case_ != 7) return StatusOk;
    Env7<T>* step = newEnv7<T>(e->header.arena, e->L, e->n, e->sourceStride, e->destinationStride);
    adopt(e->children, e->stages, step);
    return runPlan(step);
}

// One radix-d' step: the twiddles and DFT (env8) over d' inner transforms
// R(m/d') (env9), and a scratch of the whole length for the inner results.
template <class T>
tvkStatus planEnv7(Env7<T>* e) {
    void* arena = e->header.arena;
    e->state = 1;
    int32_t radix;
    if (u8_divisorsIntNonTriv(&radix, e->m / 2) != StatusOk) return StatusSize;
    e->radix = radix;
    auto* twiddles = newObject<Env8<T>>(arena, Family<T>::env8Delete);
    twiddles->header.plan = Family<T>::env8Plan;
    twiddles->children = newList(arena), twiddles->table = nullptr, twiddles->case_ = 0;
    twiddles->radix = radix, twiddles->n = e->n, twiddles->t = e->t, twiddles->rowStride = 2 * radix * e->t;
    twiddles->bins = e->m / (2 * radix), twiddles->n2 = e->n, twiddles->halfM = e->m / 2;
    twiddles->mMinusOne = e->m - 1, twiddles->t2 = e->t, twiddles->subLength = e->m / radix;
    auto* lambda = newObject<EnvLambda>(arena, Family<T>::lambdaDelete);
    lambda->header.at = Family<T>::lambdaAt;
    lambda->m = e->m, lambda->radix = radix;
    twiddles->f = lambda;
    u8_EnvList_add(e->children, lambda);
    adopt(e->children, e->outer, twiddles);
    if (runPlan(twiddles) != StatusOk) return StatusSize;

    auto* inner = newObject<Env9<T>>(arena, Family<T>::env9Delete);
    inner->header.plan = Family<T>::env9Plan;
    inner->children = newList(arena), inner->stages = newList(arena), inner->buffer = nullptr, inner->case_ = 0;
    inner->L = e->m / radix, inner->n = e->n, inner->n2 = e->n, inner->sourceStride = radix * e->s;
    inner->s = e->s, inner->radix = radix, inner->n3 = e->n, inner->destinationStride = radix * e->t, inner->t = e->t;
    adopt(e->children, e->inner, inner);
    if (runPlan(inner) != StatusOk) return StatusSize;
    e->buffer = newBuffer<T>(arena, e->n);
    return StatusOk;
}

// ---- deleting: each delete frees what its object allocated, so that the
// cursor returns to its start; the lists' heads start empty, so a partly
// built tree deletes as well.  Buffers that stay null cost nothing. ----

template <class T>
void deleteEnv1(DCT4Spec* context) {
    if (context->case_ == 6) freeBuffer(context->header.arena, static_cast<T*>(context->buffer), context->length);
    deleteList(context->outputStage);
    deleteList(context->inputStage);
    deleteChildren(context->children);
}

template <class Env>
void deleteStage(Env* e) {
    deleteList(e->stages);
    deleteChildren(e->children);
}

template <class T>
void deleteEnv4(Env4<T>* e) {
    if (e->case_ >= 1 && e->case_ <= 6) freeBuffer(e->header.arena, e->table, e->groups * e->twoDV);
    deleteChildren(e->children);
}

template <class T>
void deleteEnv7(Env7<T>* e) {
    if (e->state == 1) freeBuffer(e->header.arena, e->buffer, e->n);
    deleteList(e->outer);
    deleteList(e->inner);
    deleteChildren(e->children);
}

template <class T>
void deleteEnv8(Env8<T>* e) {
    if (e->case_ >= 1 && e->case_ <= 5)
        freeBuffer(e->header.arena, e->table, e->bins * 2 * (e->radix - 1) * kLanes<T>);
    deleteChildren(e->children);
}

// ---- the context -------------------------------------------------------------------------------

template <class T>
void tearDown(DCT4Spec* context) {
    deleteEnv1<T>(context);
    u8_tvkgArenaFree(context->header.arena, context, sizeof(DCT4Spec));
}

template <class T>
tvkStatus init(DCT4Spec** ppSpec, int32_t length, uint8_t* pBlock) {
    if (!ppSpec || !pBlock) return StatusNullPtr;
    const uint64_t A = u8_tvkgAlignSize32Bytes(1);
    const uint64_t block = reinterpret_cast<uint64_t>(pBlock);
    setCursor(pBlock, block + 2 * A - block % A);
    auto* context = static_cast<DCT4Spec*>(u8_tvkgArenaMalloc(pBlock, sizeof(DCT4Spec)));
    context->header.size = sizeof(DCT4Spec);
    context->header.arena = pBlock;
    context->children = context->outputStage = context->inputStage = nullptr;
    context->buffer = nullptr;
    context->length = length;
    context->case_ = 0;
    context->outputStage = newList(pBlock);
    context->inputStage = newList(pBlock);
    context->children = newList(pBlock);
    context->header.__del__ = Family<T>::env1Delete;
    context->header.plan = Family<T>::env1Plan;
    context->case_ = caseOfLength(length);
    if (context->case_ == 6) {
        // The root's plan runs here; `plan` holds the same function for the record.
        if (Family<T>::env1Plan(context) != StatusOk) {
            tearDown<T>(context);
            return StatusSize;
        }
        context->buffer = newBuffer<T>(pBlock, length);
    }
    *ppSpec = context;
    return StatusOk;
}

template <class T>
tvkStatus initAlloc(DCT4Spec** ppSpec, int32_t length) {
    if (!ppSpec) return StatusNullPtr;
    int32_t size;
    const tvkStatus status = Family<T>::getSize(length, &size);
    if (status != StatusOk) return status;
    // An exhausted allocator shows as the null block that Init refuses.
    auto* block = static_cast<uint8_t*>(tvkMalloc(size));
    const tvkStatus initialised = Family<T>::init(ppSpec, length, block);
    if (initialised != StatusOk) tvkFree(block);
    return initialised;
}

template <class T>
tvkStatus release(DCT4Spec* context) {
    if (!context) return StatusNullPtr;
    void* block = context->header.arena;
    tearDown<T>(context);
    tvkFree(block);
    return StatusOk;
}

// ---- the compute -------------------------------------------------------------------------------

template <class T>
tvkStatus transform(const T* src, T* dst, const DCT4Spec* context) {
    if (!context || !src || !dst) return StatusNullPtr;
    switch (context->case_) {
        case 1: direct2(src, dst); return StatusOk;
        case 2: direct4(src, dst); return StatusOk;
        case 3: direct8(src, dst); return StatusOk;
        case 4: direct16(src, dst); return StatusOk;
        case 5: direct32(src, dst); return StatusOk;
        case 6: break;
        default: return StatusBadArg;
    }
    T* buffer = static_cast<T*>(context->buffer);
    auto* input = static_cast<Env3<T>*>(u8_EnvList_get(context->inputStage, 0));
    if (input->state == 1) Family<T>::env5Compute(static_cast<Env5<T>*>(u8_EnvList_get(input->stages, 0)), buffer, src);
    auto* output = static_cast<Env2<T>*>(u8_EnvList_get(context->outputStage, 0));
    if (output->state == 1) Family<T>::env4Compute(static_cast<Env4<T>*>(u8_EnvList_get(output->stages, 0)), dst, buffer);
    return StatusOk;
}

// Stage 1: R(m) on every group of V columns; column r's points are
// x[r + 2d t] forward and, mirrored, x[2d j - 1 - r] for t = -j.
template <class T>
tvkStatus computeEnv5(const Env5<T>* e, T* dst, const T* src) {
    if (e->case_ < 1 || e->case_ > 7) return StatusBadArg;
    if (e->case_ <= 6) {
        // The column groups are neighbours: one block of them all.
        const LeafSweep sweep{0, e->twoD - 1, e->twoD, 0, e->d, 0, 1, e->columnGroups};
        kKernels<T>.leaf[e->case_](src, dst, sweep);
        return StatusOk;
    }
    // All column groups run side by side through the recursion: each pass
    // then sweeps its arrays whole rows at a time, where one cache line of
    // columns per sweep left three quarters of every line fetched (and of the
    // line pairs the second-level cache fetches) to a later sweep; 2^17 to
    // 2^20 points ran 9 to 19 % slower so.
    auto* step = static_cast<Env7<T>*>(u8_EnvList_get(e->stages, 0));
    Family<T>::env7Compute(step, dst, src, 0, e->twoNMinusOne, 0, e->columnGroups);
    return StatusOk;
}

// One R step on one column group: a3 is the first forward element, a3 + a4
// the first mirrored one (counted in the even extension), a5 the place in dst.
template <class T>
tvkStatus computeEnv7(const Env7<T>* e, T* dst, const T* src, int32_t a3, int32_t a4, int32_t a5, int32_t width) {
    if (e->state != 1) return StatusBadArg;
    Family<T>::env9Compute(static_cast<Env9<T>*>(u8_EnvList_get(e->inner, 0)), e->buffer, src, a3, a4, a5, width);
    Family<T>::env8Compute(static_cast<Env8<T>*>(u8_EnvList_get(e->outer, 0)), dst, e->buffer, a5, a5, width);
    return StatusOk;
}

template <class T>
tvkStatus computeEnv9(const Env9<T>* e, T* dst, const T* src, int32_t a3, int32_t a4, int32_t a5, int32_t width) {
    if (e->case_ < 1 || e->case_ > 7) return StatusBadArg;
    if (e->case_ <= 6) {
        // Point -1 of the mirrored side lies one source stride past the mirror of a3.
        const ptrdiff_t mirrored = ptrdiff_t{a3} + a4 - 2 * ptrdiff_t{e->n} + e->sourceStride;
        const LeafSweep sweep{a3, mirrored, e->sourceStride, e->s, e->destinationStride, e->t, e->radix, width};
        kKernels<T>.leaf[e->case_](src, dst + a5, sweep);
        return StatusOk;
    }
    auto* step = static_cast<Env7<T>*>(u8_EnvList_get(e->stages, 0));
    for (int32_t b = 0; b < e->radix; ++b)
        Family<T>::env7Compute(step, dst, src, a3 + b * e->s, a4 - 2 * b * e->s, a5 + b * e->t, width);
    return StatusOk;
}

template <class T>
tvkStatus computeEnv8(const Env8<T>* e, T* dst, const T* src, int32_t a, int32_t, int32_t width) {
    if (e->case_ < 1 || e->case_ > 5) return StatusBadArg;
    kKernels<T>.radix[e->case_](src + a, dst + a, e->table, e->t, e->bins, width);
    return StatusOk;
}

template <class T>
tvkStatus computeEnv4(const Env4<T>* e, T* dst, const T* src) {
    if (e->case_ < 1 || e->case_ > 6) return StatusBadArg;
    kKernels<T>.output[e->case_](src, dst, e->table, e->twoQ / 2, e->groups);
    return StatusOk;
}

}  // namespace tvk::dct4
