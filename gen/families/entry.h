// What every fixed-length family wraps around a body: the three literal
// scales, and the exported entry with its alignment paths.
#pragma once

#include <functional>
#include <string>

namespace gen {

// The constants 1, 1/sqrt(n) and 1/n of a body, as a `kScales` definition:
// nearest binary32 values in the 32-bit families; in the 64-bit ones 1/n is
// the nearest binary64 and 1/sqrt(n) is 1.0 over the binary64 square root of
// n, two roundings.
std::string scalesOf(int n, bool single);

// Where the unaligned path lives: none, inside the body, or in a twin function.
enum class Shape { SinglePath, TwoPath, Twinned };

struct Entry {
    std::string name;       // the exported name, as tvkgDFTFwd_CToC_44_32fc
    std::string params;     // "(const tvk32fc* src, tvk32fc* dst, int32_t flag)"
    std::string arguments;  // the same names, to hand on to the twin: "src, dst, flag"
    std::string prelude;    // statements before everything else
    Shape shape = Shape::SinglePath;
    std::string aligned, unaligned;  // memory forms of the two paths
    // The checked call of the body on a memory form (empty for single-path bodies).
    std::function<std::string(const std::string& memory)> run;
};

// The private body u8_<name>, and for twinned shapes its twin
// u8_owng<name without tvkg>_unaligned.
std::string entryPoints(const Entry& e);

}  // namespace gen
