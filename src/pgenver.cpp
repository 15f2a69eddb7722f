// The version record and its query.
#include "codelet.h"

namespace {

const tvkLibraryVersion s_libVer = {
    8, 2, 1, 44077, {'u', '8', '\0', '\0'}, "tvkGEN SSSE3 (u8)", "8.2.1 (r44077)", "Oct  9 2014",
};

}  // namespace

extern "C" TVK_INTERNAL const tvkLibraryVersion* u8_tvkgenGetLibVersion(void) { return &s_libVer; }
