// One DCT-IV family under its own names: included once by each family's
// source after it defines
//   TVK_DCT4_T          the element type
//   TVK_DCT4_OWN(stem)  the name of an engine function, u8_owngDCT4_<type>w7_<stem>
//   TVK_DCT4_API(stem)  the name of a body, u8_tvkg<stem>_<type>
// No include guard: it is meant to be read once per family.

#include "engine.h"

#define TVK_DCT4_OBJECT(kind)                                    \
    TVK_INTERNAL void TVK_DCT4_OWN(kind##___del__)(void* self);  \
    TVK_INTERNAL tvkStatus TVK_DCT4_OWN(kind##_plan)(void* self);
#define TVK_DCT4_FUNCTION(kind)                                 \
    TVK_INTERNAL void TVK_DCT4_OWN(kind##___del__)(void* self); \
    TVK_INTERNAL double TVK_DCT4_OWN(kind##_at)(const void* self, int32_t i, int32_t j, int32_t k);

extern "C" {
TVK_DCT4_OBJECT(env1)
TVK_DCT4_OBJECT(env2)
TVK_DCT4_OBJECT(env3)
TVK_DCT4_OBJECT(env4)
TVK_DCT4_OBJECT(env5)
TVK_DCT4_OBJECT(env7)
TVK_DCT4_OBJECT(env8)
TVK_DCT4_OBJECT(env9)
TVK_DCT4_FUNCTION(envfCompose)
TVK_DCT4_FUNCTION(envfsplit)
TVK_DCT4_FUNCTION(envlambda)
TVK_INTERNAL tvkStatus TVK_DCT4_OWN(env5_compute)(void* env5, TVK_DCT4_T* dst, const TVK_DCT4_T* src);
TVK_INTERNAL tvkStatus TVK_DCT4_OWN(env4_compute)(void* env4, TVK_DCT4_T* dst, const TVK_DCT4_T* src);
TVK_INTERNAL tvkStatus TVK_DCT4_OWN(env7_compute)(void* env7, TVK_DCT4_T* dst, const TVK_DCT4_T* src, int32_t a3,
                                                  int32_t a4, int32_t a5, int32_t width);
TVK_INTERNAL tvkStatus TVK_DCT4_OWN(env9_compute)(void* env9, TVK_DCT4_T* dst, const TVK_DCT4_T* src, int32_t a3,
                                                  int32_t a4, int32_t a5, int32_t width);
TVK_INTERNAL tvkStatus TVK_DCT4_OWN(env8_compute)(void* env8, TVK_DCT4_T* dst, const TVK_DCT4_T* src, int32_t a,
                                                  int32_t b, int32_t width);
TVK_INTERNAL tvkStatus TVK_DCT4_API(DCT4GetSize)(int32_t len, int32_t* pSize);
TVK_INTERNAL tvkStatus TVK_DCT4_API(DCT4Init)(DCT4Spec** ppSpec, int32_t len, uint8_t* pBlock);
TVK_INTERNAL tvkStatus TVK_DCT4_API(DCT4InitAlloc)(DCT4Spec** ppSpec, int32_t len);
TVK_INTERNAL tvkStatus TVK_DCT4_API(DCT4)(const TVK_DCT4_T* pSrc, TVK_DCT4_T* pDst, const DCT4Spec* pSpec);
TVK_INTERNAL tvkStatus TVK_DCT4_API(DCT4Free)(DCT4Spec* pSpec);
}

#undef TVK_DCT4_OBJECT
#undef TVK_DCT4_FUNCTION

template <>
struct tvk::dct4::Family<TVK_DCT4_T> {
    static constexpr auto env1Delete = TVK_DCT4_OWN(env1___del__);
    static constexpr auto env1Plan = TVK_DCT4_OWN(env1_plan);
    static constexpr auto env2Delete = TVK_DCT4_OWN(env2___del__);
    static constexpr auto env2Plan = TVK_DCT4_OWN(env2_plan);
    static constexpr auto env3Delete = TVK_DCT4_OWN(env3___del__);
    static constexpr auto env3Plan = TVK_DCT4_OWN(env3_plan);
    static constexpr auto env4Delete = TVK_DCT4_OWN(env4___del__);
    static constexpr auto env4Plan = TVK_DCT4_OWN(env4_plan);
    static constexpr auto env5Delete = TVK_DCT4_OWN(env5___del__);
    static constexpr auto env5Plan = TVK_DCT4_OWN(env5_plan);
    static constexpr auto env7Delete = TVK_DCT4_OWN(env7___del__);
    static constexpr auto env7Plan = TVK_DCT4_OWN(env7_plan);
    static constexpr auto env8Delete = TVK_DCT4_OWN(env8___del__);
    static constexpr auto env8Plan = TVK_DCT4_OWN(env8_plan);
    static constexpr auto env9Delete = TVK_DCT4_OWN(env9___del__);
    static constexpr auto env9Plan = TVK_DCT4_OWN(env9_plan);
    static constexpr auto composeDelete = TVK_DCT4_OWN(envfCompose___del__);
    static constexpr auto composeAt = TVK_DCT4_OWN(envfCompose_at);
    static constexpr auto splitDelete = TVK_DCT4_OWN(envfsplit___del__);
    static constexpr auto splitAt = TVK_DCT4_OWN(envfsplit_at);
    static constexpr auto lambdaDelete = TVK_DCT4_OWN(envlambda___del__);
    static constexpr auto lambdaAt = TVK_DCT4_OWN(envlambda_at);
    static constexpr auto getSize = TVK_DCT4_API(DCT4GetSize);
    static constexpr auto init = TVK_DCT4_API(DCT4Init);

    static tvkStatus env5Compute(Env5<TVK_DCT4_T>* e, TVK_DCT4_T* dst, const TVK_DCT4_T* src) {
        return TVK_DCT4_OWN(env5_compute)(e, dst, src);
    }
    static tvkStatus env4Compute(Env4<TVK_DCT4_T>* e, TVK_DCT4_T* dst, const TVK_DCT4_T* src) {
        return TVK_DCT4_OWN(env4_compute)(e, dst, src);
    }
    static tvkStatus env7Compute(Env7<TVK_DCT4_T>* e, TVK_DCT4_T* dst, const TVK_DCT4_T* src, int32_t a3, int32_t a4,
                                 int32_t a5, int32_t width) {
        return TVK_DCT4_OWN(env7_compute)(e, dst, src, a3, a4, a5, width);
    }
    static tvkStatus env9Compute(Env9<TVK_DCT4_T>* e, TVK_DCT4_T* dst, const TVK_DCT4_T* src, int32_t a3, int32_t a4,
                                 int32_t a5, int32_t width) {
        return TVK_DCT4_OWN(env9_compute)(e, dst, src, a3, a4, a5, width);
    }
    static tvkStatus env8Compute(Env8<TVK_DCT4_T>* e, TVK_DCT4_T* dst, const TVK_DCT4_T* src, int32_t a, int32_t b,
                                 int32_t width) {
        return TVK_DCT4_OWN(env8_compute)(e, dst, src, a, b, width);
    }
};

namespace {
using T = TVK_DCT4_T;
template <template <class> class Env>
Env<T>* as(void* self) {
    return static_cast<Env<T>*>(self);
}
}  // namespace

extern "C" {

void TVK_DCT4_OWN(env1___del__)(void* self) { tvk::dct4::deleteEnv1<T>(static_cast<DCT4Spec*>(self)); }
tvkStatus TVK_DCT4_OWN(env1_plan)(void* self) { return tvk::dct4::planRoot<T>(static_cast<DCT4Spec*>(self)); }
void TVK_DCT4_OWN(env2___del__)(void* self) { tvk::dct4::deleteStage(as<tvk::dct4::Env2>(self)); }
tvkStatus TVK_DCT4_OWN(env2_plan)(void* self) { return tvk::dct4::planEnv2(as<tvk::dct4::Env2>(self)); }
void TVK_DCT4_OWN(env3___del__)(void* self) { tvk::dct4::deleteStage(as<tvk::dct4::Env3>(self)); }
tvkStatus TVK_DCT4_OWN(env3_plan)(void* self) { return tvk::dct4::planEnv3(as<tvk::dct4::Env3>(self)); }
void TVK_DCT4_OWN(env4___del__)(void* self) { tvk::dct4::deleteEnv4(as<tvk::dct4::Env4>(self)); }
tvkStatus TVK_DCT4_OWN(env4_plan)(void* self) { return tvk::dct4::planEnv4(as<tvk::dct4::Env4>(self)); }
void TVK_DCT4_OWN(env5___del__)(void* self) { tvk::dct4::deleteStage(as<tvk::dct4::Env5>(self)); }
tvkStatus TVK_DCT4_OWN(env5_plan)(void* self) { return tvk::dct4::planEnv5(as<tvk::dct4::Env5>(self)); }
void TVK_DCT4_OWN(env7___del__)(void* self) { tvk::dct4::deleteEnv7(as<tvk::dct4::Env7>(self)); }
tvkStatus TVK_DCT4_OWN(env7_plan)(void* self) { return tvk::dct4::planEnv7(as<tvk::dct4::Env7>(self)); }
void TVK_DCT4_OWN(env8___del__)(void* self) { tvk::dct4::deleteEnv8(as<tvk::dct4::Env8>(self)); }
tvkStatus TVK_DCT4_OWN(env8_plan)(void* self) { return tvk::dct4::planEnv8(as<tvk::dct4::Env8>(self)); }
void TVK_DCT4_OWN(env9___del__)(void* self) { tvk::dct4::deleteStage(as<tvk::dct4::Env9>(self)); }
tvkStatus TVK_DCT4_OWN(env9_plan)(void* self) { return tvk::dct4::planEnv9(as<tvk::dct4::Env9>(self)); }

void TVK_DCT4_OWN(envfCompose___del__)(void* self) { tvk::dct4::deleteNothing(self); }
double TVK_DCT4_OWN(envfCompose_at)(const void* self, int32_t i, int32_t j, int32_t k) {
    return tvk::dct4::composeAt<T>(self, i, j, k);
}
void TVK_DCT4_OWN(envfsplit___del__)(void* self) { tvk::dct4::deleteNothing(self); }
double TVK_DCT4_OWN(envfsplit_at)(const void* self, int32_t i, int32_t j, int32_t k) {
    return tvk::dct4::splitAt<T>(self, i, j, k);
}
void TVK_DCT4_OWN(envlambda___del__)(void* self) { tvk::dct4::deleteNothing(self); }
double TVK_DCT4_OWN(envlambda_at)(const void* self, int32_t i, int32_t j, int32_t k) {
    return tvk::dct4::lambdaAt<T>(self, i, j, k);
}

tvkStatus TVK_DCT4_OWN(env5_compute)(void* env5, T* dst, const T* src) {
    return tvk::dct4::computeEnv5(as<tvk::dct4::Env5>(env5), dst, src);
}
tvkStatus TVK_DCT4_OWN(env4_compute)(void* env4, T* dst, const T* src) {
    return tvk::dct4::computeEnv4(as<tvk::dct4::Env4>(env4), dst, src);
}
tvkStatus TVK_DCT4_OWN(env7_compute)(void* env7, T* dst, const T* src, int32_t a3, int32_t a4, int32_t a5,
                                     int32_t width) {
    return tvk::dct4::computeEnv7(as<tvk::dct4::Env7>(env7), dst, src, a3, a4, a5, width);
}
tvkStatus TVK_DCT4_OWN(env9_compute)(void* env9, T* dst, const T* src, int32_t a3, int32_t a4, int32_t a5,
                                     int32_t width) {
    return tvk::dct4::computeEnv9(as<tvk::dct4::Env9>(env9), dst, src, a3, a4, a5, width);
}
tvkStatus TVK_DCT4_OWN(env8_compute)(void* env8, T* dst, const T* src, int32_t a, int32_t b, int32_t width) {
    return tvk::dct4::computeEnv8(as<tvk::dct4::Env8>(env8), dst, src, a, b, width);
}

tvkStatus TVK_DCT4_API(DCT4GetSize)(int32_t len, int32_t* pSize) { return tvk::dct4::getSize<T>(len, pSize); }
tvkStatus TVK_DCT4_API(DCT4Init)(DCT4Spec** ppSpec, int32_t len, uint8_t* pBlock) {
    return tvk::dct4::init<T>(ppSpec, len, pBlock);
}
tvkStatus TVK_DCT4_API(DCT4InitAlloc)(DCT4Spec** ppSpec, int32_t len) { return tvk::dct4::initAlloc<T>(ppSpec, len); }
tvkStatus TVK_DCT4_API(DCT4)(const T* pSrc, T* pDst, const DCT4Spec* pSpec) {
    return tvk::dct4::transform(pSrc, pDst, pSpec);
}
tvkStatus TVK_DCT4_API(DCT4Free)(DCT4Spec* pSpec) { return tvk::dct4::release<T>(pSpec); }
}
