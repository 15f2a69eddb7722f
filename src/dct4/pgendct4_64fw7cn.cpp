// DCT-IV of tvk64f: two lanes per vector, double-precision tables and literals.
#define TVK_DCT4_T double
#define TVK_DCT4_OWN(stem) u8_owngDCT4_64fw7_##stem
#define TVK_DCT4_API(stem) u8_tvkg##stem##_64f
#include "family.h"
