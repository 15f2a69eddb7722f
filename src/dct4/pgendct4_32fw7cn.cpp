// DCT-IV of tvk32f: four lanes per vector, single-precision tables and literals.
#define TVK_DCT4_T float
#define TVK_DCT4_OWN(stem) u8_owngDCT4_32fw7_##stem
#define TVK_DCT4_API(stem) u8_tvkg##stem##_32f
#include "family.h"
